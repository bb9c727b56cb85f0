// Folding: links of new clusters and of the items carried past them, and the worth of memberships.
#include "unit/hierarchy/bench.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <stdexcept>

namespace vorl::test {
namespace {

using ClusterT = Cluster<WeightedLinks>;
using IdsT = Bench<>::IdsT;

std::map<Id, AccWeight> linksOf(const ClusterT& cl) {
    std::map<Id, AccWeight> result;
    for (const auto& ln : cl.links) result[ln.dest->id] += ln.weight;
    return result;
}

struct TidyTest : testing::Test {
    // Node 0 with the candidates 1, 2 and 3, and a self weight of 9.
    Bench<> bench{edges(5, {{0, 1, 1}, {0, 2, 1}, {0, 3, 1}, {3, 4, 1}}, {{0, 4.5f}})};

    void candidates() {
        for (Id id : {1u, 2u, 3u}) bench.join(0, id);
    }
    void tidy() { bench.tidy(); }
};

TEST_F(TidyTest, SharesFollowTheCandidates) {
    candidates();
    bench.join(3, 4);
    ClusterT& a = bench.own({{0, 0}, {1, 0}, {2, 0}});
    ClusterT& b = bench.own({{0, 0}, {3, 0}, {4, 0}});
    tidy();
    const auto& node = *bench.nodes[0];
    EXPECT_EQ(node.owners[0].numac, 2);
    EXPECT_EQ(node.owners[1].numac, 1);
    EXPECT_EQ(node.totac, 3u);
    // The cross terms of the self weight: 2 * 1 / 9 of it each way.
    EXPECT_EQ(linksOf(a), (std::map<Id, AccWeight>{{b.id, 2}}));
    EXPECT_EQ(linksOf(b), (std::map<Id, AccWeight>{{a.id, 2}}));
    EXPECT_EQ(bench.nodes[3]->totac, 1u);  // two candidates, one owner
    EXPECT_EQ(bench.nodes[3]->owners[0].numac, 1);
}

TEST_F(TidyTest, AnOwnerWithoutCandidatesHasNoShare) {
    candidates();
    bench.own({{0, 0}, {1, 0}, {2, 0}, {3, 0}});
    ClusterT& b = bench.own({{0, 0}, {4, 0}});
    bench.ctx(4).cands = {bench.nodes[3]};
    tidy();
    EXPECT_EQ(bench.nodes[0]->owners[0].numac, 3);
    EXPECT_EQ(bench.nodes[0]->owners[1].numac, 0);
    EXPECT_EQ(bench.nodes[0]->totac, 3u);
    EXPECT_EQ(linksOf(b).size(), 1u);  // of weight 0
    EXPECT_EQ(linksOf(b).begin()->second, 0);
}

TEST_F(TidyTest, AnItemPassedOverStaysAsItIs) {
    for (Id id = 0; id < 5; ++id) bench.ctx(id).state = State::PROPAGATED;
    bench.own({{0, 7}});
    tidy();
    EXPECT_EQ(bench.nodes[0]->owners[0].numac, 1);
    EXPECT_EQ(bench.nodes[0]->totac, 1u);
    EXPECT_EQ(bench.nodes[1]->totac, 0u);
    bench.own({{0, 0}});
    EXPECT_DEATH(tidy(), "propagated and single clusterable items must contain <= 1 owner");
}

// Node 1 lies a quarter in A and three quarters in B.
TEST(FoldNodes, SharedNodesAreSplitByTheirShares) {
    Bench<> bench(edges(3, {{0, 1, 4}, {1, 2, 8}}, {{1, 8}}));
    ClusterT& a = bench.own({{0, 1}, {1, 1}});
    ClusterT& b = bench.own({{1, 3}, {2, 1}});
    bench.hier.m_levels.emplace_back(2, std::move(bench.cls));
    bench.hier.m_propnum = 5;
    bench.hier.m_proplsnum = 9;
    bench.hier.template foldLevel<false>({});
    EXPECT_EQ(a.nnodes(), 1.25);
    EXPECT_EQ(b.nnodes(), 1.75);
    // Inside A: a quarter of the link 0-1 both ways, and a sixteenth of the self weight 16.
    EXPECT_EQ(a.weight(), 2 * 1 + 1);
    EXPECT_EQ(b.weight(), 2 * 6 + 9);
    EXPECT_EQ(linksOf(a).at(b.id), 3 + 2);
    EXPECT_EQ(linksOf(b).at(a.id), 3 + 2);
    EXPECT_EQ(a.ctxWeight(), 8);
    EXPECT_EQ(bench.hier.m_propnum, 0u);
    EXPECT_EQ(bench.hier.m_proplsnum, 0u);
    EXPECT_EQ(bench.nodes[1]->links.size(), 2u);  // nodes keep their links
}

struct CarriedPastTest : testing::Test {
    Bench<> bench{edges(2, {{0, 1, 1}})};
    Upper upper{bench.hier, 30};
    Id further = 0;
    Size furtherLinks = 0;
    ClusterT* next = nullptr;

    ClusterT& item(Id id) { return *upper.items[id]; }
    auto& ctx(Id id) { return *item(id).m_context; }
    /// Items that have joined a new cluster.
    void absorb(const IdsT& ids) {
        next = &bench.cls.emplace_back(LevelNum{1}, Id{100}, Size{0});
        for (Id id : ids) {
            item(id).owners.emplace_back(next, 1);
            item(id).totac = 1;
            next->des.push_back(&item(id));
            bench.hier.m_marks.of(&item(id)).set(ClusterMarks<WeightedLinks>::ABSORBED);
            for (const auto& ln : item(id).links)
                bench.hier.m_marks.of(ln.dest).set(ClusterMarks<WeightedLinks>::TOUCHED);
        }
    }
    void cands(Id id, const IdsT& ids) {
        for (Id cand : ids) ctx(id).cands.push_back(&item(cand));
    }
    void redirect(Id id, const std::vector<ClusterT*>* absorbed = nullptr) {
        bench.hier.accLinksProp(item(id), further, furtherLinks, absorbed);
    }
    IdsT candIds(Id id) { return bench.idsOf(ctx(id).cands); }
};

TEST_F(CarriedPastTest, AnItemAmongItsLikeGoesFurther) {
    upper.link(0, 1, 1);
    upper.link(0, 2, 1);
    ctx(0).state = State::PROPAGATED;
    ctx(0).gmax = 3;
    cands(0, {1, 2});
    redirect(0);
    EXPECT_EQ(linksOf(item(0)).size(), 2u);
    EXPECT_TRUE(candIds(0).empty());
    EXPECT_TRUE(xfurtherprop(ctx(0).state));
    EXPECT_EQ(ctx(0).gmax, GAIN_NONE);
    EXPECT_EQ(further, 1u);
    EXPECT_EQ(furtherLinks, 2u);
}

TEST_F(CarriedPastTest, AnItemWithNewLinksIsEvaluatedAgain) {
    upper.link(0, 1, 1);
    upper.link(0, 2, 2);
    upper.link(0, 3, 4);
    absorb({1, 3});
    ctx(0).gmax = 3;
    cands(0, {1});
    redirect(0);
    EXPECT_EQ(linksOf(item(0)), (std::map<Id, AccWeight>{{2, 2}, {100, 5}}));
    EXPECT_TRUE(candIds(0).empty());
    EXPECT_FALSE(xfurtherprop(ctx(0).state));
    EXPECT_EQ(ctx(0).gmax, 0);
    EXPECT_EQ(further, 0u);
}

// Only candidates ahead of the last absorbed link survive.
TEST_F(CarriedPastTest, CandidatesBehindTheLastAbsorbedOneAreLost) {
    for (Id id : {1u, 2u, 3u, 4u, 5u}) upper.link(0, id, 1);
    absorb({3, 4});
    ctx(0).gmax = 3;
    cands(0, {1, 3, 5});
    redirect(0);
    EXPECT_EQ(candIds(0), IdsT{1});
    EXPECT_EQ(ctx(0).gmax, 3);
}

// With a list of the absorbed items the leading links are skipped, which changes the candidates
// only where no link is touched at all.
TEST_F(CarriedPastTest, AListOfTheAbsorbedSkipsLeadingLinks) {
    for (Id id = 1; id < 30; ++id) upper.link(0, id, 1);
    absorb({12, 20});
    const std::vector<ClusterT*> absorbed{&item(12), &item(20)};
    cands(0, {5, 12, 15, 25});
    ctx(0).gmax = 3;
    redirect(0, &absorbed);
    EXPECT_EQ(linksOf(item(0)).size(), 28u);
    EXPECT_EQ(linksOf(item(0)).at(100), 2);
    EXPECT_EQ(candIds(0), (IdsT{5, 15}));
}

TEST_F(CarriedPastTest, AListWithoutATouchedLinkKeepsTheCandidates) {
    for (Id id = 1; id < 20; ++id) upper.link(0, id, 1);
    absorb({25});
    const std::vector<ClusterT*> absorbed{&item(25)};
    cands(0, {5, 12});
    ctx(0).gmax = 3;
    redirect(0, &absorbed);
    EXPECT_EQ(candIds(0), (IdsT{5, 12}));
    EXPECT_EQ(ctx(0).gmax, 3);
    EXPECT_EQ(further, 0u);
}

TEST(InitItem, RenewsWhatIsCarriedOver) {
    Bench<> bench(edges(2, {{0, 1, 1}}));
    Upper upper(bench.hier, 2);
    upper.link(0, 1, 3);
    auto& ctx = *upper.items[0]->m_context;
    const auto renew = [&](State state) {
        ctx.state = state;
        ctx.gmax = 2;
        ctx.cands = {upper.items[1]};
        ctx.npartmcs = 4;
        EXPECT_EQ(bench.hier.initItem(*upper.items[0]), 3);
        EXPECT_EQ(ctx.npartmcs, NPARTMCS_NONE);
        return ctx.state;
    };
    EXPECT_EQ(renew(State::PROPAGATED), State::UNDEFINED);
    EXPECT_TRUE(ctx.cands.empty());
    EXPECT_EQ(ctx.gmax, GAIN_NONE);
    const State carried = toState(State::PROPAGATED | State::INTERLEVPROP | State::PERPAIR);
    EXPECT_EQ(renew(carried), State::INTERLEVPROP);
    EXPECT_EQ(ctx.cands.size(), 1u);
    EXPECT_EQ(ctx.gmax, 2);
    EXPECT_EQ(renew(toState(toMask(State::FURTHERPROP) | carried)),
              State::PROPAGATED | State::INTERLEVPROP);
    ctx.state = State::INTERLEVPROP;
    EXPECT_DEATH(bench.hier.initItem(*upper.items[0]), "only propagated clusters");
}

TEST(InitItem, RefusesWeightsThatOverflow) {
    Bench<> bench(edges(2, {{0, 1, 1}}));
    ClusterT& cl = bench.own({{0, 1}});
    ClusterT& other = bench.own({{1, 1}});
    cl.id = 77;
    cl.links.emplace_back(&cl, std::numeric_limits<double>::infinity());
    EXPECT_EQ(errorOf<std::overflow_error>([&] { bench.hier.initItem(cl); }),
              "initItem(), #77 self weight overflowed: INF\n");
    other.links.emplace_back(&cl, std::numeric_limits<double>::max());
    EXPECT_THROW(bench.hier.initItem(other), std::overflow_error);
}

}  // namespace
}  // namespace vorl::test
