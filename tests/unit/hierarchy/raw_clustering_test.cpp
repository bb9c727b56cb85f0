// Raw clustering: which shapes of a neighbourhood become which clusters.
#include "unit/hierarchy/bench.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vorl::test {
namespace {

using IdsT = Bench<>::IdsT;
using ListsT = std::vector<IdsT>;

/// The clusters that the nodes form, those of nodes that found no partner included.
ListsT formed(const TestNetwork& network, float gamma) {
    Bench<> bench(network, ClusterOptions(gamma));
    bench.initCands();
    bench.initParts();
    bench.rawCluster();
    bench.convert();
    return bench.formed();
}

TestNetwork weighted(TestNetwork network) {
    network.weighted = true;
    return network;
}

TEST(RawClustering, OneCandidateEachMakesAPair) {
    EXPECT_EQ(formed(edges(4, {{0, 3, 1}, {1, 2, 1}}), 1), (ListsT{{0, 3}, {1, 2}}));
}

// The hub of a star takes its leaves in, which wait for it whatever the order.
TEST(RawClustering, AHubGathersItsLeaves) {
    EXPECT_EQ(formed(weighted(star(4)), 1), (ListsT{{0, 1, 2, 3, 4}}));
    EXPECT_EQ(formed(edges(5, {{4, 0, 1}, {4, 1, 1}, {4, 2, 1}, {4, 3, 1}}), 1),
              (ListsT{{0, 1, 2, 3, 4}}));
}

// In a path of 3 the pairs gain 1.75 and the group 1.5 at a gamma of 1; 2 and 4 at 0.
TEST(RawClustering, ItemsOfLowDegreeMayPreferPairs) {
    const TestNetwork path = edges(3, {{0, 1, 1}, {1, 2, 1}});
    EXPECT_EQ(formed(path, 1), (ListsT{{0, 1}, {1, 2}}));
    EXPECT_EQ(formed(path, 0), (ListsT{{0, 1, 2}}));
}

// An item that comes later doesn't prefer pairs yet when an earlier one looks at it.
TEST(RawClustering, PairsAreMadeOnTheTurnOfTheLaterItem) {
    EXPECT_EQ(formed(weighted(ring(4)), 1), (ListsT{{0, 1}, {1, 2}, {0, 3}, {2, 3}}));
    EXPECT_EQ(formed(weighted(ring(4)), 0), (ListsT{{0, 1, 3}, {0, 1, 2}, {1, 2, 3}, {0, 2, 3}}));
}

TEST(RawClustering, GroupsTakeThePoorestNeighbours) {
    // Of the candidates of 0, node 3 has a further one of its own.
    EXPECT_EQ(formed(edges(5, {{0, 1, 1}, {0, 2, 1}, {0, 3, 1}, {3, 4, 1}}), 0),
              (ListsT{{0, 1, 2}, {3, 4}}));
}

TEST(RawClustering, TrianglesGoThroughPartitions) {
    // 3 has nobody but 0, which lies in a triangle: it isn't taken in.
    EXPECT_EQ(formed(edges(4, {{0, 1, 1}, {0, 2, 1}, {1, 2, 1}, {0, 3, 1}}), 0),
              (ListsT{{3}, {0, 1, 2}}));
    // Two triangles that share node 2 are two clusters.
    EXPECT_EQ(
        formed(edges(5, {{0, 1, 1}, {0, 2, 1}, {1, 2, 1}, {2, 3, 1}, {2, 4, 1}, {3, 4, 1}}), 0),
        (ListsT{{0, 1, 2}, {2, 3, 4}}));
}

TEST(RawClustering, AnItemBetweenTrianglesFindsNobodyFree) {
    Bench<> bench(edges(8, {{0, 1, 1},
                            {0, 2, 1},
                            {1, 2, 1},
                            {3, 4, 1},
                            {3, 6, 1},
                            {4, 6, 1},
                            {5, 0, 1},
                            {5, 3, 1}}),
                  ClusterOptions(0));
    bench.initCands();
    ASSERT_EQ(bench.cands(5), (IdsT{0, 3}));
    bench.initParts();
    bench.rawCluster();
    EXPECT_TRUE(xpropagated(bench.ctx(5).state));
    bench.convert();
    EXPECT_EQ(bench.formed(), (ListsT{{7}, {5}, {0, 1, 2}, {3, 4, 6}}));
}

TEST(RawClustering, AGroupIsFormedOnce) {
    Bench<> bench(weighted(star(5)), ClusterOptions(0));
    bench.initCands();
    bench.initParts();
    const auto first = bench.hier.m_nodes.begin();
    bench.own({{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}});
    bench.hier.rawCluster(first, std::next(first), bench.cls);
    EXPECT_EQ(bench.cls.size(), 2u);  // the group of 0 has one more
    bench.hier.rawCluster(first, std::next(first), bench.cls);
    EXPECT_EQ(bench.cls.size(), 2u);
}

TEST(RawClustering, AGroupThatLosesFormsNothing) {
    Bench<> bench(weighted(star(5)), ClusterOptions(0));
    bench.initCands();
    bench.initParts();
    bench.hier.m_gamma = 1;
    for (auto* node : bench.nodes) node->m_context->weight *= 9;
    bench.rawCluster();
    EXPECT_TRUE(bench.cls.empty());
}

TEST(RawClustering, TheTraceTellsOfGroups) {
    Bench<> bench(weighted(star(4)), ClusterOptions(0));
    bench.initCands();
    bench.initParts();
    Trace trace;
    bench.rawCluster();
    EXPECT_EQ(trace.take(), "  >>> clusterNonparts(), 1 clusters, #0 formed #" +
                                std::to_string(bench.cls.back().id) + ": 5 des\n");
}

TEST(RawClustering, GroupsAreLimitedTo16Bits) {
    EXPECT_EQ(formed(weighted(star(65534)), 0).size(), 1u);
    EXPECT_EQ(errorOf<std::overflow_error>([] { formed(weighted(star(65535)), 0); }),
              "rawCluster(), group size causes overflow of ectx.npartmcs\n");
}

}  // namespace
}  // namespace vorl::test
