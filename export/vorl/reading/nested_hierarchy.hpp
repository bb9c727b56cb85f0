/// @file
/// The hierarchy of clusters that lie inside each other.
#pragma once

#include <vorl/reading/clusters_file.hpp>
#include <vorl/reading/hierarchy_file.hpp>
#include <vorl/types/export.hpp>

namespace vorl {

/// The hierarchy that the clusters of a file form. Its levels are those of
/// `ClustersFile::nestedLevels` where there are several, else there is one.
///
/// A node is owned by those of its clusters that have none of its others inside, a cluster by the
/// smallest ones around it. Shares of nodes are the stated ones, scaled to add up to 1, those of
/// clusters are even. Clusters bear their ids, or their places from 1 on where they have none.
VORL_API HierarchyFile nestedHierarchy(const ClustersFile& clusters);

}  // namespace vorl
