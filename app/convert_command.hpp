// The command `vorl convert`.
#pragma once

#include "network_input.hpp"

#include <string>

namespace vorl::app {

struct ConvertCommand {
    ReadOptions read;
    std::string output;
    NetworkFormat format =
        NetworkFormat::UNKNOWN;  ///< of the output, told from its name where unknown
    bool parents = false;        ///< folders that the output lacks are created
    bool quiet = false;
};

/// Writes a network in another format: the same links, in the same order, with the same weights.
/// @throws InputError, also if the format can't hold the network; UsageError
void run(const ConvertCommand& command);

}  // namespace vorl::app
