// The command `vorl extract`.
#pragma once

#include "network_input.hpp"

#include <vorl/reading/cluster_levels.hpp>

#include <optional>
#include <string>

namespace vorl::app {

struct ExtractCommand {
    ReadOptions read;
    std::string clusters;
    ClustersFormat clustersFormat = ClustersFormat::UNKNOWN;
    std::optional<Id> cluster;      ///< whose nodes and links are wanted
    bool quotient = false;          ///< the network of the clusters is wanted
    std::optional<LevelNum> level;  ///< of the clusters of the quotient
    std::string output = "-";
    NetworkFormat format =
        NetworkFormat::UNKNOWN;  ///< of the output, told from its name where unknown
    bool parents = false;        ///< folders that the output lacks are created
    bool quiet = false;
};

/// Writes the part of a network that lies in a cluster, or the network that clusters form.
/// @throws InputError, UsageError
void run(const ExtractCommand& command);

}  // namespace vorl::app
