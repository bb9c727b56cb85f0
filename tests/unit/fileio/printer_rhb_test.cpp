// The description of a hierarchy made by hand.
#include <vorl/fileio/printer_rhb.hpp>
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include "support/folder.hpp"

#include <gtest/gtest.h>

#include <ios>

namespace vorl::test {
namespace {

using ImplT = HierarchyImpl<false, UnweightedLinks>;
using ClusterT = ImplT::ClusterT;

void own(ImplT::NodeT& node, ClusterT& cluster, Size numac) {
    node.owners.emplace_back(&cluster, numac);
    node.totac += static_cast<std::uint32_t>(numac);
}

TEST(HierarchyDescription, TellsSharesWhereTheyDiffer) {
    ImplT::NodesT nodes;
    for (Id id : {4u, 0u, 1u, 2u, 3u}) nodes.emplace_back(id);
    ImplT hier(std::move(nodes), ClusterOptions());
    ImplT::ClustersT lower;
    ClusterT& seven = lower.emplace_back(LevelNum{0}, Id{7}, Size{0});
    ClusterT& eight = lower.emplace_back(LevelNum{0}, Id{8}, Size{0});
    ImplT::ClustersT upper;
    ClusterT& nine = upper.emplace_back(LevelNum{1}, Id{9}, Size{0});
    eight.owners.emplace_back(&nine, 5);
    auto node = std::next(hier.m_nodes.begin());  // the first one stays alone
    own(*node++, seven, 3);
    own(*node, seven, 3);
    own(*node++, eight, 1);
    own(*node, seven, 2);
    own(*node++, eight, 2);
    own(*node, seven, 1);
    own(*node, eight, 1);
    own(*node, nine, 4);
    hier.m_levels.emplace_back(2, std::move(lower));
    hier.m_levels.emplace_back(5, std::move(upper));
    hier.m_score.clusters = 3;

    const Folder folder;
    const std::string name = (folder / "out.rhb").string();
    FileWrapper file(std::fopen(name.c_str(), "w"));
    RhbPrinter<UnweightedLinks>(hier).output(file);
    file.reset();
    EXPECT_EQ(contents(name),
              "/Hierarchy levels:2 clusters:3\n"
              "\n/Nodes 5\n"
              "# node1_id> owner1_id[:share1] owner2_id[:share2] ...\n"
              "4>\n"
              "0> 7\n"
              "1> 7:0.75 8:0.25\n"
              "2> 7 8\n"
              "3> 7:0.166667 8:0.166667 9:0.666667\n"
              "\n/Level 0 pure:2 extended:2\n"
              "7>\n"
              "8> 9\n"
              "\n/Level 1 pure:1 extended:5\n"
              "9>\n");
}

TEST(HierarchyDescription, ThatCannotBeWrittenFails) {
    const ImplT hier(ImplT::NodesT{}, ClusterOptions{});
    FileWrapper file(std::fopen("/dev/full", "w"));
    EXPECT_THROW(RhbPrinter<UnweightedLinks>(hier).output(file), std::ios_base::failure);
}

}  // namespace
}  // namespace vorl::test
