// Levels that touch only what changed against literal ones, to the bit.
#include "support/both_ways.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <tuple>
#include <vector>

namespace vorl::test {
namespace {

/// Tails of levels around hubs: each node joins the others by their degrees.
TestNetwork hubs(Random& rnd) {
    const Id n = 20 + rnd.below(250);
    TestNetwork net("hubs", n);
    std::vector<Id> ends{0};
    for (Id i = 1; i < n; ++i)
        for (Id k = 1 + rnd.below(4); k != 0; --k) {
            const Id other = ends[rnd.below(static_cast<Id>(ends.size()))];
            net.add(i, other);
            ends.push_back(i);
            ends.push_back(other);
        }
    return net;
}

/// The same larger and with whole weights, where hubs share members.
TestNetwork sharingHubs(std::uint64_t seed) {
    Random rnd(seed);
    const Id n = 60 + rnd.below(500);
    TestNetwork net("sharing hubs", n);
    net.directed = rnd.chance(0.3);
    std::vector<Id> ends{0};
    const Id most = 1 + rnd.below(6);
    const bool byDegree = rnd.chance(0.7);
    for (Id i = 1; i < n; ++i)
        for (Id k = 1 + rnd.below(most); k != 0; --k) {
            const Id other =
                byDegree ? ends[rnd.below(static_cast<Id>(ends.size()))] : rnd.below(i);
            net.add(i, other);
            ends.push_back(i);
            ends.push_back(other);
        }
    net.weighted = rnd.chance(0.5);
    if (net.weighted) {
        const std::uint32_t heaviest = 2 + rnd.below(6);
        for (TestLink& ln : net.links) ln.weight = static_cast<float>(1 + rnd.below(heaviest));
    }
    return net;
}

/// Of the whole range of 32 bits, or such that sums are nearly equal.
float extremeWeight(Random& rnd, std::uint32_t kind) {
    switch (kind) {
        case 0: {
            const auto weight = std::bit_cast<float>(rnd.below(0x7F000000));
            return std::min(weight, 1e34f);
        }
        case 1: return std::ldexp(1.f, static_cast<int>(rnd.below(200)) - 100);
        case 2: return 1 + static_cast<float>(rnd.below(4)) * std::numeric_limits<float>::epsilon();
        case 3: return 0.1f * static_cast<float>(1 + rnd.below(3));
        case 4: return 1e-7f * static_cast<float>(1 + rnd.below(9));
        case 5: return static_cast<float>(rnd.below(3));
        case 6: return 1 - static_cast<float>(rnd.below(6)) * 0x1p-24f;
        default: return std::exp(static_cast<float>(rnd.below(2000)) / 100);
    }
}

TestNetwork networkOf(std::uint64_t seed) {
    TestNetwork net = randomNetwork(seed);
    Random rnd(seed + 5);
    if (rnd.chance(0.4)) net = hubs(rnd);
    if (rnd.chance(0.1)) return sharingHubs(seed);
    if (rnd.chance(0.5)) return net;
    net.weighted = true;
    const std::uint32_t kind = rnd.below(8);
    bool any = false;
    for (TestLink& ln : net.links) {
        ln.weight = extremeWeight(rnd, kind);
        any = any || ln.weight > 1e-37f;
    }
    if (!any && !net.links.empty()) net.links.front().weight = 1;
    return net;
}

ClusterOptions optionsOf(std::uint64_t seed, bool directed) {
    Random rnd(seed + 77);
    ClusterOptions options;
    const float gammas[] = {-1, -1, -1, 1, 0.5f, 0.1f, 0, 3};
    options.gamma = gammas[rnd.below(8)];
    if (rnd.chance(0.3)) options.rootMax = static_cast<Coupling>(1 + rnd.below(4));
    if (rnd.chance(0.1)) options.reduction = Reduction::ACCURATE;
    if (!directed && rnd.chance(0.1)) options.validation = Validation::NONE;
    options.modtrace = rnd.chance(0.3);
    if (rnd.chance(0.2)) options.gainMarg = 0;
    return options;
}

ClusterOptions optionsOf(Random& rnd, const std::vector<float>& gammas) {
    ClusterOptions options;
    options.gamma = gammas[rnd.below(static_cast<std::uint32_t>(gammas.size()))];
    if (rnd.chance(0.3)) options.rootMax = static_cast<Coupling>(1 + rnd.below(4));
    return options;
}

/// The seeds of a test: from that on which the environment tells, as long as one likes.
struct Seeds {
    const char* const text = std::getenv("VORL_TEST_SEEDS");
    const std::uint64_t first = text ? std::strtoull(text, nullptr, 10) : 0;
    const std::uint64_t end;

    explicit Seeds(std::uint64_t count) : end(first + (text ? 100'000'000 : count)) {}

    void tell(std::uint64_t seed) const {
        if (text && (seed - first) % 10000 == 9999) std::cout << seed - first + 1 << std::endl;
    }
};

/// @param differenceOf the difference of a seed
void expectNone(std::uint64_t count, std::string (*differenceOf)(std::uint64_t)) {
    const Seeds seeds(count);
    for (std::uint64_t seed = seeds.first; seed < seeds.end; ++seed) {
        ASSERT_EQ(differenceOf(seed), "") << "seed " << seed;
        seeds.tell(seed);
    }
}

std::string differenceOfAnyKind(std::uint64_t seed) {
    const TestNetwork network = networkOf(seed);
    if (network.links.empty()) return {};
    return difference(network, optionsOf(seed, network.directed));
}

TEST(Tracks, GiveWhatLiteralLevelsGive) { expectNone(1500, differenceOfAnyKind); }

/// Weights a few steps of 32-bit floats below one number. Just below a power of two these are as
/// near as the tolerance of comparisons, and for small gains they are nearer.
std::string differenceOfNearGains(std::uint64_t seed) {
    Random rnd(seed);
    const Id n = 6 + rnd.below(rnd.chance(0.3) ? 40 : 14);
    TestNetwork network("near gains", n);
    network.weighted = true;
    network.directed = rnd.chance(0.8);
    const float bases[] = {1,        0.5f,     0.25f,    0x1p-3f,  0x1p-6f,
                           0x1p-10f, 0x1p-14f, 0x1p-17f, 0x1p-20f, 1.5f};
    const float base = bases[rnd.below(10)];
    const Id shape = rnd.below(4);
    const Id steps = 4 + rnd.below(3);
    for (Id links = n + rnd.below(2 * n); links != 0; --links) {
        const Id a = rnd.below(n);
        const Id others[] = {rnd.below(n), rnd.below(1 + n / 4), (a + 1 + rnd.below(3)) % n, a / 2};
        float weight = base;
        for (Id k = rnd.below(steps); k != 0; --k) weight = std::nextafter(weight, 0.f);
        if (rnd.chance(0.05)) weight = std::nextafter(base, 4.f);
        if (!network.directed) weight /= 2;
        if (rnd.chance(0.15))
            weight *= static_cast<float>(2 + rnd.below(3));
        else if (rnd.chance(0.1))
            weight /= 2;
        network.add(a, others[shape], weight);
    }
    if (network.links.empty()) return {};
    return difference(network, optionsOf(rnd, {0, 0, 0, 0.1f, 1, 3, -1}));
}

TEST(Tracks, GiveTheSameWhereGainsAreNear) { expectNone(6000, differenceOfNearGains); }

/// Dense groups whose weights are a few steps of 32-bit floats apart, so that many clusters have
/// several candidates, which are candidates of each other.
std::string differenceOfNearGroups(std::uint64_t seed) {
    Random rnd(seed);
    const Id groups = 1 + rnd.below(4);
    const Id size = 3 + rnd.below(6);
    TestNetwork network("near groups", groups * size);
    network.weighted = true;
    network.directed = rnd.chance(0.3);
    const Id steps = 1 + rnd.below(5);
    const double density = rnd.chance(0.5) ? 1 : 0.6;
    const float base = rnd.chance(0.5) ? 1.f : 0x1p-7f;
    const auto add = [&](Id a, Id b) {
        float weight = base;
        for (Id k = rnd.below(steps); k != 0; --k) weight = std::nextafter(weight, 0.f);
        network.add(a, b, weight);
    };
    for (Id i = 0; i < groups * size; ++i)
        for (Id j = i - i % size; j < i; ++j)
            if (rnd.chance(density)) add(i, j);
    for (Id links = rnd.below(2 * groups); links != 0; --links)
        add(rnd.below(groups * size), rnd.below(groups * size));
    if (network.links.empty()) return {};
    return difference(network, optionsOf(rnd, {-1, 0, 0.1f, 0.5f, 1, 1, 3, 8}));
}

TEST(Tracks, GiveTheSameWhereGroupsAreNear) { expectNone(3000, differenceOfNearGroups); }

/// Groups of nodes with a few links to others.
TestNetwork planted(Random& rnd, Id groups, Id size) {
    TestNetwork net("planted", groups * size);
    for (Id i = 0; i < net.nodesNum; ++i)
        for (Id k = 0; k < 7; ++k) {
            const Id other = k < 5 ? i - i % size + rnd.below(size) : rnd.below(net.nodesNum);
            if (other != i) net.add(i, other);
        }
    return net;
}

// On their levels hundreds of clusters are in doubt about their candidates at the same time.
TEST(Tracks, GiveTheSameOnManyClusters) {
    for (std::uint64_t seed = 0; seed < 4; ++seed) {
        Random rnd(seed);
        TestNetwork network = planted(rnd, 120, 30);
        network.directed = seed % 2 != 0;
        network.weighted = seed < 2;
        if (network.weighted)
            for (TestLink& ln : network.links) ln.weight = extremeWeight(rnd, seed == 0 ? 3 : 6);
        EXPECT_EQ(difference(network, ClusterOptions()), "") << "seed " << seed;
    }
}

// What ties with a value that ties with the largest gain needn't tie with that.
TEST(Tracks, GiveTheSameWhereTiesOfTiesAreNone) {
    TestNetwork network("ties of ties", 11);
    network.weighted = network.directed = true;
    const std::tuple<Id, Id, float> links[] = {
        {2, 1, 0.0156249981f}, {5, 0, 0.0156249981f},  {7, 0, 0.0156250019f}, {3, 1, 0.0312499944f},
        {7, 2, 0.0156249991f}, {1, 2, 0.00781249907f}, {1, 0, 0.015625f}};
    for (const auto& [src, dst, weight] : links) network.add(src, dst, weight);
    ClusterOptions options;
    options.gamma = 0;
    options.rootMax = 4;
    EXPECT_EQ(difference(network, options), "");
}

// The best neighbours of both are out, so that each may be a candidate of the other.
TEST(Tracks, GiveTheSameWhereTwoAreInDoubtAboutEachOther) {
    Random rnd(46040);
    ASSERT_TRUE(rnd.chance(0.5));
    TestNetwork network = hubs(rnd);
    network.weighted = network.directed = true;
    ASSERT_TRUE(rnd.chance(0.7));
    for (TestLink& ln : network.links) ln.weight = extremeWeight(rnd, 6);
    ClusterOptions options;
    options.gamma = 1;
    EXPECT_EQ(difference(network, options), "");
}

// Below a power of two the next number is as near as the tolerance of comparisons, so that the
// largest gain doesn't take the place of its offer.
TEST(Tracks, GiveTheSameWhereTheLargestGainTiesWithItsOffer) {
    TestNetwork network("offers", 26);
    network.weighted = network.directed = true;
    const std::array<Id, 3> links[] = {{17, 15, 1}, {25, 4, 1}, {12, 5, 0},  {17, 19, 0},
                                       {6, 16, 0},  {17, 4, 1}, {17, 25, 3}, {2, 17, 2},
                                       {9, 25, 1},  {23, 8, 1}, {22, 20, 1}, {20, 22, 2}};
    for (const auto& [src, dst, steps] : links)
        network.add(src, dst, 1 + static_cast<float>(steps) * 0x1p-23f);
    ClusterOptions options;
    options.gamma = 3;
    options.rootMax = 4;
    EXPECT_EQ(difference(network, options), "");
}

TEST(Tracks, AddUpExactTermsInOrderToSumsThatAreNot) {
    for (const float gamma : {-1.f, 1.f, 0.5f, 0.1f}) {
        ClusterOptions options;
        options.gamma = gamma;
        EXPECT_EQ(difference(sharingHubs(104594 * 7 + 3), options), "") << gamma;
    }
}

}  // namespace
}  // namespace vorl::test
