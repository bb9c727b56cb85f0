// Levels that touch only what changed against literal ones, to the bit.
#include "support/both_ways.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <limits>

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
    const std::uint32_t kind = rnd.below(7);
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

TEST(Tracks, GiveWhatLiteralLevelsGive) {
    const char* const text = std::getenv("VORL_TEST_SEEDS");
    const std::uint64_t first = text ? std::strtoull(text, nullptr, 10) : 0;
    const std::uint64_t count = text ? 100'000'000 : 1500;
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        const TestNetwork network = networkOf(seed);
        if (network.links.empty()) continue;
        ASSERT_EQ(difference(network, optionsOf(seed, network.directed)), "")
            << network.name << ", seed " << seed;
        if (text && (seed - first) % 10000 == 9999) std::printf("%lu\n", seed - first + 1);
    }
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
