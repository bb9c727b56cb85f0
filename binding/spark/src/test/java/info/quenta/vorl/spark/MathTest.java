package info.quenta.vorl.spark;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.math.BigInteger;
import java.util.List;
import java.util.Random;
import org.junit.jupiter.api.Test;

/** Numbers that must be those of the C++ library, and what they stand for. */
class MathTest {
    /** Bit for bit: what the library's own functions give. */
    @Test
    void hashesAndLogarithmsAreThoseOfTheLibrary() {
        assertEquals(4076774786L, Mixing.mixed(0, 0));
        assertEquals(3837447845L, Mixing.mixed(1, 0));
        assertEquals(708644715L, Mixing.mixed(0, 1));
        assertEquals(393113854L, Mixing.mixed(0xffffffffL, 11));
        assertEquals(-0x1.6d3c324e13fd1p-2, Logarithm.ln(0.7));
        assertEquals(0x1.193ea7aad030dp+0, Logarithm.ln(3));
        assertEquals(-0x1.5963447f87fb5p+9, Logarithm.ln(1e-300));
        assertEquals(0x1.2d79559791e31p+3, Logarithm.ln(12345.678));
    }

    @Test
    void logarithmsOfAllSizes() {
        Random random = new Random(1);
        for (int i = 0; i < 2000; ++i) {
            double x = Math.scalb(1 + random.nextDouble(), random.nextInt(2000) - 1000);
            assertEquals(Math.log(x), Logarithm.ln(x), 1e-13 * Math.max(1, Math.abs(Math.log(x))));
        }
        assertEquals(0, Logarithm.ln(1));
        double factorial = 0;
        for (int n = 1; n <= 300; ++n) {
            factorial += Math.log(n);
            assertEquals(factorial, Logarithm.lnGamma(n + 1), 1e-12 * Math.max(1, factorial));
        }
        BigInteger ways = BigInteger.ONE; // to choose k of 60
        for (int k = 0; k <= 60; ++k) {
            assertEquals(Math.log(ways.doubleValue()), Logarithm.lnChoose(60, k), 1e-10);
            ways = ways.multiply(BigInteger.valueOf(60 - k)).divide(BigInteger.valueOf(k + 1));
        }
    }

    /** Groups of a network of weight 40, both directions: (inner, total, nodes). */
    private static final List<Holding> GROUPS =
        List.of(new Holding(12, 16, 6), new Holding(8, 12, 5), new Holding(10, 12, 7));
    private static final double WEIGHT = 40;
    private static final double NODES = 18;
    private static final double SCALE = 3;

    private static Sums sums(List<Holding> groups) {
        Sums sums = new Sums(0, 0, 0, 0, 0, 0);
        for (Holding group : groups)
            sums = sums.with(group.inner(), group.total(), group.nodes(), WEIGHT);
        return sums;
    }

    private static Likelihood likelihood(boolean own) {
        return new Likelihood(own, WEIGHT, NODES, SCALE).estimated(sums(GROUPS));
    }

    /** The logarithm of a Poisson probability, without what is the same for all densities. */
    private static double poisson(double weight, double expected) {
        return SCALE / 2 * (weight * Math.log(expected) - expected);
    }

    /** What naming the nodes of a group costs, as far as it counts in a search. */
    private static double naming(double nodes) { return nodes / 2 * Math.log(nodes / NODES); }

    @Test
    void worthOfAGroupIsTheGainOfLikelihoodByItsDensity() {
        double expected = (16 * 16 + 12 * 12 + 12 * 12) / WEIGHT;
        double inside = 30 / expected;
        double outside = 10 / (WEIGHT - expected);
        for (Holding group : GROUPS) {
            double product = group.total() * group.total() / WEIGHT;
            double chance = poisson(group.inner(), outside * product);
            assertEquals(poisson(group.inner(), inside * product) - chance + naming(group.nodes()),
                likelihood(false).value(group), 1e-11);
            double best = Double.NEGATIVE_INFINITY;
            for (double density = 0.01; density < 8; density += 0.0001)
                best = Math.max(best, poisson(group.inner(), density * product) - chance);
            assertEquals(best + naming(group.nodes()), likelihood(true).value(group), 1e-6);
        }
        // No denser than outside, or no group at all.
        assertEquals(naming(4), likelihood(true).value(new Holding(0, 20, 4)), 1e-12);
        assertEquals(0, likelihood(true).value(new Holding(0, 0, 0)));
        assertEquals(outside * 6 / WEIGHT, likelihood(true).expected(6), 1e-15);
        // Without 2 of the weight outside at a node, one link of weight 1 / 3 being left.
        assertEquals(outside * (10 - 4 + 1.0 / 3) / 10, likelihood(true).outsideWithout(2), 1e-12);
        assertEquals(outside, likelihood(true).outsideWithout(9), 1e-15);
    }

    @Test
    void densitiesOfAPartitionWithoutAnOutside() {
        List<Holding> whole = List.of(new Holding(WEIGHT, WEIGHT, NODES));
        Likelihood all = new Likelihood(false, WEIGHT, NODES, SCALE).estimated(sums(whole));
        assertEquals(1, all.inside());
        assertTrue(all.expected(1) > 0);
        assertTrue(Double.isFinite(all.value(whole.get(0))));
    }

    @Test
    void descriptionNamesOneOfAllPartitionsOfItsKind() {
        // Sizes 6, 5 and 7 of 18: how many groups, their sizes, and who is in which.
        double ways = 18 * (17 * 16 / 2.0)
            * Math.exp(Logarithm.lnGamma(19) - Logarithm.lnGamma(7) - Logarithm.lnGamma(6)
                - Logarithm.lnGamma(8));
        Description one = Description.of(false, WEIGHT, SCALE, sums(GROUPS));
        assertEquals(Math.log(ways), one.naming(), 1e-10);
        // 60 links among 3 groups and the outside.
        Description own = Description.of(true, WEIGHT, SCALE, sums(GROUPS));
        assertEquals(Math.log(ways) + Math.log(63 * 62 * 61 / 6.0), own.naming(), 1e-10);
        double expected = (16 * 16 + 12 * 12 + 12 * 12) / WEIGHT;
        double outside = 10 * Math.log(10 / (WEIGHT - expected));
        assertEquals(SCALE / 2 * (30 * Math.log(30 / expected) + outside), one.likelihood(), 1e-11);
        double inside = 12 * Math.log(12 / 6.4) + 8 * Math.log(8 / 3.6) + 10 * Math.log(10 / 3.6);
        assertEquals(SCALE / 2 * (inside + outside), own.likelihood(), 1e-11);
    }
}
