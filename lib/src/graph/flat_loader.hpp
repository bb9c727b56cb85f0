// Assembly of a flat network of gathered links.
#pragma once

#include "loader.hpp"

#include <vorl/flat_network.hpp>

namespace vorl::detail {

/// The flat network of the graph that the loader makes of the same links, made without it.
/// @param links    are spent
/// @param ids      of the nodes, by number
/// @param directed whether an edge is two arcs, of which an arc may repeat one
/// @param[out] distinct number of links that no earlier one stands for, self links among them
FlatNetwork loadFlat(LinkGatherer& links, std::vector<Id> ids, bool directed, Size& distinct);

}  // namespace vorl::detail
