// Chains of an item's candidates, and the choice among them.
#include "unit/hierarchy/bench.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace vorl::test {
namespace {

using NodeT = Node<WeightedLinks>;

struct ChainsTest : testing::Test {
    Bench<> bench{edges(16, {{0, 1, 1}})};
    Chains<NodeT> chains;

    /// The chains of node 0, whose candidates are those of the pairs and `alone`. The best gain of
    /// each candidate is its id.
    void find(const std::vector<std::pair<Id, Id>>& pairs, const Bench<>::IdsT& alone = {}) {
        std::set<Id> cands(alone.begin(), alone.end());
        for (const auto& [a, b] : pairs) {
            cands.insert({a, b});
            bench.join(a, b);
        }
        for (const Id cand : cands) bench.join(0, cand);
        for (const Id cand : cands) bench.ctx(cand).gmax = cand;
        bench.hier.mcandsChains(chains, *bench.nodes[0]);
    }
    std::vector<Bench<>::IdsT> ids() const {
        std::vector<Bench<>::IdsT> result;
        for (const auto& chain : chains) result.push_back(bench.idsOf(chain.items));
        return result;
    }
    void add(const Bench<>::IdsT& items, AccWeight gain) {
        chains.emplace_back(bench.group(items), gain);
    }
};

using Lists = std::vector<Bench<>::IdsT>;

TEST_F(ChainsTest, GrowByJoinedPairs) {
    find({{3, 5}, {4, 5}, {3, 4}}, {7});
    EXPECT_EQ(ids(), (Lists{{3, 4, 5}}));
    EXPECT_EQ(chains[0].gain, 12);  // each counted once
}

// 1 9 and 2 10 come before 3 4 5, which stays at its place when it takes 1 9 in.
TEST_F(ChainsTest, MergeIntoTheLongerOne) {
    find({{1, 9}, {2, 10}, {3, 4}, {3, 5}, {4, 9}});
    EXPECT_EQ(ids(), (Lists{{2, 10}, {1, 3, 4, 5, 9}}));
    EXPECT_EQ(chains[1].gain, 22);
}

TEST_F(ChainsTest, OfEqualLengthMergeIntoThatOfTheLowerItem) {
    find({{1, 9}, {2, 10}, {3, 4}, {4, 9}});
    EXPECT_EQ(ids(), (Lists{{2, 10}, {1, 3, 4, 9}}));
}

// The lower item of a pair may be the one that comes to a chain.
TEST_F(ChainsTest, TakeInASingleItemOfEitherSide) {
    find({{2, 8}, {3, 8}, {8, 9}}, {4, 5, 6, 7, 10, 11});
    EXPECT_EQ(ids(), (Lists{{2, 3, 8, 9}}));
    EXPECT_EQ(chains[0].gain, 22);
}

// Once most candidates are in one chain, only pairs with the others are looked for.
TEST_F(ChainsTest, GrowWhenMostCandidatesAreInOne) {
    find({{1, 3}, {1, 4}, {1, 5}, {1, 6}, {1, 7}, {3, 12}, {4, 8}, {8, 13}, {2, 14}, {9, 10}},
         {11});
    EXPECT_EQ(ids(), (Lists{{1, 3, 4, 5, 6, 7, 8, 12, 13}, {2, 14}, {9, 10}}));
    EXPECT_EQ(chains[0].gain, 59);
}

TEST_F(ChainsTest, AreTheComponentsAmongTheCandidates) {
    for (Id cand : {2u, 4u, 5u, 9u, 12u, 13u}) bench.join(7, cand, 0);
    for (Id i = 0; i < 16; ++i) bench.ctx(i).gmax = i;
    for (const auto& [a, b] : {std::pair(2u, 5u), std::pair(5u, 13u), std::pair(4u, 12u)})
        bench.join(a, b, 0);
    bench.join(9, 14, 0);  // no candidate of 7
    for (Id i = 0; i < 16; ++i) bench.ctx(i).gmax = i;
    EXPECT_TRUE(bench.hier.mcandsChains(chains, *bench.nodes[7]));
    EXPECT_EQ(ids(), (Lists{{2, 5, 13}, {4, 12}}));
    EXPECT_EQ(chains[0].gain, 20);
    EXPECT_EQ(chains[1].gain, 16);
}

// More than ten candidates are searched by bisection, which must find the same ones.
TEST_F(ChainsTest, OfManyCandidates) {
    for (Id cand = 1; cand < 16; ++cand) bench.join(0, cand);
    for (Id a = 1; a < 15; ++a)
        for (Id b = a + 2; b < 16; b += 2) bench.join(a, b);
    bench.hier.mcandsChains(chains, *bench.nodes[0]);
    EXPECT_EQ(ids(), (Lists{{1, 3, 5, 7, 9, 11, 13, 15}, {2, 4, 6, 8, 10, 12, 14}}));
    EXPECT_EQ(chains[0].gain, 8);
}

TEST_F(ChainsTest, TakeAGainSlightlyBelowZeroForZero) {
    bench.join(0, 1);
    bench.join(0, 2);
    bench.join(1, 2, -1e-15);
    bench.hier.mcandsChains(chains, *bench.nodes[0]);
    ASSERT_EQ(chains.size(), 1u);
    EXPECT_EQ(chains[0].gain, 0);
}

struct BestChainsTest : ChainsTest {
    Partitions<NodeT> parts;

    Lists best() {
        maxChainsGain(chains, &parts);
        Lists result;
        for (const auto& part : parts) result.push_back(bench.idsOf(part.items));
        return result;
    }
};

TEST_F(BestChainsTest, WinAndTiesStay) {
    add({0, 1}, 1);
    add({2, 3}, 2);
    add({4, 5}, 2);
    add({6, 7}, 1.5);
    EXPECT_EQ(best(), (Lists{{2, 3}, {4, 5}}));
}

// The tolerance is relative, 2^-24 for each doubling of four times the items.
TEST_F(BestChainsTest, AreJudgedByTheirOwnLength) {
    const AccWeight below = 1 - 4.5 * 0x1p-24;
    add({0, 1}, 1);
    add({2, 3}, below);
    EXPECT_EQ(best(), (Lists{{0, 1}}));
    chains.clear();
    parts.clear();
    add({0, 1}, 1);
    add({2, 3, 4, 5}, below);
    EXPECT_EQ(best(), (Lists{{0, 1}, {2, 3, 4, 5}}));
}

TEST_F(BestChainsTest, MayHaveGainsBeyondTheRangeOf32Bits) {
    add({0, 1}, 6e38);
    add({2, 3}, 7e38);
    EXPECT_EQ(best(), (Lists{{0, 1}, {2, 3}}));
}

TEST(Matches, CountSharedItemsUpToTheLimit) {
    Bench<> bench(edges(16, {{0, 1, 1}}));
    const auto count = [&](const Bench<>::IdsT& a, const Bench<>::IdsT& b, unsigned limit) {
        return matches(bench.group(a), bench.group(b), limit);
    };
    EXPECT_EQ(count({1, 2, 3}, {2, 3, 4}, 100), 2u);
    EXPECT_EQ(count({1, 2, 3}, {2, 3, 4}, 1), 1u);
    EXPECT_EQ(count({}, {}, 5), 0u);
    EXPECT_EQ(count({0, 15}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 15}, 5), 2u);
}

}  // namespace
}  // namespace vorl::test
