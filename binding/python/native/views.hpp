// Pictures of results.
#pragma once

#include "networks.hpp"

#include <vorl/reading/hierarchy_file.hpp>

#include <optional>
#include <string>
#include <vector>

namespace vorl::python {

/// How a picture is wanted.
struct PictureRequest {
    std::string title;
    std::optional<LevelNum> level;
    bool allLevels;
    bool map;  ///< the map in SVG, else the page
};

/// A picture of a hierarchy on its network.
/// @param names of the nodes of the hierarchy, from the largest id downwards
/// @throws std::invalid_argument if the network has others
std::string pictureOf(UndirectedNetwork network, const HierarchyFile& hierarchy,
                      const std::vector<std::string>& names, const PictureRequest& request);

/// Calls clusters by the names of the network, if both have names.
/// @throws std::invalid_argument for a node that the network lacks
void takeNames(ClustersFile& clusters, const std::shared_ptr<Labels>& labels,
               const std::string& network);

void defineViews(nb::module_& module);

}  // namespace vorl::python
