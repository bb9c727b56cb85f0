// The command `vorl evaluate`.
#pragma once

#include "network_input.hpp"

#include <string>

namespace vorl::app {

struct EvaluateCommand {
    ReadOptions read;
    std::string clusters;
    float gamma = 1;
    bool strict = false;
    bool json = false;
    bool quiet = false;
};

/// Reads the network and its clusters, measures them and reports.
/// @throws InputError, UsageError
void run(const EvaluateCommand& command);

}  // namespace vorl::app
