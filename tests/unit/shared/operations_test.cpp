// The measures of a file of clusters, worked out by hand.
#include <vorl/shared/operations.hpp>

#include "support/folder.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>

namespace vorl::test {
namespace {

Graph<true> path() {
    Graph<true> graph;
    graph.addNodes(4);
    graph.addLink<false>(0, 1, 2);
    graph.addLink<false>(1, 2, 4);
    graph.addLink<false>(2, 3, 1);
    graph.addLink<false>(1, 1, 3);
    return graph;
}

Intrinsics evaluate(Graph<true> graph, const std::string& text, AccWeight gamma = 1) {
    const Folder folder;
    Trace traced;
    Intrinsics intr;
    evaluateClusters(intr, graph, folder.write("clusters", text), gamma);
    return intr;
}

TEST(EvaluatedClusters, CountSharesAtBothEnds) {
    // Self weights and inner links 2.5 and 12.5, 2.5 between the clusters in each direction: node
    // 1 is in the first one by a quarter.
    const Intrinsics intr = evaluate(path(), "0 1:0.25\n1:0.75 2 3\n");
    EXPECT_FLOAT_EQ(intr.mod, (2.5f - 25.f / 20 + 12.5f - 225.f / 20) / 20);
    EXPECT_FLOAT_EQ(intr.cdn, 0.5f);
    const double expected = (25. + 225) / 20;
    const double inside = 15 / expected;
    const double outside = 5 / (20 - expected);
    const double gamma = (inside - outside) / std::log(inside / outside);
    EXPECT_FLOAT_EQ(intr.gamma, static_cast<float>(gamma));
    EXPECT_FLOAT_EQ(intr.sgmod, static_cast<float>((15 - gamma * expected) / 20));
    EXPECT_FLOAT_EQ(evaluate(path(), "0 1:0.25\n1:0.75 2 3\n", 0).mod, 0.75f);
}

TEST(EvaluatedClusters, MayHaveNoCutAndNoInnerWeight) {
    Graph<true> parts;
    parts.addNodes(4);
    parts.addLink<false>(0, 1);
    parts.addLink<false>(2, 3);
    const Intrinsics separate = evaluate(std::move(parts), "0 1\n2 3\n");
    EXPECT_EQ(separate.cdn, 0);
    EXPECT_EQ(separate.gamma, 1);
    EXPECT_FLOAT_EQ(separate.mod, 0.5f);
    const Intrinsics one = evaluate(path(), "0 1 2 3\n");
    EXPECT_TRUE(std::isnan(one.cdn));
    EXPECT_EQ(one.gamma, 1);
    EXPECT_EQ(one.mod, 0);
    Graph<true> arc;
    arc.addNodes(2);
    arc.addLink<true>(0, 1, 3);
    const Intrinsics single = evaluate(std::move(arc), "0\n1\n");
    EXPECT_EQ(single.cdn, 1);
    EXPECT_EQ(single.gamma, 1);
    EXPECT_FLOAT_EQ(single.mod, -0.5f);
}

TEST(EvaluatedClusters, AreWeighedInTheNetworkWhateverTheyCover) {
    // Of the cluster's weight 15, 3 lead out: the back arc of 1 -> 2 is missing.
    const auto network = [](bool directed) {
        Graph<true> graph;
        graph.addNodes(4);
        graph.addLink<false>(0, 1, 3);
        graph.addLink<false>(0, 0, 3);
        if (directed)
            graph.addLink<true>(1, 2, 6);
        else
            graph.addLink<false>(1, 2, 3);
        graph.addLink<false>(2, 3, 7);
        return graph;
    };
    for (const bool directed : {false, true}) {
        const Intrinsics intr = evaluate(network(directed), "0 1\n");
        EXPECT_FLOAT_EQ(intr.cdn, 3.f / 15) << directed;
        EXPECT_FLOAT_EQ(intr.mod, (12 - 15.f * 15 / 32) / 32) << directed;
        // A cluster of its own without weight shifts nothing but the number of clusters.
        Graph<true> wider = network(directed);
        wider.addNodes(1, 4);
        const Intrinsics two = evaluate(std::move(wider), "0 1\n4\n");
        EXPECT_FLOAT_EQ(two.cdn, 1.5f / 15) << directed;
        EXPECT_FLOAT_EQ(two.gamma, intr.gamma) << directed;
        EXPECT_FLOAT_EQ(two.sgmod, intr.sgmod) << directed;
    }
    Graph<false> star;
    star.addNodes(4);
    for (const Id leaf : {0u, 2u, 3u}) star.addLink<false>(1, leaf);
    const Folder folder;
    Trace traced;
    Intrinsics shared;
    evaluateClusters(shared, star, folder.write("clusters", "0 1:0.25\n1:0.75 2\n"));
    // Weights: 0.5 inside of 1.75 in the first, 1.5 inside of 3.25 in the second one.
    EXPECT_FLOAT_EQ(shared.mod, (0.5f - 1.75f * 1.75f / 6 + 1.5f - 3.25f * 3.25f / 6) / 6);
    EXPECT_FLOAT_EQ(shared.cdn, (1.25f / 1.75f + 1.75f / 2.75f) / 2);
}

TEST(EvaluatedClusters, TakeSharesThatAreWholeButForRounding) {
    // Node 0 lies in all clusters, each of which has the same weight, and all of it inside.
    for (const Id count : {2u, 3u, 7u, 26u, 30u, 31u, 33u, 1000u}) {
        const auto network = [count] {
            Graph<true> graph;
            graph.addNodes(count + 1);
            graph.addLink<false>(0, 0, 2);
            for (Id i = 1; i <= count; ++i) graph.addLink<false>(i, i, 1);
            return graph;
        };
        char rounded[16];
        std::snprintf(rounded, sizeof rounded, ":%.6g", 1. / count);
        std::string even, stated;
        for (Id i = 1; i <= count; ++i) {
            even += "0 " + std::to_string(i) + "\n";
            stated += "0" + std::string(rounded) + " " + std::to_string(i) + "\n";
        }
        const Intrinsics plain = evaluate(network(), even);
        EXPECT_NEAR(plain.mod, 1 - 1.0 / count, 1e-6) << count;
        EXPECT_NEAR(evaluate(network(), stated).mod, plain.mod, 1e-6) << count;
    }
    const auto refusal = [](const std::string& text) {
        try {
            evaluate(path(), text);
        } catch (const std::string& told) {
            return told;
        }
        return std::string();
    };
    EXPECT_EQ(refusal("0:0.499999 1\n0:0.499999 2 3\n"),
              "Accumulated value of the node share should be equal to 1, failed for #0: "
              "'0.999998\n");
    EXPECT_EQ(errorOf<std::invalid_argument>([] { evaluate(path(), "0:0.5 1\n0 2 3\n"); }),
              "evaluateClusters(), node #0 states its share in some of its clusters only\n");
}

// What is outside of the clusters vanishes in the total weight, but not in itself.
TEST(EvaluatedClusters, GiveNumbersForWeightsFarApart) {
    Graph<true> graph;
    graph.addNodes(4);
    graph.addLink<false>(0, 1, 1e18f);
    graph.addLink<false>(2, 3, 1);
    graph.addLink<false>(1, 2, 1);
    const Intrinsics intr = evaluate(std::move(graph), "0 1\n2 3\n");
    for (const float measure : {intr.cdn, intr.mod, intr.gamma, intr.sgmod})
        EXPECT_TRUE(std::isfinite(measure)) << measure;
}

TEST(EvaluatedClusters, RefuseWhatHasNoMeaning) {
    const auto refused = [](Graph<true> graph, const std::string& text, AccWeight gamma) {
        return errorOf<std::invalid_argument>([&] { evaluate(std::move(graph), text, gamma); });
    };
    for (const AccWeight gamma : {-1., std::nan(""), HUGE_VAL})
        EXPECT_EQ(refused(path(), "0 1\n", gamma),
                  "evaluateClusters(), gamma must be a number, not negative\n");
    EXPECT_EQ(refused(path(), "# nothing\n", 1), "evaluateClusters(), there are no clusters\n");
    Graph<true> weightless;
    weightless.addNodes(2);
    EXPECT_EQ(refused(std::move(weightless), "0 1\n", 1),
              "evaluateClusters(), the network has no weight\n");
}

}  // namespace
}  // namespace vorl::test
