package info.quenta.vorl.spark;

import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;

/**
 * A partition of items.
 *
 * @param labels (item, label): the group of each item
 * @param groups (label, inner, total, nodes): what the groups hold
 * @param count of the groups
 * @param likelihood with the densities found last, which may be those of a partition before
 */
record Partitioned(Dataset<Row> labels, Dataset<Row> groups, long count, Likelihood likelihood) {
    /** The likelihood with the densities of this partition. */
    Likelihood estimated() { return likelihood.estimated(Sums.of(groups, likelihood.weight())); }

    Partitioned withLabels(Dataset<Row> others) {
        return new Partitioned(others, groups, count, likelihood);
    }
}
