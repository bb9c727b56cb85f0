/// @file
/// Estimates of the resolution gamma, and the conductance of one item.
#pragma once

#include <vorl/types/numbers.hpp>

#include <cmath>

namespace vorl {

/// The log-ratio rule: a resolution estimated from the density inside a partition against the
/// density expected at random, and the same outside. The partition maximises the likelihood of the
/// model behind the rule only if it maximises the modularity at this resolution, too; another one
/// may have more.
///
/// M. E. J. Newman, Equivalence between modularity optimization and maximum likelihood methods for
/// community detection, Phys. Rev. E 94, 052315 (2016), https://doi.org/10.1103/PhysRevE.94.052315
///
/// It is 1 where both densities are equal, or where one of them is no number: weights so far apart
/// that the smaller ones vanish in the total may leave nothing to divide by.
///
/// @param s the observed inner weight
/// @param e the inner weight expected at random
/// @param t the total weight
inline AccWeight newmanGamma(AccWeight s, AccWeight e, AccWeight t) {
    const AccWeight x1 = s / e;
    const AccWeight x2 = (t - s) / (t - e);
    if (equal(x1, x2)) return 1;
    const AccWeight gamma = (x1 - x2) / (std::log(x1) - std::log(x2));
    return std::isnan(gamma) ? 1 : gamma;
}

namespace detail {

/// The total that a dynamic gamma is computed against grows by this factor while it is exceeded.
inline constexpr AccWeight TOTAL_GROWTH = 1.0009765625;

/// Share of an item's weight w that leaves it, s being inside, against the smaller side of the cut
/// in a network of the given weight. Rounding must not push it out of [0, 1].
inline AccWeight cutShare(AccWeight w, AccWeight s, AccWeight weight) {
    const AccWeight ext = w - s;
    const AccWeight denom = w > 0.5 * weight ? weight - w : w;
    if (!(ext > 0)) return 0;
    if (!(ext < denom)) return 1;
    return ext / denom;
}

}  // namespace detail

/// Dynamic gamma of a pair of items with the weights w1, w2 and the self weights s1, s2 in a
/// network of the given weight.
inline AccWeight dynamicGamma(AccWeight weight, AccWeight w1, AccWeight s1, AccWeight w2,
                              AccWeight s2) {
    if (s1 == 0 && s2 == 0) return 1;
    if (equal(s1, w1) && equal(s2, w2)) return 1;
    AccWeight u = weight;
    AccWeight t;
    for (;;) {
        t = (1 - w2 / u) * (w1 - s1) + w1 + ((1 - w1 / u) * (w2 - s2) + w2);
        if (!less(u, t)) break;
        u = t * detail::TOTAL_GROWTH;
    }
    const AccWeight w = w1 + w2;
    return newmanGamma(s1 + s2, w / t * w, t);
}

/// Dynamic gamma of one item with the weight w and the self weight s.
inline AccWeight dynamicGamma(AccWeight w, AccWeight s) {
    if (s == 0 || equal(s, w)) return 1;
    const AccWeight t = w - s + w;
    return newmanGamma(s, w / t * w, t);
}

}  // namespace vorl
