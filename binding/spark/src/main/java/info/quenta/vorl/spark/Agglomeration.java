package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.coalesce;
import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.least;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.max;
import static org.apache.spark.sql.functions.min;
import static org.apache.spark.sql.functions.negate;
import static org.apache.spark.sql.functions.not;
import static org.apache.spark.sql.functions.struct;
import static org.apache.spark.sql.functions.sum;
import static org.apache.spark.sql.functions.udf;
import static org.apache.spark.sql.functions.when;

import java.util.ArrayList;
import java.util.List;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.api.java.UDF1;
import org.apache.spark.sql.api.java.UDF4;
import org.apache.spark.sql.api.java.UDF7;
import org.apache.spark.sql.types.DataTypes;

/** Merging of items along pointers to their best neighbours. */
final class Agglomeration {
    /** What is left of a gain that rounding alone may have made. */
    private static final double ROUNDING = 1 + 0x1p-40;

    private Agglomeration() {}

    /**
     * Merges nodes by the gain of modularity on similar links, inside each group for itself.
     *
     * <p>Every item points to the neighbour with the best gain, and what hangs together by pointers
     * merges (O. Boruvka's rounds, 1926, with gains for lengths); again with what was merged, until
     * no gain is positive. The weights of a group are those inside it.
     *
     * @param similar the similar links, with the total weights of nodes over all links
     * @param groups (item, label, idle): the group of each node, and whether that stays as it is
     *     and merges whole in the first step
     * @param count of the groups
     */
    static List<Step> mergeSimilar(
        Work work, ItemNetwork similar, Dataset<Row> groups, long count) {
        Mergers mergers = count == 1 ? together(similar) : apart(work, similar, groups, count);
        Dataset<Row> links = mergers.links();
        long most = mergers.most();
        Dataset<Row> idle = groups.filter(col("idle")).select("item", "label");
        Dataset<Row> leaders = idle.groupBy("label").agg(min("item").as("aim"));
        idle = idle.join(leaders, "label").select("item", "aim");
        Dataset<Row> items = work.keep(mergers.items(), similar.size());

        List<Step> steps = new ArrayList<>();
        long size = similar.size();
        for (;;) {
            Dataset<Row> aims = pointers(items, gains(links, items), steps.size());
            if (steps.isEmpty())
                aims = aims.withColumnRenamed("aim", "own")
                           .join(idle, "item", "left")
                           .select(col("item"), coalesce(col("aim"), col("own")).as("aim"));
            Step step = connected(work, aims, size);
            if (step == null)
                return steps;
            steps.add(step);
            size = step.count();
            links = work.keepBy(folded(links, step.labels()), most, "src");
            most = work.size(links);
            items = work.keep(items.join(step.labels(), "item")
                                  .groupBy("label")
                                  .agg(sum("total").as("total"), max("whole").as("whole"))
                                  .withColumnRenamed("label", "item"),
                size);
        }
    }

    /**
     * What is to be merged.
     *
     * @param links (src, dst, weight)
     * @param items (item, total, whole): the weight of each, and of all in its group
     * @param most no fewer links than there are
     */
    private record Mergers(Dataset<Row> links, Dataset<Row> items, long most) {}

    private static Mergers together(ItemNetwork similar) {
        double weight = similar.items().agg(sum("total")).first().getDouble(0);
        Dataset<Row> items =
            similar.items().select(col("item"), col("total"), lit(weight).as("whole"));
        return new Mergers(similar.links(), items, similar.most());
    }

    /** Each group with its own links alone, idle ones without. */
    private static Mergers apart(Work work, ItemNetwork similar, Dataset<Row> groups, long count) {
        Dataset<Row> busy = groups.filter(not(col("idle"))).select("item", "label");
        Dataset<Row> links = work.keepBy(
            similar.links()
                .join(busy.select(col("item").as("src"), col("label").as("from")), "src")
                .join(busy.select(col("item").as("dst"), col("label").as("to")), "dst")
                .filter(col("from").equalTo(col("to")))
                .select("src", "dst", "weight"),
            similar.most(), "src");
        Dataset<Row> totals = links.groupBy(col("src").as("item")).agg(sum("weight").as("total"));
        Dataset<Row> held =
            groups.join(totals, "item", "left")
                .select(col("item"), col("label"), coalesce(col("total"), zero()).as("total"));
        // Held apart, as a shuffle by groups would bring most items of some networks to one task.
        Dataset<Row> wholes = work.keep(held.groupBy("label").agg(sum("total").as("whole")), count);
        return new Mergers(
            links, held.join(wholes, "label").select("item", "total", "whole"), work.size(links));
    }

    private static Column zero() { return lit(0.0); }

    /** Links between what was merged; there are none between groups. */
    private static Dataset<Row> folded(Dataset<Row> links, Dataset<Row> labels) {
        return links.join(labels.select(col("item").as("src"), col("label").as("from")), "src")
            .join(labels.select(col("item").as("dst"), col("label").as("to")), "dst")
            .filter(not(col("from").equalTo(col("to"))))
            .groupBy(col("from").as("src"), col("to").as("dst"))
            .agg(sum("weight").as("weight"));
    }

    private static Dataset<Row> gains(Dataset<Row> links, Dataset<Row> items) {
        UDF4<Double, Double, Double, Double, Double> gain = (weight, from, to, whole) -> {
            double expected = from * to / whole;
            return weight > expected * ROUNDING ? weight - expected : 0;
        };
        return links
            .join(items.select(col("item").as("src"), col("total").as("from"), col("whole")), "src")
            .join(items.select(col("item").as("dst"), col("total").as("to")), "dst")
            .select(col("src"), col("dst"),
                udf(gain, DataTypes.DoubleType)
                    .apply(col("weight"), col("from"), col("to"), col("whole"))
                    .as("gain"));
    }

    /** Merges groups by the gain of likelihood, in the same way. */
    static List<Step> mergeLikely(Work work, ItemNetwork network, Likelihood likelihood) {
        List<Step> steps = new ArrayList<>();
        for (;;) {
            Dataset<Row> aims =
                pointers(network.items(), likelyGains(network, likelihood), steps.size());
            Step step = connected(work, aims, network.size());
            if (step == null)
                return steps;
            steps.add(step);
            network = network.folded(work, step.labels(), step.count(), null);
        }
    }

    private static Dataset<Row> likelyGains(ItemNetwork network, Likelihood likelihood) {
        UDF7<Double, Double, Double, Double, Double, Double, Double, Double> gain =
            (weight, innerA, totalA, nodesA, innerB, totalB, nodesB) -> {
            if (weight <= likelihood.expected(totalA * totalB))
                return 0.0;
            Holding a = new Holding(innerA, totalA, nodesA);
            Holding b = new Holding(innerB, totalB, nodesB);
            return likelihood.value(a.plus(b).withInner(2 * weight))
                - (likelihood.value(a) + likelihood.value(b));
        };
        Dataset<Row> items = network.items();
        return network.links()
            .join(items.select(col("item").as("src"), col("inner").as("ia"), col("total").as("ta"),
                      col("nodes").as("na")),
                "src")
            .join(items.select(col("item").as("dst"), col("inner").as("ib"), col("total").as("tb"),
                      col("nodes").as("nb")),
                "dst")
            .select(col("src"), col("dst"),
                udf(gain, DataTypes.DoubleType)
                    .apply(col("weight"), col("ia"), col("ta"), col("na"), col("ib"), col("tb"),
                        col("nb"))
                    .as("gain"));
    }

    /**
     * What each item points to: the neighbour with the best gain above 0, or itself. Among equal
     * ones it is left to a hash, since by number all items of a regular network would point one
     * way.
     */
    private static Dataset<Row> pointers(Dataset<Row> items, Dataset<Row> gains, int round) {
        UDF1<Long, Long> hash = number -> Mixing.mixed(number, round);
        Dataset<Row> best =
            gains.filter(col("gain").gt(zero()))
                .groupBy("src")
                .agg(max(struct(col("gain"), udf(hash, DataTypes.LongType).apply(col("dst")),
                             negate(col("dst")).as("negative")))
                         .as("best"))
                .select(col("src").as("item"), negate(col("best.negative")).as("aim"));
        return items.select("item")
            .join(best, "item", "left")
            .select(col("item"), coalesce(col("aim"), col("item")).as("aim"));
    }

    /**
     * Numbers what hangs together by pointers, in the order of the least items.
     *
     * <p>Whatever pointers lead to ends in a pair that points to each other, or in an item that
     * points to itself: along them gains only rise, and hashes among equal gains. So they are a
     * forest as soon as the lower one of a pair points to itself, and doubling finds the roots.
     *
     * @return null if nothing merges
     */
    private static Step connected(Work work, Dataset<Row> aimed, long size) {
        Work.Counted pointers = work.keepCounted(aimed, size, not(col("aim").equalTo(col("item"))));
        if (pointers.counts()[0] == 0)
            return null;
        Dataset<Row> aims = pointers.rows();
        Dataset<Row> forest =
            work.keep(aims.join(aims.select(col("item").as("aim"), col("aim").as("back")), "aim")
                          .select(col("item"),
                              when(col("back").equalTo(col("item")), least(col("item"), col("aim")))
                                  .otherwise(col("aim"))
                                  .as("label")),
                size);
        for (boolean rooted = false; !rooted;) {
            Work.Counted next = work.keepCounted(
                forest.withColumnRenamed("label", "via")
                    .join(forest.select(col("item").as("via"), col("label")), "via")
                    .select("item", "via", "label"),
                size, not(col("via").equalTo(col("label"))));
            rooted = next.counts()[0] == 0;
            forest = next.rows().select("item", "label");
        }
        return ItemNetwork.compact(work, forest, size, size);
    }
}
