// Reduction of the links of nodes and of new clusters.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <stdexcept>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
template <bool BYWEIGHT, class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::reductionCands(RdsCands<ItemT>& rcands, ItemT& el,
                                                         Id linksMarg, Reduction reduction,
                                                         std::vector<RdsLink<ItemT>>& rlinks) {
    if constexpr (BYWEIGHT && !ItemT::LinkT::IS_WEIGHTED)
        throw std::domain_error("reductionCands() should not be called for the unweighed el links");
    if (linksMarg == 0 || reduction == Reduction::NONE || el.links.size() <= linksMarg) return;
    rlinks.clear();
    rlinks.reserve(el.links.size());
    for (const auto& ln : el.links) {
        if constexpr (BYWEIGHT)
            rlinks.push_back({ln.dest, static_cast<LinkWeight>(ln.weight)});
        else
            rlinks.push_back({ln.dest, detail::narrow(clusterGain(el, ln))});
    }
    std::vector<ItemT*> drops;
    if (droppableLinks(drops, el, rlinks, linksMarg, reduction))
        rcands.emplace(&el, std::move(drops));
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
Id HierarchyImpl<NONSYMMETRIC, LinksT>::reduceLinks(RdsCands<ItemT>& rcands) {
    Size erased = 0;
    const Id reduced = vorl::reduceLinks(rcands, erased);
    if constexpr (IS_NODE<ItemT>) m_score.nodesLinks -= erased;
    return reduced;
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::reduceItems(StoredItems<ItemT>& items, Id overlong,
                                                      Reduction reduction, const char* message) {
    RdsCands<ItemT> rcands(overlong);
    std::vector<RdsLink<ItemT>> rlinks;
    for (ItemT& el : items) {
        if (el.links.size() <= m_linksMarg) continue;
        if (!IS_NODE<ItemT> || m_reductionWeight)
            reductionCands<true>(rcands, el, m_linksMarg, reduction, rlinks);
        else
            reductionCands<false>(rcands, el, m_linksMarg, reduction, rlinks);
    }
    const Id reduced = reduceLinks(rcands);
    // The weights of dropped links went into those inside both ends.
    if constexpr (!IS_NODE<ItemT>)
        for (const ItemT& el : items) m_marks.weights(el).self = el.m_sweight;
    if (reduced != 0 && ftrace)
        std::fprintf(ftrace, message, reduced, overlong, static_cast<unsigned long>(items.size()));
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                       \
    template void HierarchyImpl<NONSYM, LinksT>::reduceItems<Node<LinksT>>(    \
        Nodes<LinksT>&, Id, Reduction, const char*);                           \
    template void HierarchyImpl<NONSYM, LinksT>::reduceItems<Cluster<LinksT>>( \
        Clusters<LinksT>&, Id, Reduction, const char*);

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
