#include "forces.hpp"

#include "squares.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vorl::view {

namespace {

/// Places so close to each other that it can't be seen, no two at the same: the golden ratio of two
/// dimensions.
double scattered(std::size_t i, double ratio) {
    const double at = static_cast<double>(i) * ratio;
    return 0.01 * (at - std::floor(at));
}

/// Moves and scales all into the circle of radius 1; what lies far out comes nearer.
void fit(std::vector<double>& x, std::vector<double>& y) {
    const auto count = static_cast<double>(x.size());
    const double midX = std::accumulate(x.begin(), x.end(), 0.) / count;
    const double midY = std::accumulate(y.begin(), y.end(), 0.) / count;
    std::vector<double> ways(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] -= midX;
        y[i] -= midY;
        ways[i] = std::sqrt(x[i] * x[i] + y[i] * y[i]);
    }
    std::vector<double> sorted = ways;
    std::sort(sorted.begin(), sorted.end());
    const double most = sorted[sorted.size() - 1 - sorted.size() / 20];
    if (most == 0) return;
    // To 0.85 as it is, and what is beyond in the rest.
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double way = ways[i] / most * 0.85;
        const double fitted = way <= 0.85 ? way : 1 - 0.15 / (1 + (way - 0.85) / 0.15);
        const double scale = ways[i] > 0 ? fitted / ways[i] : 0;
        x[i] *= scale;
        y[i] *= scale;
    }
}

}  // namespace

void settle(Drawing& drawing, int rounds) {
    std::vector<double>& x = drawing.x;
    std::vector<double>& y = drawing.y;
    const std::size_t nodes = x.size();
    if (nodes < 2) {
        std::fill(x.begin(), x.end(), 0.);
        std::fill(y.begin(), y.end(), 0.);
        return;
    }
    // Distances are told in those of neighbours on a grid that fills the circle.
    const double spacing = std::sqrt(3.14 / static_cast<double>(nodes));
    std::vector<double> weights(nodes, 0.);
    std::vector<double> mass(nodes, 1.);
    double mean = 0;
    for (const auto& ln : drawing.links) mean += static_cast<double>(ln.weight);
    mean = mean > 0 ? mean / static_cast<double>(drawing.links.size()) : 1;
    for (const auto& ln : drawing.links) {
        const double weight = std::sqrt(static_cast<double>(ln.weight) / mean);
        weights[ln.a] += weight;
        weights[ln.b] += weight;
    }
    const std::uint32_t groups =
        drawing.group.empty() ? 0
                              : *std::max_element(drawing.group.begin(), drawing.group.end()) + 1;
    for (std::size_t i = 0; i < nodes; ++i) {
        x[i] = x[i] / spacing + scattered(i, 0.7548776662466927);
        y[i] = y[i] / spacing + scattered(i, 0.5698402909980532);
        mass[i] = 0.6 + 0.4 * std::sqrt(weights[i]);
    }

    // Of nodes with many links each one pulls less.
    std::vector<double> pulls(drawing.links.size());
    for (std::size_t i = 0; i < pulls.size(); ++i) {
        const Drawing::Link& ln = drawing.links[i];
        const double least = std::min(weights[ln.a], weights[ln.b]);
        if (least > 0)
            pulls[i] = std::sqrt(static_cast<double>(ln.weight) / mean) / std::sqrt(least) / 2;
    }

    const double radius = 1 / spacing;
    std::vector<double> forceX(nodes), forceY(nodes);
    std::vector<double> midX(groups), midY(groups), members(groups);
    for (int round = 0; round < rounds; ++round) {
        const double left = 1 - static_cast<double>(round) / rounds;
        const double longest = 0.15 * radius * left * left + 0.01;
        Squares(x, y, mass).push(forceX, forceY);
        for (std::size_t i = 0; i < nodes; ++i) {
            forceX[i] *= mass[i];
            forceY[i] *= mass[i];
        }
        for (std::size_t i = 0; i < pulls.size(); ++i) {
            const Drawing::Link& ln = drawing.links[i];
            const double dx = x[ln.b] - x[ln.a];
            const double dy = y[ln.b] - y[ln.a];
            const double pull = pulls[i] * std::sqrt(dx * dx + dy * dy);
            forceX[ln.a] += pull * dx;
            forceY[ln.a] += pull * dy;
            forceX[ln.b] -= pull * dx;
            forceY[ln.b] -= pull * dy;
        }
        std::fill(midX.begin(), midX.end(), 0.);
        std::fill(midY.begin(), midY.end(), 0.);
        std::fill(members.begin(), members.end(), 0.);
        if (groups != 0)
            for (std::size_t i = 0; i < nodes; ++i) {
                midX[drawing.group[i]] += x[i];
                midY[drawing.group[i]] += y[i];
                ++members[drawing.group[i]];
            }
        for (std::size_t i = 0; i < nodes; ++i) {
            // All hold together a little, so that parts without links stay near.
            const double way = std::sqrt(x[i] * x[i] + y[i] * y[i]) / radius;
            forceX[i] -= (0.3 + 0.7 * way) * mass[i] * x[i] / 2;
            forceY[i] -= (0.3 + 0.7 * way) * mass[i] * y[i] / 2;
            if (groups > 1) {
                const std::uint32_t group = drawing.group[i];
                forceX[i] += 0.6 * (midX[group] / members[group] - x[i]);
                forceY[i] += 0.6 * (midY[group] / members[group] - y[i]);
            }
            const double force = std::sqrt(forceX[i] * forceX[i] + forceY[i] * forceY[i]);
            if (force == 0) continue;
            const double step = std::min(force * 0.1, longest) / force;
            x[i] += forceX[i] * step;
            y[i] += forceY[i] * step;
        }
    }
    fit(x, y);
}

}  // namespace vorl::view
