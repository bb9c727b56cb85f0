// The command `vorl view`.
#pragma once

#include "network_input.hpp"

#include <vorl/reading/cluster_levels.hpp>
#include <vorl/view.hpp>

#include <optional>
#include <string>

namespace vorl::app {

/// Kinds of pictures: a page for browsers, and a map.
enum class Picture { UNKNOWN, HTML, SVG };

struct ViewCommand {
    ReadOptions read;
    std::string clusters;  ///< file of clusters or a hierarchy; they are sought if empty
    ClustersFormat clustersFormat = ClustersFormat::UNKNOWN;
    std::string output;
    Picture picture = Picture::UNKNOWN;  ///< told from the name of the output where unknown
    std::optional<LevelNum> level;       ///< that is shown first
    bool allLevels = false;              ///< shown, and not those alone that differ enough
    std::optional<std::string> title;    ///< the name of the network's file if not given
    unsigned threads = 0;                ///< 0 for as many as there are
    bool parents = false;                ///< folders that the output lacks are created
    bool quiet = false;
};

/// Writes a picture of the clusters of a network.
/// @throws InputError, UsageError
void run(const ViewCommand& command);

}  // namespace vorl::app
