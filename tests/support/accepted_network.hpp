/// @file
/// What a network that a reader accepted must stand, for the fuzz targets. A fault stops the
/// process.
#pragma once

#include <vorl/fileio/iotypes.hpp>
#include <vorl/graph.hpp>
#include <vorl/reading/memory_file.hpp>
#include <vorl/types/search.hpp>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <stdexcept>
#include <string_view>

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

/// The measures of a hierarchy are numbers, and its nodes lie in the root as a whole.
template <class LinksT>
void requireShares(const Hierarchy<LinksT>& hier) {
    const HierScore& score = hier.score();
    for (const float measure : {score.modularity, score.gamma, score.egamma, score.conductance})
        require(std::isfinite(measure), "a measure is no number");
    std::map<Id, double> shares;
    for (const auto* cl : hier.root())
        for (const auto& [node, share] : hier.unwrap(*cl)) shares[node->id] += double{share};
    for (const auto& node : hier.nodes()) {
        const auto found = shares.find(node.id);
        require(
            hier.root().empty() || (found != shares.end() && std::abs(found->second - 1) < 1e-4),
            "the shares of a node don't add up to 1");
    }
}

/// Clusters a small network.
template <class GraphT>
void requireHierarchy(GraphT& graph) {
    if (graph.nodes().size() <= 64) requireShares(*graph.buildHierarchy());
}

/// Reads and clusters the network of a file. The parser may refuse it, and where its format can
/// announce nodes, a link may miss its node.
template <class ParserT, class GraphT>
void requireReading(const InpOptions& options) {
    std::shared_ptr<GraphT> graph;
    try {
        graph = ParserT(options).template build<GraphT>();
    } catch (const std::invalid_argument&) {
        return;
    } catch (const std::domain_error&) {
        return;
    } catch (const std::out_of_range&) {
        require(options.format == FileFormat::RCG, "a node is missing");
        return;
    }
    requireOrder(*graph);
    if (isClusterable(*graph)) requireHierarchy(*graph);
}

/// The same of a text, in a way that a byte of options tells.
template <class ParserT>
void requireReading(std::uint8_t byte, std::string_view text, FileFormat format) {
    const MemoryFile file(text);
    InpOptions options;
    options.filename = file.name();
    options.format = format;
    options.sumdups = byte & 4;
    if (byte & 2)
        requireReading<ParserT, Graph<false>>(options);
    else
        requireReading<ParserT, Graph<true>>(options);
}

}  // namespace vorl::test
