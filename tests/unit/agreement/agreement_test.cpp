// The measures of likeness: values worked out by hand, limits of the literature, and the plain
// definitions over all pairs on random clusterings.
#include <vorl/agreement/agreement.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

namespace vorl {
namespace {

using Clusters = std::vector<std::vector<Id>>;

/// The nodes begin to end - 1.
std::vector<Id> range(Id begin, Id end) {
    std::vector<Id> nodes;
    for (Id node = begin; node < end; ++node) nodes.push_back(node);
    return nodes;
}

Agreement compared(Size nodes, const Clusters& x, const Clusters& y,
                   const OmegaLimits& limits = {}) {
    return agreement(Cover(nodes, x), Cover(nodes, y), limits);
}

constexpr double EXACT = 1e-12;

TEST(Agreement, OneOfManyClustersFound) {
    // McDaid et al.: the older form gives (1 + 1/K) / 2 to one right cluster of K, the newer 1/K.
    Clusters four;
    for (Id first = 0; first < 32; first += 8) four.push_back(range(first, first + 8));
    const Agreement found = compared(32, four, {four[2]});
    EXPECT_NEAR(found.nmiMax, 0.25, EXACT);
    EXPECT_NEAR(found.nmiLfk, 0.625, EXACT);
    EXPECT_NEAR(found.f1, 0.5 * (0.25 + 1), EXACT);
}

TEST(Agreement, DegenerateClusterings) {
    const Clusters all{range(0, 9)};
    Clusters single;
    for (Id node = 0; node < 9; ++node) single.push_back({node});
    for (const Clusters& clusters : {all, single, Clusters{{0}}, Clusters{{0, 1}, {0, 1}}}) {
        const Agreement same = compared(9, clusters, clusters);
        for (double measure : {same.nmiMax, same.nmiLfk, same.f1, same.omega})
            EXPECT_EQ(measure, 1);
        EXPECT_EQ(same.ari.value_or(1), 1);
        EXPECT_NEAR(same.nmi.value_or(1), 1, EXACT);
    }
    const Agreement opposite = compared(9, all, single);
    for (double measure : {opposite.nmiMax, opposite.omega, *opposite.ari, *opposite.nmi})
        EXPECT_EQ(measure, 0);
    EXPECT_NEAR(opposite.f1, 0.2, EXACT);
    EXPECT_EQ(compared(1, {{0}}, {{0}}).omega, 1);
}

/// Random clusters that overlap; some hold most of the nodes.
Clusters randomClusters(Id nodes, std::mt19937_64& random) {
    Clusters clusters(1 + random() % 8);
    for (auto& cluster : clusters) {
        const std::size_t percent = random() % 3 == 0 ? 80 : 1 + random() % 40;
        for (Id node = 0; node < nodes; ++node)
            if (random() % 100 < percent) cluster.push_back(node);
        std::shuffle(cluster.begin(), cluster.end(), random);
    }
    clusters.push_back({static_cast<Id>(random() % nodes)});
    return clusters;
}

std::size_t common(const std::vector<Id>& a, const std::vector<Id>& b) {
    return static_cast<std::size_t>(std::count_if(a.begin(), a.end(), [&b](Id node) {
        return std::find(b.begin(), b.end(), node) != b.end();
    }));
}

/// The measures as they are defined, over all pairs of clusters and of nodes.
Agreement defined(Id nodes, Clusters x, Clusters y) {
    std::erase_if(x, [](const auto& cluster) { return cluster.empty(); });
    std::erase_if(y, [](const auto& cluster) { return cluster.empty(); });
    const auto h = [nodes](std::size_t count) {
        const double share = static_cast<double>(count) / nodes;
        return count == 0 ? 0 : -share * std::log2(share);
    };
    const auto entropy = [&](const auto& cluster) {
        return h(cluster.size()) + h(nodes - cluster.size());
    };
    struct Sums {
        double whole = 0, rest = 0, relative = 0, f1 = 0;
    };
    const auto oneWay = [&](const Clusters& from, const Clusters& to) {
        Sums sums;
        for (const auto& a : from) {
            double rest = entropy(a);
            double f1 = 0;
            bool otherHasAll = false;
            for (const auto& b : to) {
                const std::size_t both = common(a, b);
                const double agree = h(both) + h(nodes + both - a.size() - b.size());
                const double differ = h(a.size() - both) + h(b.size() - both);
                if (agree >= differ) rest = std::min(rest, agree + differ - entropy(b));
                f1 = std::max(
                    f1, 2. * static_cast<double>(both) / static_cast<double>(a.size() + b.size()));
                otherHasAll = otherHasAll || b.size() == nodes;
            }
            sums.whole += entropy(a);
            sums.rest += rest;
            sums.relative += entropy(a) > 0 ? rest / entropy(a) : otherHasAll ? 0 : 1;
            sums.f1 += f1;
        }
        sums.relative /= static_cast<double>(from.size());
        sums.f1 /= static_cast<double>(from.size());
        return sums;
    };
    const Sums sx = oneWay(x, y);
    const Sums sy = oneWay(y, x);
    Agreement result;
    result.nmiMax = 0.5 * (sx.whole - sx.rest + sy.whole - sy.rest) / std::max(sx.whole, sy.whole);
    result.nmiLfk = 1 - 0.5 * (sx.relative + sy.relative);
    result.f1 = 0.5 * (sx.f1 + sy.f1);

    std::map<std::size_t, double> timesX, timesY;
    double agree = 0;
    for (Id u = 0; u < nodes; ++u)
        for (Id v = 0; v < u; ++v) {
            const auto times = [u, v](const Clusters& clusters) {
                std::size_t count = 0;
                for (const auto& cluster : clusters) count += common({u, v}, cluster) == 2;
                return count;
            };
            ++timesX[times(x)];
            ++timesY[times(y)];
            agree += times(x) == times(y);
        }
    const double every = nodes * (nodes - 1.) / 2;
    double chance = 0;
    for (const auto& [times, pairs] : timesX)
        if (timesY.contains(times)) chance += pairs * timesY[times] / every;
    result.omega = (agree - chance) / (every - chance);
    return result;
}

TEST(Agreement, IsAsDefinedOnRandomClusterings) {
    std::mt19937_64 random(5);
    for (int round = 0; round < 60; ++round) {
        const Id nodes = 4 + static_cast<Id>(random() % 30);
        const Clusters x = randomClusters(nodes, random);
        const Clusters y = randomClusters(nodes, random);
        const Agreement expected = defined(nodes, x, y);
        const Agreement found = compared(nodes, x, y);
        EXPECT_NEAR(found.nmiMax, expected.nmiMax, 1e-9) << round;
        EXPECT_NEAR(found.nmiLfk, expected.nmiLfk, 1e-9) << round;
        EXPECT_NEAR(found.f1, expected.f1, 1e-9) << round;
        EXPECT_NEAR(found.omega, expected.omega, 1e-9) << round;
    }
}

TEST(Agreement, SampledOmegaIsNearTheExactOne) {
    std::mt19937_64 random(6);
    Clusters x(20), y(20);
    for (Id node = 0; node < 2000; ++node) {
        const std::size_t home = random() % 20;
        x[home].push_back(node);
        y[random() % 4 == 0 ? random() % 20 : home].push_back(node);
        if (const std::size_t second = random() % 80; second < 20 && second != home)
            x[second].push_back(node);
        // Pairs that are together in two clusters are drawn twice as often.
        else if (home == 3)
            x[19].push_back(node);
    }
    const OmegaLimits sampled{1000, 400'000};
    const Agreement exact = compared(2000, x, y);
    const Agreement found = compared(2000, x, y, sampled);
    EXPECT_EQ(exact.omegaSamples, 0u);
    EXPECT_EQ(found.omegaSamples, 400'000u);
    EXPECT_NE(found.omega, exact.omega);
    EXPECT_NEAR(found.omega, exact.omega, 4e-3);
    EXPECT_EQ(found.omega, compared(2000, x, y, sampled).omega);
    // Of partitions no pair needs to be drawn.
    EXPECT_EQ(compared(2000, y, y, sampled).omegaSamples, 0u);
}

}  // namespace
}  // namespace vorl
