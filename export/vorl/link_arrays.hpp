/// @file
/// Networks of links that a caller has in arrays.
#pragma once

#include <vorl/flat_network.hpp>
#include <vorl/graph.hpp>
#include <vorl/types/export.hpp>

#include <memory>
#include <span>
#include <variant>

namespace vorl {

/// Links (sources[i], destinations[i]), which make the network that a file of them makes: nodes
/// stand in the order in which they come, and repeated links are left out or added up. But a link
/// of weight 0 is none, though its ends are nodes.
struct LinkArrays {
    std::span<const Id> sources = {};
    std::span<const Id> destinations = {};
    std::span<const LinkWeight> weights = {};  ///< one for each link; none where all weigh 1
    std::span<const Id> nodes = {};            ///< come before those of the links
    bool directed = false;
    /// Whether the weights of repeated links are added up; else the first one counts alone.
    bool sumDuplicates = false;
};

/// @name The network of links in arrays
/// @throws std::invalid_argument if the lengths differ, an id is ID_NONE, or a weight is negative,
///     infinite or no number
/// @throws Cancelled if the progress that the calling thread listens with says so
/// @{

/// Directions are added up, as by `readUndirected`.
VORL_API FlatNetwork flatNetwork(const LinkArrays& arrays);

/// As by `readNetwork`: arcs are weighted, edges are so where there are weights or sums.
VORL_API std::variant<std::shared_ptr<Graph<false>>, std::shared_ptr<Graph<true>>> graphOf(
    const LinkArrays& arrays);
/// @}

}  // namespace vorl
