package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.coalesce;
import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.not;
import static org.apache.spark.sql.functions.sum;
import static org.apache.spark.sql.functions.udf;

import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.api.java.UDF1;
import org.apache.spark.sql.types.DataTypes;

/** The network of the nodes that have links, its weights on a grid. */
final class NodeNetwork {
    /** Links as {@link Similarity#withDegrees} gives them, and what nodes hold. */
    final ItemNetwork network;
    /** Of the network, both directions. */
    final double weight;
    /** Links for a unit of weight; those of the mean weight count as one each. */
    final double scale;
    /** Links, each at both ends. */
    final long links;

    NodeNetwork(Work work, Input input) {
        Dataset<Row> edges = input.edges;
        // Twice the weight of a self link; that of others once for each end.
        Dataset<Row> selves =
            edges.filter(col("low").equalTo(col("high")))
                .select(col("low").as("item"), col("weight").multiply(lit(2.0)).as("self"));
        Dataset<Row> others = edges.filter(not(col("low").equalTo(col("high"))));
        Dataset<Row> both =
            others.select(col("low").as("src"), col("high").as("dst"), col("weight"))
                .union(others.select(col("high").as("src"), col("low").as("dst"), col("weight")));
        Dataset<Row> values =
            both.select(col("weight").as("value")).union(selves.select(col("self").as("value")));
        Grid grid = Grid.of(values,
            ()
                -> selves
                       .select(lit(0).as("kind"), col("item").as("src"), col("item").as("dst"),
                           col("self").as("value"))
                       .union(both.select(lit(1), col("src"), col("dst"), col("weight"))));
        UDF1<Double, Double> rounding = value -> (double) grid.round(value.floatValue());
        Dataset<Row> rounded =
            both.withColumn("weight", udf(rounding, DataTypes.DoubleType).apply(col("weight")));
        Dataset<Row> sums = rounded.groupBy(col("src").as("item")).agg(sum("weight").as("outer"));
        Dataset<Row> items =
            input.nodes.select("item")
                .join(selves.select(col("item"),
                          udf(rounding, DataTypes.DoubleType).apply(col("self")).as("inner")),
                    "item", "left")
                .join(sums, "item", "left")
                .select(col("item"), coalesce(col("inner"), lit(0.0)).as("inner"),
                    coalesce(col("inner"), lit(0.0))
                        .plus(coalesce(col("outer"), lit(0.0)))
                        .as("total"),
                    lit(1.0).as("nodes"));
        network =
            new ItemNetwork(work.keepBy(Similarity.withDegrees(rounded), 2 * input.count, "src"),
                work.keep(items, input.size), input.size, 2 * input.count);
        Row whole = network.items().agg(sum("inner"), sum("total")).first();
        weight = whole.isNullAt(1) ? 0 : whole.getDouble(1);
        links = work.size(network.links());
        double outer = input.size == 0 ? 0 : weight - whole.getDouble(0);
        scale = outer > 0 ? links / outer : 1;
    }
}
