// The command `vorl info`.
#pragma once

#include "network_input.hpp"

namespace vorl::app {

struct InfoCommand {
    ReadOptions read;
    bool json = false;
    bool estimate = false;  ///< of the memory and time of clustering
};

/// Tells what the file of a network holds.
/// @throws InputError, UsageError
void run(const InfoCommand& command);

}  // namespace vorl::app
