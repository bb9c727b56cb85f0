// The command `vorl show`.
#pragma once

#include <vorl/types/numbers.hpp>

#include <optional>
#include <string>

namespace vorl::app {

struct ShowCommand {
    std::string file;
    std::optional<std::string> node;  ///< an id or a name
    std::optional<Id> cluster;
    bool json = false;
};

/// Tells what a hierarchy holds, where a node of it belongs, or what one of its clusters is.
/// @throws InputError
void run(const ShowCommand& command);

}  // namespace vorl::app
