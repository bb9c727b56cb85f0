/// @file
/// The network that clusters form.
#pragma once

#include <vorl/reading/clusters_file.hpp>
#include <vorl/reading/network.hpp>
#include <vorl/reading/network_scan.hpp>

#include <vector>

namespace vorl {

/// Links between clusters, and inside them as links of a cluster to itself.
struct Quotient {
    std::vector<RawLink> links;  ///< each once, by the clusters in the file's order
    Size uncovered = 0;          ///< nodes of the network that are in no cluster
    Size linkless = 0;           ///< clusters without any link
};

/// The network whose nodes are clusters: a link of the network adds its weight, times the shares of
/// both ends, to the links between their clusters, and the self link of a node adds it, times the
/// share, to that of the cluster. As a self link counts twice, that of a cluster has half the
/// weight of the arcs inside. So the weights of clusters stay, and with them what is measured.
///
/// The nodes bear the ids of the clusters, or their places from 1 on where these have none.
/// @throws InputError for a cluster's id that stands twice, and for a node that the network lacks
VORL_API Quotient quotientOf(const Network& network, const ClustersFile& clusters);

}  // namespace vorl
