// Raw clustering: pairs and groups of candidates become clusters, partitions join part clusters.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>
#include <stdexcept>

namespace vorl {

namespace {

/// npartmcs is a 16-bit count, of which the largest value means "not counted".
constexpr std::size_t GROUP_MAX = NPARTMCS_NONE - 1;

/// The number of an item's candidates that have no partitions, counted on first demand.
template <class ItemT>
std::uint16_t freeCands(ItemT& item) {
    Context<ItemT>& ctx = *item.m_context;
    if (ctx.npartmcs == NPARTMCS_NONE) {
        const auto count = static_cast<std::size_t>(
            std::count_if(ctx.cands.begin(), ctx.cands.end(),
                          [](const ItemT* cand) { return !cand->m_context->parts; }));
        if (count > GROUP_MAX)
            throw std::overflow_error("rawCluster(), overflow of gctx.npartmcs\n");
        VORL_ASSERT(count >= 1, "rawCluster(), at least back link mcand has no parts");
        ctx.npartmcs = static_cast<std::uint16_t>(count);
    }
    return ctx.npartmcs;
}

}  // namespace

template <bool NONSYMMETRIC, class LinksT>
template <class IItemXT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::rawCluster(IItemXT first, IItemXT last, ClustersT& cls) {
    for (; first != last; ++first) {
        m_report.advance();
        rawClusterItem(detail::itemAt(first), cls);
    }
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::rawClusterItem(ItemT& el, ClustersT& cls) {
    VORL_ASSERT(el.m_context, "rawCluster(), el context must be defined");
    Context<ItemT>& ectx = *el.m_context;
    if (xpropagated(ectx.state)) return;
    if (ectx.parts) {
        for (Partition<ItemT>& part : *ectx.parts) clusterPart(el, part);
        return;
    }
    if (ectx.cands.size() == 1) {
        ItemT& cand = *ectx.cands.front();
        VORL_ASSERT(el.owners.size() <= 1, "rawCluster(), single clusterable validation failed");
        if (cand.m_context->parts)
            propagate(el, cls);
        else if (el.owners.empty() && cand.m_context->cands.size() == 1)
            clusterPair(cls, el, cand);
        return;
    }
    VORL_ASSERT(ectx.cands.size() >= 2, "rawCluster(), el should have >= 2 cands");
    if (prefersPairs(el)) ectx.state |= State::PERPAIR;
    if (xperpair(ectx.state))
        clusterPairs(el, cls);
    else
        clusterGroup(el, cls);
}

// Of an item of low degree: whether its pairs gain more than one group with all candidates.
template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::prefersPairs(ItemT& el) {
    const Context<ItemT>& ectx = *el.m_context;
    const Size degree = linksNum(el);
    if (ectx.cands.size() > degree || degree > 3) return false;
    AccWeight gamma;
    const AccWeight gain = emcandsGain(el, ectx.cands, &gamma);
    VORL_ASSERT(!(gamma < 0), "rawCluster(), invalid gamma");
    const auto n = static_cast<std::uint32_t>(ectx.cands.size());
    const AccWeight part = ectx.weight / (n * n);
    AccWeight sum = 0;
    auto cand = ectx.cands.begin();
    for (const auto& ln : el.links) {
        if (cand == ectx.cands.end()) break;
        if (ln.dest != *cand) continue;
        const AccWeight dweight = ln.dest->m_context->weight;
        sum += linkWeight<NONSYMMETRIC>(&el, ln) - (dweight / m_weight * part) * gamma - 2 * part;
        ++cand;
    }
    VORL_ASSERT(cand == ectx.cands.end(),
                "rawCluster(), node links should contain at least all cands");
    return less(gain, sum);
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::clusterPairs(ItemT& el, ClustersT& cls) {
    bool allparts = true;
    for (ItemT* cand : el.m_context->cands) {
        const Context<ItemT>& cctx = *cand->m_context;
        if (xpropagated(cctx.state) || cctx.parts) continue;
        allparts = false;
        if (cctx.cands.size() < 2 || xperpair(cctx.state)) clusterPair(cls, el, *cand);
    }
    if (el.owners.empty() && allparts) propagate(el, cls);
}

// One cluster of an item and those of its candidates that have the fewest free candidates.
template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::clusterGroup(ItemT& el, ClustersT& cls) {
    Context<ItemT>& ectx = *el.m_context;
    Candidates<ItemT*> group;
    group.reserve(ectx.cands.size());
    std::uint16_t gmin = NPARTMCS_NONE;
    for (ItemT* cand : ectx.cands) {
        if (cand->m_context->parts) {
            VORL_ASSERT(!xpropagated(cand->m_context->state),
                        "rawCluster(), .parts clusterable should always be clusterable");
            continue;
        }
        gmin = std::min(gmin, freeCands(*cand));
        group.push_back(cand);
    }
    if (group.size() > GROUP_MAX)
        throw std::overflow_error("rawCluster(), group size causes overflow of ectx.npartmcs\n");
    ectx.npartmcs = static_cast<std::uint16_t>(group.size());
    if (group.empty()) {
        VORL_ASSERT(el.owners.empty(),
                    "rawCluster(), non-clusterable items should not have owners");
        propagate(el, cls);
        return;
    }
    std::erase_if(group, [gmin](const ItemT* cand) {
        return xpropagated(cand->m_context->state) || cand->m_context->npartmcs > gmin;
    });
    // Where all neighbours are better connected it is for them to take the item in.
    if (gmin > ectx.npartmcs || group.empty()) return;
    for (const auto& owner : el.owners) {
        const auto& des = owner.dest->des;
        if (des.size() == group.size() + 1 &&
            matches(group, des, std::numeric_limits<unsigned>::max()) == group.size())
            return;
    }
    if (group.size() == 1)
        clusterPair(cls, el, *group.front());
    else if (!less(emcandsGain(el, group, nullptr)))
        clusterNonparts(cls, el, group, true);
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::clusterPair(ClustersT& cls, ItemT& el, ItemT& cand) {
    ClusterT& cl = cls.emplace_back(static_cast<LevelNum>(m_levels.size()), Size{0});
    cl.des.reserve(2);
    const bool ordered = cmpBase(&el, &cand);
    joinItem(ordered ? el : cand, cl);
    joinItem(ordered ? cand : el, cl);
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::clusterNonparts(ClustersT& cls, ItemT& el,
                                                          Candidates<ItemT*>& group, bool) {
    VORL_ASSERT(
        !xpropagated(el.m_context->state) && !el.m_context->parts && group.size() >= 2,
        "clusterNonparts(), the el should not have .parts and group must have at least 2 items");
    ClusterT& cl = cls.emplace_back(static_cast<LevelNum>(m_levels.size()), Size{0});
    cl.des.reserve(group.size() + 1);
    for (ItemT* item : group) joinItem(*item, cl);
    const Owner<ClusterT> owner(&cl);
    el.owners.insert(insortedLight(el.owners, owner, bsDest<Owner<ClusterT>>), owner);
    NodeI<LinksT>* const item = &el;
    cl.des.insert(insorted(cl.des, item, bsVal<NodeI<LinksT>, NodeI<LinksT>>), item);
    VORL_TRACE("  >>> clusterNonparts(), %lu clusters, #%u formed #%u: %lu des\n", cls.size(),
               el.id, cl.id, cl.des.size());
    VORL_ASSERT(!el.owners.empty() && cl.des.size() == group.size() + 1,
                "clusterNonparts(), the cluster should hold the item and the group");
}

#define VORL_INSTANTIATE_ITER(NONSYM, LinksT, IterT) \
    template void HierarchyImpl<NONSYM, LinksT>::rawCluster(IterT, IterT, Clusters<LinksT>&);
#define VORL_INSTANTIATE_ITEM(NONSYM, LinksT, ItemT)                                             \
    template void HierarchyImpl<NONSYM, LinksT>::clusterPair(Clusters<LinksT>&, ItemT&, ItemT&); \
    template void HierarchyImpl<NONSYM, LinksT>::clusterNonparts(Clusters<LinksT>&, ItemT&,      \
                                                                 Candidates<ItemT*>&, bool);
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
