// Moves of items to the group with which the partition is likelier.
#pragma once

#include "likelihood.hpp"

namespace vorl::detail {

/// A partition of items with what its groups hold.
struct Partitioned {
    Labels labels;
    std::vector<Holding> groups;
};

/// Moves items to a neighbouring group, or alone into a new one, while that raises the likelihood.
///
/// Each round takes the items in some classes by a hash; those of a class decide at once, from what
/// is there before any of them moves, so that their order is no matter. After the first round only
/// those decide again around which something moved.
/// @param likelihood takes the densities after each round
/// @param idle items that never move
/// @param asleep items that move only after something around them did
/// @return how many moves there were
template <class WeightT>
Size refine(const ItemNetwork<WeightT>& network, Partitioned& partition, Likelihood& likelihood,
            unsigned rounds, Workers& workers, const Idle& idle = {}, const Idle& asleep = {});

extern template Size refine(const ItemNetwork<LinkWeight>&, Partitioned&, Likelihood&, unsigned,
                            Workers&, const Idle&, const Idle&);
extern template Size refine(const ItemNetwork<AccWeight>&, Partitioned&, Likelihood&, unsigned,
                            Workers&, const Idle&, const Idle&);

}  // namespace vorl::detail
