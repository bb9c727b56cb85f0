/// @file
/// What a network that a reader accepted must stand, for the fuzz targets. A fault stops the
/// process.
#pragma once

#include <vorl/graph.hpp>
#include <vorl/types/search.hpp>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>

namespace vorl::test {

inline void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

/// Whether the engine may be given the network, as its callers have to see to: weights are plain
/// numbers that 32 bits hold when they are added up, some of them above 0, and edges weigh the
/// same in both directions.
template <class GraphT>
bool isClusterable(GraphT& graph) {
    const auto isPlain = [](AccWeight weight) {
        return weight == 0 || (weight >= AccWeight{std::numeric_limits<float>::min()} &&
                               weight <= AccWeight{std::numeric_limits<float>::max()});
    };
    AccWeight total = 0;
    for (const auto& node : graph.nodes()) {
        if (!isPlain(node.weight())) return false;
        total += node.weight();
        for (const auto& ln : node.links) {
            if (!isPlain(AccWeight{ln.weight})) return false;
            total += AccWeight{ln.weight};
            if (graph.directed()) continue;
            const auto& back = ln.dest->links;
            const auto place = findDest(back.begin(), back.end(), &node);
            if (place == back.end() || place->dest != &node || place->weight != ln.weight)
                return false;
        }
    }
    return total > 0 && isPlain(total);
}

/// The lists of links are in order and without repeats.
template <class GraphT>
void requireOrder(GraphT& graph) {
    for (const auto& node : graph.nodes())
        for (std::size_t i = 0; i < node.links.size(); ++i) {
            require(node.links[i].dest != &node, "a self link stands among the links");
            require(i == 0 || cmpBase(node.links[i - 1].dest, node.links[i].dest),
                    "links are out of order");
        }
}

/// Clusters a small network, whose nodes must then lie in the root as a whole.
template <class GraphT>
void requireHierarchy(GraphT& graph) {
    if (graph.nodes().size() > 64) return;
    const auto hier = graph.buildHierarchy();
    std::map<Id, double> shares;
    for (const auto* cl : hier->root())
        for (const auto& [node, share] : hier->unwrap(*cl)) shares[node->id] += double{share};
    for (const auto& node : hier->nodes()) {
        const auto found = shares.find(node.id);
        require(!std::isnan(hier->score().modularity), "the modularity is no number");
        require(
            hier->root().empty() || (found != shares.end() && std::abs(found->second - 1) < 1e-4),
            "the shares of a node don't add up to 1");
    }
}

}  // namespace vorl::test
