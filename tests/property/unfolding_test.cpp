// Unfolding by way of the rows of descendants against unfolding from the top.
#include "../lib/src/hierarchy/unwrap.hpp"
#include "support/networks.hpp"

#include <vorl/hierarchy/cluster.hpp>
#include <vorl/types/trace.hpp>

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

struct UnfoldingTest : testing::Test {
    UnfoldingTest() { ftrace = nullptr; }
};

/// Each cluster has the same nodes with the same shares, to the bit and in the same order.
template <class LinksT>
void compareRows(const TestNetwork& network, bool maxshare, std::size_t rowsMax) {
    auto nodes = makeNodes<LinksT>(network);
    const auto hier = cluster<LinksT>(nodes, !network.directed, ClusterOptions());
    detail::Unwrapper<LinksT> plain(maxshare);
    detail::Unwrapper<LinksT> sharing(maxshare);
    sharing.keepRows(rowsMax, [](const auto&, Share a, Share b) { return a == b; });
    for (const auto& level : hier->levels())
        for (const Cluster<LinksT>& cl : level.clusters) {
            // As the writers do, which leave out what repeats a node.
            if (cl.des.size() < 2) continue;
            ASSERT_EQ(sharing.unwrap(cl), plain.unwrap(cl))
                << network.name << ", cluster #" << cl.id << " of level " << cl.levnum;
        }
}

TEST_F(UnfoldingTest, OfRandomNetworksSharesRows) {
    for (std::uint64_t seed = 1; seed <= 400; ++seed) {
        const TestNetwork network = randomNetwork(seed);
        if (network.links.empty()) continue;
        SCOPED_TRACE("seed " + std::to_string(seed));
        const bool maxshare = seed % 3 == 0;
        const std::size_t rowsMax = seed % 5 == 0 ? 20 : 100000;
        if (network.weighted)
            compareRows<WeightedLinks>(network, maxshare, rowsMax);
        else
            compareRows<UnweightedLinks>(network, maxshare, rowsMax);
        if (HasFatalFailure()) return;
    }
}

// Long shapes make many levels of overlapping clusters, the shares of which need all bits of a
// double and often lie just between two shares.
TEST_F(UnfoldingTest, OfManyLevelsSharesRows) {
    TestNetwork path("path", 300);
    for (Id i = 1; i < 300; ++i) path.add(i - 1, i);
    for (const TestNetwork& network : {path, grid(30, 30), ringOfCliques(60, 5), ring(150)})
        for (const bool maxshare : {false, true}) {
            compareRows<UnweightedLinks>(network, maxshare, 1 << 20);
            if (HasFatalFailure()) return;
        }
}

}  // namespace
}  // namespace vorl::test
