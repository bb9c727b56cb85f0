// The level that is worth showing first.
#pragma once

#include "../communities/workers.hpp"
#include "nest.hpp"

namespace vorl::view {

/// The level whose clusters have the highest modularity, each node being in that of its largest
/// share, or alone; the highest of equal ones. The same for any number of workers.
LevelNum bestLevel(const FlatNetwork& network, const HierarchyFile& hierarchy, const Nest& nest,
                   detail::Workers& workers);

}  // namespace vorl::view
