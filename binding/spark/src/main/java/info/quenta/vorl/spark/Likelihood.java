package info.quenta.vorl.spark;

import java.io.Serializable;

/**
 * The likelihood of a planted partition whose pairs are linked by chance, by the product of their
 * weights times a density: that of their community inside, and a lower one outside (B. Karrer,
 * M. E. J. Newman, Phys. Rev. E 83, 016107, 2011). For the densities found last it is a sum over
 * communities, so that a change is judged by those which it touches.
 */
final class Likelihood implements Serializable {
    private static final long serialVersionUID = 1;
    /** How much of the cost of naming counts while communities are sought. */
    private static final double NAMING = 0.5;
    /** A network may have no weight outside; a little is thought to be there. */
    private static final double LEAST = 1e-6;

    private final boolean own;
    private final double weight;
    private final double halfScale;
    private final double lnNodes;
    private double inside = 1;
    private double outside = 0.5;
    private double outer;
    private double lnRatio = 1;
    private double gamma = 1;

    /**
     * @param own whether each community has a density of its own
     * @param weight of the network, both directions
     * @param scale links for a unit of weight
     */
    Likelihood(boolean own, double weight, double nodes, double scale) {
        this.own = own;
        this.weight = weight;
        this.halfScale = scale / 2;
        this.lnNodes = Logarithm.ln(nodes);
    }

    /** With the densities of a partition. */
    Likelihood estimated(Sums sums) {
        Likelihood result = new Likelihood(this);
        double inner = sums.innerWithin(weight);
        double expected = sums.expectedWithin(weight);
        result.inside = inner > 0 && expected > 0 ? inner / expected : 1;
        result.outside = inner < weight && expected < weight
            ? Math.max(LEAST, (weight - inner) / (weight - expected))
            : LEAST;
        result.outer = weight - inner;
        boolean apart = result.inside > result.outside;
        result.lnRatio = apart ? Logarithm.ln(result.inside / result.outside) : 0;
        result.gamma = result.lnRatio > 0 ? (result.inside - result.outside) / result.lnRatio : 1;
        return result;
    }

    private Likelihood(Likelihood other) {
        own = other.own;
        weight = other.weight;
        halfScale = other.halfScale;
        lnNodes = other.lnNodes;
    }

    /** The worth of one community, 0 for none. */
    double value(Holding group) {
        if (!(group.nodes() > 0))
            return 0;
        double naming = NAMING * group.nodes() * (Logarithm.ln(group.nodes()) - lnNodes);
        double product = group.total() * group.total() / weight;
        if (!own)
            return halfScale * lnRatio * (group.inner() - gamma * product) + naming;
        double expected = outside * product;
        if (!(group.inner() > expected))
            return naming;
        return halfScale
            * (group.inner() * Logarithm.ln(group.inner() / expected) - group.inner() + expected)
            + naming;
    }

    /** The weight between two items that is expected by chance, given the product of theirs. */
    double expected(double product) { return outside * product / weight; }

    /** The density outside without what one item has there, one link being left. */
    double outsideWithout(double out) {
        double left = outer - 2 * out + 1 / scale();
        return left > 0 && left < outer ? outside * (left / outer) : outside;
    }

    boolean own() { return own; }

    /** How many times more links than by chance there are inside communities of one density. */
    double inside() { return inside; }

    double weight() { return weight; }

    double scale() { return 2 * halfScale; }
}
