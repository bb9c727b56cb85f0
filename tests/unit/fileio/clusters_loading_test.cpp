// The loading of clusters onto a network: links, weights and shares worked out by hand.
#include <vorl/fileio/parser_cnl.hpp>

#include "support/folder.hpp"
#include "support/links_text.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <string>

namespace vorl::test {
namespace {

/// The path 0-1-2-3 with the weights 2, 4 and 1, and a self link of weight 3 at node 1.
template <bool WEIGHTED = true>
Graph<WEIGHTED> path() {
    Graph<WEIGHTED> graph;
    graph.addNodes(4);
    graph.template addLink<false>(0, 1, 2);
    graph.template addLink<false>(1, 2, 4);
    graph.template addLink<false>(2, 3, 1);
    graph.template addLink<false>(1, 1, 3);
    return graph;
}

template <bool WEIGHTED = true>
struct Load {
    Clusters<typename Graph<WEIGHTED>::LinksT> clusters;
    AccWeight weight = 0;
    std::string trace;

    Load(Graph<WEIGHTED> graph, const std::string& text,
         Validation validation = Validation::STANDARD) {
        const Folder folder;
        Trace traced;
        weight =
            loadClusters<CnlParser>(clusters, graph, folder.write("clusters", text), validation);
        EXPECT_TRUE(graph.nodes().empty());
        EXPECT_FALSE(graph.directed());
        trace = traced.take();
    }

    /// "self weight, place of the destination:weight" of each cluster's links.
    std::string text() const {
        std::string result;
        for (const auto& cl : clusters) {
            result += digits(cl.weight()) + ",";
            for (const auto& ln : cl.links) {
                int place = 0;
                for (auto dest = clusters.begin(); &*dest != ln.dest; ++dest) ++place;
                result += " " + std::to_string(place) + ":" + digits(ln.weight);
            }
            result += "\n";
        }
        return result;
    }
};

TEST(LoadedClusters, ShareNodesEvenly) {
    const Load load(path(), "# Clusters: 2, Nodes: 4, Fuzzy: 0, Numbered: 1\n5> 0 1\n6> 3 2 1\n");
    EXPECT_EQ(load.weight, 20);
    EXPECT_EQ(load.text(), "3, 0:2 1:3\n3, 0:3 1:6\n");
    EXPECT_EQ(load.clusters.front().id, 5);
    EXPECT_EQ(load.clusters.back().id, 6);
    EXPECT_EQ(load.trace, "");
    // Unweighted, each link counts once; so does the self link.
    const Load<false> unweighted(path<false>(), "0 1\n3 2 1\n");
    EXPECT_EQ(unweighted.weight, 6 + 6);
    EXPECT_EQ(unweighted.text(), "3, 0:1 1:1\n3, 0:1 1:3\n");
}

TEST(LoadedClusters, CountStatedSharesOfTheFarEndOnlyBesideThoseOfTheNearOne) {
    // The links to node 1 count evenly, those from it by its shares.
    EXPECT_EQ(Load(path(), "0 1:0.25\n1:0.75 2 3\n").text(), "1.5, 0:1.5 1:2\n4.5, 0:3.5 1:7\n");
    // Node 2 is shared, too: between 1 and 2 the quarter of node 1 counts 0.25 * 0.5 * 4 = 0.5 and
    // its three quarters 1.5, by each half of node 2. From 2 to 3 each half counts 0.5, and the
    // links from 0 and 3 count evenly.
    EXPECT_EQ(Load(path(), "0 1:0.25 2:0.5\n1:0.75 2:0.5 3\n").text(),
              "1.5, 0:2.5 1:3.5\n4.5, 0:4 1:4\n");
    // A share of 1 isn't stated; one beside an even share isn't looked at.
    EXPECT_EQ(Load(path(), "0:1 1:1\n3:1 2 1\n").text(), "3, 0:2 1:3\n3, 0:3 1:6\n");
}

TEST(LoadedClusters, MultiplyAt32Bits) {
    Graph<true> graph;
    graph.addNodes(2);
    graph.addLink<false>(0, 1, 0.7f);
    const Load load(std::move(graph), "0:0.1 1:0.3\n0:0.9 1:0.7\n");
    const float there = 0.3f * 0.1f * 0.7f;
    const float back = 0.1f * 0.3f * 0.7f;
    EXPECT_EQ(load.clusters.front().links.front().weight, double{there} + double{back});
    EXPECT_EQ(load.weight, 2 * double{0.7f});
}

TEST(LoadedClusters, OfArcsGetBackLinks) {
    Graph<true> graph;
    graph.addNodes(3);
    graph.addLink<true>(0, 1, 2);
    graph.addLink<true>(1, 2, 0.5f);
    const Load load(std::move(graph), "0\n1\n");
    EXPECT_EQ(load.weight, 2.5);
    EXPECT_EQ(load.text(), "0, 1:2\n0, 0:0\n");
    EXPECT_EQ(load.trace,
              "> WARNING validate(), backlink does not exist. Created (with zero weight if "
              "weighted):  1->0 2->1\n"
              "WARNING loadClusters(), the node does not belong to any cluster:  2\n");
}

TEST(LoadedClusters, NeedSharesThatAddUpToOne) {
    const auto fault = [](const std::string& text) -> std::string {
        try {
            Load load(path(), text);
        } catch (const std::string& message) {
            return message;
        }
        return "";
    };
    const std::string words =
        "Accumulated value of the node share should be equal to 1, failed for #";
    EXPECT_EQ(fault("0 1:0.3\n1:0.3 2\n"), words + "1: '0.600000\n");
    EXPECT_EQ(fault("2:0.333333\n2:0.333333\n2:0.333333\n"), words + "2: '0.999999\n");
    EXPECT_EQ(fault("2:0.3333333\n2:0.3333333\n2:0.3333333\n"), "");
    EXPECT_EQ(fault("2:0.5\n"), words + "2: '0.500000\n");
    EXPECT_EQ(fault("0 1 2 3\n0 1 2 3\n0 1 2 3\n0 1 2 3\n0 1 2 3\n0 1 2 3\n0 1 2 3\n"), "");
}

TEST(LoadedClustersDeathTest, NeedAllSharesOfANodeAndAllBackLinks) {
    EXPECT_DEATH(Load(path(), "0 1:0.5\n1 2\n"), "nodeShare\\(\\), node share should exist");
    EXPECT_DEATH(
        {
            Graph<true> graph;
            graph.addNodes(2);
            graph.addLink<true>(0, 1);
            Load load(std::move(graph), "0\n1\n", Validation::NONE);
        },
        "back links must always exists, INVERSE");
}

}  // namespace
}  // namespace vorl::test
