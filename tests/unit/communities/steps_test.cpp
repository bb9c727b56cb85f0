// Steps of the search for communities against plain counts.
#include "../../../lib/src/communities/agglomeration.hpp"
#include "../../../lib/src/communities/refinement.hpp"

#include "support/networks.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace vorl::test {
namespace {

using namespace detail;

ItemNetwork<LinkWeight> itemsOf(const TestNetwork& network) {
    ItemNetwork<LinkWeight> items;
    std::vector<std::map<Id, float>> rows(network.nodesNum);
    for (const TestLink& ln : network.links)
        rows[ln.src][ln.dst] = rows[ln.dst][ln.src] = ln.weight;
    items.links.begin.push_back(0);
    for (const auto& row : rows) {
        Holding holding{0, 0, 1};
        for (const auto& [dest, weight] : row) {
            items.links.dest.push_back(dest);
            items.links.weight.push_back(weight);
            holding.total += weight;
        }
        items.links.begin.push_back(items.links.dest.size());
        items.items.push_back(holding);
    }
    return items;
}

TEST(CommunitySteps, LogarithmsAgreeWithThoseOfTheSystem) {
    Random rnd(1);
    for (int i = 0; i < 20000; ++i) {
        const double x =
            std::ldexp(1 + rnd.below(1u << 30) * 0x1p-30, static_cast<int>(rnd.below(600)) - 300);
        EXPECT_NEAR(ln(x), std::log(x), 1e-12 * std::max(1.0, std::abs(std::log(x))));
    }
    EXPECT_EQ(ln(1), 0);
    for (double x = 1; x < 1e7; x = 1.7 * x + 0.3)
        EXPECT_NEAR(lnGamma(x), std::lgamma(x), 1e-9 * std::max(1.0, std::lgamma(x)));
}

TEST(CommunitySteps, SharedNeighboursAreCounted) {
    Random rnd(3);
    for (const TestNetwork& network :
         {sparse(rnd, 60, 12), star(40), ringOfCliques(5, 6), grid(6, 7), sparse(rnd, 300, 5)}) {
        ItemNetwork<LinkWeight> items = itemsOf(network);
        std::vector<std::set<Id>> around(network.nodesNum);
        for (const TestLink& link : network.links) {
            around[link.src].insert(link.dst);
            around[link.dst].insert(link.src);
        }
        for (const unsigned threads : {1u, 3u}) {
            Workers workers(threads);
            const auto shared = sharedNeighbours(items.links, workers);
            for (Id i = 0; i < items.size(); ++i)
                for (Size at = items.links.begin[i]; at < items.links.begin[i + 1]; ++at) {
                    Id count = 0;
                    for (const Id other : around[i])
                        count += around[items.links.dest[at]].contains(other);
                    ASSERT_EQ(shared[at], count) << network.name;
                }
        }
    }
}

/// Labels of which each appears, some of them idle.
std::pair<Labels, Idle> randomGroups(Random& rnd, Id items, Id most) {
    Labels labels(items);
    for (Id& label : labels) label = rnd.below(most);
    Idle idle(compact(labels));
    for (char& is : idle) is = rnd.chance(0.2);
    return {std::move(labels), std::move(idle)};
}

// So many groups that several threads take ranges of them, which are joined afterwards.
TEST(CommunitySteps, FoldedNetworksAreSumsForAnyThreads) {
    Random rnd(7);
    for (const Id most : {5u, 100u, 2500u}) {
        TestNetwork network = sparse(rnd, 3000, 9);
        for (TestLink& link : network.links) link.weight = static_cast<float>(1 + rnd.below(8)) / 4;
        const ItemNetwork<LinkWeight> items = itemsOf(network);
        const auto [labels, idle] = randomGroups(rnd, items.size(), most);
        const auto count = static_cast<Id>(idle.size());
        std::vector<std::map<Id, AccWeight>> sums(count);
        std::vector<Holding> held(count);
        for (Id i = 0; i < items.size(); ++i) held[labels[i]] += items.items[i];
        for (const TestLink& link : network.links)
            for (const auto& [from, to] : {std::pair(labels[link.src], labels[link.dst]),
                                           std::pair(labels[link.dst], labels[link.src])}) {
                if (from == to)
                    held[from].inner += static_cast<AccWeight>(link.weight);
                else
                    sums[from][to] += static_cast<AccWeight>(link.weight);
            }
        for (const unsigned threads : {1u, 2u, 5u})
            for (const bool some : {false, true}) {
                Workers workers(threads);
                const auto found = folded(items, labels, count, workers, some ? idle : Idle());
                ASSERT_EQ(found.size(), count);
                for (Id group = 0; group < count; ++group) {
                    const Size first = found.links.begin[group];
                    const Size last = found.links.begin[group + 1];
                    if (some && idle[group]) {
                        ASSERT_EQ(first, last);
                        ASSERT_EQ(found.items[group].total, 0);
                        continue;
                    }
                    ASSERT_EQ(last - first, sums[group].size()) << group << " of " << count;
                    for (Size at = first; at < last; ++at)
                        ASSERT_EQ(found.links.weight[at], sums[group].at(found.links.dest[at]));
                    ASSERT_EQ(found.items[group].inner, held[group].inner);
                    ASSERT_EQ(found.items[group].total, held[group].total);
                    ASSERT_EQ(found.items[group].nodes, held[group].nodes);
                }
            }
    }
}

TEST(CommunitySteps, IdleGroupsMergeWholeAndDoNotChangeTheOthers) {
    Random rnd(11);
    for (unsigned round = 0; round < 20; ++round) {
        TestNetwork network = sparse(rnd, 900, 14);
        // Gains that tie would be left to numbers, which idle groups change.
        for (TestLink& link : network.links)
            link.weight = static_cast<float>((1u << 16) + rnd.below(1u << 16)) * 0x1p-12f;
        ItemNetwork<LinkWeight> items = itemsOf(network);
        Workers workers(1 + round % 3);
        const auto shared = sharedNeighbours(items.links, workers);
        SimilarLinks links = similar(items.links, shared, Similarity::COMMON, workers);
        const auto [groups, idle] = randomGroups(rnd, items.size(), 1 + rnd.below(12));
        const auto count = static_cast<Id>(idle.size());
        if (count == 1) continue;
        const Merges all = mergeSimilar(links, groups, count, workers);
        const Merges some = mergeSimilar(links, groups, count, workers, idle);
        ASSERT_FALSE(some.steps.empty());
        Labels former(items.size());
        Labels latter(items.size());
        for (Id i = 0; i < items.size(); ++i) former[i] = latter[i] = i;
        for (std::size_t step = 0; step < std::max(all.steps.size(), some.steps.size()); ++step) {
            if (step < all.steps.size()) former = composed(former, all.steps[step]);
            if (step < some.steps.size()) latter = composed(latter, some.steps[step]);
            std::map<Id, Id> other;
            std::map<Id, Id> whole;
            for (Id i = 0; i < items.size(); ++i) {
                auto& seen = idle[groups[i]] ? whole : other;
                const Id key = idle[groups[i]] ? groups[i] : former[i];
                ASSERT_EQ(seen.emplace(key, latter[i]).first->second, latter[i])
                    << "round " << round << ", step " << step << ", node " << i;
            }
            std::set<Id> apart;
            for (const auto& one : {whole, other})
                for (const auto& [key, label] : one) ASSERT_TRUE(apart.insert(label).second);
        }
    }
}

TEST(CommunitySteps, MovesKeepWhatGroupsHoldAndRaiseTheLikelihood) {
    Random rnd(5);
    for (unsigned round = 0; round < 40; ++round) {
        TestNetwork network = sparse(rnd, 200, 8);
        for (TestLink& link : network.links) link.weight = static_cast<float>(1 + rnd.below(8)) / 4;
        const ItemNetwork<LinkWeight> items = itemsOf(network);
        AccWeight weight = 0;
        for (const Holding& item : items.items) weight += item.total;
        Workers workers(1 + round % 3);
        for (const Density density : {Density::OWN, Density::COMMON}) {
            Partitioned partition;
            for (Id i = 0; i < items.size(); ++i) partition.labels.push_back(rnd.below(12));
            const Id count = compact(partition.labels);
            partition.groups = holdings(items, partition.labels, count, workers);
            Likelihood likelihood(density, weight, 200, 1);
            const double before = describe(density, weight, 1, partition.groups).likelihood;
            refine(items, partition, likelihood, 10, workers);
            EXPECT_GT(describe(density, weight, 1, partition.groups).likelihood, before);

            const auto left = static_cast<Id>(partition.groups.size());
            const std::vector<Holding> anew = holdings(items, partition.labels, left, workers);
            const ItemNetwork<AccWeight> coarse = folded(items, partition.labels, left, workers);
            for (Id group = 0; group < left; ++group) {
                for (const Holding& other : {partition.groups[group], coarse.items[group]}) {
                    EXPECT_EQ(anew[group].inner, other.inner);
                    EXPECT_EQ(anew[group].total, other.total);
                    EXPECT_EQ(anew[group].nodes, other.nodes);
                }
                EXPECT_GT(anew[group].nodes, 0);
            }
        }
    }
}

TEST(CommunitySteps, NoCommunityGainsMoreThanTheBoundOfIt) {
    Random rnd(7);
    const auto size = [&rnd](int low, int high) {
        const int exponent = low + static_cast<int>(rnd.below(static_cast<Id>(high - low)));
        return std::ldexp(1 + rnd.below(1024) / 1024., exponent);
    };
    Size close = 0;
    for (unsigned i = 0; i < 300000; ++i) {
        const AccWeight weight = size(8, 40);
        const AccWeight nodes = std::floor(size(4, 30));
        Likelihood likelihood(i % 2 ? Density::OWN : Density::COMMON, weight, nodes, size(-6, 6));
        // Densities near each other or far apart, by what two groups hold.
        const AccWeight half = weight / 2;
        likelihood.estimate({{half * (1 - size(-30, 0) / 2), half, 1}, {half / 2, half, 1}});

        Holding group;
        group.total = weight * size(-30, -1);
        group.inner = group.total * std::min(1., size(-40, 1) / 2);
        group.nodes = 1 + std::floor(nodes * size(-20, -1) / 2);
        if (rnd.below(3) == 0) group.nodes = nodes - std::floor(group.nodes / 2);
        // Items that are nothing but nodes or nothing but weight tell the parts of the bound.
        Holding item;
        if (rnd.below(3))
            item.total = (rnd.below(2) ? group.total : weight - group.total) * size(-52, -1) / 2;
        item.inner = item.total * std::min(1., size(-40, 1) / 2);
        if (rnd.below(3)) item.nodes = std::ceil((nodes - group.nodes) * size(-20, -1) / 2);
        const AccWeight pull = (item.total - item.inner) * std::min(1., size(-30, 1) / 2);
        Holding both = group + item;
        both.inner += 2 * pull;

        const Worth worth = likelihood.worth(group);
        const double bound = worth.mostGain(item.inner + 2 * pull, item.nodes);
        const double gain = likelihood.value(both) - worth.value;
        ASSERT_EQ(worth.value, likelihood.value(group));
        ASSERT_GE(bound, gain) << i;
        close += bound - gain < 0.1 * std::abs(gain);
    }
    EXPECT_GT(close, 2000) << "a bound so wide passes everything";
}

TEST(CommunitySteps, TheCutIsNoWorseThanAnyHeight) {
    Random rnd(9);
    for (Id round = 0; round < 30; ++round) {
        ItemNetwork<LinkWeight> items =
            itemsOf(round % 2 ? sparse(rnd, 150, 7) : ringOfCliques(10 + round, 4));
        AccWeight weight = 0;
        for (const Holding& item : items.items) weight += item.total;
        Workers workers(1);
        const auto shared = sharedNeighbours(items.links, workers);
        SimilarLinks links = similar(items.links, shared, Similarity::COSINE, workers);
        const Merges merges = mergeSimilar(links, Labels(items.size(), 0), 1, workers);
        ASSERT_FALSE(merges.steps.empty());
        Likelihood likelihood(round % 3 ? Density::OWN : Density::COMMON, weight, items.size(), 1);
        const auto worth = [&](const std::vector<Holding>& groups) {
            double sum = 0;
            for (const Holding& group : groups) sum += likelihood.value(group);
            return sum;
        };
        Labels pieces(items.size());
        for (Id i = 0; i < items.size(); ++i) pieces[i] = i;
        std::vector<std::vector<Holding>> heights;
        double best = worth(items.items);
        for (std::size_t i = 0; i < merges.steps.size(); ++i) {
            pieces = composed(pieces, merges.steps[i]);
            heights.push_back(holdings(items, pieces, merges.counts[i], workers));
            best = std::max(best, worth(heights.back()));
        }
        Labels cut = likeliestCut(merges, items.items, heights, likelihood);
        const Id count = compact(cut);
        EXPECT_GE(worth(holdings(items, cut, count, workers)), best - 1e-9 * std::abs(best));
    }
}

}  // namespace
}  // namespace vorl::test
