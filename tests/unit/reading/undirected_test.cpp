#include <vorl/reading/network.hpp>
#include <vorl/reading/source.hpp>

#include "support/networks.hpp"

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

/// Links in random order and with repeats of all kinds.
std::string text(Random& rnd, NetworkFormat format, bool weights) {
    std::string links;
    const auto pair = [&](bool section) {
        std::string line = std::to_string(7 * rnd.below(9)) + (section ? "> " : " ") +
                           std::to_string(7 * rnd.below(9));
        if (weights && rnd.below(3))
            line += (section ? ":" : " ") + std::to_string(1 + rnd.below(40) * 0.1);
        return line + "\n";
    };
    const bool sections = format == NetworkFormat::RCG;
    for (int part = 0; part < (sections ? 4 : 1); ++part) {
        if (sections) links += part % 2 ? "/Arcs\n" : "/Edges\n";
        for (Id i = 0; i < 4 + rnd.below(30); ++i) links += pair(sections);
    }
    return links;
}

TEST(Undirected, IsTheFlatFormOfTheGraph) {
    Random rnd(5);
    for (int round = 0; round < 300; ++round)
        for (const NetworkFormat format :
             {NetworkFormat::NSE, NetworkFormat::NSA, NetworkFormat::RCG}) {
            const std::string links = text(rnd, format, round % 3);
            ReadOptions options{.file = "links", .format = format};
            options.sumDuplicates = round % 2;
            options.unweighted = round % 5 == 0;
            const auto read = [&](auto reader) {
                TextSource source(links);
                return reader(source, options);
            };
            const Network network =
                read([](Source& from, const ReadOptions& by) { return readNetwork(from, by); });
            const UndirectedNetwork found =
                read([](Source& from, const ReadOptions& by) { return readUndirected(from, by); });
            const FlatNetwork flat = std::visit(
                [&](const auto& graph) { return FlatNetwork(graph->nodes(), network.directed); },
                network.graph);
            ASSERT_EQ(found.links.ids, flat.ids) << links;
            ASSERT_EQ(found.links.begin, flat.begin) << links;
            ASSERT_EQ(found.links.neighbour, flat.neighbour) << links;
            ASSERT_EQ(found.links.weight, flat.weight) << links;
            ASSERT_EQ(found.links.self, flat.self) << links;
            EXPECT_EQ(found.repeated, network.repeated) << links;
            EXPECT_EQ(found.warnings, network.warnings) << links;
            EXPECT_EQ(std::tuple(found.nodes, found.edges, found.arcs, found.directed,
                                 found.weighted, found.statesWeights),
                      std::tuple(network.nodes, network.edges, network.arcs, network.directed,
                                 network.weighted, network.statesWeights))
                << links;
        }
}

}  // namespace
}  // namespace vorl::test
