package info.quenta.vorl.spark;

import java.util.ArrayList;
import java.util.Comparator;
import java.util.Iterator;
import java.util.List;
import org.apache.spark.api.java.function.MapPartitionsFunction;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Encoders;
import org.apache.spark.sql.Row;

/**
 * Sums over the groups of a partition.
 *
 * @param inner weight inside
 * @param expected the same by chance
 * @param nodes of all groups
 * @param members the logarithms of the ways to order the nodes of each
 * @param relatives what each is likelier by, at a density of its own
 * @param count of the groups
 */
record Sums(
    double inner, double expected, double nodes, double members, double relatives, double count) {
    /** Products and logarithms aren't exact, so one task adds them up by the groups' numbers. */
    static Sums of(Dataset<Row> groups, double weight) {
        Dataset<Row> rows = groups.select("label", "inner", "total", "nodes");
        if (Work.isLocal(rows)) {
            List<Row> sorted = new ArrayList<>(rows.collectAsList());
            sorted.sort(Comparator.comparing(row -> row.getLong(0)));
            return added(sorted.iterator(), weight);
        }
        List<Double> sums = rows.repartition(1)
                                .sortWithinPartitions("label")
                                .mapPartitions(adder(weight), Encoders.DOUBLE())
                                .collectAsList();
        return new Sums(
            sums.get(0), sums.get(1), sums.get(2), sums.get(3), sums.get(4), sums.get(5));
    }

    private static MapPartitionsFunction<Row, Double> adder(double weight) {
        return rows -> added(rows, weight).values();
    }

    private static Sums added(Iterator<Row> rows, double weight) {
        Sums sums = new Sums(0, 0, 0, 0, 0, 0);
        while (rows.hasNext()) {
            Row row = rows.next();
            sums = sums.with(row.getDouble(1), row.getDouble(2), row.getDouble(3), weight);
        }
        return sums;
    }

    Sums with(double groupInner, double groupTotal, double groupNodes, double weight) {
        double chance = groupTotal * groupTotal / weight;
        return new Sums(inner + groupInner, expected + chance, nodes + groupNodes,
            members + Logarithm.lnGamma(groupNodes + 1), relatives + relative(groupInner, chance),
            count + 1);
    }

    private Iterator<Double> values() {
        return List.of(inner, expected, nodes, members, relatives, count).iterator();
    }

    double innerWithin(double weight) { return Math.min(inner, weight); }

    double expectedWithin(double weight) { return Math.min(expected, weight); }

    /** x ln(x / y), for x below or at what a network can have. */
    static double relative(double x, double y) {
        return x > 0 && y > 0 ? x * Logarithm.ln(x / y) : 0;
    }
}
