/// @file
/// Operations that callers and bindings share.
#pragma once

#include <vorl/fileio/parser_cnl.hpp>
#include <vorl/graph.hpp>
#include <vorl/processing/intrinsics.hpp>

#include <string>

namespace vorl {

/// Measures the clusters of a file on a network.
///
/// Shares of nodes count at both ends of a link. A network without a cut between the clusters has
/// the conductance 0, and clusters without weight are left out of it.
///
/// @param[out] intr takes all measures, `mod` at the given gamma
/// @param graph the network; spent by the call
/// @param filename a file in the format CNL
/// @param gamma resolution of the modularity, not negative
/// @param validation whether and how the links are validated beforehand
/// @return the number of clusters
/// @throws std::invalid_argument for a file without clusters, a network without weight or a
///     negative gamma
/// @throws as `loadClusters`
template <class GraphT>
VORL_API Size evaluateClusters(Intrinsics& intr, GraphT& graph, const std::string& filename,
                               AccWeight gamma = 1, Validation validation = Validation::STANDARD);

}  // namespace vorl
