// Modularity, conductance and the estimates of gamma.
#include <vorl/hierarchy/hierarchy_impl.hpp>

namespace vorl {

namespace {

template <class ItemsT>
std::uint32_t countItems(Ilistptrc<ItemsT> items) {
    std::uint32_t count = 0;
    for (const ItemsT* els : items) count += static_cast<std::uint32_t>(els->size());
    return count;
}

}  // namespace

template <bool NONSYMMETRIC, class LinksT>
template <class IItemXT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::modularity(IItemXT first, IItemXT last,
                                                          AccWeight gamma) {
    VORL_ASSERT(m_weight != 0 && m_weight != WEIGHT_NONE, "modularity(), m_weight must be defined");
    if (first == last) return 0;
    const bool initialise = !detail::itemAt(first).m_context;
    AccWeight sum = 0;
    for (; first != last; ++first) {
        auto& el = detail::itemAt(first);
        if (initialise) initItem(el);
        const AccWeight w = el.m_context->weight;
        const AccWeight s = el.m_sweight;
        AccWeight itemGamma = gamma;
        if (gamma == WEIGHT_NONE) {
            const AccWeight base = m_gamma < 0 ? vorl::dynamicGamma(w, s) : AccWeight{m_gamma};
            itemGamma = m_gammaRatio * base;
        }
        sum += s - (w / m_weight * w) * itemGamma;
    }
    return sum / m_weight;
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemsT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::conductance(Ilistptrc<ItemsT> items) const {
    const std::uint32_t count = countItems(items);
    if (count < 2) return 1;
    AccWeight sum = 0;
    for (const ItemsT* els : items)
        for (const auto* el : *els) {
            const AccWeight w = el->m_context->weight;
            if (less(AccWeight{0}, w)) sum += detail::cutShare(w, el->m_sweight, m_weight);
        }
    VORL_ASSERT(!(sum < 0) && !less(static_cast<AccWeight>(count), sum),
                "conductance(), conductance validation failed");
    return sum / count;
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemsT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::staticGamma(Ilistptrc<ItemsT> items,
                                                           AccWeight* cond) const {
    const std::uint32_t count = countItems(items);
    if (count < 2 && cond) *cond = 1;
    if (items.size() == 0) return 1;
    AccWeight s = 0;
    for (const ItemsT* els : items)
        for (const auto* el : *els) s += el->m_sweight;
    if (s == 0 || equal(s, m_weight)) return 1;

    const bool measure = cond && count >= 2;
    AccWeight ww = 0;
    AccWeight sum = 0;
    for (const ItemsT* els : items)
        for (const auto* el : *els) {
            const AccWeight w = el->m_context->weight;
            if (!less(AccWeight{0}, w)) continue;
            ww += w * w;
            if (measure) sum += detail::cutShare(w, el->m_sweight, m_weight);
        }
    if (measure) {
        VORL_ASSERT(!(sum < 0) && !less(static_cast<AccWeight>(count), sum),
                    "staticGamma(), conductance validation failed");
        *cond = sum / count;
    }
    return newmanGamma(s, ww / m_weight, m_weight);
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::dynamicGamma(const Items<ItemT*>& items) const {
    VORL_ASSERT(items.size() >= 3, "dynamicGamma() n, should be called for at least 3 items");
    AccWeight s = 0;
    AccWeight w = 0;
    for (const ItemT* el : items) {
        s += el->m_sweight;
        w += el->m_context->weight;
    }
    if (equal(s, AccWeight{0}) || equal(s, w)) return 1;
    AccWeight u = m_weight;
    AccWeight t;
    for (;;) {
        t = 0;
        for (const ItemT* el : items) {
            const AccWeight wi = el->m_context->weight;
            t += wi + (wi - el->m_sweight) * (1 - (w - wi) / u);
        }
        if (!less(u, t)) break;
        u = t * detail::TOTAL_GROWTH;
    }
    return newmanGamma(s, w / t * w, t);
}

template <bool NONSYMMETRIC, class LinksT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::avgdynGammaApx(const Items<ClusterT*>& items,
                                                              bool) const {
    VORL_ASSERT(!items.empty(), "avgdynGammaApx(), clusters should be non-empty");
    AccWeight sum = 0;
    for (const ClusterT* el : items) {
        const AccWeight w = el->m_context->weight;
        sum += vorl::dynamicGamma(w, el->m_sweight) * w;
    }
    return sum / m_weight;
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                                  \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::modularity(                         \
        Nodes<LinksT>::iterator, Nodes<LinksT>::iterator, AccWeight);                     \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::modularity(                         \
        Clusters<LinksT>::iterator, Clusters<LinksT>::iterator, AccWeight);               \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::modularity(                         \
        std::vector<Cluster<LinksT>*>::iterator, std::vector<Cluster<LinksT>*>::iterator, \
        AccWeight);                                                                       \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::conductance(                        \
        Ilistptrc<std::vector<Cluster<LinksT>*>>) const;                                  \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::staticGamma(                        \
        Ilistptrc<std::vector<Cluster<LinksT>*>>, AccWeight*) const;                      \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::dynamicGamma(                       \
        const std::vector<Node<LinksT>*>&) const;                                         \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::dynamicGamma(                       \
        const std::vector<Cluster<LinksT>*>&) const;                                      \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::avgdynGammaApx(                     \
        const std::vector<Cluster<LinksT>*>&, bool) const;

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
