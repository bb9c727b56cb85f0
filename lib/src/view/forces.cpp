#include "forces.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vorl::view {

namespace {

/// Squares inside squares, each with the sum of what is in it.
class Squares {
public:
    Squares(const std::vector<double>& x, const std::vector<double>& y,
            const std::vector<double>& mass)
        : m_x(x), m_y(y), m_mass(mass) {
        const auto [left, right] = std::minmax_element(x.begin(), x.end());
        const auto [low, high] = std::minmax_element(y.begin(), y.end());
        const double side = std::max({*right - *left, *high - *low, 1e-9});
        m_order.resize(x.size());
        std::iota(m_order.begin(), m_order.end(), std::uint32_t{0});
        m_spare.resize(x.size());
        m_squares.reserve(x.size());
        divide(0, static_cast<std::uint32_t>(x.size()), *left, *low, side, 0);
    }

    /// Adds what all others do to a node: their masses over the distance.
    void push(std::uint32_t node, double& forceX, double& forceY) const {
        std::uint32_t at = 0;
        while (at < m_squares.size()) {
            const Square& square = m_squares[at];
            const double dx = m_x[node] - square.x;
            const double dy = m_y[node] - square.y;
            const double apart2 = dx * dx + dy * dy;
            if (square.side * square.side < NEAR * apart2) {
                forceX += square.mass * dx / apart2;
                forceY += square.mass * dy / apart2;
                at = square.next;
            } else if (square.next == at + 1) {
                for (std::uint32_t i = square.begin; i < square.end; ++i)
                    pushBy(m_order[i], node, forceX, forceY);
                at = square.next;
            } else {
                ++at;
            }
        }
    }

private:
    struct Square {
        double x, y, mass, side;
        std::uint32_t begin, end;
        std::uint32_t next;  ///< behind all inside
    };
    static constexpr double NEAR = 0.8;
    static constexpr std::uint32_t FEW = 8;
    static constexpr int DEEPEST = 24;

    void divide(std::uint32_t begin, std::uint32_t end, double left, double low, double side,
                int depth) {
        const std::size_t own = m_squares.size();
        Square square{0, 0, 0, side, begin, end, 0};
        for (std::uint32_t i = begin; i < end; ++i) {
            const double mass = m_mass[m_order[i]];
            square.x += mass * m_x[m_order[i]];
            square.y += mass * m_y[m_order[i]];
            square.mass += mass;
        }
        square.x /= square.mass;
        square.y /= square.mass;
        m_squares.push_back(square);
        if (end - begin > FEW && depth < DEEPEST) {
            const double half = side / 2;
            const auto quarter = [&](std::uint32_t node) {
                return (m_x[node] >= left + half ? 1 : 0) + (m_y[node] >= low + half ? 2 : 0);
            };
            std::uint32_t next[5] = {};
            for (std::uint32_t i = begin; i < end; ++i) ++next[quarter(m_order[i]) + 1];
            next[0] = begin;
            for (int i = 1; i < 5; ++i) next[i] += next[i - 1];
            std::uint32_t put[4] = {next[0], next[1], next[2], next[3]};
            for (std::uint32_t i = begin; i < end; ++i)
                m_spare[put[quarter(m_order[i])]++] = m_order[i];
            std::copy(m_spare.begin() + begin, m_spare.begin() + end, m_order.begin() + begin);
            for (int i = 0; i < 4; ++i)
                if (next[i] != next[i + 1])
                    divide(next[i], next[i + 1], left + (i % 2) * half, low + (i / 2) * half, half,
                           depth + 1);
        }
        m_squares[own].next = static_cast<std::uint32_t>(m_squares.size());
    }

    void pushBy(std::uint32_t other, std::uint32_t node, double& forceX, double& forceY) const {
        if (other == node) return;
        double dx = m_x[node] - m_x[other];
        double dy = m_y[node] - m_y[other];
        double apart2 = dx * dx + dy * dy;
        if (apart2 < TINY) {
            // Nodes at one place part by their numbers.
            const double side = node > other ? 1e-4 : -1e-4;
            dx = side * (1 + node % 7);
            dy = side * (1 + node % 5);
            apart2 = dx * dx + dy * dy;
        }
        forceX += m_mass[other] * dx / apart2;
        forceY += m_mass[other] * dy / apart2;
    }

    static constexpr double TINY = 1e-12;

    const std::vector<double>& m_x;
    const std::vector<double>& m_y;
    const std::vector<double>& m_mass;
    std::vector<std::uint32_t> m_order;
    std::vector<std::uint32_t> m_spare;
    std::vector<Square> m_squares;
};

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
    if (!drawing.links.empty()) mean /= static_cast<double>(drawing.links.size());
    for (const auto& ln : drawing.links) {
        const double weight = std::sqrt(static_cast<double>(ln.weight) / mean);
        weights[ln.a] += weight;
        weights[ln.b] += weight;
    }
    const std::uint32_t groups =
        drawing.group.empty() ? 0
                              : *std::max_element(drawing.group.begin(), drawing.group.end()) + 1;
    for (std::size_t i = 0; i < nodes; ++i) {
        x[i] /= spacing;
        y[i] /= spacing;
        mass[i] = 0.6 + 0.4 * std::sqrt(weights[i]);
    }

    const double radius = 1 / spacing;
    std::vector<double> forceX(nodes), forceY(nodes);
    std::vector<double> midX(groups), midY(groups), members(groups);
    for (int round = 0; round < rounds; ++round) {
        const double left = 1 - static_cast<double>(round) / rounds;
        const double longest = 0.15 * radius * left * left + 0.01;
        const Squares squares(x, y, mass);
        for (std::uint32_t i = 0; i < nodes; ++i) {
            forceX[i] = forceY[i] = 0;
            squares.push(i, forceX[i], forceY[i]);
            forceX[i] *= mass[i];
            forceY[i] *= mass[i];
        }
        for (const auto& ln : drawing.links) {
            const double dx = x[ln.b] - x[ln.a];
            const double dy = y[ln.b] - y[ln.a];
            const double apart = std::sqrt(dx * dx + dy * dy);
            // Of nodes with many links each one pulls less.
            const double weight = std::sqrt(static_cast<double>(ln.weight) / mean) /
                                  std::sqrt(std::min(weights[ln.a], weights[ln.b]));
            const double pull = weight * apart / 2;
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
