package info.quenta.vorl.spark;

import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;

/**
 * A step of merging.
 *
 * @param labels (item, label): the items of its height, mapped to those of the next one
 * @param count of the items after it
 */
record Step(Dataset<Row> labels, long count) {}
