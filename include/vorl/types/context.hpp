/// @file
/// The working state of an item during a level.
#pragma once

#include <vorl/types/flags.hpp>
#include <vorl/types/numbers.hpp>
#include <vorl/types/partition.hpp>

#include <memory>
#include <vector>

namespace vorl {

/// Mutual candidates of an item, ascending by address.
template <class ItemPtrT>
using Candidates = std::vector<ItemPtrT>;

/// Number of mutual candidates without partitions, while it isn't counted.
inline constexpr std::uint16_t NPARTMCS_NONE = 0xFFFF;

template <class ItemT>
struct Context {
    AccWeight weight = WEIGHT_NONE;  ///< total in-out weight, self weight included
    AccWeight gmax = GAIN_NONE;      ///< best gain among the candidates
    Candidates<ItemT*> cands;
    std::unique_ptr<Partitions<ItemT>> parts;  ///< made only where candidates form chains
    State state = State::UNDEFINED;
    std::uint16_t npartmcs = NPARTMCS_NONE;  ///< number of candidates that have no `parts`

    /// Prepares the context of a propagated cluster for the next level; `weight` survives, and
    /// of a cluster carried over levels the candidates do as well.
    void tidysmart() {
        const State prev = state;
        state = toState(prev & State::INTERLEVPROP);
        if (!xinterlevprop(prev)) {
            gmax = GAIN_NONE;
            Candidates<ItemT*>().swap(cands);
        } else if (xfurtherprop(prev)) {
            state |= State::PROPAGATED;
        }
        npartmcs = NPARTMCS_NONE;
        parts.reset();
    }
};

}  // namespace vorl
