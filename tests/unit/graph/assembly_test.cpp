// Assembly of networks: how nodes and links are stored, and what is told of faults.
#include <vorl/graph.hpp>

#include "support/links_text.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorl::test {
namespace {

template <class GraphT>
std::string links(GraphT& graph, Id id) {
    const auto& node = *graph.node(id);
    EXPECT_TRUE(
        std::is_sorted(node.links.begin(), node.links.end(),
                       [](const auto& a, const auto& b) { return cmpBase(a.dest, b.dest); }))
        << "out of order";
    return linksText(node);
}

/// The faults as they are shown.
std::string shown(const StructErrors& errors) {
    Trace trace;
    errors.show();
    return trace.take();
}

template <class GraphT>
std::vector<Id> ids(GraphT& graph) {
    std::vector<Id> result;
    for (const auto& node : graph.nodes()) result.push_back(node.id);
    return result;
}

TEST(Assembly, StoresArcsAtTheirSourceAndEdgesAtBothEnds) {
    Graph<true> graph;
    graph.addNodes({5, 3, 9});
    graph.addLink<false>(3, 9, 0.5f);
    EXPECT_FALSE(graph.directed());
    graph.addLink<true>(9, 5, 2);
    EXPECT_TRUE(graph.directed());
    graph.addLink<true>(5, 9, 4);
    graph.addLink<false>(5, 3);
    EXPECT_TRUE(graph.directed());
    // By creation, not by id.
    EXPECT_EQ(links(graph, 5), "3:1 9:4 ");
    EXPECT_EQ(links(graph, 3), "5:1 9:0.5 ");
    EXPECT_EQ(links(graph, 9), "5:2 3:0.5 ");
    EXPECT_FALSE(graph.reduced());
}

TEST(Assembly, SelfLinkIsTwiceItsWeight) {
    for (bool sumdups : {false, true}) {
        Graph<true> graph(0, false, sumdups);
        StructLinkErrors errors("self:");
        graph.addNodes(3);
        graph.addLink<true>(0, 0, 0, &errors);  // counts as none
        graph.addLink<true>(0, 0, 3, &errors);
        graph.addLink<false>(0, 0, 5, &errors);
        graph.addNodeLinks<true>(1, {InpLink<true>(1, 0.25f), InpLink<true>(1)}, &errors);
        EXPECT_EQ(graph.node(0)->weight(), sumdups ? 16 : 6);
        EXPECT_EQ(graph.node(1)->weight(), sumdups ? 2.5 : 0.5);
        EXPECT_EQ(shown(errors), sumdups ? "" : "self: 0->0 1->1\n");
        EXPECT_EQ(links(graph, 0) + links(graph, 1), "");
        EXPECT_FALSE(graph.directed());
        // What is no number isn't none.
        graph.node(2)->m_sweight = std::numeric_limits<float>::quiet_NaN();
        graph.addLink<true>(2, 2, 1, &errors);
        EXPECT_EQ(shown(errors), sumdups ? "" : "self: 0->0 1->1 2->2\n");
        EXPECT_TRUE(std::isnan(graph.node(2)->weight()));
    }
    // Unweighted links count as 1 in lists, but a single one brings its weight.
    Graph<false> plain;
    plain.addNodes(2);
    plain.addLink<false>(0, 0, 3);
    plain.addNodeAndLinks<false>(1, {InpLink<false>(1)});
    EXPECT_EQ(plain.node(0)->weight(), 6);
    EXPECT_EQ(plain.node(1)->weight(), 2);
    EXPECT_EQ(plain.nodes().size(), 2);
}

TEST(Assembly, RepeatedLinksAreSummedOrReported) {
    for (bool sumdups : {false, true}) {
        Graph<true> graph(0, false, sumdups);
        StructLinkErrors errors("links:");
        graph.addNodes(3);
        graph.addLink<true>(0, 1, 2, &errors);
        graph.addLink<true>(0, 1, 3, &errors);  // the last of the list: a fault in any case
        graph.addLink<true>(0, 2, 5, &errors);
        graph.addLink<true>(0, 1, 7, &errors);
        EXPECT_EQ(links(graph, 0), sumdups ? "1:9 2:5 " : "1:2 2:5 ");
        EXPECT_EQ(shown(errors), sumdups ? "links: 0->1\n" : "links: 0->1 0->1\n");
    }
    Graph<false> plain(0, false, true);
    StructLinkErrors errors("edges:");
    plain.addNodes(3);
    plain.addLink<false>(0, 2, 1, &errors);
    plain.addLink<false>(0, 1, 1, &errors);
    plain.addLink<false>(1, 0, 1, &errors);
    plain.addNodeLinks<false>(0, {InpLink<false>(2)}, &errors);
    EXPECT_EQ(shown(errors), "edges: 0->1 1->0 2->0 0->2\n");
    EXPECT_EQ(links(plain, 0), "1:1 2:1 ");
    plain.addLink<false>(0, 1);  // nobody listens
    EXPECT_EQ(links(plain, 1), "0:1 ");
}

TEST(Assembly, LongListsStayOrdered) {
    // Arrival in several orders, and then each link once more.
    for (Id step : {1u, 7u, 40u}) {
        Graph<true> graph(0, false, true);
        StructLinkErrors errors("links:");
        graph.addNodes(42);
        for (Id i = 0; i < 41; ++i) graph.addLink<true>(41, i * step % 41, 1, &errors);
        EXPECT_EQ(errors.size, 0);
        for (Id id = 0; id < 41; ++id) graph.addLink<true>(41, id, 2, &errors);
        EXPECT_EQ(shown(errors), "links: 41->40\n");
        std::string expected;
        for (Id id = 0; id < 41; ++id) expected += std::to_string(id) + (id < 40 ? ":3 " : ":1 ");
        EXPECT_EQ(links(graph, 41), expected);
    }
}

TEST(Assembly, NamesTheNodeThatIsMissing) {
    Graph<true> graph;
    graph.addNodes(3);
    const auto starts = [](const std::string& text, const std::string& begin) {
        EXPECT_TRUE(text.starts_with(begin) && text.size() > begin.size()) << text;
    };
    const auto add = [&](Id src, Id dst) {
        return errorOf<std::out_of_range>([&] { graph.addLink<true>(src, dst); });
    };
    starts(add(7, 1), "addLink(), the link with non-existent node is used: #7.1\n");
    starts(add(1, 7), "addLink(), the link with non-existent node is used: #1.7\n");
    const auto addList = [&](Id src) {
        return errorOf<std::out_of_range>([&] {
            graph.addNodeLinks<false>(src, {InpLink<true>(2), InpLink<true>(7), InpLink<true>(0)});
        });
    };
    starts(addList(1), "acsAddNodeLinks(), the link with non-existent node is used: #7\n");
    starts(addList(8), "acsAddNodeLinks(), the link with non-existent node is used: #8\n");
    // What came before the missing node stays.
    EXPECT_EQ(links(graph, 1), "2:1 ");
    EXPECT_EQ(links(graph, 2), "1:1 ");
    EXPECT_EQ(links(graph, 0), "");
    EXPECT_THROW(graph.node(7), std::out_of_range);
}

TEST(Assembly, RefusesWeightsThatNoLinkCanHave) {
    Graph<true> graph;
    graph.addNodes(3);
    for (const float weight : {-1.f, -1e-30f, std::numeric_limits<float>::quiet_NaN()}) {
        const auto refused = [&](auto add) {
            const std::string text = errorOf<std::invalid_argument>(add);
            EXPECT_NE(text.find("the weight of the link #1.2 must be"), text.npos) << text;
        };
        refused([&] { graph.addLink<false>(1, 2, weight); });
        refused([&] { insertLink(graph.node(1), graph.node(2), weight, true, nullptr); });
        const InpLinks<true> list{InpLink<true>(0), InpLink<true>(2, weight), InpLink<true>(9)};
        refused([&] { graph.addNodeLinks<true>(1, list); });
        refused([&] { graph.addNodeAndLinks<false>(1, list); });
        EXPECT_THROW(graph.addLink<true>(1, 1, weight), std::invalid_argument);
    }
    EXPECT_EQ(ids(graph), (std::vector<Id>{0, 1, 2}));
    for (const auto& node : graph.nodes()) EXPECT_TRUE(node.links.empty() && node.weight() == 0);
    graph.addLink<true>(0, 1, 0);
    EXPECT_EQ(links(graph, 0), "1:0 ");
    graph.addLink<false>(1, 2);
    graph.node(1)->links.back().weight = -1;
    EXPECT_NE(
        errorOf<std::invalid_argument>([&] { graph.buildHierarchy(); }).find("link #1.2 must"),
        std::string::npos);
    EXPECT_EQ(graph.nodes().size(), 3u);
}

TEST(Nodes, AreAddedOnce) {
    Graph<false> graph;
    StructNodeErrors errors("nodes:");
    graph.addNodes(10, 100, &errors);
    graph.addNodes(12, 99, &errors);
    EXPECT_EQ(shown(errors), "nodes: 100 101 102 103 104 105 106 107 ...(and 2 more)\n");
    graph.addNodes({7, 99, 7}, nullptr);
    std::vector<Id> expected;
    for (Id id = 100; id < 110; ++id) expected.push_back(id);
    expected.insert(expected.end(), {99, 110, 7});
    EXPECT_EQ(ids(graph), expected);
    // A range that wraps adds nothing, one that ends below the sentinel everything.
    graph.addNodes(2, 0xFFFFFFFF);
    graph.addNodes(2, 0xFFFFFFFD);
    EXPECT_EQ(graph.nodes().size(), expected.size() + 2);
    EXPECT_EQ(graph.node(0xFFFFFFFE)->id, 0xFFFFFFFE);
    EXPECT_EQ(errorOf<std::overflow_error>([&] {
                  graph.addNodes({1, ID_NONE, 2});
              }),
              "NodeI(), overflow of id\n");
    EXPECT_EQ(graph.nodes().size(), expected.size() + 3);
}

TEST(Nodes, OfALinkListComeInItsOrder) {
    Graph<true> graph;
    graph.addNodes(NodesIdsT{6});
    graph.addNodeAndLinks<true>(
        8, {InpLink<true>(2, 3), InpLink<true>(6, 4), InpLink<true>(8, 1), InpLink<true>(1, 5)});
    EXPECT_EQ(ids(graph), (std::vector<Id>{6, 8, 2, 1}));
    EXPECT_EQ(links(graph, 8), "6:4 2:3 1:5 ");
    EXPECT_EQ(graph.node(8)->weight(), 2);
    EXPECT_TRUE(graph.directed());
}

TEST(Nodes, AreShuffledFromBothEnds) {
    std::vector<std::vector<Id>> orders;
    for (bool listed : {false, true, true}) {
        Graph<false> graph(0, true);
        std::vector<Id> given;
        for (Id id = 0; id < 64; ++id) given.push_back(id);
        if (listed)
            graph.addNodes(given);
        else
            graph.addNodes(64, 0);
        Id low = 0;
        Id high = 64;
        for (Id id : ids(graph)) {
            const bool front = id == low;
            EXPECT_TRUE(front || id == high - 1) << id;
            front ? ++low : --high;
        }
        EXPECT_EQ(low, high);
        EXPECT_EQ(graph.node(17)->id, 17);
        orders.push_back(ids(graph));
    }
    EXPECT_FALSE(std::is_sorted(orders[0].begin(), orders[0].end()));
    EXPECT_NE(orders[1], orders[2]);
}

TEST(NodesDeathTest, AreAskedFor) {
    Graph<false> graph;
    EXPECT_DEATH(graph.addNodes(0), "must be positive");
    EXPECT_DEATH(graph.addNodes(NodesIdsT{}), "acsAddNodes\\(\\)");
}

TEST(GraphState, ReleaseLeavesItEmpty) {
    Graph<true> graph(0, false, true);
    graph.addNodeAndLinks<true>(1, {InpLink<true>(2, 3)});
    Graph<true>::IdNodesT idnodes;
    idnodes.emplace(9, nullptr);
    bool directed = false;
    const auto nodes = graph.release(&idnodes, &directed);
    EXPECT_TRUE(directed);
    ASSERT_EQ(nodes->size(), 2);
    EXPECT_EQ(idnodes.size(), 2);
    EXPECT_EQ(idnodes.at(1), &nodes->front());
    EXPECT_EQ(nodes->front().links.front().dest, &nodes->back());
    EXPECT_FALSE(graph.directed());
    EXPECT_TRUE(graph.nodes().empty());
    EXPECT_THROW(graph.node(1), std::out_of_range);
    graph.addNodes(2, 1);
    EXPECT_EQ(graph.node(1)->links.size(), 0);
    EXPECT_EQ(graph.release()->size(), 2);
}

TEST(GraphState, MovesAndResets) {
    Graph<false> graph;
    graph.addNodeAndLinks<true>(1, {InpLink<false>(2)});
    const auto* node = graph.node(1);
    const auto shared = graph.toSharedPtr();
    EXPECT_EQ(shared->node(1), node);
    EXPECT_TRUE(shared->directed());
    EXPECT_TRUE(graph.nodes().empty());
    EXPECT_THROW(graph.node(1), std::out_of_range);
    graph.addNodes(3);
    EXPECT_EQ(shared->nodes().size(), 2);
    EXPECT_THROW(shared->reset(10, false, false, Reduction::MEAN), std::invalid_argument);
    EXPECT_EQ(shared->nodes().size(), 2);
    shared->reset();
    EXPECT_TRUE(shared->nodes().empty());
    EXPECT_FALSE(shared->directed());
    EXPECT_THROW(shared->node(1), std::out_of_range);
}

// The table of ids stays where it fits, up to one and a half times what is needed.
TEST(GraphState, ResetKeepsAFittingTable) {
    const auto buckets = [](Id first, Id next) {
        Graph<true> graph(first);
        if (next != ID_NONE) graph.reset(next);
        Graph<true>::IdNodesT idnodes;
        graph.release(&idnodes);
        return static_cast<Id>(idnodes.bucket_count());
    };
    const Id made = buckets(1000, ID_NONE);
    ASSERT_GE(made, 1000u);
    const auto low = static_cast<Id>(std::ceil(made / 1.5));
    for (const Id next : {Id{0}, made, low}) EXPECT_EQ(buckets(1000, next), made) << next;
    EXPECT_EQ(buckets(1000, low - 1), buckets(low - 1, ID_NONE));
    EXPECT_GT(buckets(1000, made + 1), made);
}

TEST(GraphState, HierarchyTakesTheNodes) {
    Trace trace;
    Graph<false> graph;
    EXPECT_EQ(errorOf<std::runtime_error>([&] { graph.hierarchy(); }),
              "The hierarchy has not been constructed");
    for (Id clique : {0u, 3u})
        for (Id i = 0; i < 3; ++i) {
            graph.addNodeAndLinks<false>(clique + i, {InpLink<false>(clique + (i + 1) % 3)});
        }
    graph.addLink<false>(2, 3);
    const auto* node = graph.node(4);
    const auto hier = graph.buildHierarchy();
    EXPECT_EQ(hier, graph.hierarchy());
    EXPECT_TRUE(hier->edges());
    EXPECT_EQ(hier->weight(), 14);
    EXPECT_EQ(hier->nodes().size(), 6);
    EXPECT_TRUE(graph.nodes().empty());
    EXPECT_EQ(graph.node(4), node);
    // Nothing is left for a second one.
    EXPECT_EQ(graph.buildHierarchy()->levels().size(), 0);
}

TEST(GraphReduction, NeedsWeightsAndTheNumberOfNodes) {
    const std::string words =
        ", the reduction can be performed only for the weighed directed links and requires "
        "predefined nodesNum";
    const auto refused = [](auto action) { return errorOf<std::invalid_argument>(action); };
    EXPECT_EQ(refused([] { Graph<false>(10, false, false, Reduction::MEAN); }), "Graph()" + words);
    EXPECT_EQ(refused([] { Graph<true>(0, false, false, Reduction::ACCURATE); }),
              "Graph()" + words);
    Graph<true> graph(10, false, false, Reduction::SEVERE | Reduction::CRITERIA_WEIGHT);
    EXPECT_EQ(refused([&] { graph.reset(0, false, false, Reduction::SEVERE); }), "reset()" + words);
    Graph<false>(10, false, false, Reduction::MEAN | Reduction::SKIP_NODES);
    Graph<false>(10, false, false, Reduction::CRITERIA_WEIGHT);
    Graph<true>(0, false, false, Reduction::MEAN | Reduction::SKIP_NODES);

    // One link a node, of arcs and edges; it counts as reduced only when it is directed.
    graph.addNodes(10);
    graph.addLink<false>(0, 1);
    EXPECT_FALSE(graph.reduced());
    EXPECT_EQ(errorOf<std::domain_error>([&] { graph.addLink<false>(1, 77); }),
              "addLink(), links can be added only ones for each node on graph reduction");
    graph.addLink<true>(2, 1);
    EXPECT_TRUE(graph.reduced());
    // Too few nodes for a margin.
    Graph<true> small(3, false, false, Reduction::ACCURATE);
    small.addNodes(3);
    small.addLink<true>(0, 1);
    small.addLink<true>(0, 2);
    EXPECT_FALSE(small.reduced());
}

}  // namespace
}  // namespace vorl::test
