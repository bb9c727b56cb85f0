/// @file
/// Enumerations, with the numeric values that the bindings hand over.
#pragma once

#include <cstdint>

namespace vorl {

/// Validation of the input links.
enum class Validation : std::uint8_t { NONE = 0, STANDARD = 0xAA, SEVERE = 0xFF };

/// Speedup of the clustering. `COARSE` and `ORDERDEP` behave alike: an item doesn't raise the best
/// gain of its neighbours, so that the candidates depend on the order of the items.
enum class Speedup : std::uint8_t { NONE = 0, COARSE = 0xAA, ORDERDEP = 0xFF };

/// Link reduction: a core value in the low four bits, and flags.
enum class Reduction : std::uint8_t {
    NONE = 0,
    ACCURATE = 1,
    MEAN = 2,
    SEVERE = 3,
    CORE_MASK = 0x0F,
    SKIP_NODES = 0x10,
    SKIP_CLUSTERS = 0x20,
    SKIP_MASK = 0x30,
    CRITERIA_WEIGHT = 0x80,
    CRITERIA_MASK = 0x80
};

/// The clustering algorithm that the library is built with; reported, never chosen at run time.
enum class Clustering : std::uint8_t {
    CRISP_OVP = 1,
    FUZZY_OVP = 3,
    NDET_COARSE = 8,
    CHAINS_EXTRA = 0x10,
    MCANDS_NOFLT = 0x20,
    OVERLAP_LINKS = 0x40,
    AUTO_GAMMA = 0x80
};

/// State of an item during a level: a field in the low three bits, and flags.
enum class State : std::uint8_t {
    UNDEFINED = 0,
    PERPAIR = 5,         ///< the item clusters with its candidates pair by pair
    FURTHERPROP = 0x08,  ///< goes up once more without an evaluation
    PROPAGATED = 0x10,   ///< takes no further part in the level
    INTERLEVPROP = 0x80  ///< carried over levels
};

/// How the margins of the custom levels are read.
enum class LevMargKind : std::uint8_t { NONE = 0, CLSNUM = 0x55, LEVID = 0xAA, LEVSTEPNUM = 0xFF };

/// Size function for the least size of a significant cluster.
enum class SzFnName : std::uint8_t {
    NONE = 0,
    CLSSZ_ROOT2 = 2,
    CLSSZ_ROOT4 = 4,
    CLSSZ_LOG2 = 0x12,
    CLSSZ_LOGE = 0x13
};

/// Formats of files.
enum class FileFormat : std::uint8_t {
    UNKNOWN = 0,
    RCG = 1,
    DEFAULT_INPUT = RCG,
    NSE = 2,
    NSA = 3,
    CNL = 4,
    RHB = 5
};

/// Mask of `ClsOutFmt` values.
using ClsOutFmtBase = std::uint8_t;

/// What is written: the output structure, the filtering and the file format.
enum class ClsOutFmt : ClsOutFmtBase {
    NONE = 0,
    ROOT = 1,
    PERLEVEL = 2,
    CUSTLEVS = 3,
    CUSTLEVS_APPROXNUM = 4,
    ALLCLS = 5,
    HIER = 6,
    SIGNIF_OWNSDIR = 8,
    RANGE_SIGNIF_LOW = SIGNIF_OWNSDIR,
    SIGNIF_OWNADIR = 9,
    SIGNIF_OWNSHIER = 10,
    SIGNIF_OWNAHIER = 11,
    SIGNIF_DEFAULT = 12,
    RANGE_SIGNIF_HIGH = SIGNIF_DEFAULT,
    MASK_OUTSTRUCT = 0x0F,
    MAXSHARE = 0x10,
    MASK_FILTERING = 0x10,
    PURE = 0x20,
    SIMPLE = 0x40,
    SHARED = 0x80,
    EXTENDED = 0xC0,
    MASK_FILEFMT = 0xE0,
    DEFAULT = 0xC5
};

/// Intrinsic measures to compute.
enum class IntrinsicsFlags : std::uint8_t {
    NONE = 0,
    CONDUCTANCE = 1,
    MODULARITY = 2,
    GAMMA = 4,
    ALL = 0xFF
};

template <class FlagT>
constexpr std::uint8_t toMask(FlagT value) {
    return static_cast<std::uint8_t>(value);
}

constexpr State toState(std::uint8_t mask) { return static_cast<State>(mask); }
constexpr Clustering toClustering(std::uint8_t mask) { return static_cast<Clustering>(mask); }
constexpr ClsOutFmt toClsOutFmt(std::uint8_t mask) { return static_cast<ClsOutFmt>(mask); }
constexpr SzFnName toSzFnName(std::uint8_t mask) { return static_cast<SzFnName>(mask); }
constexpr LevMargKind toLevMargKind(std::uint8_t mask) { return static_cast<LevMargKind>(mask); }
constexpr Reduction toReduction(std::uint8_t mask) { return static_cast<Reduction>(mask); }
constexpr Speedup toSpeedup(std::uint8_t mask) { return static_cast<Speedup>(mask); }
constexpr Validation toValidation(std::uint8_t mask) { return static_cast<Validation>(mask); }
constexpr IntrinsicsFlags toIntrinsicsFlags(std::uint8_t mask) {
    return static_cast<IntrinsicsFlags>(mask);
}

constexpr State operator&(State state, std::uint8_t mask) { return toState(toMask(state) & mask); }
constexpr std::uint8_t operator&(State a, State b) { return toMask(a) & toMask(b); }
constexpr std::uint8_t operator|(State a, State b) { return toMask(a) | toMask(b); }
constexpr std::uint8_t operator|(std::uint8_t mask, State state) { return mask | toMask(state); }
constexpr std::uint8_t operator~(State state) { return static_cast<std::uint8_t>(~toMask(state)); }
constexpr bool operator==(State state, std::uint8_t mask) { return toMask(state) == mask; }
constexpr State& operator&=(State& state, std::uint8_t mask) { return state = state & mask; }
constexpr State& operator&=(State& state, State other) { return state = toState(state & other); }
constexpr State& operator|=(State& state, std::uint8_t mask) {
    return state = toState(toMask(state) | mask);
}
constexpr State& operator|=(State& state, State other) { return state = toState(state | other); }

constexpr Clustering operator&(Clustering value, std::uint8_t mask) {
    return toClustering(toMask(value) & mask);
}
constexpr std::uint8_t operator&(Clustering a, Clustering b) { return toMask(a) & toMask(b); }
constexpr Clustering operator|(Clustering a, Clustering b) {
    return toClustering(toMask(a) | toMask(b));
}

constexpr ClsOutFmtBase operator&(ClsOutFmt a, ClsOutFmt b) { return toMask(a) & toMask(b); }
constexpr ClsOutFmtBase& operator&=(ClsOutFmtBase& mask, ClsOutFmt flag) {
    return mask &= toMask(flag);
}
constexpr ClsOutFmtBase& operator|=(ClsOutFmtBase& mask, ClsOutFmt flag) {
    return mask |= toMask(flag);
}

constexpr Reduction operator&(Reduction a, Reduction b) {
    return toReduction(toMask(a) & toMask(b));
}
constexpr Reduction operator|(Reduction a, Reduction b) {
    return toReduction(toMask(a) | toMask(b));
}
constexpr Reduction operator~(Reduction value) {
    return toReduction(static_cast<std::uint8_t>(~toMask(value)));
}
constexpr Reduction& operator&=(Reduction& a, Reduction b) { return a = a & b; }
constexpr Reduction& operator|=(Reduction& a, Reduction b) { return a = a | b; }

constexpr IntrinsicsFlags operator&(IntrinsicsFlags a, IntrinsicsFlags b) {
    return toIntrinsicsFlags(toMask(a) & toMask(b));
}
/// Assigns the bitwise AND of both: a settled trait of the interface, flags are not added by it.
constexpr IntrinsicsFlags operator|=(IntrinsicsFlags& a, IntrinsicsFlags b) { return a = a & b; }

/// The item takes no further part in the level.
constexpr bool xpropagated(State state) { return toMask(state) & toMask(State::PROPAGATED); }
/// The item is carried over levels.
constexpr bool xinterlevprop(State state) { return toMask(state) & toMask(State::INTERLEVPROP); }
/// Folding found nothing new around the item.
constexpr bool xfurtherprop(State state) { return toMask(state) & toMask(State::FURTHERPROP); }
/// The item clusters pair by pair.
constexpr bool xperpair(State state) { return (toMask(state) & 7) == toMask(State::PERPAIR); }

}  // namespace vorl
