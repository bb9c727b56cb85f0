// Modularity, conductance and the estimates of gamma.
#include "unit/hierarchy/bench.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace vorl::test {
namespace {

using RootT = std::vector<Cluster<WeightedLinks>*>;

/// Items of given weights and self weights, in a network of the sum of the weights.
struct Items {
    Bench<> bench{edges(2, {{0, 1, 1}})};
    RootT root;

    explicit Items(const std::vector<std::pair<AccWeight, AccWeight>>& weights) {
        Upper upper(bench.hier, static_cast<Id>(weights.size()));
        root = upper.items;
        bench.hier.m_weight = 0;
        for (std::size_t i = 0; i < weights.size(); ++i) {
            bench.hier.m_weight += root[i]->m_context->weight = weights[i].first;
            root[i]->m_sweight = weights[i].second;
        }
    }
    AccWeight modularity(AccWeight gamma = WEIGHT_NONE) {
        return bench.hier.modularity(root.begin(), root.end(), gamma);
    }
    AccWeight conductance() const { return bench.hier.conductance<RootT>({&root}); }
};

TEST(Modularity, ComparesWithARandomNetwork) {
    Items items({{6, 4}, {4, 2}});
    EXPECT_DOUBLE_EQ(items.modularity(1), 0.6 - 0.36 - 0.16);
    EXPECT_DOUBLE_EQ(items.modularity(0), 0.6);
    items.bench.hier.m_gamma = 0.5f;
    items.bench.hier.m_gammaRatio = 0.5f;
    EXPECT_DOUBLE_EQ(items.modularity(), 0.6 - 0.25 * 0.52);
    EXPECT_DOUBLE_EQ(items.modularity(1), 0.08);  // a given gamma knows no ratio
    EXPECT_EQ(items.bench.hier.modularity(items.root.end(), items.root.end()), 0);
}

TEST(Modularity, TakesTheDynamicGammaOfEachItem) {
    Items items({{6, 4}, {4, 0}});
    items.bench.hier.m_gamma = -1;
    const AccWeight gamma = dynamicGamma(6, 4);
    EXPECT_NE(gamma, 1);
    EXPECT_DOUBLE_EQ(items.modularity(), (4 - 3.6 * gamma - 1.6) / 10);
}

TEST(Modularity, MakesMissingContexts) {
    auto nodes = makeNodes<WeightedLinks>(edges(2, {{0, 1, 3}}));
    HierarchyImpl<false, WeightedLinks> hier(std::move(nodes), ClusterOptions(1));
    hier.m_weight = 6;
    EXPECT_EQ(hier.modularity(hier.m_nodes.begin(), hier.m_nodes.end()), -0.5);
    EXPECT_EQ(hier.m_nodes.front().ctxWeight(), 3);
}

TEST(ModularityDeathTest, NeedsAWeight) {
    Items items({{6, 4}, {4, 2}});
    items.bench.hier.m_weight = 0;
    EXPECT_DEATH(items.modularity(), "m_weight must be defined");
}

TEST(Conductance, IsTheMeanCutOfTheSmallerSides) {
    EXPECT_EQ(Items({{6, 4}}).conductance(), 1);
    EXPECT_EQ(Items({{6, 6}, {4, 4}}).conductance(), 0);
    EXPECT_EQ(Items({{6, 4}, {4, 2}}).conductance(), 0.5);  // 2/4 on both sides
    EXPECT_EQ(Items({{6, 4}, {4, 2}, {0, 0}}).conductance(), 1.0 / 3);
    EXPECT_EQ(Items({{8, 0}, {2, 2.1}}).conductance(), 0.5);  // cut to [0, 1]
    Items items({{6, 4}, {4, 2}});
    const RootT none;
    EXPECT_EQ(items.bench.hier.conductance<RootT>({&none, &items.root, &none}), 0.5);
    EXPECT_EQ(items.bench.hier.conductance<RootT>({}), 1);
}

TEST(StaticGamma, IsTheLogRatioOfTheDensities) {
    Items items({{6, 4}, {4, 2}});
    AccWeight cond = -1;
    const AccWeight gamma = items.bench.hier.staticGamma<RootT>({&items.root}, &cond);
    const AccWeight inner = 6 / 5.2, outer = 4 / 4.8;
    EXPECT_DOUBLE_EQ(gamma, (inner - outer) / (std::log(inner) - std::log(outer)));
    EXPECT_EQ(cond, 0.5);
    EXPECT_EQ(items.bench.hier.staticGamma<RootT>({&items.root}), gamma);
}

TEST(StaticGamma, IsOneWithoutInsideOrOutside) {
    AccWeight cond = 7;
    Items inside({{6, 6}, {4, 4}});
    EXPECT_EQ(inside.bench.hier.staticGamma<RootT>({&inside.root}, &cond), 1);
    EXPECT_EQ(cond, 7);  // left as it was
    Items outside({{5, 0}, {5, 0}});
    EXPECT_EQ(outside.bench.hier.staticGamma<RootT>({&outside.root}, &cond), 1);
    EXPECT_EQ(cond, 7);
    Items single({{5, 5}});
    EXPECT_EQ(single.bench.hier.staticGamma<RootT>({&single.root}, &cond), 1);
    EXPECT_EQ(cond, 1);
}

TEST(DynamicGamma, OfItemsWithoutSelfWeightIsOne) {
    EXPECT_EQ(dynamicGamma(10, 3, 0, 4, 0), 1);
    EXPECT_EQ(dynamicGamma(10, 3, 3, 4, 4), 1);
    EXPECT_NE(dynamicGamma(10, 3, 3, 4, 0), 1);  // a pair looks at each of its items
    EXPECT_EQ(dynamicGamma(5, 0), 1);
    EXPECT_EQ(dynamicGamma(5, 5), 1);
    EXPECT_EQ(newmanGamma(2, 2, 4), 1);  // not 0 / 0
}

// What is outside vanishes beside what is inside, and leaves 0 / 0 or a division by 0.
TEST(DynamicGamma, OfWeightsFarApartIsANumber) {
    EXPECT_EQ(newmanGamma(1e20, 1e20, 1e20), 1);
    EXPECT_EQ(newmanGamma(4, 1e20, 1e20), 1);
    EXPECT_EQ(newmanGamma(0, 0, 1e20), 1);
    EXPECT_EQ(dynamicGamma(1e20, 1e20, 1e20, 1, 0.5), 1);
}

TEST(DynamicGamma, OfThreeFollowsTheTotalTheyTouch) {
    Items items({{4, 2}, {3, 1}, {3, 0}});
    const auto total = [](AccWeight u) {
        AccWeight t = 0;
        for (const auto& [w, s] : {std::pair(4., 2.), std::pair(3., 1.), std::pair(3., 0.)})
            t += w + (w - s) * (1 - (10 - w) / u);
        return t;
    };
    AccWeight u = 10;
    ASSERT_GT(total(u), u);
    while (total(u) > u) u = total(u) * 1.0009765625;
    EXPECT_DOUBLE_EQ(items.bench.hier.dynamicGamma(items.root),
                     newmanGamma(3, 10 / total(u) * 10, total(u)));
    Items bare({{4, 0}, {3, 0}, {3, 0}});
    EXPECT_EQ(bare.bench.hier.dynamicGamma(bare.root), 1);
}

TEST(DynamicGamma, AveragesByWeight) {
    Items items({{6, 4}, {4, 0}});
    EXPECT_DOUBLE_EQ(items.bench.hier.avgdynGammaApx(items.root, true),
                     (dynamicGamma(6, 4) * 6 + 4) / 10);
}

}  // namespace
}  // namespace vorl::test
