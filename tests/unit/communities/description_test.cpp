// The figures of communities against the formulas of docs/method.md, and their description against
// that of every partition.
#include <vorl/communities.hpp>
#include <vorl/communities_text.hpp>

#include "support/networks.hpp"
#include "support/pairs.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <vector>

namespace vorl::test {
namespace {

/// Groups of nodes with links inside and fewer between them, self links among them.
Pairs grouped(Random& rnd, Id nodes, Id group, double inside, double outside, bool weighted,
              bool selves) {
    Pairs pairs;
    for (Id a = 0; a < nodes; ++a) {
        for (Id b = 0; b < a; ++b)
            if (rnd.chance(a / group == b / group ? inside : outside))
                pairs.add(a, b, weighted ? static_cast<float>(1 + rnd.below(64)) / 16 : 1.f);
        if (selves && rnd.chance(0.2)) pairs.add(a, a, 0.5f);
    }
    return pairs;
}

/// What a partition amounts to, in natural units.
struct Figures {
    double modularity = 0;
    double conductance = 0;
    double likelihood = 0;
    double naming = 0;
    double gamma = 0;
};

double choose(double n, double k) {
    return std::lgamma(n + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1);
}

/// x ln(x / y)
double relative(double x, double y) { return x > 0 && y > 0 ? x * std::log(x / y) : 0; }

/// @param group of each node that has a link; numbers from 0 on
Figures figuresOf(const FlatNetwork& network, const std::vector<Id>& group, bool ownDensity) {
    const Id groups = 1 + *std::max_element(group.begin(), group.end());
    std::vector<double> inner(groups), total(groups), nodes(groups);
    double weight = 0;
    double between = 0;
    for (Id i = 0; i < network.size(); ++i) {
        ++nodes[group[i]];
        const auto self = static_cast<double>(network.self[i]);
        inner[group[i]] += self;
        total[group[i]] += self;
        weight += self;
        for (Size at = network.begin[i]; at < network.begin[i + 1]; ++at) {
            const auto link = static_cast<double>(network.weight[at]);
            if (group[network.neighbour[at]] == group[i]) inner[group[i]] += link;
            total[group[i]] += link;
            weight += link;
            between += link;
        }
    }
    const double pairs = static_cast<double>(network.neighbour.size()) / 2;
    const double links = between > 0 ? pairs * weight / between : weight / 2;
    Figures result;
    double e = 0;
    double chance = 0;
    for (Id r = 0; r < groups; ++r) {
        const double part = inner[r] / weight;
        const double all = total[r] / weight;
        e += part;
        chance += all * all;
        if (ownDensity) result.likelihood += relative(part, all * all);
        const double cut = total[r] - inner[r];
        const double side = std::min(total[r], weight - total[r]);
        result.conductance += cut > 0 && side > 0 ? cut / side / groups : 0;
        result.naming -= std::lgamma(nodes[r] + 1);
    }
    if (!ownDensity) result.likelihood = relative(e, chance);
    result.likelihood = links * (result.likelihood + relative(1 - e, 1 - chance));
    const auto count = static_cast<double>(network.size());
    result.naming += std::log(count) + choose(count - 1, groups - 1.) + std::lgamma(count + 1);
    if (ownDensity) result.naming += choose(links + groups, groups);
    result.modularity = e - chance;
    result.gamma =
        (e / chance - (1 - e) / (1 - chance)) / std::log(e / chance / ((1 - e) / (1 - chance)));
    return result;
}

double savingOf(const FlatNetwork& network, const std::vector<Id>& group, bool ownDensity) {
    const Figures found = figuresOf(network, group, ownDensity);
    const Figures none = figuresOf(network, std::vector<Id>(group.size()), ownDensity);
    return (found.likelihood - found.naming + none.naming) / std::log(2.);
}

std::vector<Id> partitionOf(const Communities& found) {
    std::vector<Id> group;
    for (Size place = 0; place < found.nodes(); ++place)
        group.push_back(found.of(place)[0].community);
    return group;
}

TEST(Description, FiguresAreThoseOfTheMethod) {
    Random rnd(23);
    Size divided = 0;
    for (int round = 0; round < 80; ++round) {
        const Pairs pairs = grouped(rnd, 30 + rnd.below(60), 5 + rnd.below(12),
                                    0.4 + 0.5 * rnd.below(2), 0.03, round % 2, round % 3 == 0);
        const FlatNetwork network = pairs.network();
        const Communities found = communities(network, {.shares = false});
        // Nodes with self links alone have a community, isolated ones don't count.
        if (found.count() < 2 || found.isolated() != 0) continue;
        ++divided;
        const std::vector<Id> group = partitionOf(found);
        const CommunitiesScore& score = found.score();
        const Figures figures = figuresOf(network, group, score.ownDensity);
        EXPECT_NEAR(score.modularity, figures.modularity, 1e-9);
        EXPECT_NEAR(score.conductance, figures.conductance, 1e-9);
        EXPECT_NEAR(score.gamma, figures.gamma, 1e-7 * figures.gamma);
        EXPECT_NEAR(score.naming, figures.naming / std::log(2.), 1e-6);
        EXPECT_NEAR(score.saving, savingOf(network, group, score.ownDensity), 1e-6);
    }
    EXPECT_GT(divided, 50u);
}

/// Calls visit(group) with each partition of so many nodes.
template <class VisitT>
void eachPartition(std::vector<Id>& group, std::size_t node, Id groups, const VisitT& visit) {
    if (node == group.size()) return visit(group);
    for (Id own = 0; own <= groups; ++own) {
        group[node] = own;
        eachPartition(group, node + 1, std::max(groups, own + 1), visit);
    }
}

TEST(Description, ComesNearTheShortestOfAllPartitions) {
    Random rnd(29);
    Size shortest = 0;
    Size all = 0;
    for (int round = 0; round < 60; ++round) {
        const FlatNetwork network =
            grouped(rnd, 9, 3 + rnd.below(3), 0.95, 0.1, round % 2, false).network();
        if (network.size() < 4) continue;
        const Communities found = communities(network, {.shares = false});
        double best = -1e300;
        std::vector<Id> group(network.size());
        eachPartition(group, 0, 0, [&](const std::vector<Id>& some) {
            if (std::all_of(some.begin(), some.end(), [](Id own) { return own == 0; })) return;
            for (const bool own : {false, true})
                best = std::max(best, savingOf(network, some, own));
        });
        // One community is given where more would cost too much, and never where they save.
        if (found.count() == 1) {
            EXPECT_LE(best, 0);
            continue;
        }
        EXPECT_LE(found.score().saving, best + 1e-6);
        shortest += found.score().saving > best - 1e-6;
        ++all;
    }
    EXPECT_GT(all, 50u);
    EXPECT_GT(shortest * 10, all * 7) << shortest << " of " << all;
}

TEST(Description, AllStartsGiveNoLongerOne) {
    Random rnd(31);
    for (int round = 0; round < 12; ++round) {
        const FlatNetwork network =
            grouped(rnd, 150, 8 + rnd.below(20), 0.5, 0.02, round % 2, round % 3 == 0).network();
        double former = -1e300;
        for (unsigned starts = 1; starts <= MOST_STARTS; ++starts) {
            const Communities found = communities(network, {.shares = false, .starts = starts});
            EXPECT_EQ(found.score().starts, starts);
            EXPECT_GE(found.score().saving, former);
            former = found.score().saving;
        }
        const Communities more = communities(network, {.starts = 1000});
        EXPECT_EQ(more.score().starts, MOST_STARTS);
        EXPECT_EQ(clustersText(more), clustersText(communities(network, {.starts = MOST_STARTS})));
    }
}

TEST(Description, UnitsOfWeightChangeNothing) {
    Random rnd(37);
    for (int round = 0; round < 8; ++round) {
        Pairs pairs = grouped(rnd, 200, 15, 0.4, 0.02, true, true);
        const Communities found = communities(pairs.network());
        for (const int shift : {-90, -1, 3, 90}) {
            Pairs scaled = pairs;
            for (LinkWeight& weight : scaled.weight) weight = std::ldexp(weight, shift);
            const Communities same = communities(scaled.network());
            EXPECT_EQ(clustersText(same), clustersText(found)) << shift;
            EXPECT_NEAR(same.score().saving, found.score().saving, 1e-6);
        }
    }
}

TEST(Description, NodesShareCommunitiesOfTheirNeighboursAlone) {
    Random rnd(41);
    Size shared = 0;
    for (int round = 0; round < 30; ++round) {
        const Id apart = 60 + rnd.below(60);
        Pairs pairs = grouped(rnd, apart, 10, 0.7, 0.01, round % 2, false);
        const Pairs others = grouped(rnd, 60, 12, 0.7, 0.01, round % 2, false);
        for (std::size_t i = 0; i < others.src.size(); ++i)
            pairs.add(apart + others.src[i], apart + others.dst[i], others.weight[i]);
        // Some nodes that belong to two groups.
        for (Id node = 0; node < apart; node += 17)
            for (Id i = 0; i < 6; ++i) pairs.add(node, (node + 10 - node % 10 + i) % apart, 1.f);
        const FlatNetwork network = pairs.network();
        const Communities found = communities(network);
        if (found.count() - found.isolated() < 2) continue;
        shared += found.shared();
        for (Id place = 0; place < network.size(); ++place)
            for (const CommunityShare& part : found.of(place)) {
                bool tied = found.members(part.community).size() == 1;
                for (const auto& [member, share] : found.members(part.community)) {
                    // Nothing joins the two sides of the network.
                    EXPECT_EQ(network.ids[member] < apart, network.ids[place] < apart);
                    for (Size at = network.begin[place]; at < network.begin[place + 1]; ++at)
                        tied = tied || network.neighbour[at] == member;
                }
                EXPECT_TRUE(tied) << network.ids[place] << " has no link into " << part.community;
            }
    }
    EXPECT_GT(shared, 30u);
}

}  // namespace
}  // namespace vorl::test
