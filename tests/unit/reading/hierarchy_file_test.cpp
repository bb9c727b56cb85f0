// Reading of hierarchies: their cuts, paths and faults.
#include <vorl/reading/hierarchy_file.hpp>

#include <gtest/gtest.h>

namespace vorl {
namespace {

// Node 3 is shared by 7 and 8, 7 by 9 and 10, and 6 is carried past level 1.
const std::string TALL =
    "/Hierarchy levels:3 clusters:7\n\n/Nodes 4\n# a comment\n5> 6\n3> 7:0.25 8:0.75\n4> 7\n1> 8\n"
    "\n/Level 0 pure:3 extended:3\n6> 11\n7> 9 10\n8> 10\n"
    "\n/Level 1 pure:2 extended:3\n9> 12\n10> 12\n"
    "\n/Level 2 pure:2 extended:2\n11>\n12>\n";

std::string replaced(std::string text, const std::string& part, const std::string& by) {
    return text.replace(text.find(part), part.size(), by);
}

using Parts = std::vector<std::pair<Id, double>>;

Parts partsOf(const HierarchyFile& file, const std::vector<HierarchyFile::Share>& shares) {
    Parts parts;
    for (const auto& [item, share] : shares) parts.emplace_back(file.id(item), share);
    return parts;
}

TEST(HierarchyFile, PathsAndParts) {
    const HierarchyFile file = parseHierarchy(TALL, "tall.rhb");
    EXPECT_EQ(file.nodes(), 4u);
    EXPECT_EQ(file.clusters(), 7u);
    EXPECT_EQ(file.levels(), 3u);
    const auto path = file.ancestors(file.node(3));
    EXPECT_EQ(partsOf(file, path), (Parts{{7, 0.25}, {8, 0.75}, {9, 0.125}, {10, 0.875}, {12, 1}}));
    EXPECT_EQ(partsOf(file, file.members(file.cluster(9))), (Parts{{3, 0.125}, {4, 0.5}}));
    EXPECT_EQ(partsOf(file, file.members(file.cluster(12))), (Parts{{3, 1}, {4, 1}, {1, 1}}));
    EXPECT_EQ(partsOf(file, file.parts(file.cluster(10))), (Parts{{7, 0.5}, {8, 1}}));
    EXPECT_EQ(file.levelOf(file.cluster(8)), 0u);
    EXPECT_EQ(file.levelOf(file.cluster(12)), 2u);
    EXPECT_THROW(file.node(6), InputError);
    EXPECT_THROW(file.cluster(5), InputError);
}

TEST(HierarchyFile, CutsAreWholeLevels) {
    const HierarchyFile file = parseHierarchy(TALL, "tall.rhb");
    EXPECT_EQ(file.cut(0).strictText(4),
              "# Clusters: 3, Nodes: 4, Fuzzy: 1, Numbered: 1\n"
              "6> 5\n7> 3:0.25 4\n8> 1 3:0.75\n");
    EXPECT_EQ(file.cut(1).strictText(4),
              "# Clusters: 3, Nodes: 4, Fuzzy: 1, Numbered: 1\n"
              "6> 5\n9> 3:0.125 4\n10> 1 3:0.875 4\n");
    EXPECT_EQ(file.cut(2).strictText(9),
              "# Clusters: 2, Nodes: 9, Fuzzy: 0, Numbered: 1\n11> 5\n12> 1 3 4\n");
    EXPECT_EQ(file.standingClusters(), (std::vector<HierarchyFile::Item>{3, 3, 2}));
    EXPECT_EQ(file.nearestLevel(100), 0u);
    EXPECT_EQ(file.nearestLevel(2), 2u);
    // What isn't in a cluster yet is missing.
    const HierarchyFile late = parseHierarchy(
        "/Hierarchy levels:2 clusters:2\n/Nodes 2\n0> 0\n1> 1\n/Level 0 pure:1 extended:1\n0> 1\n"
        "/Level 1 pure:1 extended:1\n1>\n",
        "");
    EXPECT_EQ(late.cut(0).nodes, (std::vector<Id>{0}));
    EXPECT_EQ(late.cut(1).nodes, (std::vector<Id>{0, 1}));
}

TEST(HierarchyFile, FaultsAreTold) {
    const struct {
        std::string text;
        const char* message;
    } cases[] = {
        {"", "tall.rhb:1: the file ends, \"/Hierarchy\" is expected"},
        {"1 2\n",
         "tall.rhb:1: found \"1 2\", a hierarchy, which begins with \"/Hierarchy\", is expected"},
        {replaced(TALL, "levels:3", "levels:x"), "tall.rhb:1: \"levels:\" is \"x\""},
        {replaced(TALL, "levels:3", "levels:4"), "the file ends after 3 levels"},
        {replaced(TALL, "levels:3", "levels:2"), "tall.rhb:19: found level 2, no further level"},
        {replaced(TALL, "clusters:7", "clusters:8"), "the file has 7 clusters"},
        {replaced(TALL, "/Nodes 4", "/Nodes 5"), "tall.rhb:3: the section tells of 5 nodes"},
        {replaced(TALL, "pure:2", "pure:1"), "tall.rhb:15: the section tells of 1 cluster"},
        {replaced(TALL, "5> 6", "5 6"), "tall.rhb:5: the line begins with \"5\""},
        {replaced(TALL, "5> 6", "3> 6"), "tall.rhb:6: node 3 stands twice"},
        {replaced(TALL, "5> 6", "5> 66"), "tall.rhb:5: the owner 66 is no cluster"},
        {replaced(TALL, "9> 12", "9> 10"), "tall.rhb:16: the owner 10 isn't of a higher level"},
        {replaced(TALL, "8> 10", "8> 10 12"), "there are owners of several levels"},
        {replaced(TALL, "7> 9 10", "7> 9 9"), "tall.rhb:12: the owner 9 stands twice"},
        {replaced(TALL, "0.25", "0"), "tall.rhb:6: the share in cluster 7 is \"0\""},
        {replaced(TALL, "0.25", "0.2"), "tall.rhb:6: the shares add up to 0.95, 1 is expected"},
        {replaced(TALL, "7:0.25", "7"), "tall.rhb:6: shares for some of the owners only"},
    };
    for (const auto& [text, message] : cases) try {
            parseHierarchy(text, "tall.rhb");
            ADD_FAILURE() << text << message;
        } catch (const InputError& err) {
            EXPECT_NE(std::string(err.what()).find(message), std::string::npos)
                << err.what() << '\n'
                << message;
        }
}

}  // namespace
}  // namespace vorl
