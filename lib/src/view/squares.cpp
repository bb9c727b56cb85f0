#include "squares.hpp"

#include <algorithm>
#include <numeric>

namespace vorl::view {

namespace {

/// Of the square of the distance, which that of the side has to be below.
constexpr double NEAR = 0.8;
constexpr std::uint32_t FEW = 16;
constexpr int DEEPEST = 24;
/// Square of the distance below which the force grows no more.
constexpr float TINY = 1e-12f;

}  // namespace

Squares::Squares(std::span<const double> x, std::span<const double> y, std::span<const double> mass)
    : m_order(x.size()),
      m_x(x.begin(), x.end()),
      m_y(y.begin(), y.end()),
      m_mass(mass.begin(), mass.end()),
      m_spare(x.size()) {
    if (x.empty()) return;
    const auto [left, right] = std::minmax_element(x.begin(), x.end());
    const auto [low, high] = std::minmax_element(y.begin(), y.end());
    std::iota(m_order.begin(), m_order.end(), std::uint32_t{0});
    m_squares.reserve(x.size());
    divide(0, static_cast<std::uint32_t>(x.size()), *left, *low,
           std::max({*right - *left, *high - *low, 1e-9}), 0);
    for (std::size_t i = 0; i < x.size(); ++i) {
        m_x[i] = x[m_order[i]];
        m_y[i] = y[m_order[i]];
        m_mass[i] = mass[m_order[i]];
    }
}

void Squares::divide(std::uint32_t begin, std::uint32_t end, double left, double low, double side,
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
        const auto quarter = [&](std::uint32_t point) {
            return (m_x[point] >= left + half ? 1 : 0) + (m_y[point] >= low + half ? 2 : 0);
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

/// What acts on the points of a square that isn't divided.
void Squares::find(const Square& leaf, std::vector<Source>& sources) const {
    sources.clear();
    const auto [left, right] =
        std::minmax_element(m_x.begin() + leaf.begin, m_x.begin() + leaf.end);
    const auto [low, high] = std::minmax_element(m_y.begin() + leaf.begin, m_y.begin() + leaf.end);
    const auto add = [&](double x, double y, double mass) {
        sources.push_back({static_cast<float>(x), static_cast<float>(y), static_cast<float>(mass)});
    };
    for (std::uint32_t at = 0; at < m_squares.size();) {
        const Square& square = m_squares[at];
        const double dx = std::max({*left - square.x, square.x - *right, 0.});
        const double dy = std::max({*low - square.y, square.y - *high, 0.});
        if (square.side * square.side < NEAR * (dx * dx + dy * dy)) {
            add(square.x, square.y, square.mass);
            at = square.next;
        } else if (square.next == at + 1) {
            for (std::uint32_t i = square.begin; i < square.end; ++i)
                add(m_x[i], m_y[i], m_mass[i]);
            at = square.next;
        } else {
            ++at;
        }
    }
}

void Squares::push(std::span<double> forceX, std::span<double> forceY) const {
    std::vector<Source> sources;
    for (std::size_t n = 0; n < m_squares.size(); ++n) {
        const Square& leaf = m_squares[n];
        if (leaf.next != n + 1) continue;
        find(leaf, sources);
        // Always as many at once, so that the processor can do them side by side.
        for (std::uint32_t begin = leaf.begin; begin < leaf.end; begin += FEW) {
            float x[FEW], y[FEW], sumX[FEW] = {}, sumY[FEW] = {};
            for (std::uint32_t i = 0; i < FEW; ++i) {
                const std::uint32_t point = std::min(begin + i, leaf.end - 1);
                x[i] = static_cast<float>(m_x[point]);
                y[i] = static_cast<float>(m_y[point]);
            }
            for (const Source& source : sources)
                for (std::uint32_t i = 0; i < FEW; ++i) {
                    const float dx = x[i] - source.x;
                    const float dy = y[i] - source.y;
                    const float part = source.mass / std::max(dx * dx + dy * dy, TINY);
                    sumX[i] += part * dx;
                    sumY[i] += part * dy;
                }
            for (std::uint32_t i = 0; i < std::min(FEW, leaf.end - begin); ++i) {
                forceX[m_order[begin + i]] = static_cast<double>(sumX[i]);
                forceY[m_order[begin + i]] = static_cast<double>(sumY[i]);
            }
        }
    }
}

}  // namespace vorl::view
