#include "pieces.hpp"

#include "../communities/workers.hpp"

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

namespace vorl::view {

namespace {

/// Links that one drawing may have.
constexpr Size LINKS = 30000;
/// Links that all drawings may have together.
constexpr Size ALL_LINKS = 5000000;

/// The nodes of a piece, and all of its links.
void fill(Piece& piece, const FlatNetwork& network, const Nest& nest, const MapLayout& map,
          const std::vector<Number>& base) {
    const Nest::Cluster& own = nest.clusters[piece.cluster];
    const Circle& circle = map.clusters[piece.cluster];
    std::vector<std::pair<Id, Number>> places;
    for (Number i = own.places; i < own.last; ++i) places.emplace_back(nest.node[i], i);
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end(),
                             [](const auto& a, const auto& b) { return a.first == b.first; }),
                 places.end());
    std::sort(places.begin(), places.end(),
              [](const auto& a, const auto& b) { return a.second < b.second; });
    Drawing& drawing = piece.drawing;
    std::map<Number, std::uint32_t> groups;
    std::vector<std::pair<Id, std::uint32_t>> local;
    for (const auto& [node, first] : places) {
        local.emplace_back(node, static_cast<std::uint32_t>(piece.nodes.size()));
        piece.nodes.push_back(node);
        const Number home = nest.home[node];
        const Number place = home >= own.places && home < own.last ? home : first;
        drawing.x.push_back((map.x[place] - circle.x) / circle.r);
        drawing.y.push_back((map.y[place] - circle.y) / circle.r);
        const Number cluster = base[nest.clusterOf[place]];
        // A node of no cluster is a group of its own.
        const Number group = cluster == NONE ? NONE - node : cluster;
        drawing.group.push_back(
            groups.emplace(group, static_cast<std::uint32_t>(groups.size())).first->second);
    }
    std::sort(local.begin(), local.end());
    for (std::uint32_t a = 0; a < piece.nodes.size(); ++a) {
        const Id node = piece.nodes[a];
        auto at = local.begin();
        for (Size i = network.begin[node]; i < network.begin[node + 1]; ++i) {
            at = std::lower_bound(at, local.end(), std::pair(network.neighbour[i], 0u));
            if (at == local.end()) break;
            if (at->first == network.neighbour[i] && at->second > a)
                drawing.links.push_back({a, at->second, network.weight[i]});
        }
    }
    std::sort(drawing.links.begin(), drawing.links.end(),
              [](const auto& a, const auto& b) { return a.a != b.a ? a.a < b.a : a.b < b.b; });
    piece.links = drawing.links.size();
}

/// How often the nodes of a piece are moved. In a large network each is looked at by few, and all
/// of them shall take no longer than minutes.
int rounds(Size nodes, Size all) {
    constexpr Size moves = 30000000;
    return static_cast<int>(std::clamp<Size>(moves / all, 30, nodes > 1000 ? 120 : 300));
}

/// Keeps so many links: of different weights the heaviest, and among equal ones even steps.
void thin(Drawing& drawing, Size most) {
    auto& links = drawing.links;
    if (links.size() <= most) return;
    std::vector<std::uint32_t> order(links.size());
    std::iota(order.begin(), order.end(), 0u);
    const auto scattered = [](std::uint32_t i) { return i * 2654435761u; };
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        return links[a].weight != links[b].weight ? links[a].weight > links[b].weight
                                                  : scattered(a) < scattered(b);
    });
    order.resize(most);
    std::sort(order.begin(), order.end());
    std::vector<Drawing::Link> kept;
    for (const std::uint32_t i : order) kept.push_back(links[i]);
    links = std::move(kept);
}

}  // namespace

std::vector<Piece> pieces(const FlatNetwork& network, const Nest& nest, const MapLayout& map,
                          const std::vector<Number>& base, unsigned threads, Number most) {
    std::vector<Piece> result;
    for (Number i = 0; i < nest.clusters.size();) {
        if (nest.size(i) > most) {
            ++i;
            continue;
        }
        if (nest.size(i) > 1) result.push_back({i, {}, {}, 0});
        i = nest.clusters[i].end;
    }
    const ProgressReporter report;
    report.begin("placing nodes", nest.node.size());
    detail::Workers workers(threads);
    workers.share(result.size(), 1, [&](Size first, Size last, unsigned) {
        for (Size i = first; i < last; ++i) {
            fill(result[i], network, nest, map, base);
            settle(result[i].drawing, rounds(result[i].nodes.size(), network.size()));
            report.advance(nest.size(result[i].cluster));
        }
    });
    Size all = 0;
    for (const Piece& piece : result) all += std::min(LINKS, piece.links);
    for (Piece& piece : result) {
        const Size own = std::min(LINKS, piece.links);
        thin(piece.drawing, all > ALL_LINKS ? own * ALL_LINKS / all : own);
    }
    return result;
}

std::vector<Bundle> bundles(const FlatNetwork& network, const Nest& nest, Number most) {
    std::vector<Bundle> all;
    if (nest.size(0) <= most) return all;
    for (Id node = 0; node < network.size(); ++node)
        for (Size i = network.begin[node]; i < network.begin[node + 1]; ++i) {
            if (network.neighbour[i] <= node) continue;
            Number a = nest.clusterOf[nest.home[node]];
            Number b = nest.clusterOf[nest.home[network.neighbour[i]]];
            if (a > b) std::swap(a, b);
            // Up to the cluster that has both; the parts of it on the way are bundled.
            while (b >= nest.clusters[a].end) {
                const Number above = nest.clusters[a].parent;
                if (b < nest.clusters[above].end) break;
                a = above;
            }
            if (b < nest.clusters[a].end) continue;
            const Number common = nest.clusters[a].parent;
            if (nest.size(common) <= most) continue;
            while (nest.clusters[b].parent != common) b = nest.clusters[b].parent;
            all.push_back({a, b, static_cast<double>(network.weight[i])});
        }
    std::stable_sort(all.begin(), all.end(), [](const Bundle& a, const Bundle& b) {
        return a.a != b.a ? a.a < b.a : a.b < b.b;
    });
    std::size_t kept = 0;
    for (const Bundle& bundle : all) {
        if (kept != 0 && all[kept - 1].a == bundle.a && all[kept - 1].b == bundle.b)
            all[kept - 1].weight += bundle.weight;
        else
            all[kept++] = bundle;
    }
    all.resize(kept);
    // Of each cluster as many as it has parts, times a few.
    std::stable_sort(all.begin(), all.end(), [&](const Bundle& a, const Bundle& b) {
        const Number parentA = nest.clusters[a.a].parent;
        const Number parentB = nest.clusters[b.a].parent;
        return parentA != parentB ? parentA < parentB : a.weight > b.weight;
    });
    std::vector<Bundle> result;
    constexpr std::size_t each = 5;
    constexpr std::size_t limit = 4000;
    for (std::size_t i = 0, end = 0; i < all.size(); i = end) {
        const Number parent = nest.clusters[all[i].a].parent;
        while (end < all.size() && nest.clusters[all[end].a].parent == parent) ++end;
        std::size_t parts = 0;
        nest.eachPart(parent, [&](Number) { ++parts; });
        const std::size_t count = std::min({end - i, each * parts, limit});
        result.insert(result.end(), all.begin() + static_cast<std::ptrdiff_t>(i),
                      all.begin() + static_cast<std::ptrdiff_t>(i + count));
    }
    return result;
}

}  // namespace vorl::view
