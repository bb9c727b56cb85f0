/// @file
/// A text of the links of a network.
#pragma once

#include <vorl/graph.hpp>

#include <cstdio>
#include <string>

namespace vorl::test {

/// "source>dest:weight" of all links, and the self weights.
template <class GraphT>
std::string linksText(GraphT& graph) {
    std::string result;
    char part[48];
    for (const auto& node : graph.nodes()) {
        for (const auto& ln : node.links) {
            std::snprintf(part, sizeof part, "%u>%u:%G ", node.id, ln.dest->id, double{ln.weight});
            result += part;
        }
        if (node.weight() == 0) continue;
        std::snprintf(part, sizeof part, "%u=%G ", node.id, node.weight());
        result += part;
    }
    return result;
}

}  // namespace vorl::test
