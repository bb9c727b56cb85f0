// What a partition is worth: the bits that it saves in the description of the network.
#pragma once

#include "item_network.hpp"
#include "logarithm.hpp"

namespace vorl::detail {

/// How links are thought to be laid inside communities.
enum class Density {
    OWN,     // each community has a density of its own
    COMMON,  // all have the same
};

/// How much of the cost of naming counts while communities are sought. With all of it small
/// communities merge into larger ones too early; the choice among answers counts it whole.
inline constexpr double NAMING = 0.5;

/// The likelihood of a planted partition whose pairs are linked by chance, by the product of their
/// weights times a density: that of their community inside, and a lower one outside (B. Karrer,
/// M. E. J. Newman, Phys. Rev. E 83, 016107, 2011). For the densities found last it is a sum over
/// communities, so that a change is judged by those which it touches.
class Likelihood {
public:
    /// @param weight of the network, both directions
    /// @param scale links for a unit of weight
    Likelihood(Density density, AccWeight weight, AccWeight nodes, double scale)
        : m_density(density), m_weight(weight), m_scale(scale / 2), m_lnNodes(ln(nodes)) {}

    /// Takes the densities of a partition.
    void estimate(const std::vector<Holding>& groups);

    /// The worth of one community, 0 for none.
    double value(const Holding& group) const {
        if (!(group.nodes > 0)) return 0;
        const double naming = NAMING * group.nodes * (ln(group.nodes) - m_lnNodes);
        const double product = group.total * group.total / m_weight;
        if (m_density == Density::COMMON)
            return m_scale * m_lnRatio * (group.inner - m_gamma * product) + naming;
        const double expected = m_outside * product;
        if (!(group.inner > expected)) return naming;
        return m_scale * (group.inner * ln(group.inner / expected) - group.inner + expected) +
               naming;
    }

    /// The weight between two items that is expected by chance, given the product of their weights.
    double expected(double product) const { return m_outside * product / m_weight; }

    /// How many times more links than by chance there are inside a community, and outside.
    double inside(const Holding& group) const {
        if (m_density == Density::COMMON) return m_inside;
        return group.total > 0 ? group.inner * m_weight / (group.total * group.total) : 0;
    }
    double outside() const { return m_outside; }
    /// The density outside without what one item has there, one link being left.
    double outsideWithout(AccWeight out) const {
        const AccWeight left = m_outer - 2 * out + 1 / scale();
        return left > 0 && left < m_outer ? m_outside * (left / m_outer) : m_outside;
    }
    AccWeight weight() const { return m_weight; }
    double scale() const { return 2 * m_scale; }
    /// The resolution by the log-ratio rule, see newmanGamma.
    double gamma() const { return m_gamma; }

private:
    Density m_density;
    AccWeight m_weight;
    double m_scale;
    double m_lnNodes;
    double m_inside = 1;
    double m_outside = 0.5;
    AccWeight m_outer = 0;  // weight outside
    double m_lnRatio = 1;
    double m_gamma = 1;
};

/// What a partition saves in the description of a network, in natural units.
struct Description {
    double likelihood = 0;  // against that of no communities
    double naming = 0;      // what names the partition and its densities
    double saving() const { return likelihood - naming; }
};

/// The description by a partition.
///
/// L. Zhang, T. P. Peixoto, Phys. Rev. Research 2, 043271 (2020): the uniform and the non-uniform
/// planted partition, without what is the same for all partitions.
Description describe(Density density, AccWeight weight, double scale,
                     const std::vector<Holding>& groups);

}  // namespace vorl::detail
