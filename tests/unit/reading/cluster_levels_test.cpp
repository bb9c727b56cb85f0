// Tables of memberships, and clusters of several levels.
#include <vorl/reading/cluster_levels.hpp>

#include "support/folder.hpp"

#include <gtest/gtest.h>

namespace vorl {
namespace {

using Lists = std::vector<std::vector<Id>>;

Lists listsOf(const ClustersFile& file) {
    Lists lists;
    for (const auto& cluster : file.clusters) {
        const auto members = file.membersOf(cluster);
        lists.emplace_back(members.begin(), members.end());
    }
    return lists;
}

TEST(Table, FormsThatMeanTheSame) {
    for (const char* text : {
             "1\t10\n2\t10\n3\t9\n",
             "node,community\n1,10\n2,10\n3,9\n",
             "\xEF\xBB\xBF\"node\";\"cluster\"\r\n1;\"10\"\r\n2;\"10\"\r\n3;\"9\"\r\n",
             "# node_id module flow\n# another comment\n1 10 0.5\n2 10 0.25\n3 9 0.25\n",
             "module  name\n10 1\n 10\t2\n\n9  3",
             "*Vertices 3\n10\n10\n9\n",
             "1 10 7 8\n2 10\n3 9 x\n",
             "{\"node\": 1, \"x\": [{}], \"module\": 10}\n{\"node\":\"2\",\"module\":\"10\"}\n\n"
             "{\"node\":3,\n\"module\":9}\n",
             "# c\n[ "
             "{\"Cluster\":10,\"id\":1},{\"Cluster\":10,\"id\":2},\n{\"Cluster\":9,\"id\":3}]",
         }) {
        const ClustersFile file = parseTable(text, "a.tsv");
        EXPECT_EQ(listsOf(file), (Lists{{3}, {1, 2}})) << text;
        EXPECT_TRUE(file.numbered && file.shares.empty()) << text;
        EXPECT_EQ(file.clusters[1].id, 10u);
    }
    const ClustersFile named = parseTable("1 west\n2 east\n3 west\n", "");
    EXPECT_FALSE(named.numbered);
    EXPECT_EQ(listsOf(named), (Lists{{1, 3}, {2}}));
    EXPECT_EQ(named.lineOf(named.clusters[0], 1), 3u);
}

TEST(Table, SharesStandInTheirColumn) {
    const ClustersFile file =
        parseTable("node\tcommunity\tshare\n4\t0\t1\n5\t0\t0.25\n5\t1\t0.75\n", "a.txt");
    EXPECT_EQ(file.completeShares(), (std::vector<Share>{1, 0.25f, 0.75f}));
    EXPECT_TRUE(file.deviations.empty());
    const ClustersFile odd = parseTable("share node group\n0.5 4 0\n0.25 4 1\n", "a.txt");
    ASSERT_EQ(odd.deviations.size(), 1u);
    EXPECT_EQ(odd.deviations[0].kind, Deviation::SHARES_UNBALANCED);
    EXPECT_EQ(odd.deviations[0].line, 2u);
}

TEST(Table, FaultsAreTold) {
    const std::pair<const char*, const char*> cases[] = {
        {"1 2\n3\n", "a.tsv:2: the line has 1 word, a cluster is expected in column 2"},
        {"1 2\nx 3\n", "a.tsv:2: the node is \"x\""},
        {"1 2\n-1 3\n", "a.tsv:2: the node is \"-1\""},
        {"1 2\n4 2\n1 2\n", "a.tsv:3: node 1 is in its cluster already by line 1"},
        {"node cluster share\n1 2 1.5\n", "a.tsv:2: the share of node 1 is \"1.5\""},
        {"foo bar\n1 2\n", "a.tsv:1: the node is \"foo\""},
        {"{\"node\": 1}\n", "a.tsv:1: the object has no keys for a node and its cluster"},
        {"{\"node\":1,\"group\":2}\n{\"node\":1}\n", "a.tsv:2: the object has other keys"},
        {"{\"node\":1,\"group\":2}\n3 4\n", "a.tsv:2: found \"3 4\", an object"},
        {"[{\"node\":1,\"group\":2}\n", "a.tsv:1: found the end of the file, \"]\" is expected"},
        {"{\"node\":1,\"group\":2\n", "a.tsv:1: found the end of the file, \"}\" is expected"},
        {"{\"node\":-1,\"group\":2}\n{\"node\":\"\",\"group\":2}\n",
         "a.tsv:2: the node is \"\", a name"},
        {"{\"node\":1,\"group\":2,\"share\":null}\n", "a.tsv:1: the share of node 1 is \"null\""},
    };
    for (const auto& [text, message] : cases) try {
            parseTable(text, "a.tsv");
            ADD_FAILURE() << text;
        } catch (const InputError& err) {
            EXPECT_EQ(std::string(err.what()).find(message), 0u) << err.what();
        }
}

TEST(ClusterLevels, ClustersInsideOthersAreLevels) {
    // The header counts a cluster that has no line of its own.
    const ClustersFile file = parseClusters(
        "# Clusters: 8, Nodes: 8, Fuzzy: 1, Numbered: 1\n1> 1 2\n2> 3 4\n3> 2 5\n6> 1 2 3 4\n"
        "7> 2 5 6\n9> 6 5 4 3 2 1\n10> 8 9\n",
        "a.cnl");
    EXPECT_TRUE(file.severalLevels);
    EXPECT_TRUE(file.deviations.empty()) << file.deviationsText();
    EXPECT_EQ(file.nestedLevels(), (std::vector<std::vector<Id>>{{0, 1, 2, 6}, {3, 4, 6}, {5, 6}}));
    const ClusterLevels levels(file);
    EXPECT_EQ(levels.levels(), 3u);
    EXPECT_EQ(listsOf(levels.level(1)), (Lists{{1, 2, 3, 4}, {2, 5, 6}, {8, 9}}));
    EXPECT_FALSE(levels.level(1).severalLevels);
    EXPECT_EQ(levels.level(2).clusters[1].id, 10u);
    EXPECT_EQ(levels.membersOf(7), (std::vector<Id>{2, 5, 6}));

    // One inner cluster among many is no hierarchy, nor are two equal clusters.
    EXPECT_FALSE(parseClusters("1 2 3\n1 2\n4 5\n5 6\n", "").severalLevels);
    EXPECT_FALSE(parseClusters("1 2\n2 1\n", "").severalLevels);
    // Fewer clusters than the header tells are a fault where nothing tells of levels.
    const ClustersFile cutOff = parseClusters("# Clusters: 3\n1 2\n2 3\n", "");
    EXPECT_EQ(cutOff.deviations.size(), 1u);
}

TEST(ClusterLevels, TablesMayTellOfLevels) {
    // Cluster 5 stands on both levels.
    const std::string rows =
        "1\t0\t3\t1\n2\t0\t3\t1\n3\t0\t4\t1\n4\t0\t4\t1\n6\t0\t5\t0.25\n"
        "1\t1\t7\t1\n2\t1\t7\t1\n3\t1\t7\t1\n4\t1\t7\t1\n6\t1\t5\t0.25\n";
    const ClusterLevels levels(parseTable("node\tlevel\tcluster\tshare\n" + rows, "a.tsv"));
    ASSERT_TRUE(levels.severalLevels());
    ASSERT_EQ(levels.levels(), 2u);
    EXPECT_EQ(listsOf(levels.level(0)), (Lists{{1, 2}, {3, 4}, {6}}));
    EXPECT_EQ(listsOf(levels.level(1)), (Lists{{6}, {1, 2, 3, 4}}));
    // Without the name of its column, a level says nothing.
    EXPECT_THROW(parseTable("node\theight\tcluster\tshare\n" + rows, "a.tsv"), InputError);
    const auto apart = parseTable("node level cluster\n1 0 3\n2 0 3\n3 1 4\n4 1 4\n", "a.tsv");
    EXPECT_EQ(apart.nestedLevels(), (std::vector<std::vector<Id>>{{0}, {1}}));
    // Told levels count, lowest first, whatever lies inside what; 10 is above 9.
    const auto told =
        parseTable("node level cluster\n1 10 8\n2 10 8\n3 10 8\n1 9 6\n2 9 6\n3 9 5\n", "");
    EXPECT_EQ(told.nestedLevels(), (std::vector<std::vector<Id>>{{0, 1}, {2}}));
    try {
        parseTable("node level cluster\n1 0 0\n2 0 1\n1 1 0\n2 1 0\n", "a.tsv");
        ADD_FAILURE();
    } catch (const InputError& err) {
        EXPECT_STREQ(err.what(),
                     "a.tsv:4: the cluster has other members than on the level of line 2, a name "
                     "of its own is expected");
    }
}

TEST(ClusterLevels, LinesOfPairsLookLikeATable) {
    EXPECT_TRUE(ClusterLevels(parseClusters("1 7\n2 7\n3 8\n4 8\n", "")).likeTable());
    EXPECT_FALSE(ClusterLevels(parseClusters("1 2\n3 4\n5 6\n7 8\n", "")).likeTable());
    const auto named = [](std::string_view text) {
        TextSource source(text);
        Lines lines(source, "f");
        return beginsWithNames(lines);
    };
    EXPECT_TRUE(named("# a comment\n\nNode\tCommunity\tshare\n"));
    EXPECT_FALSE(named("1 2\n"));
}

TEST(ClusterLevels, NamesMayBeThoseOfHeaders) {
    const test::Folder folder;
    const auto membersOf = [&](const std::string& name, const std::string& text) {
        const ClustersFile file = readClusterLevels(folder.write(name, text)).flat();
        std::string members;
        for (const auto& cluster : file.clusters) {
            for (const Id node : file.membersOf(cluster)) members += file.nodeName(node) + " ";
            members += "| ";
        }
        return members;
    };
    const std::string header = "# Clusters: 2, Nodes: 4, Fuzzy: 0, Numbered: 0\n";
    EXPECT_EQ(membersOf("a.cnl", header + "\"node\" \"group\"\n\"id\" \"x\"\n"),
              "node group | id x | ");
    EXPECT_EQ(membersOf("a.txt", "\"*Vertices\" \"b\"\n\"c\" \"d\"\n"), "*Vertices b | c d | ");
    EXPECT_EQ(membersOf("a.tsv", "node\tcluster\tshare\n\"*Vertices\"\t0\t1\nb\t0\t1\nc\t1\t1\n"),
              "*Vertices b | c | ");
    // Without quotes, and in front of all, it is the header.
    EXPECT_EQ(membersOf("b.clu", "*Vertices 3\n5\n5\n6\n"), "1 2 | 3 | ");
    EXPECT_EQ(membersOf("b.txt", "*Vertices 3\n5\n5\n6\n"), "1 2 | 3 | ");
}

}  // namespace
}  // namespace vorl
