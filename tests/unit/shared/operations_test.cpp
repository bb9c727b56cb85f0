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
    for (const Id leaf : {0, 2, 3}) star.addLink<false>(1, leaf);
    const Folder folder;
    Trace traced;
    Intrinsics shared;
    evaluateClusters(shared, star, folder.write("clusters", "0 1:0.25\n1:0.75 2\n"));
    // Weights: 0.5 inside of 1.75 in the first, 1.5 inside of 3.25 in the second one.
    EXPECT_FLOAT_EQ(shared.mod, (0.5f - 1.75f * 1.75f / 6 + 1.5f - 3.25f * 3.25f / 6) / 6);
    EXPECT_FLOAT_EQ(shared.cdn, (1.25f / 1.75f + 1.75f / 2.75f) / 2);
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
