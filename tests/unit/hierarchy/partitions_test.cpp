// Partitions: agreement, the union of a part cluster, its merging and its end.
#include "unit/hierarchy/bench.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vorl::test {
namespace {

using NodeT = Node<WeightedLinks>;
using IdsT = Bench<>::IdsT;
using ListsT = std::vector<IdsT>;

struct PartitionsTest : testing::Test {
    Bench<> bench{edges(20, {{0, 1, 1}})};

    /// Gives an item its partitions.
    void give(Id id, const ListsT& parts) {
        auto& list = bench.ctx(id).parts;
        list = std::make_unique<Partitions<NodeT>>();
        list->reserve(parts.size());
        for (const auto& items : parts) list->emplace_back(bench.group(items));
    }
    Partition<NodeT>& part(Id id, std::size_t i = 0) { return bench.ctx(id).parts->at(i); }
    void cluster(Id id, std::size_t i = 0) {
        bench.hier.clusterPart(*bench.nodes[id], part(id, i));
    }
    bool together(Id a, Id b) { return part(a).owner && part(a).owner == part(b).owner; }
};

TEST_F(PartitionsTest, UnionHoldsEachItemOnce) {
    give(0, {{1, 3}});
    give(1, {{2, 3}});
    give(2, {{3, 4, 19}});
    auto* cl = PartCluster<NodeT>::create(part(0));
    PartitionPtrs<NodeT> others{&part(1), &part(2)};
    bench.hier.extendPartCluster(*cl, others);
    EXPECT_EQ(bench.idsOf(static_cast<std::vector<NodeT*>>(*cl)), (IdsT{1, 2, 3, 4, 19}));
    EXPECT_THROW(PartCluster<NodeT>::create(part(1)), std::invalid_argument);
}

TEST_F(PartitionsTest, OfATriangleJoinAtItsFirstItem) {
    give(0, {{1, 2}});
    give(1, {{0, 2}});
    give(2, {{0, 1}});
    for (Id id : {0u, 1u, 2u}) cluster(id);
    EXPECT_EQ(part(0).owner->holder, &part(0));
    // As item 1 is looked for first, the partition that holds it agrees first.
    EXPECT_EQ(part(0).owner->items, (PartitionPtrs<NodeT>{&part(2), &part(1)}));
    bench.convert();
    EXPECT_EQ(bench.formed().front(), (IdsT{0, 1, 2}));
    EXPECT_EQ(bench.nodes[0]->owners.size(), 1u);
}

// Half of the smaller partition must be common.
TEST_F(PartitionsTest, AgreeByHalfOfTheSmallerOne) {
    const auto agree = [&](const IdsT& a, const IdsT& b) {
        for (Id id = 0; id < 20; ++id) bench.ctx(id).parts.reset();
        for (Id id : a) give(id, {{18, 19}});  // bystanders, alike to nobody
        give(0, {a});
        give(a.back(), {b});
        cluster(0);
        return together(0, a.back());
    };
    EXPECT_TRUE(agree({1, 2, 10}, {1, 2, 3, 4, 5}));   // 2 of 3
    EXPECT_FALSE(agree({1, 7, 10}, {1, 2, 3, 4, 5}));  // 1 of 3
    EXPECT_TRUE(agree({1, 2, 6, 10}, {1, 2, 8, 9}));   // 2 of 4
    EXPECT_FALSE(agree({3, 5, 6, 10}, {3, 7, 8, 9}));  // 1 of 4
    EXPECT_FALSE(agree({6, 7, 8, 10}, {1, 2, 3, 4}));  // runs out at once
}

TEST_F(PartitionsTest, LongOnesAreSearchedByBisection) {
    IdsT long1{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
    for (Id id : {13u, 15u}) give(id, {{18, 19}});
    give(0, {{13, 15}});
    give(13, {long1});
    cluster(0);
    EXPECT_TRUE(together(0, 13));
}

TEST_F(PartitionsTest, ThatAgreeWithNoneHoldAClusterOfTheirOwn) {
    give(0, {{1, 2}});
    give(1, {{5, 6}});
    give(2, {{7, 8}});
    cluster(0);
    EXPECT_EQ(part(0).owner->holder, &part(0));
    EXPECT_TRUE(part(0).owner->items.empty());
    EXPECT_EQ(part(1).owner, nullptr);
    for (Id id : {5u, 6u, 7u, 8u}) give(id, {{18, 19}});
    give(18, {{5, 6}});
    give(19, {{5, 6}});
    for (Id id : {1u, 2u, 5u, 6u, 7u, 8u, 18u, 19u}) cluster(id);
    bench.convert();
    // Its own item joins it at the place by address.
    EXPECT_EQ(bench.idsOf(bench.nodes[0]->owners.at(0).dest->des), (IdsT{0, 1, 2}));
}

TEST_F(PartitionsTest, MergeTheClustersOfThoseThatAgree) {
    // 0 with 1, 4 with 5; then 8 agrees with 1 and with 5.
    give(0, {{1, 10}});
    give(1, {{0, 10}});
    give(4, {{5, 11}});
    give(5, {{4, 11}});
    give(10, {{18, 19}});
    give(11, {{18, 19}});
    cluster(0);
    cluster(4);
    ASSERT_TRUE(together(0, 1));
    ASSERT_TRUE(together(4, 5));
    ASSERT_FALSE(together(0, 4));
    give(8, {{1, 5, 10, 11}});
    cluster(8);
    for (Id id : {1u, 4u, 5u, 8u}) EXPECT_TRUE(together(0, id)) << id;
    EXPECT_EQ(part(0).owner->holder, &part(0));
    for (Id id : {10u, 11u}) bench.ctx(id).parts.reset();
    bench.convert();
    // One cluster, at the holder; the holder that was merged away makes none.
    EXPECT_EQ(bench.formed().front(), (IdsT{0, 1, 4, 5, 10, 11}));
    for (Id id : {0u, 1u, 4u, 5u, 10u, 11u}) EXPECT_EQ(bench.nodes[id]->owners.size(), 1u);
}

// Whatever goes first, a part cluster must not look at freed partitions.
TEST_F(PartitionsTest, MayGoInAnyOrder) {
    for (Id first : {0u, 1u, 2u}) {
        give(0, {{1, 2}});
        give(1, {{0, 2}});
        give(2, {{0, 1}});
        cluster(0);
        bench.ctx(first).parts.reset();
        for (Id id : {0u, 1u, 2u})
            if (bench.ctx(id).parts) {
                EXPECT_EQ(part(id).owner == nullptr, first == 0);
            }
        for (Id id : {2u, 1u, 0u}) bench.ctx(id).parts.reset();
    }
    give(0, {{1, 2}});
    give(1, {{0, 2}});
    give(2, {{0, 1}});
    cluster(0);
    bench.hier.dropPartClusters(bench.hier.m_nodes.begin(), bench.hier.m_nodes.end());
    for (Id id : {0u, 1u, 2u}) EXPECT_EQ(part(id).owner, nullptr);
}

TEST_F(PartitionsTest, AreMadeOfTheBestChains) {
    for (const auto& [a, b] :
         {std::pair(0u, 1u), std::pair(0u, 2u), std::pair(1u, 2u), std::pair(0u, 5u),
          std::pair(0u, 6u), std::pair(5u, 6u), std::pair(0u, 9u)})
        bench.join(a, b, 1);
    bench.ctx(6).gmax = 2;
    bench.initParts();
    ASSERT_TRUE(bench.ctx(0).parts);
    ASSERT_EQ(bench.ctx(0).parts->size(), 1u);
    EXPECT_EQ(bench.idsOf(part(0).items), (IdsT{5, 6}));
    EXPECT_EQ(bench.idsOf(part(1).items), (IdsT{0, 2}));
    EXPECT_FALSE(bench.ctx(9).parts);  // no triangle
    Trace trace;
    EXPECT_THROW(bench.initParts(), std::logic_error);
    EXPECT_EQ(trace.take(), "initNonfilterParts(), #0  parts: 1, aparts: 0\n");
}

}  // namespace
}  // namespace vorl::test
