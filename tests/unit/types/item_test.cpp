// Items, their owners, links and working state.
#include <vorl/hierarchy/level.hpp>
#include <vorl/types/item.hpp>

#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vorl::test {
namespace {

using NodeT = Node<WeightedLinks>;
using ClusterT = Cluster<WeightedLinks>;
using ClustersT = Clusters<WeightedLinks>;
using LinksT = Links<ClusterT::LinkT>;

TEST(NodeItem, KeepsItsSelfWeightAt32Bits) {
    NodeT node(1);
    node.addWeight(16777216);
    node.addWeight(1);  // a tie, rounded to even
    EXPECT_EQ(node.weight(), 16777216);
    node.addWeight(3);
    EXPECT_EQ(node.weight(), 16777220);
    ClusterT cluster(0, 1, 0);
    cluster.addWeight(16777216);
    cluster.addWeight(1);
    EXPECT_EQ(cluster.weight(), 16777217);
}

TEST(NodeItem, TotalWeightComesFromTheContextOrTheLinks) {
    Nodes<WeightedLinks> nodes;
    NodeT& a = nodes.emplace_back(0);
    NodeT& b = nodes.emplace_back(1);
    a.links.emplace_back(&b, 3.0f);
    b.links.emplace_back(&a, 3.0f);
    a.addWeight(4);
    EXPECT_EQ(a.ctxWeight(), WEIGHT_NONE);
    EXPECT_EQ(a.ctxWeight(false), 7);
    b.links.front().weight = 0;  // of an arc each end has a half
    EXPECT_EQ(a.ctxWeight(false), 5.5);
    EXPECT_EQ(b.ctxWeight(false), 1.5);
    a.m_context = std::make_unique<Context<NodeT>>();
    a.m_context->weight = 12;
    EXPECT_EQ(a.ctxWeight(), 12);
    EXPECT_EQ(a.ctxWeight(false), 12);
    EXPECT_EQ(a.descs(), nullptr);
    a.tidy();
    EXPECT_EQ(a.links.capacity(), 0);
    EXPECT_EQ(a.ctxWeight(false), 4);
}

TEST(ClusterItem, TidyKeepsTheTotalWeightAt32Bits) {
    ClustersT clusters;
    ClusterT& cluster = clusters.emplace_back(LevelNum{3}, Size{8});
    EXPECT_EQ(clusters.emplace_back(LevelNum{3}, Size{0}).id, cluster.id + 1);
    EXPECT_GE(cluster.links.capacity(), 8);
    EXPECT_EQ(cluster.ctxWeight(), WEIGHT_NONE);
    EXPECT_EQ(cluster.ctxWeight(false), WEIGHT_NONE);
    cluster.links.emplace_back(&clusters.back(), 2.0);
    cluster.m_context = std::make_unique<Context<ClusterT>>();
    cluster.m_context->weight = 16777217;
    EXPECT_EQ(cluster.ctxWeight(false), 16777217);
    for (int i = 0; i < 2; ++i) {
        cluster.tidy();
        EXPECT_EQ(cluster.links.capacity(), 0);
        EXPECT_EQ(cluster.ctxWeight(), WEIGHT_NONE);
        EXPECT_EQ(cluster.ctxWeight(false), 16777216);
    }
}

TEST(Ownership, BoundsTheCandidatesAndComparesTheCluster) {
    ClusterT a(0, 1, 0);
    ClusterT b(0, 2, 0);
    using OwnerT = Owner<ClusterT>;
    EXPECT_EQ(OwnerT(&a, 65534).numac, 65534);
    EXPECT_EQ(errorOf<std::overflow_error>([&] { OwnerT(&a, 65535); }),
              "Owner(), number of active candidates is overflowed\n");
    EXPECT_TRUE(OwnerT(&a, 1) == OwnerT(&a, 2));
    EXPECT_TRUE(OwnerT(&a, 1) == &a);
    EXPECT_TRUE(OwnerT(&a) != OwnerT(&b));
}

TEST(LevelOfClusters, CountsNoLessThanItsClusters) {
    const auto levelOf = [](Id fullsize) {
        ClustersT clusters;
        for (int i = 0; i < 4; ++i) clusters.emplace_back(LevelNum{0}, Size{0});
        return Level<WeightedLinks>(fullsize, std::move(clusters)).clusters.size();
    };
    EXPECT_EQ(levelOf(4), 4);
    EXPECT_EQ(errorOf<std::invalid_argument>([&] { levelOf(3); }),
              "Level(), fullsize should be valid and not less than the clusters size: 3\n");
    EXPECT_NE(errorOf<std::invalid_argument>([&] { levelOf(0xFFFFFFFF); }), "");
}

TEST(WorkingState, OfACarriedClusterSurvives) {
    ClusterT other(0, 1, 0);
    const auto tidied = [&](int state) {
        Context<ClusterT> context;
        context.weight = 5;
        context.gmax = 2;
        context.cands = {&other};
        context.npartmcs = 1;
        context.parts = std::make_unique<Partitions<ClusterT>>();
        context.parts->emplace_back(std::vector<ClusterT*>{&other});
        context.state = toState(static_cast<std::uint8_t>(state));
        context.tidysmart();
        EXPECT_EQ(context.weight, 5);
        EXPECT_EQ(context.npartmcs, 0xFFFF);
        EXPECT_EQ(context.parts, nullptr);
        return context;
    };
    // Propagated on this level only.
    for (int state : {0x00, 0x10, 0x1D}) {
        const Context<ClusterT> context = tidied(state);
        EXPECT_EQ(context.state, State::UNDEFINED);
        EXPECT_EQ(context.gmax, GAIN_NONE);
        EXPECT_EQ(context.cands.capacity(), 0);
    }
    // Carried over levels, without and with something new around it.
    for (const auto& [before, after] : {std::pair(0x98, 0x90), std::pair(0x95, 0x80)}) {
        const Context<ClusterT> context = tidied(before);
        EXPECT_EQ(toMask(context.state), after);
        EXPECT_EQ(context.gmax, 2);
        EXPECT_EQ(context.cands, Candidates<ClusterT*>{&other});
    }
}

TEST(ClusterLinks, AccumulateBehindTheHint) {
    for (std::size_t count : {6u, 30u}) {
        ClustersT clusters;
        std::vector<ClusterT*> cls;
        for (std::size_t i = 0; i < count; ++i)
            cls.push_back(&clusters.emplace_back(LevelNum{0}, Size{0}));
        LinksT links;
        auto hint = links.begin();
        for (std::size_t i = 0; i < count; i += 2)
            hint = addLink(links, hint, cls[i], static_cast<double>(i));
        EXPECT_EQ(hint, links.end());
        hint = links.begin();
        for (std::size_t i = 1; i < count; ++i) hint = addLink(links, hint, cls[i], 0.25);
        EXPECT_EQ(hint, links.end());
        ASSERT_EQ(links.size(), count);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(links[i].dest, cls[i]);
            EXPECT_EQ(links[i].weight,
                      (i % 2 == 0 ? static_cast<double>(i) : 0) + (i != 0 ? 0.25 : 0));
        }
        // The position behind the touched link comes back.
        EXPECT_EQ(addLink(links, links.begin(), cls[3], 1.0) - links.begin(), 4);
        EXPECT_EQ(links.size(), count);
    }
}

TEST(ClusterLinks, NeverLookAheadOfTheHint) {
    ClustersT clusters;
    ClusterT& a = clusters.emplace_back(LevelNum{0}, Size{0});
    ClusterT& b = clusters.emplace_back(LevelNum{0}, Size{0});
    ClusterT& c = clusters.emplace_back(LevelNum{0}, Size{0});
    LinksT links{LinksT::value_type(&a, 1), LinksT::value_type(&c, 1)};
    const auto hint = addLink(links, links.begin() + 1, &b, 5);
    EXPECT_EQ(hint - links.begin(), 2);
    EXPECT_EQ(links[1].dest, &b);
    addLink(links, links.begin() + 1, &a, 7.0);
    EXPECT_EQ(links[0].weight, 1);
    EXPECT_EQ(links[1].dest, &a);
}

TEST(Memory, AscendsAcrossRanges) {
    Arena arena;
    arena.rangeLimit(1 << 16);
    char* last = nullptr;
    for (std::size_t i = 0; i < 20000; ++i) {
        const std::size_t alignment = std::size_t{1} << i % 7;
        char* const memory = static_cast<char*>(arena.allocate(i % 97 + 1, alignment));
        ASSERT_GT(memory, last);
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(memory) % alignment, 0);
        last = memory + i % 97;
        *memory = *last = 1;
    }
    // Larger than a range.
    char* const memory = static_cast<char*>(arena.allocate(1 << 20, 8));
    EXPECT_GT(memory, last);
    memory[(1 << 20) - 1] = 1;
}

}  // namespace
}  // namespace vorl::test
