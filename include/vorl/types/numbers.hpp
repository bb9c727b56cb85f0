/// @file
/// Scalars, their sentinels, and the tolerant comparison on which every tie rests.
#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>

namespace vorl {

/// Identifier of a node or cluster; the largest that an item may bear is ID_MAX - 1.
using Id = std::uint32_t;
/// Counts of items and links.
using Size = std::uint64_t;
/// Weight of one input link, and of a node's self weight.
using LinkWeight = float;
/// Accumulated weight, gain or term of the modularity.
using AccWeight = double;
/// Share of a node's membership in a cluster, in [0, 1].
using Share = float;
/// Number or index of a level of the hierarchy.
using LevelNum = std::uint32_t;
/// Bound on the size of the root.
using Coupling = std::uint16_t;

inline constexpr Id ID_NONE = 0xFFFFFFFF;
inline constexpr Id ID_MAX = ID_NONE;
/// A weight that isn't computed yet; 0 is a defined weight. Tested exactly, never tolerantly.
inline constexpr LinkWeight WEIGHT_NONE = -std::numeric_limits<LinkWeight>::max();
inline constexpr LinkWeight GAIN_NONE = WEIGHT_NONE;
inline constexpr LevelNum LEVEL_NONE = 0xFFFFFFFF;
inline constexpr LevelNum LEVEL_MAX = LEVEL_NONE;
inline constexpr Coupling COUPLING_NONE = 0xFFFF;
inline constexpr Coupling COUPLING_MAX = COUPLING_NONE;

/// Bound of an accumulated weight; what lies beyond has overflowed.
inline constexpr AccWeight ACCWEIGHT_MAX = std::numeric_limits<AccWeight>::max();

namespace detail {

/// Relative tolerance of 32-bit comparisons, 2^-24.
inline constexpr double WEIGHT_EPS = 5.960464477539063e-8;
/// Relative tolerance of 64-bit comparisons, 2^-53.
inline constexpr double ACCWEIGHT_EPS = 1.1102230246251565e-16;

/// More than rounding can make of a comparison, and far less than the tolerance.
inline constexpr double CLEAR = 0x1p-40;

inline double tolerance(Size n) {
    return n == 1 ? WEIGHT_EPS : WEIGHT_EPS * (std::log2(static_cast<double>(n)) + 1);
}

/// 32-bit floats overflow to infinity here, as the comparisons expect.
inline LinkWeight narrow(AccWeight value) { return static_cast<LinkWeight>(value); }

}  // namespace detail

/// Whether a is less than b beyond the tolerance for a value accumulated from n terms.
///
/// 64-bit values are narrowed, so that gains computed at 64 bits are ordered at 32-bit precision.
/// The tolerance is relative, 2^-24 times (log2(n) + 1) of the mean magnitude; `less(a)` is the
/// test for a negative value.
inline bool less(LinkWeight a, LinkWeight b = 0, Size n = 1) {
    if (a >= b) return false;
    LinkWeight diff = a - b;
    diff *= 2;
    const double scale =
        std::fabs(static_cast<double>(b)) + std::fabs(static_cast<double>(a)) + detail::WEIGHT_EPS;
    const double tolerance = detail::tolerance(n);
    // Nearly always the answer is clear without the division.
    const double excess = static_cast<double>(diff) + scale * tolerance;
    if (std::fabs(excess) > scale * detail::CLEAR) return excess < 0;
    return static_cast<double>(diff) / scale + tolerance < 0;
}

/// Whether a and b are equal within the tolerance for a value accumulated from n terms.
inline bool equal(LinkWeight a, LinkWeight b = 0, Size n = 1) {
    const double diff = 2 * static_cast<double>(std::fabs(a - b));
    const double scale =
        std::fabs(static_cast<double>(b)) + std::fabs(static_cast<double>(a)) + detail::WEIGHT_EPS;
    return diff / scale <= detail::tolerance(n);
}

inline bool less(AccWeight a, AccWeight b = 0, Size n = 1) {
    return less(detail::narrow(a), detail::narrow(b), n);
}

inline bool equal(AccWeight a, AccWeight b = 0, Size n = 1) {
    return equal(detail::narrow(a), detail::narrow(b), n);
}

/// Whole numbers compare as weights.
template <std::integral ValueT>
bool less(ValueT a, ValueT b = 0, Size n = 1) {
    return less(static_cast<AccWeight>(a), static_cast<AccWeight>(b), n);
}

template <std::integral ValueT>
bool equal(ValueT a, ValueT b = 0, Size n = 1) {
    return equal(static_cast<AccWeight>(a), static_cast<AccWeight>(b), n);
}

}  // namespace vorl
