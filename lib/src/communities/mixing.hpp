// A hash that spreads numbers which follow each other.
#pragma once

#include <vorl/types/numbers.hpp>

namespace vorl::detail {

/// Steele, Lea, Flood, Fast splittable pseudorandom number generators, OOPSLA (2014).
inline std::uint32_t mixed(Id number, std::uint32_t round) {
    std::uint64_t z = number * std::uint64_t{0x9E3779B97F4A7C15} +
                      (round + std::uint64_t{1}) * std::uint64_t{0xBF58476D1CE4E5B9};
    z = (z ^ (z >> 30)) * std::uint64_t{0xBF58476D1CE4E5B9};
    z = (z ^ (z >> 27)) * std::uint64_t{0x94D049BB133111EB};
    return static_cast<std::uint32_t>((z ^ (z >> 31)) >> 32);
}

}  // namespace vorl::detail
