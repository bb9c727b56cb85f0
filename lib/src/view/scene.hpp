// What both pictures are made of.
#pragma once

#include "colours.hpp"
#include "map_layout.hpp"
#include "nest.hpp"

#include <vorl/view.hpp>

namespace vorl::view {

struct Scene {
    LevelNum level;                ///< of the whole hierarchy, that is shown first
    std::vector<LevelNum> levels;  ///< that are shown
    HierarchyFile file;            ///< of these levels
    LevelNum first;                ///< the place among them of the level that is shown first
    Nest nest;
    MapLayout map;
    std::vector<Number> base;          ///< as `standing` has it, of the first level
    std::vector<std::uint8_t> colour;  ///< of each cluster

    Scene(const FlatNetwork& network, const HierarchyFile& hierarchy, const ViewOptions& options);
};

/// The levels that are worth to be seen around one of them: the number of clusters falls by a third
/// from each to the next, and a cluster has some nodes.
std::vector<LevelNum> levelsToShow(const HierarchyFile& hierarchy, LevelNum around);

/// The text as HTML and XML have it, also between double quotes. Characters that XML forbids are
/// replaced, and so are bytes that are no UTF-8.
std::string escaped(std::string_view text);

}  // namespace vorl::view
