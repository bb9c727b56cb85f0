// Communities of networks whose answer is plain.
#include <vorl/communities.hpp>
#include <vorl/communities_text.hpp>

#include "support/networks.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace vorl::test {
namespace {

FlatNetwork flat(const TestNetwork& network) {
    std::vector<Id> src;
    std::vector<Id> dst;
    std::vector<LinkWeight> weight;
    std::vector<Id> nodes;
    for (const TestLink& ln : network.links) {
        src.push_back(ln.src);
        dst.push_back(ln.dst);
        weight.push_back(ln.weight);
    }
    for (const auto& [id, self] : network.selfs) {
        src.push_back(id);
        dst.push_back(id);
        weight.push_back(self);
    }
    for (Id id = 0; id < network.nodesNum; ++id) nodes.push_back(id);
    return FlatNetwork::ofPairs(src, dst, weight, nodes);
}

void addClique(TestNetwork& network, const std::vector<Id>& nodes, float weight = 1) {
    for (const Id a : nodes)
        for (const Id b : nodes) network.add(a, b, weight);
}

std::string text(const TestNetwork& network) { return clustersText(communities(flat(network))); }

TEST(Communities, CliquesStayWhole) {
    TestNetwork bridge("bridge", 10);
    addClique(bridge, {0, 1, 2, 3, 4});
    addClique(bridge, {5, 6, 7, 8, 9});
    bridge.add(4, 5);
    EXPECT_EQ(text(bridge),
              "# Clusters: 2, Nodes: 10, Fuzzy: 0, Numbered: 0\n"
              "0 1 2 3 4\n5 6 7 8 9\n");

    const Communities around = communities(flat(ringOfCliques(24, 5)));
    ASSERT_EQ(around.count(), 24u);
    for (Id community = 0; community < 24; ++community) {
        ASSERT_EQ(around.members(community).size(), 5u);
        for (const auto& [place, share] : around.members(community))
            EXPECT_EQ(place / 5, around.members(community)[0].first / 5);
    }
    EXPECT_GT(around.score().saving, 0);
}

TEST(Communities, SharedNodesGetEvenShares) {
    TestNetwork network("a node in two cliques", 11);
    addClique(network, {0, 1, 2, 3, 4, 5});
    addClique(network, {5, 6, 7, 8, 9, 10});
    EXPECT_EQ(text(network),
              "# Clusters: 2, Nodes: 11, Fuzzy: 1, Numbered: 0\n"
              "0 1 2 3 4 5:0.5\n5:0.5 6 7 8 9 10\n");
    const Communities alone = communities(flat(network), {.shares = false});
    EXPECT_EQ(alone.shared(), 0u);
    EXPECT_EQ(alone.of(5).size(), 1u);
}

TEST(Communities, LinksTooLightToWeighAnythingGiveNoShare) {
    TestNetwork network("a node in two cliques, tied to some of them by next to nothing", 11);
    network.add(0, 10, 1e-20f);
    network.add(5, 10, 1e-20f);
    addClique(network, {0, 1, 2, 3, 4}, 1e12f);
    addClique(network, {1, 2, 3, 4, 10}, 1e12f);
    addClique(network, {5, 6, 7, 8, 9}, 1e12f);
    addClique(network, {6, 7, 8, 9, 10}, 1e12f);
    const Communities found = communities(flat(network));
    ASSERT_EQ(found.count(), 2u);
    ASSERT_EQ(found.of(10).size(), 2u);
    EXPECT_NE(found.of(10)[0].community, found.of(10)[1].community);
    EXPECT_EQ(found.of(10)[0].share, 0.5f);
}

TEST(Communities, NetworksWithoutCommunitiesAreOne) {
    Random rnd(7);
    for (const TestNetwork& network :
         {ring(24), star(30), star(3), sparse(rnd, 500, 6), sparse(rnd, 2000, 12)}) {
        const Communities found = communities(flat(network));
        EXPECT_EQ(found.count(), found.isolated() + 1) << network.name;
        EXPECT_EQ(found.score().saving, 0) << network.name;
    }
    TestNetwork clique("clique", 40);
    std::vector<Id> all;
    for (Id i = 0; i < 40; ++i) all.push_back(i);
    addClique(clique, all);
    EXPECT_EQ(communities(flat(clique)).count(), 1u);
}

TEST(Communities, OddNetworks) {
    EXPECT_EQ(communities(FlatNetwork()).count(), 0u);

    TestNetwork apart("components and isolated nodes", 12);
    addClique(apart, {1, 3, 5, 7});
    addClique(apart, {2, 4, 6, 8});
    const Communities found = communities(flat(apart));
    EXPECT_EQ(found.isolated(), 4u);
    EXPECT_EQ(clustersText(found),
              "# Clusters: 6, Nodes: 12, Fuzzy: 0, Numbered: 0\n"
              "1 3 5 7\n2 4 6 8\n0\n9\n10\n11\n");
    EXPECT_EQ(found.score().conductance, 0);

    TestNetwork one("one link", 2);
    one.add(0, 1);
    EXPECT_EQ(communities(flat(one)).count(), 1u);

    TestNetwork self("self links alone", 3);
    self.selfs = {{0, 2.f}, {2, 1.f}};
    const Communities alone = communities(flat(self));
    EXPECT_EQ(alone.nodes(), 3u);
    EXPECT_EQ(alone.isolated(), 1u);
}

TEST(Communities, WeightsMatterAndTheirUnitDoesNot) {
    // Twelve nodes that are all linked, in four groups by weight alone.
    for (const float unit : {1.f, 1e-20f, 3e30f}) {
        TestNetwork network("weights", 16);
        for (Id a = 0; a < 16; ++a)
            for (Id b = 0; b < a; ++b) network.add(a, b, a / 4 == b / 4 ? 30 * unit : unit);
        const Communities found = communities(flat(network));
        ASSERT_EQ(found.count(), 4u) << unit;
        for (Id place = 0; place < 16; ++place) {
            ASSERT_EQ(found.of(place).size(), 1u);
            EXPECT_EQ(found.of(place)[0].community, found.of(place / 4 * 4)[0].community);
        }
    }
}

TEST(FlatNetwork, AddsUpPairsAndRefusesBadWeights) {
    const std::vector<Id> src{7, 3, 3, 7, 900};
    const std::vector<Id> dst{3, 7, 900, 7, 3};
    const std::vector<LinkWeight> weight{1, 2, 0, 5, 0.5f};
    const FlatNetwork network = FlatNetwork::ofPairs(src, dst, weight);
    EXPECT_EQ(network.ids, (std::vector<Id>{3, 7, 900}));
    EXPECT_EQ(network.begin, (std::vector<Size>{0, 2, 3, 4}));
    EXPECT_EQ(network.neighbour, (std::vector<Id>{1, 2, 0, 0}));
    EXPECT_EQ(network.weight, (std::vector<LinkWeight>{3, 0.5f, 3, 0.5f}));
    EXPECT_EQ(network.self, (std::vector<AccWeight>{0, 10, 0}));
    for (const LinkWeight bad :
         {-1.f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
        EXPECT_THROW(FlatNetwork::ofPairs(src, dst, std::vector<LinkWeight>{1, 1, bad, 1, 1}),
                     std::invalid_argument);
    EXPECT_THROW(FlatNetwork::ofPairs(src, std::vector<Id>{1}), std::invalid_argument);

    // Arcs count for both ends, edges are stored at both already.
    TestNetwork arcs("arcs", 3);
    arcs.directed = true;
    arcs.add(0, 1, 2);
    arcs.add(1, 0, 3);
    arcs.add(1, 2, 1);
    EXPECT_EQ(FlatNetwork(makeNodes<WeightedLinks>(arcs), true).weight,
              (std::vector<LinkWeight>{5, 5, 1, 1}));
    EXPECT_EQ(FlatNetwork(makeNodes<UnweightedLinks>(ring(4)), false).weight,
              std::vector<LinkWeight>(8, 1));
}

}  // namespace
}  // namespace vorl::test
