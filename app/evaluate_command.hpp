// The command `vorl evaluate`.
#pragma once

#include "network_input.hpp"

#include <vorl/reading/cluster_levels.hpp>

#include <string>

namespace vorl::app {

struct EvaluateCommand {
    ReadOptions read;
    std::string clusters;
    ClustersFormat format = ClustersFormat::UNKNOWN;
    bool levels = false;  ///< each level by itself
    float gamma = 1;
    bool strict = false;
    bool json = false;
    bool quiet = false;
};

/// Reads the network and its clusters, measures them and reports.
/// @throws InputError, UsageError
void run(const EvaluateCommand& command);

}  // namespace vorl::app
