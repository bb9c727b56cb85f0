package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.coalesce;
import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.greatest;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.negate;
import static org.apache.spark.sql.functions.udf;
import static org.apache.spark.sql.functions.when;

import java.util.ArrayList;
import java.util.List;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.api.java.UDF3;
import org.apache.spark.sql.types.DataTypes;

/** The best cut through the merges. */
final class Cut {
    private Cut() {}

    /**
     * The likeliest partition whose parts are items of any height, found from the bottom up.
     *
     * @param base what the items below the first step hold: (item, inner, total, nodes)
     * @param size how many these are
     * @param heights what those after each step hold, in the same form
     * @return the parts as labels of the items below the first step, by their least items
     */
    static Step likeliest(Work work, List<Step> steps, Dataset<Row> base, long size,
        List<Dataset<Row>> heights, Likelihood likelihood) {
        Dataset<Row> best = base.select(col("item"), value(likelihood).as("best"));
        List<Dataset<Row>> wholes = new ArrayList<>();
        for (int step = 0; step < steps.size(); ++step) {
            Dataset<Row> below = best.join(steps.get(step).labels(), "item");
            Dataset<Row> parts =
                Work.orderedSums(below, List.of("label"), List.of("item"), List.of("best"))
                    .select(col("label").as("item"), col("best").as("parts"));
            Dataset<Row> both =
                work.keep(heights.get(step)
                              .select(col("item"), value(likelihood).as("value"))
                              .join(parts, "item")
                              .select(col("item"), col("value").geq(col("parts")).as("whole"),
                                  greatest(col("value"), col("parts")).as("best")),
                    steps.get(step).count());
            wholes.add(both.select("item", "whole"));
            best = both.select("item", "best");
        }

        // From the top down, what lies in a part bears a number of it: that of the item that is
        // the part, apart from those of other heights.
        Dataset<Row> part = null;
        for (int step = steps.size(); step-- > 0;) {
            Dataset<Row> height = wholes.get(step);
            Column own = when(col("whole"), partNumber(step + 1, steps.size()));
            Dataset<Row> here = part == null
                ? height.select(col("item").as("via"), own.as("label"))
                : height.join(part, "item")
                      .select(col("item").as("via"), coalesce(col("label"), own).as("label"));
            part = steps.get(step)
                       .labels()
                       .withColumnRenamed("label", "via")
                       .join(here, "via")
                       .select("item", "label");
        }
        Column alone = partNumber(0, steps.size());
        return ItemNetwork.compact(
            work, part.select(col("item"), coalesce(col("label"), alone).as("label")), size, size);
    }

    private static Column partNumber(int height, int steps) {
        return negate(col("item").multiply(lit(steps + 1L)).plus(lit(height + 1L)));
    }

    private static Column value(Likelihood likelihood) {
        UDF3<Double, Double, Double, Double> value =
            (inner, total, nodes) -> likelihood.value(new Holding(inner, total, nodes));
        return udf(value, DataTypes.DoubleType).apply(col("inner"), col("total"), col("nodes"));
    }
}
