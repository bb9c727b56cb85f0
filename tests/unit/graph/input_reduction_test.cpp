// Reduction of arcs as they arrive.
#include <vorl/graph.hpp>

#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorl::test {
namespace {

/// Ten links of which the first three are light: 1.125, 1.25 and 1.375.
InpLinks<true> threeLight() {
    InpLinks<true> links;
    for (Id id = 1; id <= 10; ++id)
        links.emplace_back(id, id < 4 ? 1 + 0.125f * static_cast<float>(id) : 8);
    return links;
}

/// Reduces links of node 0 to the nodes 1, 2, ... with the given weights, unless told otherwise.
struct Reduced {
    Nodes<WeightedLinks> nodes;
    IdNodes<WeightedLinks> idnodes;
    InpLinks<true> links;
    StructLinkErrors errors{"links:"};

    explicit Reduced(std::initializer_list<float> weights) {
        for (Id id = 0; id <= 30; ++id) acsAddNode(nodes, idnodes, id);
        for (float weight : weights) links.emplace_back(static_cast<Id>(links.size() + 1), weight);
    }

    /// The number of dropped links.
    std::size_t operator()(Id margin, Reduction reduction, bool sumdups = false) {
        const std::size_t before = links.size();
        acsReduceLinks(nodes.front(), links, idnodes, reduction, margin, sumdups, &errors);
        return before - links.size();
    }

    double selfWeight(Id id) { return idnodes.at(id)->weight(); }
};

TEST(InputReduction, MeasuresByTheSecondHeaviestLink) {
    // The sum of the dropped ones reaches 3 with the third; against the heaviest, 100, all the
    // links below the limit would be light.
    Reduced reduced{1.4f, 3, 1.1f, 3, 100, 3, 1, 3, 3, 1.2f};
    EXPECT_EQ(reduced(5, Reduction::ACCURATE), 3);
    std::vector<float> weights;
    for (const auto& ln : reduced.links) weights.push_back(ln.weight);
    EXPECT_EQ(weights, (std::vector<float>{1.4f, 3, 3, 3, 3, 3, 100}));
    EXPECT_FLOAT_EQ(static_cast<float>(reduced.selfWeight(0)), 1.65f);
    EXPECT_FLOAT_EQ(static_cast<float>(reduced.selfWeight(3)), 0.55f);
    EXPECT_EQ(reduced.selfWeight(7), 0.5);
    EXPECT_FLOAT_EQ(static_cast<float>(reduced.selfWeight(10)), 0.6f);
    EXPECT_EQ(reduced.selfWeight(1), 0);
}

TEST(InputReduction, LeavesShortAndEvenListsWhole) {
    Reduced margin{9, 1, 9, 9, 9};
    EXPECT_EQ(margin(5, Reduction::SEVERE), 0);
    EXPECT_EQ(margin.links[1].weight, 1);  // not even sorted
    EXPECT_EQ(margin(3, Reduction::SEVERE), 1);
    EXPECT_EQ(Reduced({1, 9, 9, 9, 9, 9})(0, Reduction::SEVERE), 0);
    EXPECT_EQ(Reduced({2, 2, 2, 2, 2, 2, 9})(5, Reduction::MEAN), 0);
    // Half of the reference is heavy enough, and equal links stay together.
    EXPECT_EQ(Reduced({1.5f, 3, 3, 3, 3, 3, 3})(5, Reduction::ACCURATE), 0);
    EXPECT_EQ(Reduced({1, 1, 1, 1, 3, 3, 3, 3, 3, 100})(5, Reduction::ACCURATE), 0);
    EXPECT_EQ(Reduced({0.9f, 1.1f, 1.1f, 1.1f, 3, 3, 3, 3, 3, 100})(5, Reduction::ACCURATE), 1);
}

TEST(InputReduction, WeighsNoMoreThanTheTopProtects) {
    // The protected sums begin with 10 + 10 (1 + 2 + 3) / 9 + 4.4 * 4 / 9 = 18.6 and grow to 21.0,
    // 23.8, 27.0, 30.6, 34.5, while the dropped ones reach 19.5, 23.1, 26.8, 30.6 (nine links).
    const std::initializer_list<float> weights = {3,    3.1f, 3.2f, 3.3f, 3.4f, 3.5f, 3.6f,
                                                  3.7f, 3.8f, 3.9f, 4,    4.1f, 4.2f, 4.3f,
                                                  4.4f, 10,   10,   10,   10,   10};
    EXPECT_EQ(Reduced(weights)(5, Reduction::ACCURATE), 4);
    EXPECT_EQ(Reduced(weights)(5, Reduction::MEAN), 9);
}

TEST(InputReduction, CountsSelfLinksApart) {
    // A self link among the top protects one link more.
    Reduced top{0.5f, 0.6f, 0.7f, 0.8f, 3, 3, 3, 3, 3, 100};
    EXPECT_EQ(top(5, Reduction::ACCURATE), 4);
    Reduced selfTop{0.5f, 0.6f, 0.7f, 0.8f, 3, 3, 3, 3, 3, 100};
    selfTop.links[6].id = 0;
    EXPECT_EQ(selfTop(5, Reduction::ACCURATE), 3);
    // Neither that one nor a self link that the limit comes down to protects by its weight: the
    // sums are 10 (1 + sqrt(2 / 13) + sqrt(6 / 13)) = 20.7 and, with the counter at 4 and not at 3,
    // 4.625 sqrt(8 / 13) more, 24.3; the dropped links reach 24.0 with the seventh.
    Reduced selfLimit{2.625f, 2.875f, 3.25f, 3.375f, 3.625f, 4,  4.25f, 4.5f,
                      4.625f, 10,     10,    10,     10,     10, 10};
    selfLimit.links[9].id = 0;
    selfLimit.links[11].id = 0;
    EXPECT_EQ(selfLimit(3, Reduction::SEVERE), 8);
    // One that is dropped counts twice, a repeat only where repeats are summed.
    for (bool sumdups : {false, true}) {
        Reduced reduced{1, 1.125f, 1.25f, 1.5f, 3, 3, 3, 3, 3, 100};
        reduced.links[1].id = 1;
        reduced.links[2].id = 0;
        EXPECT_EQ(reduced(5, Reduction::ACCURATE, sumdups), 3);
        EXPECT_EQ(reduced.selfWeight(0), sumdups ? 3.5625 : 3);
        EXPECT_EQ(reduced.selfWeight(1), sumdups ? 1.0625 : 0.5);
        EXPECT_EQ(reduced.errors.size, sumdups ? 0 : 1);
        EXPECT_EQ(reduced.errors.lids[0].did, sumdups ? ID_NONE : 1);
    }
}

TEST(InputReduction, KeepsTheWeightOfAGraph) {
    const InpLinks<true> links = threeLight();
    Graph<true> graph(100, false, false, Reduction::ACCURATE);
    graph.addNodeAndLinks<true>(0, links);
    EXPECT_TRUE(graph.reduced());
    EXPECT_EQ(graph.node(0)->links.size(), 7);
    EXPECT_EQ(graph.node(0)->links.front().dest->id, 4);
    EXPECT_EQ(graph.node(0)->weight(), 1.875);
    EXPECT_EQ(graph.node(1)->weight() + graph.node(2)->weight() + graph.node(3)->weight(), 1.875);
    EXPECT_EQ(links.size(), 10);
    // Edges are stored as they are, and so are arcs of a graph that doesn't reduce.
    graph.addNodeAndLinks<false>(20, links);
    EXPECT_EQ(graph.node(20)->links.size(), 10);
    Graph<true> whole(100);
    whole.addNodeAndLinks<true>(0, links);
    EXPECT_EQ(whole.node(0)->links.size(), 10);
}

TEST(InputReduction, NamesTheNodeThatIsMissing) {
    const InpLinks<true> links = threeLight();
    Graph<true> graph(100, false, false, Reduction::ACCURATE);
    graph.addNodes({0, 1, 4, 5});
    const std::string error =
        errorOf<std::out_of_range>([&] { graph.addNodeLinks<true>(0, links); });
    EXPECT_TRUE(
        error.starts_with("acsAddNodeLinks(), the link with non-existent node is used: #2\n"
                          "acsReduceLinks(), the link with non-existent node is used: #2\n"))
        << error;
    // What was moved before stays moved.
    EXPECT_EQ(graph.node(1)->weight(), 0.5625);
    EXPECT_TRUE(graph.node(0)->links.empty());
}

}  // namespace
}  // namespace vorl::test
