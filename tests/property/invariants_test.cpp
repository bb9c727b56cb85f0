// Invariants of finished hierarchies that need no oracle, on networks of many shapes.
#include "support/describe.hpp"
#include "support/networks.hpp"

#include <vorl/hierarchy/cluster.hpp>
#include <vorl/hierarchy/hierarchy_impl.hpp>
#include <vorl/types/trace.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <random>

namespace vorl::test {
namespace {

constexpr unsigned SEEDS = 600;

ClusterOptions optionsOf(std::uint64_t seed) {
    Random rnd(seed + 77);
    ClusterOptions options;
    const float gammas[] = {-1, -1, 1, 0.5f, 0.1f};
    options.gamma = gammas[rnd.below(5)];
    if (rnd.chance(0.3)) options.rootMax = static_cast<Coupling>(1 + rnd.below(4));
    if (rnd.chance(0.2)) options.speedup = Speedup::COARSE;
    options.validation = rnd.chance(0.5) ? Validation::SEVERE : Validation::STANDARD;
    options.modtrace = rnd.chance(0.3);
    return options;
}

AccWeight totalWeight(const TestNetwork& network) {
    AccWeight total = 0;
    for (const TestLink& ln : network.links) total += (network.directed ? 1.0 : 2.0) * ln.weight;
    for (const auto& self : network.selfs) total += 2.0 * self.second;
    return total;
}

/// The share of each node in each item of the root, down all paths.
template <class LinksT>
std::map<Id, std::map<const Cluster<LinksT>*, double>> memberships(const Hierarchy<LinksT>& hier) {
    std::map<Id, std::map<const Cluster<LinksT>*, double>> result;
    for (const Cluster<LinksT>* root : hier.root()) {
        std::map<const NodeI<LinksT>*, double> frontier{{root, 1.0}};
        while (!frontier.empty()) {
            std::map<const NodeI<LinksT>*, double> next;
            for (const auto& [item, share] : frontier) {
                if (!item->descs()) {
                    result[item->id][root] += share;
                    continue;
                }
                for (const NodeI<LinksT>* des : *item->descs())
                    for (const auto& owner : des->owners)
                        if (owner.dest == item) next[des] += share * owner.numac / des->totac;
            }
            frontier = std::move(next);
        }
    }
    return result;
}

template <class LinksT>
void checkShares(const NodeI<LinksT>& item) {
    if (item.owners.empty()) return;
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < item.owners.size(); ++i) {
        sum += item.owners[i].numac;
        if (i != 0) {
            EXPECT_LT(item.owners[i - 1].dest, item.owners[i].dest);
        }
    }
    EXPECT_GT(item.totac, 0u);
    EXPECT_EQ(sum, item.totac);
}

/// The items that make up the hierarchy at the height of each level keep the whole weight.
template <class LinksT>
void checkWeights(const Hierarchy<LinksT>& hier, AccWeight total) {
    for (LevelNum height = 0; height < hier.levels().size(); ++height) {
        AccWeight sum = 0;
        Id count = 0;
        for (LevelNum lev = 0; lev <= height; ++lev)
            for (const auto& cl : hier.levels()[lev].clusters)
                if (cl.owners.empty() || cl.owners.front().dest->levnum > height) {
                    sum += cl.ctxWeight(false);
                    ++count;
                }
        EXPECT_NEAR(sum, total, 1e-5 * total);
        EXPECT_EQ(count, hier.levels()[height].fullsize);
    }
}

template <class LinksT>
void checkRootLinks(const Hierarchy<LinksT>& hier) {
    for (const auto* cl : hier.root())
        for (const auto& ln : cl->links) {
            const auto& back = ln.dest->links;
            const auto it = findDest(back.begin(), back.end(), cl);
            ASSERT_TRUE(it != back.end() && it->dest == cl);
            if (hier.edges()) {
                EXPECT_NEAR(it->weight, ln.weight, 1e-6 * (1 + ln.weight));
            }
        }
}

/// Modularity from the memberships of the nodes alone.
template <class LinksT>
void checkModularity(const Hierarchy<LinksT>& hier, const TestNetwork& network, AccWeight total) {
    if (hier.score().gamma < 0 || hier.levels().empty()) return;
    const auto shares = memberships(hier);
    for (const auto& [id, owners] : shares) {
        double sum = 0;
        for (const auto& owner : owners) sum += owner.second;
        EXPECT_NEAR(sum, 1, 1e-6) << "node " << id;
    }
    ASSERT_EQ(shares.size(), network.nodesNum);
    std::map<const Cluster<LinksT>*, double> inner;
    std::map<const Cluster<LinksT>*, double> outer;
    const auto add = [&](Id a, Id b, double weight) {
        for (const auto& [cl, share] : shares.at(a)) {
            outer[cl] += share * weight;
            const auto it = shares.at(b).find(cl);
            if (it != shares.at(b).end()) inner[cl] += share * it->second * weight;
        }
    };
    for (const TestLink& ln : network.links) {
        const double weight = (network.directed ? 0.5 : 1.0) * ln.weight;
        add(ln.src, ln.dst, weight);
        add(ln.dst, ln.src, weight);
    }
    for (const auto& [id, weight] : network.selfs) add(id, id, 2.0 * weight);
    double q = 0;
    for (const auto& [cl, weight] : outer)
        q += inner[cl] - weight / total * weight * hier.score().gamma;
    EXPECT_NEAR(q / total, hier.score().modularity, 1e-4);
}

template <class LinksT>
std::shared_ptr<Hierarchy<LinksT>> build(const TestNetwork& network, std::uint64_t seed) {
    auto nodes = makeNodes<LinksT>(network);
    return cluster<LinksT>(nodes, !network.directed, optionsOf(seed));
}

template <class LinksT>
void check(const TestNetwork& network, std::uint64_t seed) {
    const AccWeight total = totalWeight(network);
    const auto hier = build<LinksT>(network, seed);
    EXPECT_NEAR(hier->weight(), total, 1e-6 * total);
    EXPECT_EQ(hier->nodes().size(), network.nodesNum);
    for (const auto& node : hier->nodes()) checkShares(node);
    for (const auto& level : hier->levels())
        for (const auto& cl : level.clusters) checkShares(cl);
    if (!hier->root().empty()) {
        checkWeights(*hier, total);
        checkRootLinks(*hier);
        checkModularity(*hier, network, total);
    }

    // The heap's history must not reach the result.
    const std::string text = describe(*hier);
    std::vector<std::unique_ptr<char[]>> churn;
    Random rnd(seed);
    for (int i = 0; i < 200; ++i) {
        churn.push_back(std::make_unique<char[]>(1 + rnd.below(4000)));
        if (rnd.chance(0.5))
            churn.erase(churn.begin() + rnd.below(static_cast<std::uint32_t>(churn.size())));
    }
    EXPECT_TRUE(text == describe(*build<LinksT>(network, seed)));
}

TEST(Invariants, HoldOnRandomNetworks) {
    ftrace = nullptr;
    for (std::uint64_t seed = 0; seed < SEEDS; ++seed) {
        const TestNetwork network = randomNetwork(seed);
        if (totalWeight(network) == 0) continue;
        SCOPED_TRACE(network.name + ", seed " + std::to_string(seed));
        if (network.weighted || network.directed)
            check<WeightedLinks>(network, seed);
        else
            check<UnweightedLinks>(network, seed);
        if (HasFailure()) return;
    }
}

// A weighted network whose weights are all 1 is the unweighted one.
TEST(Invariants, UnitWeightsAreNoWeights) {
    ftrace = nullptr;
    for (std::uint64_t seed = 0; seed < SEEDS / 4; ++seed) {
        TestNetwork network = randomNetwork(seed);
        if (network.directed || network.links.empty()) continue;
        for (TestLink& ln : network.links) ln.weight = 1;
        const auto plain = describe(*build<UnweightedLinks>(network, seed));
        EXPECT_TRUE(plain == describe(*build<WeightedLinks>(network, seed))) << "seed " << seed;
    }
}

// Arcs both ways with one weight are edges of that weight, each direction counted once.
TEST(Invariants, SymmetricArcsAreEdges) {
    ftrace = nullptr;
    for (std::uint64_t seed = 0; seed < SEEDS / 4; ++seed) {
        const TestNetwork network = randomNetwork(seed);
        if (network.directed || totalWeight(network) == 0) continue;
        TestNetwork arcs = network;
        arcs.directed = true;
        for (const TestLink& ln : network.links) arcs.links.push_back({ln.dst, ln.src, ln.weight});
        // Sums of the two directions may differ in the last bit.
        const auto edges = build<WeightedLinks>(network, seed);
        const auto both = build<WeightedLinks>(arcs, seed);
        ASSERT_EQ(edges->levels().size(), both->levels().size()) << "seed " << seed;
        for (std::size_t i = 0; i < edges->levels().size(); ++i)
            EXPECT_EQ(edges->levels()[i].fullsize, both->levels()[i].fullsize) << "seed " << seed;
        EXPECT_NEAR(edges->score().modularity, both->score().modularity, 1e-6) << "seed " << seed;
    }
}

// What the engine tells of reduction: it moves weight, it doesn't lose any.
TEST(Invariants, ReductionKeepsTheWeight) {
    ftrace = nullptr;
    for (std::uint64_t seed = 0; seed < SEEDS / 2; ++seed) {
        const TestNetwork network = randomNetwork(seed);
        const AccWeight total = totalWeight(network);
        if (total == 0) continue;
        for (Reduction core : {Reduction::ACCURATE, Reduction::MEAN, Reduction::SEVERE}) {
            ClusterOptions options = optionsOf(seed);
            options.reduction = core;
            if (network.weighted && seed % 2) options.reduction |= Reduction::CRITERIA_WEIGHT;
            auto nodes = makeNodes<WeightedLinks>(network);
            const auto hier = cluster<WeightedLinks>(nodes, !network.directed, options);
            if (hier->root().empty()) continue;
            AccWeight sum = 0;
            for (const auto* cl : hier->root()) sum += cl->ctxWeight();
            EXPECT_NEAR(sum, total, 1e-4 * total) << "seed " << seed;
        }
    }
}

// Rings whose levels never shrink must end all the same.
TEST(Invariants, LongRingsEnd) {
    ftrace = nullptr;
    for (Id n : {6u, 50u, 150u, 400u}) {
        TestNetwork network = ring(n);
        for (float gamma : {-1.f, 1.f}) {
            auto nodes = makeNodes<UnweightedLinks>(network);
            const auto hier = cluster<UnweightedLinks>(nodes, true, ClusterOptions(gamma));
            EXPECT_GT(hier->levels().size(), 0u);
            EXPECT_LE(hier->levels().size(), 2 * n * n);
        }
    }
}

}  // namespace
}  // namespace vorl::test
