// The command `vorl cluster`.
#pragma once

#include "hierarchy_files.hpp"
#include "network_input.hpp"

#include <vorl/types/options.hpp>

namespace vorl::app {

struct ClusterCommand {
    ReadOptions read;
    ClusterOptions build;
    OutputRequest output;
    bool json = false;
    bool trace = false;
    bool quiet = false;
};

/// Reads, clusters, writes and reports.
/// @throws InputError, UsageError, and what the library throws
void run(const ClusterCommand& command);

}  // namespace vorl::app
