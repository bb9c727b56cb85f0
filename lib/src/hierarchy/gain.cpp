// Gain of a group of items.
#include <vorl/hierarchy/hierarchy_impl.hpp>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::clusterGain(const Items<ItemT*>& group,
                                                           AccWeight gamma) const {
    if (group.empty()) return 0;
    AccWeight wsum = 0;
    AccWeight inner = 0;
    AccWeight parts = 0;
    for (auto ig = group.begin(); ig != group.end(); ++ig) {
        const ItemT& el = **ig;
        const AccWeight w = el.m_context->weight;
        VORL_ASSERT(w != WEIGHT_NONE, "clusterGain(), weight must be precalculated");
        const AccWeight s = el.m_sweight;
        wsum += w;
        inner += s;
        parts += s - (w / m_weight * w) * gamma;

        // The weight of each linked pair, once: with the items behind el.
        const auto& links = el.links;
        auto ln = findDest(links.begin(), links.end(), &el);
        auto id = ig + 1;
        if (links.size() < group.size()) {
            for (; ln != links.end() && id != group.end(); ++ln) {
                id = findItem(id, group.end(), ln->dest);
                if (id == group.end() || *id != ln->dest) continue;
                inner += linkWeight<NONSYMMETRIC>(&el, *ln);
                ++id;
            }
        } else {
            for (; ln != links.end() && id != group.end(); ++id) {
                ln = findDest(ln, links.end(), *id);
                if (ln == links.end() || ln->dest != *id) continue;
                inner += linkWeight<NONSYMMETRIC>(&el, *ln);
                ++ln;
            }
        }
    }
    return inner - (wsum * (wsum / m_weight)) * gamma - parts;
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::emcandsGain(ItemT& el,
                                                           const Candidates<ItemT*>& group,
                                                           AccWeight* cgamma) const {
    VORL_ASSERT(group.size() >= 2, "emcandsGain(), a group should contain at least 2 items");
    Items<ItemT*> items;
    items.reserve(group.size() + 1);
    items = group;
    items.insert(insorted(items, &el, bsVal<ItemT, ItemT>), &el);
    AccWeight gamma = m_gamma < 0 ? dynamicGamma(items) : AccWeight{m_gamma};
    gamma *= m_gammaRatio;
    if (cgamma) *cgamma = gamma;
    return clusterGain(items, gamma);
}

#define VORL_INSTANTIATE_ITEM(NONSYM, LinksT, ItemT)                                          \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::clusterGain(const std::vector<ItemT*>&, \
                                                                  AccWeight) const;           \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::emcandsGain(                            \
        ItemT&, const Candidates<ItemT*>&, AccWeight*) const;
#define VORL_INSTANTIATE(NONSYM, LinksT)                \
    VORL_INSTANTIATE_ITEM(NONSYM, LinksT, Node<LinksT>) \
    VORL_INSTANTIATE_ITEM(NONSYM, LinksT, Cluster<LinksT>)

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE_ITEM
#undef VORL_INSTANTIATE

}  // namespace vorl
