/// @file
/// Measures of clusters that were read, on a network that was.
#pragma once

#include <vorl/processing/intrinsics.hpp>
#include <vorl/reading/clusters_file.hpp>
#include <vorl/reading/network.hpp>
#include <vorl/types/export.hpp>

#include <string>

namespace vorl {

/// Measures clusters, as `evaluateClusters` does with the file of their strict form.
/// @param network  is spent
/// @param name     of the network's file, for messages
/// @param gamma    resolution of the modularity, from 0 on
/// @throws InputError for the first member that isn't a node of the network, with file and line
/// @throws as `evaluateClusters`
VORL_API Intrinsics evaluateClusters(Network& network, ClustersFile clusters,
                                     const std::string& name, AccWeight gamma = 1);

}  // namespace vorl
