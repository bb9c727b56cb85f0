// Sharing out of nodes that belong to several communities.
#pragma once

#include "search.hpp"

#include <vorl/communities.hpp>

namespace vorl::detail {

/// The communities of each node, the largest share first.
struct Shares {
    std::vector<Size> first;  // of each node, and the end of the last one's
    std::vector<CommunityShare> parts;

    std::span<const CommunityShare> of(Size node) const {
        return {parts.data() + first[node], parts.data() + first[node + 1]};
    }
};

/// Lets nodes share in several communities where that makes their links likelier by more than it
/// costs to name those, and how common shared nodes are is learnt from the network.
///
/// A node with the shares s in communities of the density d times that of the outside has links to
/// them by chance with the density s d; its shares go by the weight of its links to each.
Shares shareOut(const ItemNetwork<LinkWeight>& network, const Found& found, Workers& workers);

}  // namespace vorl::detail
