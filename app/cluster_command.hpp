// The command `vorl cluster`.
#pragma once

#include "hierarchy_files.hpp"
#include "network_input.hpp"

#include <vorl/types/options.hpp>

#include <vector>

namespace vorl::app {

struct ClusterCommand {
    ReadOptions read;
    /// The resolutions to cluster at, one after the other; -1 finds it by itself.
    std::vector<float> gammas{-1.f};
    ClusterOptions build;  ///< its gamma isn't looked at
    OutputRequest output;
    std::string table;          ///< file of the table, none if empty
    bool levelMeasures = true;  ///< modularity and conductance of each level are told
    bool json = false;
    bool trace = false;
    bool quiet = false;
};

/// Reads, clusters, writes and reports.
/// @throws InputError, UsageError, and what the library throws
void run(const ClusterCommand& command);

}  // namespace vorl::app
