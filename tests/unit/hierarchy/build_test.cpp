// Whole builds: stop rules, root compression, reduction, what is refused, and the trace.
#include "unit/hierarchy/bench.hpp"

#include <vorl/hierarchy/cluster.hpp>
#include <vorl/types/text.hpp>

#include <gtest/gtest.h>

#include <stdexcept>

namespace vorl::test {
namespace {

template <class LinksT = UnweightedLinks>
std::shared_ptr<Hierarchy<LinksT>> build(const TestNetwork& network,
                                         const ClusterOptions& options) {
    auto nodes = makeNodes<LinksT>(network);
    auto hier = cluster<LinksT>(nodes, !network.directed, options);
    EXPECT_TRUE(nodes.empty());
    return hier;
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t times = 0;
    for (auto pos = text.find(part); pos != text.npos; pos = text.find(part, pos + 1)) ++times;
    return times;
}

std::string startOf(const char* gamma, const char* network) {
    return "The clustering has been started\nVersion: r-" + libBuild().rev() +
           " (FUZZY_OVP, MCANDS_NOFLT, OVERLAP_LINKS, AUTO_GAMMA), gamma: " + gamma +
           ", speedup: NONE, filterMarg: 0.01 (disabled), symmetric links: 1\nInput Network>  " +
           network + "\n";
}

TEST(Build, OfLoneNodesTellsWhatItDoes) {
    TestNetwork network = edges(2, {}, {{0, 1}, {1, 2}});
    Trace trace;
    const auto hier = build<WeightedLinks>(network, ClusterOptions(1));
    EXPECT_EQ(trace.take(),
              startOf("1", "nodes: 2, links: 0 (both dir, undir: 0), weight (both dir): 6") +
                  "  > clusterLevel() [0 tot cls]  2 cls, 0(0 csz) prop and 0 sa of 2 nds\n"
                  "Initial nodes clustering is completed, 2 clusters\n"
                  "Folding is completed, 1 level, 2 clusters formed\n"
                  "WARNING build(), 2 standalone nodes/clusters are present (the input network is "
                  "not a single connected component)\n"
                  "Result>  Q: 0.444444, root size: 2 (non-nodes: 0), levels: 1, clusters: 2 "
                  "(non-nodes: 2), nodes: 2, weight (both dir): 6, node links (directed): 0, avg "
                  "dyn gamma: 1, dynamic gamma: 1, static (Newman's) gamma: 1, conductance: 0\n");
    EXPECT_EQ(hier->root().size(), 2u);
    EXPECT_EQ(hier->root()[1]->des.front(), &hier->nodes().back());
    EXPECT_FLOAT_EQ(hier->score().modularity, 4.f / 9);
}

TEST(Build, OfAPairEndsInOneRoot) {
    Trace trace;
    ClusterOptions options(-1);
    options.modtrace = true;
    const auto hier = build(ring(2), options);
    EXPECT_EQ(trace.take(),
              startOf("-1", "nodes: 2, links: 2 (both dir, undir: 1), weight (both dir): 2") +
                  "Initial state, Q: -0.5\n"
                  "  > clusterLevel() [0 tot cls]  1 cls, 0(0 csz) prop and 0 sa of 2 nds\n"
                  "Initial nodes clustering is completed, 1 clusters\n"
                  "Folding is completed, Q: 0, dQ: 0.5, 1 level, 1 clusters from 2 nodes\n"
                  "WARNING build(), 1 standalone nodes/clusters are present (the input network is "
                  "not a single connected component)\n"
                  "Result>  Q: 0, root size: 1 (non-nodes: 1), levels: 1, clusters: 1 (non-nodes: "
                  "1), nodes: 2, weight (both dir): 2, node links (directed): 2, avg dyn gamma: 1, "
                  "dynamic gamma: 1, static (Newman's) gamma: 1, conductance: 1\n");
    EXPECT_EQ(hier->score().gamma, -1);
    EXPECT_EQ(hier->score().conductance, 1);
    EXPECT_EQ(hier->root().front()->nnodes(), 2);
}

// Self weights so heavy that every link is a loss: no level comes about.
TEST(Build, WithoutALevelScoresTheNodes) {
    const TestNetwork network = edges(2, {{0, 1, 1}}, {{0, 50}, {1, 50}});
    Trace trace;
    const auto hier = build<WeightedLinks>(network, ClusterOptions(1));
    EXPECT_TRUE(hier->levels().empty());
    EXPECT_TRUE(hier->root().empty());
    EXPECT_FLOAT_EQ(hier->score().modularity, 200.f / 202 - 0.5f);
    EXPECT_EQ(hier->score().egamma, 1);
    for (const auto& node : hier->nodes()) {
        EXPECT_TRUE(node.owners.empty());
        EXPECT_EQ(node.totac, 0u);
    }
    EXPECT_TRUE(trace.take().ends_with(
        "Result>  Q: 0.490099, root size: 0 (non-nodes: 0), levels: 0, clusters: 0 (non-nodes: 0), "
        "nodes: 2, weight (both dir): 202, node links (directed): 2\n"));
}

TEST(Build, TakesAnyFiniteGamma) {
    const TestNetwork network = edges(4, {{0, 1, 1}, {1, 2, 1}, {2, 3, 1}});
    Trace trace;
    ClusterOptions options;
    for (const float gamma : {NAN, HUGE_VALF, -HUGE_VALF}) {
        options.gamma = gamma;
        EXPECT_THROW(build<WeightedLinks>(network, options), std::invalid_argument);
    }
    // Two pairs at first; from 6 / 4 on the middle link doesn't gain.
    for (const auto& [gamma, root] : {std::pair{0.5f, 1u}, {1.5f, 2u}, {40.f, 0u}}) {
        options.gamma = gamma;
        EXPECT_EQ(build<WeightedLinks>(network, options)->root().size(), root) << gamma;
    }
}

TEST(Build, OfNothingIsSilent) {
    Trace trace;
    const auto hier = build(TestNetwork("empty", 0), ClusterOptions(1));
    EXPECT_EQ(trace.take(), "");
    EXPECT_EQ(hier->score().modularity, 0);
    EXPECT_EQ(hier->score().gamma, 1);
    ClusterOptions options(1);
    options.reduction = Reduction::MEAN;
    EXPECT_THROW(build(TestNetwork("empty", 0), options), std::invalid_argument);
}

TEST(Build, CompressesTheRoot) {
    const TestNetwork network = grid(4, 3);
    ClusterOptions options(1);
    const auto plain = build(network, options);
    ASSERT_EQ(plain->root().size(), 4u);
    ASSERT_EQ(plain->levels().size(), 3u);
    options.rootMax = 1;
    Trace trace;
    const auto hier = build(network, options);
    ASSERT_EQ(hier->levels().size(), 4u);
    EXPECT_EQ(hier->levels().back().fullsize, 2u);
    EXPECT_EQ(hier->root().size(), 2u);
    EXPECT_EQ(hier->score().gamma, 0.825f);
    const std::string text = trace.take();
    EXPECT_EQ(count(text, "  Compressing the root size: 2 (>1), new gammaRatio: 0.825\n"), 1u);
    EXPECT_EQ(count(text, " (dgr: "), 1u);
    EXPECT_EQ(count(text, ", gamma ratio: 0.825, conductance: "), 1u);
}

TEST(Build, CompressesUntilFewAreLeft) {
    Random random(5);
    ClusterOptions options(1);
    options.rootMax = 1;
    Trace trace;
    const auto hier = build(tree(random, 30), options);
    EXPECT_EQ(hier->score().gamma, 0.825f * 0.825f);
    EXPECT_EQ(count(trace.take(), "  Compressing the root size: "), 2u);
}

// More lone items than wanted: what else is left can't make up for them.
TEST(Build, DoesntCompressWhereLoneItemsAreTooMany) {
    TestNetwork network = grid(4, 3);
    network.nodesNum += 2;
    ClusterOptions options(1);
    options.rootMax = 1;
    Trace trace;
    EXPECT_EQ(build(network, options)->root().size(), 6u);
    EXPECT_EQ(count(trace.take(), "Compressing"), 0u);
}

TEST(Build, EndsWhereLevelsDontShrink) {
    ClusterOptions options(1);
    options.rootMax = 1;
    Trace trace;
    const auto hier = build(ring(16), options);
    // That of the nodes, the first of the cycle, and 64 that aren't smaller.
    ASSERT_EQ(hier->levels().size(), 66u);
    for (const auto& level : hier->levels()) EXPECT_EQ(level.fullsize, 16u);
    EXPECT_EQ(hier->root().size(), 16u);
    const std::string text = trace.take();
    EXPECT_EQ(
        count(text, "WARNING build(), no progress for 64 levels, the hierarchy ends at level 66\n"),
        1u);
    EXPECT_EQ(count(text, "Compressing"), 0u);
}

TEST(Build, StopsAtALevelThatGainsTooLittle) {
    const TestNetwork network = grid(6, 6);
    ClusterOptions options(1);
    options.gainMarg = 1;
    Trace trace;
    const auto whole = build(network, options)->levels().size();
    EXPECT_EQ(count(trace.take(), "Break"), 0u);  // there is no gain without the trace of it
    options.modtrace = true;
    const auto hier = build(network, options);
    EXPECT_EQ(count(trace.take(), "  Break by gainMarg: 1 (dQ: "), 1u);
    EXPECT_EQ(hier->levels().size(), 2u);
    EXPECT_GT(whole, 2u);
    EXPECT_EQ(hier->root().size(), hier->levels().back().fullsize);
}

// The gain of a pair may then be above its weight.
TEST(Build, TakesNegativeWeightsInsideItems) {
    const auto hier = build<WeightedLinks>(
        edges(6, {{0, 1, 1}, {1, 2, 0.25f}, {2, 3, 50}, {4, 5, 100}}, {{0, -2.f}, {1, -2.f}}),
        ClusterOptions(-1));
    EXPECT_EQ(hier->root().size(), 2u);
}

TEST(Build, CreatesTheBackLinksOfArcs) {
    TestNetwork network = edges(3, {});
    network.directed = true;
    network.links = {{0, 1, 4}, {1, 2, 1}, {2, 1, 2}};
    Trace trace;
    const auto hier = build<WeightedLinks>(network, ClusterOptions(1));
    EXPECT_EQ(hier->score().nodesLinks, 4u);
    EXPECT_EQ(hier->weight(), 7);
    EXPECT_EQ(hier->nodes().front().ctxWeight(), 2);
    EXPECT_EQ(std::next(hier->nodes().begin())->links.front().weight, 0);
    EXPECT_EQ(count(trace.take(),
                    "symmetric links: 0\nInput Network>  nodes: 3, links: 4 (both "
                    "dir, undir: 2), weight (both dir): 7\n> WARNING validate(), "
                    "backlink does not exist. Created (with zero weight if "
                    "weighted):  1->0\n"),
              1u);
}

TEST(BuildDeathTest, NeedsBothDirectionsOfAnEdge) {
    ftrace = nullptr;
    Nodes<WeightedLinks> nodes;
    auto& a = nodes.emplace_back(0u);
    auto& b = nodes.emplace_back(1u);
    a.links.emplace_back(&b, 1.f);
    EXPECT_DEATH(cluster<WeightedLinks>(nodes, true, ClusterOptions(1)),
                 "the number of links should be even");
}

// Nodes 0 and 1 share a light link and have six heavy ones each.
TestNetwork lightLink() {
    std::vector<TestLink> links{{0, 1, 1}};
    for (Id id = 2; id < 8; ++id)
        for (Id hub : {0u, 1u}) links.push_back({hub, id, 10});
    return edges(8, links);
}

TEST(Reduction, DropsALinkThatBothEndsCanSpare) {
    ClusterOptions options(1);
    options.reduction = Reduction::ACCURATE | Reduction::CRITERIA_WEIGHT;
    Trace trace;
    const auto hier = build<WeightedLinks>(lightLink(), options);
    EXPECT_EQ(count(trace.take(), "  > build(), links reduced for 2 / 2 / 8 nds\n"), 1u);
    EXPECT_EQ(hier->score().nodesLinks, 24u);
    EXPECT_EQ(hier->weight(), 242);
    EXPECT_EQ(hier->nodes().front().weight(), 1);
    EXPECT_EQ(hier->nodes().front().links.size(), 6u);

    options.reduction |= Reduction::SKIP_NODES;
    EXPECT_EQ(build<WeightedLinks>(lightLink(), options)->score().nodesLinks, 26u);
}

TEST(Reduction, KeepsALinkThatOneEndNeeds) {
    TestNetwork network = lightLink();
    // Without two of its heavy links node 1 isn't over-long.
    std::erase_if(network.links,
                  [](const TestLink& ln) { return ln.src == 1 && ln.dst >= 2 && ln.dst <= 3; });
    ClusterOptions options(1);
    options.reduction = Reduction::ACCURATE | Reduction::CRITERIA_WEIGHT;
    Trace trace;
    EXPECT_EQ(build<WeightedLinks>(network, options)->score().nodesLinks, 22u);
    EXPECT_EQ(count(trace.take(), "links reduced"), 0u);
    EXPECT_THROW(build(network, options), std::domain_error);  // unweighted links by weight
}

// Two hubs with leaves gain from these, and lose by their own link, whatever that weighs.
TEST(Reduction, ByGainDropsALinkBetweenHubs) {
    for (const bool gain : {true, false}) {
        TestNetwork network = edges(20, {{0, 1, 1}});
        for (Id leaf = 2; leaf < 20; ++leaf) network.add(leaf % 2, leaf, 1);
        ClusterOptions options(1);
        options.reduction = Reduction::ACCURATE | Reduction::SKIP_CLUSTERS;
        if (!gain) options.reduction |= Reduction::CRITERIA_WEIGHT;
        const auto hier = build<WeightedLinks>(network, options);
        EXPECT_EQ(hier->score().nodesLinks, gain ? 36u : 38u);
        EXPECT_EQ(hier->weight(), 38);
        for (const auto& node : hier->nodes()) {
            const bool hub = node.id < 2;
            EXPECT_EQ(node.weight(), hub && gain ? 1 : 0) << node.id;
            EXPECT_EQ(node.links.size(), hub ? (gain ? 9u : 10u) : 1u) << node.id;
        }
    }
}

// Nodes are reduced before repeated links are removed, and a search may end at either of two.
TEST(Reduction, TakesRepeatedLinks) {
    TestNetwork network = star(14);
    network.weighted = true;
    Bench<> bench(network);
    using NodeT = Bench<>::NodeT;
    auto& links = bench.nodes[0]->links;
    links.emplace(links.begin(), bench.nodes[1], 3.f);
    RdsCands<NodeT> rcands(2);
    rcands.emplace(bench.nodes[0], bench.group({1, 1}));
    rcands.emplace(bench.nodes[1], bench.group({0}));
    Size erased = 0;
    EXPECT_EQ(reduceLinks(rcands, erased), 2u);
    EXPECT_EQ(erased, 3u);
    EXPECT_EQ(links.size(), 13u);
    EXPECT_EQ(links.front().dest, bench.nodes[2]);
    EXPECT_EQ(bench.nodes[1]->weight(), 0.5 * (3 + 1 + 1));
}

}  // namespace
}  // namespace vorl::test
