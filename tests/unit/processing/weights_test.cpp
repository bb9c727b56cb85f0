// Weights of pairs and of items.
#include <vorl/graph.hpp>
#include <vorl/processing/weights.hpp>
#include <vorl/shared/link_kinds.hpp>

#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vorl::test {
namespace {

TEST(PairWeight, CountsBothDirections) {
    Nodes<WeightedLinks> nodes;
    auto& a = nodes.emplace_back(0);
    auto& b = nodes.emplace_back(1);
    a.links.emplace_back(&b, 16777216.0f);
    b.links.emplace_back(&a, 1.0f);
    // Summed at 64 bits.
    EXPECT_EQ(linkWeight<true>(&a, a.links.front()), 16777217);
    EXPECT_EQ(linkWeight<true>(&b, b.links.front()), 16777217);
    EXPECT_EQ(linkWeight<false>(&b, b.links.front()), 2);
    EXPECT_EQ(linksWeight<true>(a), 8388608.5);
    EXPECT_EQ(linksWeight<false>(a), 16777216);
    EXPECT_EQ(linksWeight<false>(nodes.emplace_back(2)), 0);
}

TEST(PairWeight, FindsTheBackLinkInLongLists) {
    Nodes<WeightedLinks> nodes;
    auto& hub = nodes.emplace_back(0);
    for (Id id = 1; id <= 12; ++id) {
        auto& node = nodes.emplace_back(id);
        hub.links.emplace_back(&node, static_cast<float>(id));
        node.links.emplace_back(&hub, 0.5f);
        EXPECT_EQ(linkWeight<true>(&node, node.links.front()), 0.5 + id);
    }
    EXPECT_EQ(linksWeight<true>(hub), (78 + 6) / 2.0);
}

// Folding remembers the weights of pairs, which must not outlive the build.
TEST(PairWeight, FollowsWhatACallerChanges) {
    Graph<true> graph;
    graph.addNodes(6);
    for (const Id first : {0u, 3u})
        for (Id i = 0; i < 3; ++i) graph.addLink<true>(first + i, first + (i + 1) % 3, 2);
    graph.addLink<true>(2, 3, 1);
    graph.addLink<true>(3, 2, 0.5f);
    ftrace = nullptr;
    const auto hier = graph.buildHierarchy(ClusterOptions(1));
    ASSERT_EQ(hier->root().size(), 2u);
    Cluster<WeightedLinks>& a = *hier->root()[0];
    Cluster<WeightedLinks>& b = *hier->root()[1];
    EXPECT_EQ(linkWeight<true>(&a, a.links.front()), 1.5);
    a.links.front().weight = 4;
    EXPECT_EQ(linkWeight<true>(&a, a.links.front()), 4.5);
    EXPECT_EQ(carcsWeight(b), 2.25);
    addCArc(b.links, b.links.begin(), &a, 3);
    EXPECT_EQ(carcsWeight(a), 3.75);
    EXPECT_EQ(cedgesWeight(b), 3.5);
}

TEST(PairWeight, OfClustersOverflows) {
    Clusters<UnweightedLinks> clusters;
    auto& a = clusters.emplace_back(LevelNum{0}, Id{7}, Size{0});
    auto& b = clusters.emplace_back(LevelNum{0}, Id{8}, Size{0});
    a.links.emplace_back(&b, 1e308);
    EXPECT_EQ(errorOf<std::overflow_error>([&] { linksWeight<false>(a); }),
              "linksWeight(), #7 overflowed: INF\n");
    a.links.front().weight = 0.8e308;
    EXPECT_EQ(linksWeight<false>(a), 0.8e308);
}

TEST(PairWeightDeathTest, NeedsTheBackLink) {
    Nodes<UnweightedLinks> nodes;
    auto& a = nodes.emplace_back(4);
    auto& b = nodes.emplace_back(5);
    a.links.emplace_back(&b);
    EXPECT_DEATH(linkWeight<true>(&a, a.links.front()),
                 "linkWeight\\(\\), back links must always exists, INVERSE");
    EXPECT_EQ(linkWeight<false>(&a, a.links.front()), 2);
    traceBuffered(false);
    EXPECT_DEATH(
        linksWeight<true>(a),
        "  >>>> WARNING linksWeight\\(\\), #4\\(0x.*, 0 owns\\) -> #5 \\(0x.*, 0 owns\\)  0 "
        "dest links does not contain scr:\n.*"
        "linksWeight\\(\\), back links must always exists, INVERSE");
    EXPECT_DEATH(linkWeight<false>(&a, UnweightedLinks::value_type(nullptr)),
                 "linkWeight\\(\\), cl and link must be valid");
}

}  // namespace
}  // namespace vorl::test
