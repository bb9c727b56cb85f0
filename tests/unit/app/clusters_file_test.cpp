// Reading of cluster files: what is accepted, what is brought into the strict form, what is
// refused.
#include "app/clusters_file.hpp"
#include "app/errors.hpp"
#include "cli/program.hpp"

#include <vorl/fileio/parser_cnl.hpp>
#include <vorl/graph.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace vorl::app {
namespace {

using namespace std::string_literals;

std::vector<std::vector<Id>> clustersOf(const ClustersFile& file) {
    std::vector<std::vector<Id>> clusters;
    for (const auto& cluster : file.clusters) {
        const auto members = file.membersOf(cluster);
        clusters.emplace_back(members.begin(), members.end());
    }
    return clusters;
}

std::vector<Deviation::Kind> kindsOf(const ClustersFile& file) {
    std::vector<Deviation::Kind> kinds;
    for (const auto& deviation : file.deviations) kinds.push_back(deviation.kind);
    return kinds;
}

TEST(ClustersFile, FormsThatMeanTheSame) {
    for (const std::string& text : {
             "1 2\n2 3\n"s,
             "1 2\n2 3"s,
             "\xEF\xBB\xBF# Clusters: 2, Nodes: 3, Fuzzy: 0, Numbered: 0\r\n1 2 \r\n2 3 \r\n"s,
             "\n# by hand\n \t#\n# CLUSTERS: 2 fuzzy: 1\n\t1\t 2\n\n# Clusters: 7\n2 3\n"s,
             "# Clusters: 2, Nodes: 900, Fuzzy: 1, Numbered: 1\n5> 1 2\n0>2 3\n"s,
             "# clusters\n# clusters:2\n# Nodes: 1\n1 2\n2 3\n"s,
             "# Clusters: 0, Nodes: 0\n1:1 2:0.5\n2:.5 3\n"s,
         }) {
        const ClustersFile file = parseClusters(text, "a.cnl");
        EXPECT_EQ(clustersOf(file), (std::vector<std::vector<Id>>{{1, 2}, {2, 3}})) << text;
        EXPECT_EQ(file.nodes, (std::vector<Id>{1, 2, 3})) << text;
        EXPECT_TRUE(file.deviations.empty()) << text << file.deviationsText();
        EXPECT_EQ(file.completeShares(), (std::vector<Share>{1, 0.5f, 0.5f, 1})) << text;
    }
    const ClustersFile numbered = parseClusters("#\n# Clusters: 1, Numbered: 1\n\n7>4\n", "");
    EXPECT_EQ(numbered.clusters[0].id, 7u);
    EXPECT_EQ(numbered.clusters[0].line, 4u);
}

TEST(ClustersFile, DeviationsAreFound) {
    const struct {
        const char* text;
        std::vector<Deviation::Kind> kinds;
        std::size_t line;
        const char* found;
    } cases[] = {
        {"#\n# Clusters: 30\n1 2\n", {Deviation::CLUSTERS_COUNT}, 2, "tells of 30 clusters"},
        {"# Clusters: 4294967295\n", {Deviation::CLUSTERS_COUNT}, 1, ", the file has 0"},
        {"# Clusters: 1, Nodes: 1\n1 2\n", {Deviation::NODES_COUNT}, 1, "1 node, the file has 2"},
        {"\n5>1 2\n6> 2\n", {Deviation::UNTOLD_NUMBERS}, 2, "doesn't tell"},
        {"# Clusters: 2, Numbered: 1\n1> 4\n2>\n",
         {Deviation::EMPTY_CLUSTERS},
         3,
         "1 cluster without"},
        {"1\n2 3:0.5\n1 3:0.25\n2 3:0.25\n9:0.5\n3\n",
         {Deviation::SHARES_LEFT_OUT, Deviation::SHARES_UNBALANCED},
         2,
         "for node 3"},
        {"1:0.333333\n1:0.333333\n1:0.333333\n", {Deviation::SHARES_ROUNDED}, 1, "node 1"},
        {"4\n1:0.3 2:0.7 4\n2:0.4 1:0.3\n",
         {Deviation::SHARES_UNBALANCED},
         2,
         "for 2 nodes (the first is 1), but to 0.6"},
    };
    for (const auto& expected : cases) {
        const ClustersFile file = parseClusters(expected.text, "a.cnl");
        ASSERT_EQ(kindsOf(file), expected.kinds) << expected.text << file.deviationsText();
        EXPECT_EQ(file.deviations[0].line, expected.line) << expected.text;
        EXPECT_NE(file.deviations[0].found.find(expected.found), std::string::npos)
            << file.deviations[0].found;
        EXPECT_THROW(file.requireStrict(), InputError);
    }
    // Shares of no concern are not told of.
    EXPECT_EQ(parseClusters("1:0.3\n1:0.3\n", "").deviationsText(false), "");
}

/// Shares of each node as a reader with 32-bit sums would add them up.
void expectStrict(const ClustersFile& file) {
    std::map<Id, std::pair<Share, Size>> sums;
    const std::vector<Share> shares = file.completeShares();
    for (std::size_t i = 0; i < shares.size(); ++i) {
        EXPECT_GT(shares[i], 0);
        auto& [sum, count] = sums[file.members[i]];
        sum += shares[i];
        ++count;
    }
    for (const auto& [node, sum] : sums)
        EXPECT_TRUE(equal(sum.first, 1, sum.second)) << node << " " << sum.first;
    for (std::size_t i = 0; i < shares.size(); ++i)
        EXPECT_EQ(shares[i] == 1, sums[file.members[i]].second == 1);
}

/// Loads the clusters onto a path of their nodes; what the library refuses stops the process.
void expectLoads(const ClustersFile& file) {
    if (file.nodes.empty()) return;
    const test::Folder folder;
    Graph<true> graph;
    graph.addNodes(file.nodes);
    for (std::size_t i = 1; i < file.nodes.size(); ++i)
        graph.addLink<false>(file.nodes[i - 1], file.nodes[i]);
    Clusters<WeightedLinks> clusters;
    EXPECT_NO_THROW(loadClusters<CnlParser>(
        clusters, graph, folder.write("strict.cnl", file.strictText()), Validation::NONE));
    EXPECT_EQ(clusters.size(), file.clusters.size());
}

TEST(ClustersFile, StrictTextReadsBack) {
    std::string many;
    std::string manyStated;
    for (int i = 0; i < 500; ++i) {
        many += "7 8\n";
        manyStated += i == 0 ? "7:0.9\n" : "7:0.001\n";
    }
    for (const std::string& text : {
             "3> 1:0.5 9\n5> 1\n4> 1:0.166667\n"s,
             "# Clusters: 9, Nodes: 1\n1:0.3 2\n1:0.3 2\n2\n"s,
             "1:1\n1:1e-30\n"s,
             "1:1e-30 2\n1:1e-30 2:1\n1:1e-30\n"s,
             "1:0.25\n"s,
             "# Clusters: 3, Nodes: 2, Fuzzy: 1, Numbered: 1\n1>\n2> 3\n3> 3:1\n"s,
             "# Clusters: 5\n"s,
             many,
             manyStated,
         }) {
        const ClustersFile file = parseClusters(text, "a.cnl");
        expectStrict(file);
        expectLoads(file);
        const ClustersFile again = parseClusters(file.strictText(), "b.cnl");
        EXPECT_TRUE(again.deviations.empty()) << text << again.deviationsText();
        EXPECT_EQ(clustersOf(again), clustersOf(file)) << text;
        EXPECT_EQ(again.completeShares(), file.completeShares()) << text;
        EXPECT_EQ(again.strictText(), file.strictText()) << text;
        for (std::size_t i = 0; i < file.clusters.size(); ++i)
            EXPECT_EQ(again.clusters[i].id, file.clusters[i].id);
    }
    // The part that isn't stated is the even one, and shares that add up keep their bits.
    EXPECT_EQ(parseClusters("1:0.1 2\n1:0.9 2:0.25\n2:0.41666666\n", "").strictText(),
              "# Clusters: 3, Nodes: 2, Fuzzy: 1, Numbered: 0\n1:0.100000001 2:0.333333343\n"
              "1:0.899999976 2:0.25\n2:0.416666657\n");
}

TEST(ClustersFile, FaultsAreToldByLine) {
    const std::string nodes = "node is \"";
    const struct {
        std::string text;
        std::string message;
    } cases[] = {
        {"1 2\nhello\n", "a.cnl:2: the node is \"hello\", an id of decimal digits is expected"},
        {"1 -2\n", ":1: the node is \"-2\", an id of decimal"},
        {"1 +2\n", ":1: the node is \"+2\""},
        {"1,2\n", ":1: the node is \"1,2\""},
        {"0x10\n", ":1: the node is \"0x10\""},
        {"1 4294967295\n", ":1: the node is \"4294967295\", an id below 4294967295 is expected"},
        {"1 99999999999999999999999\n", ":1: the node is \"99999999999999999999999\", an id below"},
        {"1 " + std::string(1 << 20, '7') + "\n", "77...\", an id below"},
        {"1 \x01\n", ":1: the node is \"?\""},
        {"1 2 #3\n", ":1: the node is \"#3\""},
        {"1 2\n3 4 5 4\n", ":2: node 4 stands twice in the line"},
        {"1 2:0\n", ":1: the share of node 2 is \"0\", a number above 0 and up to 1"},
        {"1 2:1.5\n", ":1: the share of node 2 is \"1.5\""},
        {"1 2:-0.5\n", ":1: the share of node 2 is \"-0.5\""},
        {"1 2:nan\n", ":1: the share of node 2 is \"nan\""},
        {"1 2:inf\n", ":1: the share of node 2 is \"inf\""},
        {"1 2:1e-50\n", ":1: the share of node 2 is \"1e-50\""},
        {"1 2:1e400\n", ":1: the share of node 2 is \"1e400\""},
        {"1 2:\n", ":1: the share of node 2 is \"\""},
        {"1 2: 0.5\n", ":1: the share of node 2 is \"\""},
        {"1 2:0.5x\n", ":1: the share of node 2 is \"0.5x\""},
        {"1 2:0.5:0.5\n", ":1: the share of node 2 is \"0.5:0.5\""},
        {"1 :0.5\n", ":1: the node is \"\""},
        {"1> 2\n3\n", ":2: the line begins with \"3\", a cluster's id directly followed by \">\""},
        {"# Clusters: 1, Numbered: 1\n5 > 1\n", ":2: the line begins with \"5\", a cluster's id"},
        {"# Clusters: 1, Numbered: 1\n>1\n", ":2: the line begins with \">1\""},
        {"# Clusters: 1, Numbered: 1\n4294967295> 1\n", ":2: the cluster's id is \"4294967295\""},
        {"# Clusters: 1, Numbered: 0\n5> 1\n", ":2: the node is \"5>\""},
        {"1 2\n5> 1\n", ":2: the node is \"5>\""},
        {"# Clusters: many\n1\n", ":1: the header's \"Clusters:\" is \"many\", a whole number"},
        {"# Clusters: 4294967296\n1\n", ":1: the header's \"Clusters:\" is \"4294967296\""},
        {"#\n# Clusters: 1, Nodes: -1\n1\n", ":2: the header's \"Nodes:\" is \"-1\""},
        {"# Clusters: 1, Fuzzy: yes\n1\n", ":1: the header's \"Fuzzy:\" is \"yes\""},
        {"# Clusters: 1, Numbered: ,\n1\n", ":1: the header's \"Numbered:\" is \"\""},
        {"1 2\n3 \0 4\n"s, ":2: a NUL byte: the file is binary"},
    };
    for (const auto& fault : cases) {
        try {
            parseClusters(fault.text, "a.cnl");
            ADD_FAILURE() << fault.text.substr(0, 40);
        } catch (const InputError& err) {
            EXPECT_NE(std::string(err.what()).find(fault.message), std::string::npos) << err.what();
            EXPECT_TRUE(std::string(err.what()).starts_with("a.cnl:"));
        }
    }
}

}  // namespace
}  // namespace vorl::app
