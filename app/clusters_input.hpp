// What the commands ask of the clusters that they read.
#pragma once

#include <vorl/reading/cluster_levels.hpp>

#include <string>

namespace vorl::app {

struct ClustersOptions {
    ClustersFormat format = ClustersFormat::UNKNOWN;
    bool strict = false;  ///< deviations are faults
    bool levels = false;  ///< each level is looked at by itself
    bool shares = true;   ///< the use of the clusters looks at shares
    bool quiet = false;
    std::shared_ptr<Labels> known = {};  ///< names that those of the file join
};

/// Reads clusters, and tells on standard error how they stray from the strict form and what of
/// several levels counts.
/// @throws InputError
ClusterLevels readClusters(const std::string& file, const ClustersOptions& options);

/// A hierarchy from a file in the format RHB.
/// @throws InputError
HierarchyFile readHierarchy(const std::string& file);

}  // namespace vorl::app
