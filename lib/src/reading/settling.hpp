// What is made of clusters once all members are there, whatever their format.
#pragma once

#include <vorl/reading/clusters_file.hpp>

namespace vorl::detail {

/// Fills in the nodes, and whether there are several levels.
/// @param toldClusters  number of clusters by the header, 0 if it doesn't tell
void settleNodes(ClustersFile& file, Size toldClusters = 0);
/// Looks for deviations of the shares, which levels have each for itself.
void settleShares(ClustersFile& file);

}  // namespace vorl::detail
