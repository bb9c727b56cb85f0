// What holds for the communities of every network.
#include <vorl/communities.hpp>
#include <vorl/communities_text.hpp>

#include "support/networks.hpp"
#include "support/pairs.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace vorl::test {
namespace {

/// Overlapping blocks with links between them, weights of any size or none.
Pairs planted(Random& rnd, Id nodes, Id block, double degree, bool weighted) {
    Pairs pairs;
    std::set<std::pair<Id, Id>> seen;
    for (Size i = 0; i < static_cast<Size>(nodes * degree / 2); ++i) {
        const Id a = rnd.below(nodes);
        const Id b =
            rnd.chance(0.7) ? (a / block * block + rnd.below(block + 2)) % nodes : rnd.below(nodes);
        if (!seen.insert(std::minmax(a, b)).second) continue;
        pairs.src.push_back(5 * a + 3);
        pairs.dst.push_back(5 * b + 3);
        if (weighted)
            pairs.weight.push_back(std::ldexp(1 + static_cast<float>(rnd.below(1000)) / 1000,
                                              static_cast<int>(rnd.below(9)) - 4));
    }
    return pairs;
}

Communities found(const Pairs& pairs, const CommunitiesOptions& options = {}) {
    return communities(pairs.network(), options);
}

TEST(Communities, SharesAddUpAndNoCommunityIsEmpty) {
    Random rnd(11);
    for (int round = 0; round < 60; ++round) {
        const Pairs pairs =
            planted(rnd, 20 + rnd.below(400), 3 + rnd.below(30), 2 + rnd.below(14), round % 2);
        const Communities result = found(pairs);
        Size memberships = 0;
        for (Size place = 0; place < result.nodes(); ++place) {
            double sum = 0;
            Share former = 1;
            for (const CommunityShare& part : result.of(place)) {
                EXPECT_GT(part.share, 0);
                EXPECT_LE(part.share, former);
                EXPECT_LT(part.community, result.count());
                former = part.share;
                sum += static_cast<double>(part.share);
            }
            EXPECT_NEAR(sum, 1, 1e-6);
            memberships += result.of(place).size();
        }
        for (Id community = 0; community < result.count(); ++community) {
            EXPECT_FALSE(result.members(community).empty());
            memberships -= result.members(community).size();
        }
        EXPECT_EQ(memberships, 0u);
        EXPECT_TRUE(std::isfinite(result.score().saving));
        EXPECT_TRUE(std::isfinite(result.score().gamma));
        EXPECT_GE(result.score().conductance, 0);
        EXPECT_LE(result.score().conductance, 1);
    }
}

TEST(Communities, NeitherThreadsNorTheOrderOfLinksMatter) {
    Random rnd(13);
    for (int round = 0; round < 2; ++round) {
        Pairs pairs = planted(rnd, 6000, 40, 12, round % 2);
        const std::string expected = clustersText(found(pairs, {.threads = 1, .starts = 2}));
        for (const unsigned threads : {2u, 3u, 8u})
            EXPECT_EQ(clustersText(found(pairs, {.threads = threads, .starts = 2})), expected)
                << threads;
        std::vector<std::size_t> order(pairs.src.size());
        std::iota(order.begin(), order.end(), 0);
        for (std::size_t i = order.size(); i > 1; --i)
            std::swap(order[i - 1], order[rnd.below(static_cast<Id>(i))]);
        Pairs shuffled;
        for (const std::size_t i : order) {
            const bool turn = rnd.chance(0.5);
            shuffled.src.push_back(turn ? pairs.dst[i] : pairs.src[i]);
            shuffled.dst.push_back(turn ? pairs.src[i] : pairs.dst[i]);
            if (!pairs.weight.empty()) shuffled.weight.push_back(pairs.weight[i]);
        }
        EXPECT_EQ(clustersText(found(shuffled, {.starts = 2})), expected);
    }
}

TEST(Communities, PlantedOnesAreFound) {
    Random rnd(17);
    const Pairs pairs = planted(rnd, 4000, 25, 20, false);
    const Communities result = found(pairs);
    // Two pairs of nodes in three are told apart or together as planted.
    Size right = 0;
    Size together = 0;
    for (int i = 0; i < 20000; ++i) {
        const Id block = rnd.below(160);
        const Id a = block * 25 + rnd.below(25);
        const Id b = rnd.chance(0.5) ? block * 25 + rnd.below(25) : rnd.below(4000);
        if (a >= result.nodes() || b >= result.nodes()) continue;
        const bool planned = result.ids()[a] / 125 == result.ids()[b] / 125;
        const bool is = result.of(a)[0].community == result.of(b)[0].community;
        right += planned == is;
        together += is;
    }
    EXPECT_GT(right, 19000u);
    EXPECT_GT(together, 8000u);
    EXPECT_GT(result.score().saving, 0);
}

TEST(Communities, ManyScalesOfWeights) {
    Random rnd(19);
    for (int round = 0; round < 100; ++round) {
        Pairs pairs;
        const Id nodes = 2 + rnd.below(20);
        for (Id i = 0; i < 1 + rnd.below(60); ++i) {
            const Id src = rnd.below(nodes);
            const Id dst = rnd.below(nodes);
            pairs.add(src, dst, std::ldexp(1.f, static_cast<int>(rnd.below(250)) - 135));
        }
        const Communities result = found(pairs);
        EXPECT_TRUE(std::isfinite(result.score().saving));
        for (Size place = 0; place < result.nodes(); ++place) {
            double sum = 0;
            for (const CommunityShare& part : result.of(place))
                sum += static_cast<double>(part.share);
            EXPECT_NEAR(sum, 1, 1e-6);
        }
    }
}

}  // namespace
}  // namespace vorl::test
