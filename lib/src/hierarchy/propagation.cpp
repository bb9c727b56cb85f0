// Propagation: items that find no partner on this level, and the conversion of partitions.
#include <vorl/hierarchy/hierarchy_impl.hpp>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::wrapNode(ItemT& el, ClustersT& cls) {
    ClusterT& cl = cls.emplace_back(static_cast<LevelNum>(m_levels.size()), Size{0});
    el.owners.emplace_back(&cl, 1);
    cl.des.push_back(&el);
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::propagate(ItemT& el, ClustersT& cls) {
    Context<ItemT>& ectx = *el.m_context;
    VORL_ASSERT(!xpropagated(ectx.state),
                "propagate(), the item should have defined clusterable state and should not be "
                "propagated yet");
    VORL_ASSERT(!ectx.parts, "propagate(), nodes with .parts should be clustered, not propagated");
    const bool carried = xinterlevprop(ectx.state);
    setPropagated(el);
    ectx.state |= State::INTERLEVPROP;
    ++m_propnum;
    m_proplsnum += linksNum(el);
    if constexpr (IS_NODE<ItemT>) {
        wrapNode(el, cls);
    } else if (!carried) {
        VORL_ASSERT(m_propagates.empty() || m_propagates.back() != &el,
                    "propagate(), propagated items should not have duplicates");
        m_propagates.push_back(&el);
        if (m_tracks.on) {
            m_tracks.kept[m_marks.seat(&el)].order = ++m_tracks.carried;
            m_tracks.carriedLinks += linksNum(el);
        }
    }
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::standalone(ItemT& el, ClustersT& cls) {
    Context<ItemT>& ectx = *el.m_context;
    VORL_ASSERT(
        el.links.empty() && ectx.cands.empty() && !xpropagated(ectx.state) && !ectx.parts,
        "standalone(), the item should not have links, cands, parts and should not be propagated");
    setPropagated(el);
    if constexpr (IS_NODE<ItemT>) {
        wrapNode(el, cls);
    } else {
        VORL_ASSERT(m_root.empty() || m_root.back() != &el,
                    "standalone(), items can't be duplicated in the root");
        m_root.push_back(&el);
    }
}

template <bool NONSYMMETRIC, class LinksT>
template <class IItemXT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::propagateConvert(IItemXT first, IItemXT last,
                                                           ClustersT& cls) {
    for (; first != last; ++first) {
        m_report.check();
        auto& el = detail::itemAt(first);
        using ItemT = std::remove_reference_t<decltype(el)>;
        Context<ItemT>& ectx = *el.m_context;
        if (!ectx.parts) {
            if (el.owners.empty() && !xpropagated(ectx.state)) propagate(el, cls);
            continue;
        }
        for (Partition<ItemT>& part : *ectx.parts) {
            VORL_ASSERT(part.owner, "propagateConvert(), the part owner should be defined");
            if (part.owner->holder != &part) continue;
            std::vector<ItemT*> items;
            if (!part.owner->items.empty()) {
                items = static_cast<std::vector<ItemT*>>(*part.owner);
            } else {
                items = std::move(part.items);
                part.items.clear();
                items.insert(insorted(items, &el, bsVal<ItemT, ItemT>), &el);
            }
            ClusterT& cl = cls.emplace_back(static_cast<LevelNum>(m_levels.size()), Size{0});
            cl.des.reserve(items.size());
            for (ItemT* item : items) joinItem(*item, cl);
        }
    }
}

#define VORL_INSTANTIATE_ITER(NONSYM, LinksT, IterT) \
    template void HierarchyImpl<NONSYM, LinksT>::propagateConvert(IterT, IterT, Clusters<LinksT>&);
#define VORL_INSTANTIATE_ITEM(NONSYM, LinksT, ItemT)                                   \
    template void HierarchyImpl<NONSYM, LinksT>::propagate(ItemT&, Clusters<LinksT>&); \
    template void HierarchyImpl<NONSYM, LinksT>::standalone(ItemT&, Clusters<LinksT>&);
#define VORL_INSTANTIATE(NONSYM, LinksT)                                           \
    VORL_INSTANTIATE_ITER(NONSYM, LinksT, Nodes<LinksT>::iterator)                 \
    VORL_INSTANTIATE_ITER(NONSYM, LinksT, Clusters<LinksT>::iterator)              \
    VORL_INSTANTIATE_ITER(NONSYM, LinksT, std::vector<Cluster<LinksT>*>::iterator) \
    VORL_INSTANTIATE_ITEM(NONSYM, LinksT, Node<LinksT>)                            \
    VORL_INSTANTIATE_ITEM(NONSYM, LinksT, Cluster<LinksT>)

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE_ITER
#undef VORL_INSTANTIATE_ITEM
#undef VORL_INSTANTIATE

}  // namespace vorl
