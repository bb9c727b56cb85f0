// The command `vorl cut`.
#pragma once

#include <vorl/types/numbers.hpp>

#include <optional>
#include <string>

namespace vorl::app {

struct CutCommand {
    std::string file;
    std::string output = "-";
    std::optional<LevelNum> level;
    std::optional<Id> clusters;  ///< wanted number of them, in place of the level
    bool parents = false;        ///< folders that the output lacks are created
    bool quiet = false;
};

/// Writes the clusters of one level of a hierarchy.
/// @throws InputError, UsageError
void run(const CutCommand& command);

}  // namespace vorl::app
