package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.coalesce;
import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.min;
import static org.apache.spark.sql.functions.not;
import static org.apache.spark.sql.functions.sum;

import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;

/**
 * The network that the steps of communities work on: nodes, or groups of them as items.
 *
 * <p>All weights lie on a grid so fine that it rounds away nothing but what is below 2^-52 of the
 * network's weight, and so coarse that every sum of them is exact: sums of weights don't depend on
 * their order, and thereby not on partitions.
 *
 * @param links (src, dst, weight), each at both of its ends
 * @param items (item, inner, total, nodes), with numbers from 0
 * @param size number of items
 * @param most no fewer links than there are
 */
record ItemNetwork(Dataset<Row> links, Dataset<Row> items, long size, long most) {
    /**
     * The network whose items are the groups.
     *
     * @param labels (item, label), a group for each item
     * @param count of the groups
     * @param idle (label) of groups that get no links of their own, though others have links to
     *     them; null for none
     */
    ItemNetwork folded(Work work, Dataset<Row> labels, long count, Dataset<Row> idle) {
        Dataset<Row> ends =
            links.join(labels.select(col("item").as("src"), col("label").as("from")), "src")
                .join(labels.select(col("item").as("dst"), col("label").as("to")), "dst")
                .groupBy("from", "to")
                .agg(sum("weight").as("weight"));
        if (idle != null)
            ends = ends.join(idle.select(col("label").as("idle")), col("from").equalTo(col("idle")),
                "left_anti");
        ends = work.keepBy(ends, most + size, "from");
        long left = work.size(ends);
        Dataset<Row> inside = ends.filter(col("from").equalTo(col("to")))
                                  .select(col("from").as("item"), col("weight").as("inside"));
        Dataset<Row> held =
            items.join(labels, "item")
                .groupBy("label")
                .agg(sum("inner").as("inner"), sum("total").as("total"), sum("nodes").as("nodes"))
                .withColumnRenamed("label", "item")
                .join(inside, "item", "left")
                .select(col("item"),
                    col("inner").plus(coalesce(col("inside"), lit(0.0))).as("inner"), col("total"),
                    col("nodes"));
        Dataset<Row> outside =
            ends.filter(not(col("from").equalTo(col("to"))))
                .select(col("from").as("src"), col("to").as("dst"), col("weight"));
        return new ItemNetwork(outside, work.keep(held, count), count, left);
    }

    /** Each item as a group: (item, label). */
    Dataset<Row> itself() { return items.select(col("item"), col("item").as("label")); }

    /** What each group holds: (label, inner, total, nodes). */
    Dataset<Row> holdings(Work work, Dataset<Row> labels, long count) {
        Dataset<Row> inside =
            links.join(labels.select(col("item").as("src"), col("label").as("label")), "src")
                .join(labels.select(col("item").as("dst"), col("label").as("to")), "dst")
                .filter(col("label").equalTo(col("to")))
                .select(col("label"), col("weight").as("inner"), lit(0.0).as("total"),
                    lit(0.0).as("nodes"));
        Dataset<Row> held =
            items.join(labels, "item")
                .select("label", "inner", "total", "nodes")
                .unionByName(inside)
                .groupBy("label")
                .agg(sum("inner").as("inner"), sum("total").as("total"), sum("nodes").as("nodes"));
        return work.keep(held, count);
    }

    /** The label of each item after a further step: (item, label). */
    static Dataset<Row> composed(Dataset<Row> finer, Dataset<Row> coarser) {
        return finer.withColumnRenamed("label", "via")
            .join(coarser.select(col("item").as("via"), col("label")), "via")
            .select("item", "label");
    }

    /**
     * Numbers labels by their least items.
     *
     * @param labels (item, label) with labels of any kind
     * @param atMost more labels than there can be
     * @param items no fewer items than there are
     */
    static Step compact(Work work, Dataset<Row> labels, long atMost, long items) {
        Dataset<Row> numbers = work.keep(numbers(work, labels, atMost), atMost);
        Dataset<Row> numbered =
            labels.join(numbers, "label").select(col("item"), col("number").as("label"));
        return new Step(work.keep(numbered, items), work.size(numbers));
    }

    /** (label, number): the labels by their least items. */
    static Dataset<Row> numbers(Work work, Dataset<Row> labels, long atMost) {
        Dataset<Row> least = labels.groupBy("label").agg(min("item").as("least"));
        return work.numbered(least, "number", atMost, col("least")).select("label", "number");
    }
}
