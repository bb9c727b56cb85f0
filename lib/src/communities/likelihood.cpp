#include "likelihood.hpp"

#include <algorithm>

namespace vorl::detail {

namespace {

struct Sums {
    AccWeight inner = 0;
    AccWeight expected = 0;  // inner weight by chance

    Sums(const std::vector<Holding>& groups, AccWeight weight) {
        for (const Holding& group : groups) {
            inner += group.inner;
            expected += group.total * group.total / weight;
        }
        inner = std::min(inner, weight);
        expected = std::min(expected, weight);
    }
};

/// x ln(x / y), for x below or at what a network can have.
double relative(double x, double y) { return x > 0 && y > 0 ? x * ln(x / y) : 0; }

}  // namespace

void Likelihood::estimate(const std::vector<Holding>& groups) {
    // A network may have no weight outside; a little is thought to be there.
    constexpr double LEAST = 1e-6;
    const Sums sums(groups, m_weight);
    m_inside = sums.inner > 0 && sums.expected > 0 ? sums.inner / sums.expected : 1;
    m_outside = sums.inner < m_weight && sums.expected < m_weight
                    ? std::max(LEAST, (m_weight - sums.inner) / (m_weight - sums.expected))
                    : LEAST;
    m_outer = m_weight - sums.inner;
    const bool apart = m_inside > m_outside;
    m_lnRatio = apart ? ln(m_inside / m_outside) : 0;
    m_gamma = m_lnRatio > 0 ? (m_inside - m_outside) / m_lnRatio : 1;
}

Description describe(Density density, AccWeight weight, double scale,
                     const std::vector<Holding>& groups) {
    const Sums sums(groups, weight);
    Description result;
    AccWeight nodes = 0;
    double members = 0;
    for (const Holding& group : groups) {
        nodes += group.nodes;
        members += lnGamma(group.nodes + 1);
        if (density == Density::OWN)
            result.likelihood += relative(group.inner, group.total * group.total / weight);
    }
    if (density == Density::COMMON) result.likelihood = relative(sums.inner, sums.expected);
    result.likelihood += relative(weight - sums.inner, weight - sums.expected);
    result.likelihood *= scale / 2;

    const auto count = static_cast<double>(groups.size());
    // The number of groups, their sizes, who is in which, and the links inside each.
    result.naming = ln(nodes) + lnChoose(nodes - 1, count - 1) + lnGamma(nodes + 1) - members;
    if (density == Density::OWN) {
        const double links = weight * scale / 2;
        result.naming += lnChoose(links + count, count);
    }
    return result;
}

}  // namespace vorl::detail
