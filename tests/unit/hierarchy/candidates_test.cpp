// Mutual candidates: who finds whom, and what becomes of those who find nobody.
#include "unit/hierarchy/bench.hpp"

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

using IdsT = Bench<>::IdsT;

ClusterOptions withGamma(float gamma, Speedup speedup = Speedup::NONE) {
    ClusterOptions options(gamma);
    options.speedup = speedup;
    return options;
}

TEST(Candidates, TieAtTheBestGain) {
    // With a gamma of 0 the gain is twice the weight.
    Bench<> bench(edges(5, {{0, 1, 1}, {0, 2, 2}, {0, 3, 2}, {0, 4, 1}}), withGamma(0));
    bench.hier.defineItemCands(*bench.nodes[0], bench.cls);
    EXPECT_EQ(bench.cands(0), (IdsT{2, 3}));
    EXPECT_EQ(bench.ctx(0).gmax, 4);
}

// Gains are ordered at 32 bits, and a tie is judged against its first value.
TEST(Candidates, TieBeyond32Bits) {
    Bench<> bench(edges(2, {{0, 1, 1}}), withGamma(0));
    Upper upper(bench.hier, 4);
    upper.link(0, 1, 0.5);
    upper.link(0, 2, 0.5 + 0.4 * 0x1p-24);
    auto& ctx = *upper.items[0]->m_context;
    bench.hier.defineItemCands(*upper.items[0], bench.cls);
    EXPECT_EQ(bench.idsOf(ctx.cands), (IdsT{1, 2}));
    EXPECT_EQ(bench.hier.gmaxOf(*upper.items[0]), 1);
    ctx.cands.clear();
    bench.hier.gmaxOf(*upper.items[0]) = GAIN_NONE;
    upper.link(0, 3, 0.5 + 0.8 * 0x1p-24);  // a tie with 2, but not with 1
    bench.hier.defineItemCands(*upper.items[0], bench.cls);
    EXPECT_EQ(bench.idsOf(ctx.cands), IdsT{3});
}

TEST(Candidates, MayGainNothing) {
    Bench<> bench(edges(2, {{0, 1, 1}}, {{0, 0.5f}, {1, 0.5f}}));
    bench.initCands();
    EXPECT_EQ(bench.cands(0), IdsT{1});
    EXPECT_EQ(bench.cands(1), IdsT{0});
    EXPECT_EQ(bench.ctx(0).gmax, 0);
}

TEST(Candidates, AreMutual) {
    // The best of 0 is 1, whose best is 2: 0 finds nobody, nor does the lone node 3.
    Bench<> bench(edges(4, {{0, 1, 1}, {1, 2, 2}}), withGamma(0));
    bench.initCands();
    EXPECT_EQ(bench.cands(1), IdsT{2});
    EXPECT_EQ(bench.cands(2), IdsT{1});
    EXPECT_TRUE(bench.cands(0).empty());
    EXPECT_EQ(toMask(bench.ctx(0).state), toMask(State::PROPAGATED) | toMask(State::INTERLEVPROP));
    EXPECT_EQ(bench.ctx(3).state, State::PROPAGATED);
    EXPECT_EQ(bench.hier.m_propnum, 1u);
    EXPECT_EQ(bench.hier.m_proplsnum, 1u);
    // Both are wrapped, and so ordinary items of the next level.
    EXPECT_EQ(bench.formed(), (std::vector<IdsT>{{0}, {3}}));
    EXPECT_EQ(bench.nodes[3]->owners.at(0).numac, 1);
    EXPECT_TRUE(bench.hier.m_propagates.empty());
    EXPECT_TRUE(bench.hier.m_root.empty());
}

TEST(Candidates, DontComeOfLosses) {
    Bench<> bench(edges(3, {{0, 1, 1}, {1, 2, 1}}, {{0, 50}, {1, 50}, {2, 50}}));
    ASSERT_LT(bench.gain(0, 1), 0);
    bench.initCands();
    EXPECT_EQ(bench.hier.m_propnum, 3u);
    EXPECT_EQ(bench.formed(), (std::vector<IdsT>{{0}, {1}, {2}}));
}

// 0 offers 1 more than anybody, and has a better partner. Whether 1 may settle for 2 must not
// depend on the order of the visits, unless the order is asked for.
TEST(Candidates, DontDependOnTheOrderOfVisits) {
    const auto candsOf1 = [](Speedup speedup, bool reversed) {
        // 4 takes 3, 3 outbids 0, 0 outbids 2.
        std::vector<TestLink> links{{3, 4, 9}, {0, 3, 8}, {0, 1, 4}, {1, 2, 2}};
        const auto at = [reversed](Id id) { return reversed ? 4 - id : id; };
        for (TestLink& ln : links) ln = {at(ln.src), at(ln.dst), ln.weight};
        Bench<> bench(edges(5, links), withGamma(0, speedup));
        bench.initCands();
        IdsT ids = bench.cands(at(1));
        for (Id& id : ids) id = at(id);
        return ids;
    };
    EXPECT_EQ(candsOf1(Speedup::NONE, false), IdsT{});
    EXPECT_EQ(candsOf1(Speedup::NONE, true), IdsT{});
    for (Speedup speedup : {Speedup::COARSE, Speedup::ORDERDEP}) {
        EXPECT_EQ(candsOf1(speedup, false), IdsT{2});
        EXPECT_EQ(candsOf1(speedup, true), IdsT{});
    }
}

TEST(Candidates, OfAHubAreFoundByBisection) {
    TestNetwork network = star(14);
    network.weighted = true;
    Bench<> bench(network, withGamma(0));
    bench.initCands();
    EXPECT_EQ(bench.cands(0).size(), 14u);
    for (Id leaf = 1; leaf <= 14; ++leaf) EXPECT_EQ(bench.cands(leaf), IdsT{0});
}

TEST(Candidates, ALoneItemMayWeighMoreThan32BitsHold) {
    Bench<> bench(edges(3, {{0, 1, 1}}));
    Upper upper(bench.hier, 1);
    upper.items[0]->m_sweight = upper.items[0]->m_context->weight = 1e39;
    bench.hier.defineItemCands(*upper.items[0], bench.cls);
    EXPECT_EQ(bench.hier.m_root, upper.items);
}

// Items carried over from a level below.
struct CarriedTest : testing::Test {
    Bench<> bench{edges(2, {{0, 1, 1}}), withGamma(0)};
    Upper upper{bench.hier, 6};

    CarriedTest() { bench.hier.m_weight = 0; }
    auto& ctx(Id id) { return *upper.items[id]->m_context; }
    AccWeight& gmax(Id id) { return bench.hier.gmaxOf(*upper.items[id]); }
    void carry(Id id) {
        ctx(id).state = State::INTERLEVPROP;
        gmax(id) = 0;
        bench.hier.m_propagates.push_back(upper.items[id]);
    }
    void init() {
        auto props = bench.hier.m_propagates;
        bench.hier.initPropnomCands(props.begin(), props.end(), bench.cls);
    }
    IdsT cands(Id id) { return bench.idsOf(ctx(id).cands); }
};

TEST_F(CarriedTest, FindEachOther) {
    upper.link(0, 1, 2);
    upper.link(1, 2, 1);
    for (Id id : {0u, 1u, 2u}) carry(id);
    init();
    EXPECT_EQ(cands(0), IdsT{1});
    EXPECT_EQ(cands(1), IdsT{0});
    // Carried once more, not twice in the vector, and no cluster is made of it.
    EXPECT_TRUE(xpropagated(ctx(2).state));
    EXPECT_EQ(bench.hier.m_propnum, 1u);
    EXPECT_EQ(bench.hier.m_propagates.size(), 3u);
    EXPECT_TRUE(bench.cls.empty());
}

TEST_F(CarriedTest, PassOverThoseThatGoFurther) {
    upper.link(0, 1, 5);
    upper.link(0, 2, 1);
    for (Id id : {0u, 1u, 2u}) carry(id);
    ctx(1).state |= State::PROPAGATED;
    bench.hier.m_marks.of(upper.items[1]).set(ClusterMarks<WeightedLinks>::PROPAGATED);
    init();
    EXPECT_EQ(cands(0), IdsT{2});
}

TEST_F(CarriedTest, WithANegativeBestGoFurtherOnSight) {
    upper.link(0, 1, 5);
    upper.link(0, 2, 1);
    for (Id id : {0u, 2u, 1u}) carry(id);
    gmax(1) = -1;
    init();
    EXPECT_TRUE(xpropagated(ctx(1).state));
    EXPECT_EQ(bench.hier.m_propnum, 1u);
    EXPECT_EQ(cands(0), IdsT{2});
}

TEST_F(CarriedTest, KeepTheCandidatesThatSurvived) {
    upper.link(0, 1, 1);
    upper.link(0, 2, 9);
    for (Id id : {0u, 1u, 2u}) carry(id);
    ctx(0).cands = {upper.items[1]};
    gmax(0) = 2;
    init();
    // 1 finds 0 afresh; 2 would gain more, but isn't asked.
    EXPECT_EQ(cands(0), IdsT{1});
    EXPECT_TRUE(xpropagated(ctx(2).state));
}

TEST_F(CarriedTest, MeetTheItemsOfTheLevel) {
    upper.link(0, 1, 3);
    upper.link(1, 2, 3);
    carry(0);
    auto& clusters = bench.hier.m_levels.back().clusters;
    bench.hier.initCands(std::next(clusters.begin()), std::next(clusters.begin(), 3), bench.cls);
    EXPECT_EQ(cands(0), IdsT{1});
    EXPECT_EQ(cands(1), (IdsT{0, 2}));
    init();
    EXPECT_EQ(cands(0), IdsT{1});
    EXPECT_EQ(bench.hier.m_propnum, 0u);
}

}  // namespace
}  // namespace vorl::test
