#include "colours.hpp"

#include <algorithm>
#include <utility>

namespace vorl::view {

std::vector<Number> standing(const HierarchyFile& hierarchy, const Nest& nest, LevelNum level) {
    std::vector<Number> at(nest.clusters.size(), NONE);
    for (Number i = 1; i < at.size(); ++i) {
        if (hierarchy.levelOf(nest.clusters[i].item) > level) continue;
        const Number above = at[nest.clusters[i].parent];
        at[i] = above == NONE ? i : above;
    }
    return at;
}

std::vector<std::uint8_t> colours(const FlatNetwork& network, const Nest& nest,
                                  const std::vector<Number>& base) {
    using Link = std::pair<std::pair<Number, Number>, double>;
    std::vector<Link> links;
    for (Id node = 0; node < network.size(); ++node) {
        const Number own = base[nest.clusterOf[nest.home[node]]];
        if (own == NONE) continue;
        for (Size i = network.begin[node]; i < network.begin[node + 1]; ++i) {
            const Number other = base[nest.clusterOf[nest.home[network.neighbour[i]]]];
            if (other != NONE && other != own)
                links.push_back({{own, other}, static_cast<double>(network.weight[i])});
        }
    }
    std::stable_sort(links.begin(), links.end(),
                     [](const Link& a, const Link& b) { return a.first < b.first; });

    std::vector<Number> order;
    for (Number i = 1; i < base.size(); ++i)
        if (base[i] == i && nest.size(i) > 1) order.push_back(i);
    std::stable_sort(order.begin(), order.end(), [&](Number a, Number b) {
        return nest.clusters[a].mass > nest.clusters[b].mass;
    });
    std::vector<std::uint8_t> result(base.size(), GREY);
    std::array<std::size_t, PALETTE.size()> used{};
    for (const Number cluster : order) {
        std::array<double, PALETTE.size()> weight{};
        auto link = std::lower_bound(
            links.begin(), links.end(), cluster,
            [](const Link& other, Number number) { return other.first.first < number; });
        for (; link != links.end() && link->first.first == cluster; ++link)
            if (const std::uint8_t colour = result[link->first.second]; colour != GREY)
                weight[colour] += link->second;
        std::size_t best = 0;
        for (std::size_t i = 1; i < PALETTE.size(); ++i)
            if (std::pair(weight[i], used[i]) < std::pair(weight[best], used[best])) best = i;
        result[cluster] = static_cast<std::uint8_t>(best);
        ++used[best];
    }
    for (Number i = 1; i < base.size(); ++i)
        if (base[i] != NONE) result[i] = result[base[i]];
    // What is above takes over from its first part, the largest one.
    for (Number i = static_cast<Number>(base.size()); i-- > 1;)
        if (base[i] == NONE && nest.clusters[i].end > i + 1) result[i] = result[i + 1];
    return result;
}

}  // namespace vorl::view
