// Gain of pairs and groups, on networks whose weights can be summed by hand.
#include "unit/hierarchy/bench.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace vorl::test {
namespace {

// Two nodes of weight 2, of which 1 is their own: all of it lies in the pair.
const TestNetwork PAIR = edges(2, {{0, 1, 1}}, {{0, 0.5f}, {1, 0.5f}});

TEST(PairGain, CountsBothDirections) {
    Bench<> bench(edges(3, {{0, 1, 1}, {1, 2, 3}}));
    EXPECT_EQ(bench.hier.m_weight, 8);
    EXPECT_EQ(bench.gain(0, 1), 2 - 2.0 * 1 * 4 / 8);
    EXPECT_EQ(bench.gain(1, 2), 6 - 2.0 * 4 * 3 / 8);
    EXPECT_EQ(bench.gain(2, 1), bench.gain(1, 2));
}

TEST(PairGain, OfZeroIsNoLoss) { EXPECT_EQ(Bench<>(PAIR).gain(0, 1), 0); }

TEST(PairGain, FollowsTheResolution) {
    Bench<> bench(PAIR, ClusterOptions(0));
    EXPECT_EQ(bench.gain(0, 1), 2);
    bench.hier.m_gamma = 0.5f;
    EXPECT_EQ(bench.gain(0, 1), 1);
    bench.hier.m_gammaRatio = 0.5f;
    EXPECT_EQ(bench.gain(0, 1), 1.5);
}

TEST(PairGain, OfArcsAddsTheBackLink) {
    TestNetwork network = edges(3, {});
    network.directed = true;
    network.links = {{0, 1, 3}, {1, 0, 1}, {1, 2, 2}, {2, 1, 0}};
    Bench<true> bench(network);
    EXPECT_EQ(bench.hier.m_weight, 6);
    EXPECT_EQ(bench.ctx(1).weight, 3);
    EXPECT_EQ(bench.gain(0, 1), 4 - 2.0 * 2 * 3 / 6);
    EXPECT_EQ(bench.gain(2, 1), 2 - 2.0 * 1 * 3 / 6);
}

TEST(PairGain, ThatOverflowsIsAnError) {
    Bench<> bench(PAIR);
    bench.nodes[0]->id = 7;
    bench.ctx(1).weight = std::numeric_limits<double>::max();
    bench.ctx(0).weight = 8;
    EXPECT_EQ(errorOf<std::overflow_error>([&] { bench.gain(0, 1); }),
              "clusterGain(), #7.1 score or w12_io overflowed: score = INF, w12_io = 2\n");
}

// A short list of links is walked, a long one is searched; the links must be found either way.
TEST(GroupGain, CountsEachLinkedPairOnce) {
    std::vector<TestLink> links;
    for (Id i = 1; i < 30; ++i) links.push_back({0, i, static_cast<float>(i)});
    links.push_back({7, 8, 100});
    links.push_back({2, 29, 1000});
    Bench<> bench(edges(30, links));
    EXPECT_EQ(bench.hier.clusterGain(bench.group({0, 3, 7, 8, 20}), 0), 2.0 * (38 + 100));
    EXPECT_EQ(bench.hier.clusterGain(bench.group({2, 7, 8, 29}), 0), 2.0 * 1100);
    Bench<>::IdsT all;
    for (Id i = 0; i < 30; ++i) all.push_back(i);
    EXPECT_EQ(bench.hier.clusterGain(bench.group(all), 0), bench.hier.m_weight);
    // All in one cluster: what is inside less what is expected, and the parts undone.
    AccWeight parts = 0;
    for (const auto* node : bench.nodes)
        parts += node->m_context->weight * node->m_context->weight / bench.hier.m_weight;
    EXPECT_NEAR(bench.hier.clusterGain(bench.group(all), 1), parts, 1e-9);
}

TEST(GroupGain, TakesTheResolutionInForce) {
    Bench<> bench(edges(3, {{0, 1, 1}, {1, 2, 1}}), ClusterOptions(0.5f));
    bench.hier.m_gammaRatio = 0.5f;
    AccWeight gamma = -1;
    const auto gain = bench.hier.emcandsGain(*bench.nodes[1], bench.group({0, 2}), &gamma);
    EXPECT_EQ(gamma, 0.25);
    EXPECT_EQ(gain, bench.hier.clusterGain(bench.group({0, 1, 2}), 0.25));
    bench.hier.m_gamma = -1;  // no self weights: a dynamic gamma of 1
    bench.hier.emcandsGain(*bench.nodes[1], bench.group({0, 2}), &gamma);
    EXPECT_EQ(gamma, 0.5);
}

}  // namespace
}  // namespace vorl::test
