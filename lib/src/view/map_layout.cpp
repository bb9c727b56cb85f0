#include "map_layout.hpp"

#include <vorl/types/progress.hpp>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vorl::view {

namespace {

/// Room around a circle, as a part of its radius; and the least, where a place of a whole node has
/// the radius 1.
constexpr double APART = 0.025;
constexpr double LEAST = 0.14;
/// Room between the edge of a cluster and what is inside.
constexpr double EDGE = 0.2;

double room(double r) { return std::max(APART * r, LEAST * std::min(r, 1.)); }

}  // namespace

MapLayout::MapLayout(const Nest& nest)
    : clusters(nest.clusters.size()), x(nest.node.size()), y(nest.node.size()) {
    // From the inside out all places have areas by their shares; each cluster lies around what is
    // in it, relative to its own middle.
    const ProgressReporter report;
    report.begin("packing circles", clusters.size());
    std::vector<Circle> inside;
    std::vector<Circle> packed;
    std::vector<Number> order;
    std::vector<Number> parts;
    for (Number cluster = static_cast<Number>(clusters.size()); cluster-- > 0;) {
        const Nest::Cluster& own = nest.clusters[cluster];
        report.advance();
        inside.clear();
        parts.clear();
        nest.eachPart(cluster, [&](Number part) {
            parts.push_back(part);
            inside.push_back({0, 0, clusters[part].r + room(clusters[part].r)});
        });
        for (Number place = own.places; place < own.own; ++place) {
            const double r = std::sqrt(nest.share[place]);
            inside.push_back({0, 0, r + room(r)});
        }
        if (inside.empty()) continue;
        order.resize(inside.size());
        std::iota(order.begin(), order.end(), Number{0});
        std::stable_sort(order.begin(), order.end(),
                         [&](Number a, Number b) { return inside[a].r > inside[b].r; });
        packed.clear();
        for (const Number i : order) packed.push_back(inside[i]);
        pack(packed);
        const Circle around = enclosing(packed);
        clusters[cluster].r = around.r + (inside.size() == 1 ? 0 : std::max(EDGE, 0.01 * around.r));
        for (std::size_t i = 0; i < order.size(); ++i) {
            const bool part = order[i] < parts.size();
            const std::size_t place = own.places + (order[i] - parts.size());
            (part ? clusters[parts[order[i]]].x : x[place]) = packed[i].x - around.x;
            (part ? clusters[parts[order[i]]].y : y[place]) = packed[i].y - around.y;
        }
    }
    const double scale = clusters[0].r > 0 ? 1 / clusters[0].r : 1;
    unit = scale;
    for (Number cluster = 0; cluster < clusters.size(); ++cluster) {
        const Nest::Cluster& own = nest.clusters[cluster];
        Circle& circle = clusters[cluster];
        const Circle home = cluster == 0 ? Circle{} : clusters[own.parent];
        circle = cluster == 0 ? Circle{0, 0, 1}
                              : Circle{home.x + circle.x * scale, home.y + circle.y * scale,
                                       circle.r * scale};
        for (Number place = own.places; place < own.own; ++place) {
            x[place] = circle.x + x[place] * scale;
            y[place] = circle.y + y[place] * scale;
        }
    }
}

}  // namespace vorl::view
