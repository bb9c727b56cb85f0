// Reading of cluster files: what is accepted, what is brought into the strict form, what is
// refused.
#include <vorl/reading/clusters_file.hpp>

#include "cli/program.hpp"

#include <gtest/gtest.h>

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
        {"4 5\n1:0.3 2:0.7 4\n2:0.4 1:0.3 6\n",
         {Deviation::SHARES_UNBALANCED},
         2,
         "for 2 nodes (the first is 1), but to 0.6"},
    };
    for (const auto& expected : cases) {
        const ClustersFile file = parseClusters(expected.text, "a.cnl");
        ASSERT_EQ(kindsOf(file), expected.kinds) << expected.text << file.deviationsText();
        EXPECT_EQ(file.deviations[0].line, expected.line) << expected.text;
        EXPECT_TRUE(test::contains(file.deviations[0].found, expected.found))
            << file.deviations[0].found;
        EXPECT_THROW(file.requireStrict(), InputError);
    }
    // Shares of no concern are not told of.
    EXPECT_EQ(parseClusters("1:0.3\n1:0.3\n", "").deviationsText(false), "");
}

// That it reads back as the same clusters is what the fuzz target checks of its saved inputs.
TEST(ClustersFile, StrictTextStatesAllShares) {
    // The part that isn't stated is the even one, and shares that add up keep their bits.
    EXPECT_EQ(parseClusters("1:0.1 2\n1:0.9 2:0.25\n2:0.41666666\n", "").strictText(),
              "# Clusters: 3, Nodes: 2, Fuzzy: 1, Numbered: 0\n1:0.100000001 2:0.333333343\n"
              "1:0.899999976 2:0.25\n2:0.416666657\n");
}

}  // namespace
}  // namespace vorl::app
