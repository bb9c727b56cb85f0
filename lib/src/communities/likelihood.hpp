// What a partition is worth: the bits that it saves in the description of the network.
#pragma once

#include "item_network.hpp"
#include "logarithm.hpp"

#include <limits>

namespace vorl::detail {

/// How links are thought to be laid inside communities.
enum class Density {
    OWN,     // each community has a density of its own
    COMMON,  // all have the same
};

/// How much of the cost of naming counts while communities are sought. With all of it small
/// communities merge into larger ones too early; the choice among answers counts it whole.
inline constexpr double NAMING = 0.5;

/// What a community is worth, and a bound of what it gains by more nodes, which needs no logarithm.
struct Worth {
    double value;
    double slope;  // for a unit of weight more inside
    double curve;
    double slack;  // for rounding

    /// At least what the community gains by an item.
    /// @param inner weight that comes inside
    double mostGain(AccWeight inner, AccWeight nodes) const {
        return inner * (slope + curve * inner) + nodes * (NAMING + 0x1p-30) + slack;
    }
};

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

    /// The worth of a community and what bounds its gains.
    ///
    /// Its value is s (I ln(I / E) - I + E) for the weight I inside and E expected, and c n ln(n /
    /// N) for n nodes of N. Both are convex, with the slopes s ln(I / E) in I and at most c in n,
    /// and the value falls as E grows. So d more weight and k more nodes bring no more than s d
    /// ln((I + d) / E) and c k, where ln((I + d) / E) <= ln(I / E) + d / I. With one density for
    /// all, s r (I - g P) gains s r d at most. The slack is a thousand times what rounding can make
    /// of these values.
    Worth worth(const Holding& group) const {
        constexpr double MORE = 1 + 0x1p-30;
        constexpr double ROUNDING = 0x1p-36;
        const double product = group.total * group.total / m_weight;
        Worth result{value(group), std::numeric_limits<double>::max(), 0,
                     group.nodes * m_lnNodes * ROUNDING};
        if (m_density == Density::COMMON) {
            result.slope = m_scale * m_lnRatio * MORE;
            result.slack += result.slope * (group.inner + m_gamma * product) * ROUNDING;
        } else if (const double expected = m_outside * product; group.inner > expected) {
            const double log = ln(group.inner / expected);
            result.slope = m_scale * (log * MORE + 0x1p-30);
            result.curve = m_scale * MORE / group.inner;
            result.slack += m_scale * group.inner * (log + 3) * ROUNDING;
        }
        return result;
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
