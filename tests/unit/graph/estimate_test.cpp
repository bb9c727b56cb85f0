#include <vorl/estimate.hpp>

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "support/networks.hpp"

namespace vorl::test {
namespace {

/// Four links a node, three to its group of ten; more links than are clustered from 25,000 on.
FlatNetwork groups(Id nodes) {
    Random rnd(1);
    std::vector<Id> src;
    std::vector<Id> dst;
    for (Id node = 0; node < nodes; ++node)
        for (int i = 0; i < 4; ++i) {
            src.push_back(node);
            dst.push_back(i == 0 ? rnd.below(nodes) : node / 10 * 10 + rnd.below(10));
        }
    return FlatNetwork::ofPairs(src, dst);
}

TEST(Estimate, MemoryGrowsByNodesLinksAndWeights) {
    const FlatNetwork small = groups(1'000);
    const auto memory = [](const FlatNetwork& network, bool directed, bool weighted) {
        return estimateClustering(network, directed, weighted).memory;
    };
    const Size none = memory(FlatNetwork(), false, false);
    const Size plain = memory(small, false, false);
    EXPECT_GT(plain, none);
    const auto doubled = static_cast<double>(memory(groups(2'000), false, false) - none);
    EXPECT_NEAR(doubled / static_cast<double>(plain - none), 2, 0.05);
    EXPECT_GT(memory(small, false, true), plain);
    // Arcs are weighted.
    EXPECT_EQ(memory(small, true, false), memory(small, false, true));
    EXPECT_EQ(memory(small, true, true), memory(small, false, true));
}

TEST(Estimate, TimeIsToldBeyondThePartThatIsClusteredAndNoneWithoutLinks) {
    EXPECT_GT(estimateClustering(groups(30'000), false, false).seconds, 0);
    // In a regular network most gains tie, so that even a part of it takes long.
    std::vector<Id> src;
    std::vector<Id> dst;
    for (Id node = 0; node < 25'000; ++node)
        for (Id step = 1; step <= 4; ++step) {
            src.push_back(node);
            dst.push_back((node + step * step) % 25'000);
        }
    EXPECT_GT(estimateClustering(FlatNetwork::ofPairs(src, dst), false, false).seconds, 1);
    std::vector<Id> nodes(1'000);
    std::iota(nodes.begin(), nodes.end(), Id{0});
    EXPECT_EQ(estimateClustering(FlatNetwork::ofPairs({}, {}, {}, nodes), false, false).seconds, 0);
}

}  // namespace
}  // namespace vorl::test
