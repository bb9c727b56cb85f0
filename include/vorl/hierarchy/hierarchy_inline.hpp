/// @file
/// Steps of `HierarchyImpl` that walks over links are made of, in place of calls.
#pragma once

#include <vorl/hierarchy/hierarchy_impl.hpp>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::clusterGain(const ItemT& el,
                                                           const typename ItemT::LinkT& ln) const {
    const AccWeight w12 = linkWeight<NONSYMMETRIC>(&el, ln);
    return pairGain(weightsOf(el), weightsOf(*ln.dest), w12,
                    [&] { return std::pair(el.id, ln.dest->id); });
}

template <bool NONSYMMETRIC, class LinksT>
template <class IdsT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::pairGain(const Weights& a, const Weights& b,
                                                        AccWeight w12, IdsT ids) const {
    const auto [w1, s1] = a;
    const auto [w2, s2] = b;
    VORL_ASSERT(w1 != WEIGHT_NONE && w2 != WEIGHT_NONE,
                "clusterGain(), items weights must be defined");
    const AccWeight gamma =
        m_gamma < 0 ? vorl::dynamicGamma(m_weight, w1, s1, w2, s2) : AccWeight{m_gamma};
    const AccWeight score = (w1 / m_weight + w1 / m_weight) * w2 * (m_gammaRatio * gamma);
    if (detail::overflowed(score) || detail::overflowed(w12)) [[unlikely]] {
        const auto [id1, id2] = ids();
        detail::throwOverflow(
            "clusterGain(), score or w12_io overflowed\n", 159,
            "clusterGain(), #%u.%u score or w12_io overflowed: score = %G, w12_io = %G\n", id1, id2,
            score, w12);
    }
    return w12 - score;
}

// The dynamic gamma is the logarithmic mean of two ratios of densities, and that isn't below their
// geometric mean: x1 * x2 = s * t^2 * (t - s) / (w^2 * (t^2 - w^2)), see `newmanGamma`.
template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::isOutbid(ItemT& el, const typename ItemT::LinkT& ln) {
    if constexpr (IS_NODE<ItemT>) {
        return false;
    } else {
        const AccWeight pair = pairBound(ln);
        if (!(pair >= m_boundMin)) return false;
        const AccWeight lost = lostBelow(std::min(gmaxOf(el), gmaxOf(*ln.dest)));
        if (pair < lost) return true;
        if (!(m_gamma < 0)) return false;
        const auto [w1, s1] = weightsOf(el);
        const auto [w2, s2] = weightsOf(*ln.dest);
        const AccWeight s = s1 + s2;
        const AccWeight w = w1 + w2;
        const AccWeight out = (1 - w2 * m_unit) * (w1 - s1) + (1 - w1 * m_unit) * (w2 - s2);
        const AccWeight t = w + out;
        // Nothing is said where rounding could matter, or where the total would be raised.
        if (!(out > 1e-4 * t) || t * m_unit > 1 - 1e-6) return false;
        const AccWeight expected = 2 * w1 * w2 * m_unit * m_gammaRatio * t;
        const AccWeight left = (pair - lost) * (1 + 0x1p-18) * w;
        return expected * expected * s * (t - s) > left * left * out * (t + w);
    }
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT, class VisitT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::visitActive(ItemT& el, VisitT visit) {
    // What a link leads to is seldom at hand, so it is called for some links ahead.
    constexpr std::size_t ahead = 6;
    auto& links = el.links;
    const std::size_t count = links.size();
    if constexpr (IS_NODE<ItemT>) {
        for (std::size_t i = 0; i < count; ++i) {
            if (i + 2 * ahead < count) __builtin_prefetch(&links[i + 2 * ahead].dest->m_context);
            if (i + ahead < count) __builtin_prefetch(links[i + ahead].dest->m_context.get());
            if (!xpropagated(links[i].dest->m_context->state)) visit(links[i]);
        }
    } else {
        // A gain isn't above the weight of the pair. Where both ends have clearly better offers
        // neither will be the other's candidate, nor learn anything of it.
        const AccWeight own = gmaxOf(el);
        m_active.clear();
        for (std::size_t i = 0; i < count; ++i) {
            if (i + 2 * ahead < count) m_marks.prefetch(links[i + 2 * ahead].dest);
            auto& ln = links[i];
            const Mark& mark = m_marks.of(ln.dest);
            if (mark.is(MarksT::PROPAGATED)) continue;
            if (isLight(pairBound(ln), std::min(own, mark.gmax))) continue;
            m_active.push_back(&ln);
        }
        for (std::size_t i = 0; i < m_active.size(); ++i) {
            if (i + ahead < m_active.size()) m_marks.prefetchWeights(m_active[i + ahead]->dest);
            visit(*m_active[i]);
        }
    }
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::joinItem(ItemT& item, ClusterT& cl) {
    const Owner<ClusterT> owner(&cl);
    item.owners.insert(insortedLight(item.owners, owner, bsDest<Owner<ClusterT>>), owner);
    cl.des.push_back(&item);
}

template <bool NONSYMMETRIC, class LinksT>
template <class IterT, class PassT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::prefetchItems(IterT at, IterT last,
                                                        PassT isPassed) const {
    constexpr std::ptrdiff_t ahead = 3;
    constexpr std::size_t linksMax = 24;
    constexpr std::size_t line = 64;
    const auto left = last - at;
    if (left > 3 * ahead && !isPassed(at[3 * ahead])) {
        __builtin_prefetch(&at[3 * ahead]->links);
        __builtin_prefetch(&at[3 * ahead]->m_context);
    }
    if (left > 2 * ahead && !isPassed(at[2 * ahead])) {
        const auto& links = at[2 * ahead]->links;
        const auto* bytes = reinterpret_cast<const char*>(links.data());
        const std::size_t size = std::min(linksMax, links.size()) * sizeof(links[0]);
        for (std::size_t pos = 0; pos < size; pos += line) __builtin_prefetch(bytes + pos);
        __builtin_prefetch(at[2 * ahead]->m_context.get());
    }
    if (left > ahead && !isPassed(at[ahead])) {
        const auto& links = at[ahead]->links;
        const std::size_t count = std::min(linksMax, links.size());
        for (std::size_t i = 0; i < count; ++i) m_marks.prefetch(links[i].dest);
    }
}

}  // namespace vorl
