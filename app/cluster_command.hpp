// The command `vorl cluster`.
#pragma once

#include "network_input.hpp"

#include <vorl/types/options.hpp>

#include <string>

namespace vorl::app {

struct ClusterCommand {
    ReadOptions read;
    ClusterOptions build;
    std::string output;  ///< file to write; nothing is written where it is empty
    bool json = false;
    bool trace = false;
    bool quiet = false;
};

/// Reads, clusters, writes and reports.
/// @throws InputError, UsageError, and what the library throws
void run(const ClusterCommand& command);

}  // namespace vorl::app
