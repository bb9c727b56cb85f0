// Merging of items along pointers to their best neighbours, and the best cut through the merges.
#pragma once

#include "likelihood.hpp"
#include "similarity.hpp"

#include <vector>

namespace vorl::detail {

/// Merges in steps. Step i maps the items of its height to those of the next one.
struct Merges {
    std::vector<Labels> steps;
    std::vector<Id> counts;  // of the items after each step
};

/// Merges nodes by the gain of modularity on similar links, inside each group for itself.
///
/// Every item points to the neighbour with the best gain, and what hangs together by pointers
/// merges (O. Boruvka's rounds, 1926, with gains for lengths); again with what was merged, until no
/// gain is positive. The weights of a group are those inside it, so that its structure counts and
/// not what is around.
/// @param similar its holdings are overwritten
/// @param groups the group of each node
/// @param idle groups that stay as they are, and merge whole in the first step
Merges mergeSimilar(SimilarLinks& similar, const Labels& groups, Id count, Workers& workers,
                    const Idle& idle = {});

/// Merges groups by the gain of likelihood, in the same way.
Merges mergeLikely(ItemNetwork<AccWeight> network, const Likelihood& likelihood, Workers& workers);

/// The likeliest partition whose parts are items of any height, found from the bottom up.
/// @param base what the items below the first step hold
/// @param heights what those after each step hold
/// @return the parts as labels of the items below the first step
Labels likeliestCut(const Merges& merges, const std::vector<Holding>& base,
                    const std::vector<std::vector<Holding>>& heights, const Likelihood& likelihood);

}  // namespace vorl::detail
