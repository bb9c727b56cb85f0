// The unfolding of clusters into nodes with their shares.
#include "support/hand_made.hpp"
#include "support/links_text.hpp"

#include <gtest/gtest.h>

#include <string>

namespace vorl::test {
namespace {

using ClusterT = HandMade::ClusterT;

/// "node:share" of all nodes, in the order of the unfolding.
std::string unwrapped(const HandMade& made, const ClusterT& cl, bool maxshare = false) {
    std::string result;
    for (const auto& [node, share] : made.hier.unwrap(cl, maxshare))
        result += std::to_string(node->id) + ":" + digits(double{share}) + " ";
    return result;
}

TEST(Unwrapping, AddsUpSharesOverAllPaths) {
    HandMade made(4);
    made.level(2);
    ClusterT& a = made.cluster(10, {{&made.node(1), 1}, {&made.node(0), 1}});
    ClusterT& b = made.cluster(11, {{&made.node(2), 2}, {&made.node(1), 3}});
    made.level(2);
    ClusterT& c = made.cluster(12, {{&b, 1}, {&a, 2}});
    ClusterT& d = made.cluster(13, {{&made.node(3), 1}, {&b, 2}});
    EXPECT_EQ(unwrapped(made, a), "0:1 1:0.25 ");
    EXPECT_EQ(unwrapped(made, b), "1:0.75 2:1 ");
    // A third of b: of node 1 a quarter by a, and a third of three quarters by b.
    EXPECT_EQ(unwrapped(made, c), "0:1 1:0.5 2:0.333333 ");
    // A node is reached before those that lie a level deeper.
    EXPECT_EQ(unwrapped(made, d), "3:1 1:0.5 2:0.666667 ");
    for (const auto& [node, share] : made.hier.unwrap(d))
        if (node->id == 2) {
            EXPECT_EQ(share, static_cast<float>(2. / 3));
        }
}

TEST(Unwrapping, AddsUpPathsOfDifferentLengths) {
    HandMade made(3);
    made.level(2);
    ClusterT& a = made.cluster(10, {{&made.node(0), 1}, {&made.node(1), 1}});
    ClusterT& b = made.cluster(11, {{&made.node(0), 3}, {&made.node(2), 1}});
    made.level(1);
    ClusterT& c = made.cluster(12, {{&a, 1}});
    made.level(1);
    // The nodes of a are reached twice, also the one that has no other owner.
    ClusterT& d = made.cluster(13, {{&a, 3}, {&b, 1}, {&c, 1}});
    EXPECT_EQ(unwrapped(made, c), "0:0.0625 1:0.25 ");
    EXPECT_EQ(unwrapped(made, d), "0:1 1:1 2:1 ");
    EXPECT_EQ(unwrapped(made, d, true), "1:0.75 0:0.75 2:1 ");
}

TEST(Unwrapping, GivesAnOnlyOwnerTheWholeItem) {
    HandMade made(2);
    made.level(1);
    ClusterT& cl = made.cluster(10, {{&made.node(0), 0}, {&made.node(1), 2}});
    made.node(1).totac = 3;
    made.level(1);
    ClusterT& top = made.cluster(11, {{&cl, 0}});
    EXPECT_EQ(unwrapped(made, top), "0:1 1:1 ");
    EXPECT_EQ(unwrapped(made, top, true), "0:1 1:1 ");
}

TEST(Unwrapping, MayKeepToTheLargestShares) {
    HandMade made(3);
    made.level(3);
    ClusterT& a = made.cluster(10, {{&made.node(0), 2}, {&made.node(1), 1}});
    ClusterT& b = made.cluster(11, {{&made.node(0), 2}, {&made.node(1), 1}, {&made.node(2), 1}});
    ClusterT& c = made.cluster(12, {{&made.node(0), 1}, {&made.node(1), 2}});
    made.level(2);
    ClusterT& d = made.cluster(13, {{&a, 1}, {&b, 1}});
    ClusterT& e = made.cluster(14, {{&b, 4}, {&c, 1}});
    // Equal largest shares all count, and aren't scaled.
    EXPECT_EQ(unwrapped(made, a, true), "0:0.4 ");
    EXPECT_EQ(unwrapped(made, b, true), "0:0.4 2:1 ");
    EXPECT_EQ(unwrapped(made, c, true), "1:0.5 ");
    // Clusters go to their largest owner, too.
    EXPECT_EQ(unwrapped(made, d, true), "0:0.4 ");
    EXPECT_EQ(unwrapped(made, e, true), "0:0.32 2:0.8 1:0.5 ");
}

TEST(UnwrappingDeathTest, NeedsOwnersThatFit) {
    HandMade made(1);
    made.level(2);
    ClusterT& a = made.cluster(10, {{&made.node(0), 1}});
    ClusterT& b = made.cluster(11, {{&made.node(0), 1}});
    made.node(0).owners.pop_back();
    EXPECT_DEATH(made.hier.unwrap(b), "unwrap\\(\\), des must have current cluster as an owner");
    made.node(0).owners.push_back(made.node(0).owners.front());
    EXPECT_DEATH(made.hier.unwrap(a, true), "unwrap\\(\\), the owners should be unique");
}

}  // namespace
}  // namespace vorl::test
