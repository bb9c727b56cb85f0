// Mutual candidates: the neighbours with which both ends gain the most.
#include <vorl/hierarchy/hierarchy_impl.hpp>
#include <vorl/types/text.hpp>

#include <algorithm>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::raiseGmax(ItemT& item, AccWeight gain) {
    if (m_exact && !isPropagated(item)) offer(gmaxOf(item), gain);
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::defineItemCands(ItemT& el, ClustersT& cls) {
    Context<ItemT>& ectx = *el.m_context;
    VORL_ASSERT(ectx.cands.empty() && !xinterlevprop(ectx.state),
                "defineItemCands(), el should be non-xinterlevprop undefined clusterable with "
                "empty cands");
    if (el.links.empty()) {
        VORL_ASSERT(!xpropagated(ectx.state) &&
                        (ectx.weight == WEIGHT_NONE || ectx.weight == el.m_sweight ||
                         equal(ectx.weight, static_cast<AccWeight>(el.m_sweight))),
                    "defineItemCands(), a stand-alone item should have its self weight only");
        standalone(el, cls);
        return;
    }
    visitActive(el, [&](const auto& ln) {
        if (isOutbid(el, ln)) return;
        const AccWeight gain = clusterGain(el, ln);
        if (less(gain)) return;
        accBest(ectx.cands, gmaxOf(el), ln.dest, gain, 1);
        raiseGmax(*ln.dest, gain);
    });
    markOneCand(el);
    if (ectx.cands.empty()) propagate(el, cls);
}

// Keeps the candidates of which el is a candidate too; those of a neighbour are defined on demand.
template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::filterCands(ItemT& el, ClustersT& cls) {
    Context<ItemT>& ectx = *el.m_context;
    auto kept = ectx.cands.begin();
    for (ItemT* cand : ectx.cands) {
        if (isPropagated(*cand)) continue;
        if constexpr (!IS_NODE<ItemT>) {
            const Mark& mark = m_marks.of(*cand);
            if (mark.is(MarksT::ONE_CAND)) {
                if (mark.aim == &el) *kept++ = cand;
                continue;
            }
        }
        Context<ItemT>& cctx = *cand->m_context;
        if (cctx.cands.empty()) {
            if (xinterlevprop(cctx.state))
                defineIlevpropItemCands(*cand, cls);
            else
                defineItemCands(*cand, cls);
            if (xpropagated(cctx.state) || cctx.cands.empty()) continue;
        }
        if (holds(cctx.cands, &el)) *kept++ = cand;
    }
    ectx.cands.erase(kept, ectx.cands.end());
    markOneCand(el);
    if (ectx.cands.empty()) propagate(el, cls);
}

// Nearly all items have one candidate, which is then known without the context.
template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::markOneCand(ItemT& el) {
    if constexpr (!IS_NODE<ItemT>) {
        const auto& cands = el.m_context->cands;
        Mark& mark = m_marks.of(el);
        mark.set(MarksT::ONE_CAND, cands.size() == 1);
        if (cands.size() == 1) mark.aim = cands.front();
    }
}

template <bool NONSYMMETRIC, class LinksT>
template <class IItemXT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::initCands(IItemXT first, IItemXT last, ClustersT& cls) {
    for (; first != last; ++first) {
        m_report.advance();
        auto& el = detail::itemAt(first);
        VORL_ASSERT(el.m_context, "initCands(), el context must be defined");
        auto& ectx = *el.m_context;
        if (xpropagated(ectx.state)) continue;
        if (ectx.cands.empty()) {
            defineItemCands(el, cls);
            if (xpropagated(ectx.state)) continue;
        }
        filterCands(el, cls);
        VORL_ASSERT(xpropagated(ectx.state) == ectx.cands.empty(),
                    "initCands(), each item must be either propagated or have some mutual cands");
    }
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::defineIlevpropItemCands(ItemT& el, ClustersT& cls) {
    Context<ItemT>& ectx = *el.m_context;
    if (!xinterlevprop(ectx.state) || xpropagated(ectx.state)) {
        VORL_TRACE("  >>> defineIlevpropItemCands(), #%u (%s) %lu cands, gmax: %g, owners: %lu\n",
                   el.id, to_string(ectx.state).c_str(), ectx.cands.size(), gmaxOf(el),
                   el.owners.size());
        VORL_ASSERT(false, "defineIlevpropItemCands(), el should be non-clustered xinterlevprop");
    }
    VORL_ASSERT(ectx.cands.empty(), "defineIlevpropItemCands(), cands should not be defined yet");
    visitActive(el, [&](const auto& ln) {
        ItemT& dest = *ln.dest;
        if (less(gmaxOf(dest))) {
            if (xinterlevprop(dest.m_context->state)) {
                propagate(dest, cls);
                return;
            }
            if (!dest.m_context->cands.empty()) return;
        }
        if (isOutbid(el, ln)) return;
        const AccWeight gain = clusterGain(el, ln);
        if (less(gain)) return;
        accBest(ectx.cands, gmaxOf(el), &dest, gain, 1);
        raiseGmax(dest, gain);
    });
    markOneCand(el);
    if (ectx.cands.empty()) {
        propagate(el, cls);
        return;
    }
    if (ectx.cands.size() >= 2)
        std::sort(ectx.cands.begin(), ectx.cands.end(), cmpBase<ItemT, ItemT>);
}

template <bool NONSYMMETRIC, class LinksT>
template <class IItemXT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::initPropnomCands(IItemXT first, IItemXT last,
                                                           ClustersT& cls) {
    for (; first != last; ++first) {
        m_report.advance();
        prefetchItems(first, last, [this](const ClusterT* item) { return isPropagated(*item); });
        auto& el = detail::itemAt(first);
        if (isPropagated(el)) continue;
        auto& ectx = *el.m_context;
        if (less(gmaxOf(el))) {
            propagate(el, cls);
            continue;
        }
        if (ectx.cands.empty()) {
            defineIlevpropItemCands(el, cls);
            if (xpropagated(ectx.state)) continue;
        }
        filterCands(el, cls);
        VORL_ASSERT(
            xpropagated(ectx.state) == ectx.cands.empty(),
            "initPropnomCands(), each item must be either propagated or have some mutual cands");
    }
}

template <bool NONSYMMETRIC, class LinksT>
template <class IItemXT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::settleGmax(IItemXT first, IItemXT last) {
    for (; first != last; ++first) {
        ClusterT& el = detail::itemAt(first);
        const Mark& mark = m_marks.of(el);
        if (!mark.is(MarksT::PROPAGATED)) el.m_context->gmax = mark.gmax;
    }
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                                   \
    template void HierarchyImpl<NONSYM, LinksT>::initCands(                                \
        Nodes<LinksT>::iterator, Nodes<LinksT>::iterator, Clusters<LinksT>&);              \
    template void HierarchyImpl<NONSYM, LinksT>::initCands(                                \
        Clusters<LinksT>::iterator, Clusters<LinksT>::iterator, Clusters<LinksT>&);        \
    template void HierarchyImpl<NONSYM, LinksT>::settleGmax(Clusters<LinksT>::iterator,    \
                                                            Clusters<LinksT>::iterator);   \
    template void HierarchyImpl<NONSYM, LinksT>::settleGmax(                               \
        std::vector<Cluster<LinksT>*>::iterator, std::vector<Cluster<LinksT>*>::iterator); \
    template void HierarchyImpl<NONSYM, LinksT>::initPropnomCands(                         \
        std::vector<Cluster<LinksT>*>::iterator, std::vector<Cluster<LinksT>*>::iterator,  \
        Clusters<LinksT>&);

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
