#include "best_level.hpp"

#include <algorithm>
#include <utility>

namespace vorl::view {

namespace {

using Sums = std::vector<double>;

/// The smallest cluster that has both.
Number common(const Nest& nest, Number a, Number b) {
    if (a > b) std::swap(a, b);
    while (b >= nest.clusters[a].end) a = nest.clusters[a].parent;
    return a;
}

/// The weight of links, from both of their ends, by the level from which on these are together.
/// That of the whole is behind the last.
Sums joined(const FlatNetwork& network, const Nest& nest, const std::vector<LevelNum>& levelOf,
            detail::Workers& workers) {
    // Sums of parts that don't depend on the workers, added up in their order.
    constexpr Size parts = 256;
    std::vector<Sums> sums(parts, Sums(levelOf[0] + std::size_t{1}));
    const Size each = network.size() / parts + 1;
    workers.share(parts, 1, [&](Size first, Size last, unsigned) {
        for (Size part = first; part < last; ++part)
            for (Size node = part * each; node < std::min<Size>(network.size(), (part + 1) * each);
                 ++node) {
                const Number own = nest.clusterOf[nest.home[node]];
                for (Size i = network.begin[node]; i < network.begin[node + 1]; ++i) {
                    if (network.neighbour[i] < node) continue;
                    const Number other = nest.clusterOf[nest.home[network.neighbour[i]]];
                    sums[part][levelOf[common(nest, own, other)]] +=
                        2 * static_cast<double>(network.weight[i]);
                }
            }
    });
    for (Size part = 1; part < parts; ++part)
        for (std::size_t i = 0; i < sums[0].size(); ++i) sums[0][i] += sums[part][i];
    return std::move(sums[0]);
}

}  // namespace

LevelNum bestLevel(const FlatNetwork& network, const HierarchyFile& hierarchy, const Nest& nest,
                   detail::Workers& workers) {
    const LevelNum levels = hierarchy.levels();
    // The whole is above all levels.
    std::vector<LevelNum> levelOf(nest.clusters.size(), levels);
    for (Number i = 1; i < levelOf.size(); ++i)
        levelOf[i] = hierarchy.levelOf(nest.clusters[i].item);

    // What is together from a level on, and what is expected of clusters from the level where they
    // come to the one where they go. A node is alone below the level of its cluster.
    Sums inside = joined(network, nest, levelOf, workers);
    Sums come(levels + std::size_t{1});
    Sums gone(levels + std::size_t{1});
    Sums strength(nest.clusters.size());
    double all = 0;
    for (Id node = 0; node < network.size(); ++node) {
        double own = network.self[node];
        inside[0] += network.self[node];
        for (Size i = network.begin[node]; i < network.begin[node + 1]; ++i)
            own += static_cast<double>(network.weight[i]);
        const Number cluster = nest.clusterOf[nest.home[node]];
        strength[cluster] += own;
        come[0] += own * own;
        gone[levelOf[cluster]] += own * own;
        all += own;
    }
    if (all == 0) return 0;
    for (Number i = static_cast<Number>(nest.clusters.size()); i-- > 1;) {
        const Number parent = nest.clusters[i].parent;
        strength[parent] += strength[i];
        come[levelOf[i]] += strength[i] * strength[i];
        gone[levelOf[parent]] += strength[i] * strength[i];
    }
    LevelNum best = 0;
    double most = 0;
    double together = 0;
    double expected = 0;
    for (LevelNum level = 0; level < levels; ++level) {
        together += inside[level];
        expected += come[level] - gone[level];
        const double modularity = together / all - expected / all / all;
        if (level == 0 || modularity >= most) {
            most = modularity;
            best = level;
        }
    }
    return best;
}

}  // namespace vorl::view
