// The measures of a flat set of clusters, worked out by hand.
#include <vorl/processing/intrinsics.hpp>

#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <vector>

namespace vorl::test {
namespace {

using ClustersT = Clusters<WeightedLinks>;

struct Ln {
    std::size_t src;
    std::size_t dst;
    AccWeight weight;
};

/// Clusters with the given self weights, and links one way.
ClustersT make(const std::vector<AccWeight>& weights, const std::vector<Ln>& links) {
    ClustersT clusters;
    std::vector<Cluster<WeightedLinks>*> places;
    for (AccWeight weight : weights) {
        places.push_back(&clusters.emplace_back(LevelNum{0}, Size{0}));
        clusters.back().m_sweight = weight;
    }
    for (const auto& [src, dst, weight] : links)
        addLink(places[src]->links, places[src]->links.begin(), places[dst], weight);
    return clusters;
}

/// Two clusters, the first one with an inner link of weight 2: in-out weights 5 and 3 of 8.
ClustersT pair() { return make({0, 2}, {{0, 0, 2}, {0, 1, 1}, {1, 0, 1}}); }

template <bool NONSYMMETRIC = false>
Intrinsics measure(ClustersT& clusters, AccWeight weight, AccWeight gamma = 1,
                   IntrinsicsFlags flags = IntrinsicsFlags::ALL) {
    Intrinsics intr(flags);
    intrinsicMeasures<NONSYMMETRIC>(intr, clusters, weight, gamma);
    return intr;
}

TEST(IntrinsicMeasures, OfTwoClusters) {
    ClustersT clusters = pair();
    const Intrinsics intr = measure(clusters, 8);
    EXPECT_EQ(intr.mod, static_cast<float>((4 - 25. / 8 + 2 - 9. / 8) / 8));
    // The first one has more than half of the weight, so the other side counts.
    EXPECT_EQ(intr.cdn, static_cast<float>(1. / 3));
    const double inside = 6 / (34. / 8);
    const double outside = 2 / (8 - 34. / 8);
    const double gamma = (inside - outside) / (std::log(inside) - std::log(outside));
    EXPECT_FLOAT_EQ(intr.gamma, static_cast<float>(gamma));
    EXPECT_FLOAT_EQ(intr.sgmod, static_cast<float>((6 - gamma * 34 / 8) / 8));
    // The self link has become self weight, and counts as such from now on.
    EXPECT_EQ(clusters.front().weight(), 4);
    EXPECT_EQ(clusters.front().links.size(), 1);
    EXPECT_EQ(measure(clusters, 8).mod, intr.mod);
    EXPECT_EQ(measure(clusters, 8, 0).mod, 6.f / 8);
}

TEST(IntrinsicMeasures, OfArcsCountBothDirections) {
    ClustersT clusters = make({4, 2}, {{0, 1, 2}, {1, 0, 0}});
    ClustersT same = pair();
    const Intrinsics arcs = measure<true>(clusters, 8);
    const Intrinsics edges = measure(same, 8);
    EXPECT_EQ(arcs.cdn, edges.cdn);
    EXPECT_EQ(arcs.mod, edges.mod);
    EXPECT_EQ(arcs.gamma, edges.gamma);
}

TEST(IntrinsicMeasures, AreThoseAskedFor) {
    ClustersT clusters = pair();
    const Intrinsics none = measure(clusters, 8, 1, IntrinsicsFlags::NONE);
    EXPECT_EQ(clusters.front().links.size(), 2);
    EXPECT_FALSE(none.defined());
    const Intrinsics estimate = measure(clusters, 8, 1, IntrinsicsFlags::GAMMA);
    EXPECT_EQ(estimate.cdn, 0);
    EXPECT_EQ(estimate.mod, -1);
    EXPECT_GT(estimate.sgmod, 0.25f);
    const Intrinsics conductance = measure(clusters, 8, 1, IntrinsicsFlags::CONDUCTANCE);
    EXPECT_EQ(conductance.cdn, static_cast<float>(1. / 3));
    EXPECT_EQ(conductance.gamma, 0);
    EXPECT_EQ(conductance.sgmod, -1);
}

TEST(IntrinsicMeasures, OfOneClusterAreFixed) {
    ClustersT clusters = make({3}, {{0, 0, 2}});
    const Intrinsics intr = measure(clusters, 7);
    EXPECT_EQ(intr.cdn, 1);
    EXPECT_EQ(intr.mod, 0);
    EXPECT_EQ(intr.gamma, 1);
    EXPECT_EQ(intr.sgmod, 0);
    EXPECT_EQ(clusters.front().links.size(), 1);
    EXPECT_EQ(measure(clusters, 7, 1, IntrinsicsFlags::MODULARITY).cdn, 0);
}

TEST(IntrinsicMeasures, WithoutInnerWeightHaveTheGammaOne) {
    ClustersT clusters = make({0, 0}, {{0, 1, 2}, {1, 0, 2}});
    const Intrinsics intr = measure(clusters, 4, 1, IntrinsicsFlags::GAMMA);
    EXPECT_EQ(intr.gamma, 1);
    EXPECT_EQ(intr.sgmod, -8.f / 16);
}

TEST(IntrinsicMeasures, RefuseWhatHasNoMeaning) {
    const auto refused = [](ClustersT clusters, AccWeight weight, AccWeight gamma) {
        return errorOf<std::invalid_argument>(
            [&] { measure(clusters, weight, gamma, IntrinsicsFlags::NONE); });
    };
    const std::string words = " should be supplied with the valid weight(";
    EXPECT_EQ(refused({}, 8, 1),
              "intrinsicMeasures(), clusters(0)" + words + "8.000000) and gamma(1.000000)\n");
    EXPECT_EQ(refused(pair(), 0, 1),
              "intrinsicMeasures(), clusters(2)" + words + "0.000000) and gamma(1.000000)\n");
    EXPECT_EQ(refused(pair(), 8, -0.5),
              "intrinsicMeasures(), clusters(2)" + words + "8.000000) and gamma(-0.500000)\n");
    EXPECT_EQ(refused(pair(), 8, 0), "");
}

TEST(IntrinsicMeasuresDeathTest, NeedACutAndAtMostTheWholeWeight) {
    const auto measureParts = [](AccWeight weight, IntrinsicsFlags flags) {
        ClustersT clusters = make({4, 4}, {});
        measure(clusters, weight, 1, flags);
    };
    EXPECT_DEATH(measureParts(8, IntrinsicsFlags::CONDUCTANCE),
                 "intrinsicMeasures\\(\\), conductance validation failed");
    // All weight between the clusters is a conductance of 1, which is too much, too.
    EXPECT_DEATH(
        {
            ClustersT clusters = make({0, 0}, {{0, 1, 2}, {1, 0, 2}});
            measure(clusters, 4, 1, IntrinsicsFlags::CONDUCTANCE);
        },
        "intrinsicMeasures\\(\\), conductance validation failed");
    EXPECT_DEATH(measureParts(7, IntrinsicsFlags::GAMMA),
                 "intrinsicMeasures\\(\\), accumulated self-weight can't increase the network "
                 "weight");
    measureParts(8, IntrinsicsFlags::GAMMA);
}

}  // namespace
}  // namespace vorl::test
