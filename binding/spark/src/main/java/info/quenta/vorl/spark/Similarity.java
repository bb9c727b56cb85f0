package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.array;
import static org.apache.spark.sql.functions.coalesce;
import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.count;
import static org.apache.spark.sql.functions.explode;
import static org.apache.spark.sql.functions.floor;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.max;
import static org.apache.spark.sql.functions.not;
import static org.apache.spark.sql.functions.pmod;
import static org.apache.spark.sql.functions.sequence;
import static org.apache.spark.sql.functions.struct;
import static org.apache.spark.sql.functions.sum;
import static org.apache.spark.sql.functions.udf;
import static org.apache.spark.sql.functions.when;

import java.util.List;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.api.java.UDF1;
import org.apache.spark.sql.api.java.UDF4;
import org.apache.spark.sql.types.DataTypes;

/** How alike the ends of a link are, by the neighbours that they share. */
final class Similarity {
    /** By which power of the two degrees the number of shared neighbours is divided. */
    enum Power {
        COSINE("cosine"), // 1/2
        MIXED("mixed"), // 1/4
        COMMON("common neighbours"); // 0

        private final String text;

        Power(String text) { this.text = text; }

        String text() { return text; }

        private double divisor(double product) {
            return switch (this) {
                case COSINE -> Math.sqrt(product);
                case MIXED -> Math.sqrt(Math.sqrt(product));
                case COMMON -> 1;
            };
        }
    }

    private static final long SLICE = 1000;

    private Similarity() {}

    /**
     * Adds to links what the similarity goes by: `degree` and `far`, the degrees of both ends, and
     * `rises`, whether the link leads to one of higher degree, or of the same and a higher number.
     */
    static Dataset<Row> withDegrees(Dataset<Row> links) {
        Dataset<Row> degrees = links.groupBy("src").agg(count(lit(1)).as("degree"));
        Column rises = col("degree").lt(col("far")).or(
            col("degree").equalTo(col("far")).and(col("src").lt(col("dst"))));
        return links.join(degrees, "src")
            .join(degrees.select(col("src").as("dst"), col("degree").as("far")), "dst")
            .select(col("src"), col("dst"), col("weight"), col("degree"), col("far"),
                rises.as("rises"));
    }

    /**
     * Adds `shared`, the number of neighbours that the ends of each link share.
     *
     * <p>Each triangle is found once, from its corner of the least degree (N. Chiba, T. Nishizeki,
     * Arboricity and subgraph listing algorithms, SIAM J. Comput. 14, 210, 1985): so a hub has few
     * upward links, and never more than the root of twice the number of links. The pairs of those
     * with many are dealt out to several tasks.
     */
    static Dataset<Row> withShared(Dataset<Row> links) { return withShared(links, SLICE); }

    /** @param most upward links of a node that one task pairs with the others */
    static Dataset<Row> withShared(Dataset<Row> links, long most) {
        Dataset<Row> up = links.filter(col("rises")).select("src", "dst", "far");
        Dataset<Row> slices = up.groupBy("src").agg(
            floor(count(lit(1)).divide(lit((double) most)))
                .plus(lit(1L))
                .as("slices"));
        up = up.join(slices, "src");
        Dataset<Row> first = up.select(col("src"), col("dst").as("a"), col("far").as("fa"),
            pmod(col("dst"), col("slices")).as("slice"));
        Dataset<Row> second = up.select(col("src"), col("dst").as("b"), col("far").as("fb"),
            explode(sequence(lit(0L), col("slices").minus(lit(1L)))).as("slice"));
        Dataset<Row> pairs =
            first.join(second, new String[] {"src", "slice"})
                .filter(struct(col("fa"), col("a")).lt(struct(col("fb"), col("b"))))
                .select("src", "a", "b");
        Dataset<Row> triangles =
            pairs.join(up.select(col("src").as("a"), col("dst").as("b")),
                new String[] {"a", "b"});
        Column sides = array(struct(col("src").as("low"), col("a").as("high")),
            struct(col("src").as("low"), col("b").as("high")),
            struct(col("a").as("low"), col("b").as("high")));
        Dataset<Row> found = triangles.select(explode(sides).as("side"))
                                 .select("side.low", "side.high")
                                 .groupBy("low", "high")
                                 .agg(count(lit(1)).as("shared"));
        Column low = when(col("rises"), col("src")).otherwise(col("dst"));
        Column high = when(col("rises"), col("dst")).otherwise(col("src"));
        return links.withColumn("low", low)
            .withColumn("high", high)
            .join(found, new String[] {"low", "high"}, "left")
            .select(col("src"), col("dst"), col("weight"), col("degree"), col("far"), col("rises"),
                coalesce(col("shared"), lit(0L)).as("shared"));
    }

    /**
     * The network whose links weigh their weight times the similarity of their ends. The totals of
     * its nodes are those over all links. Left out are links whose ends share nobody while both
     * have a neighbour with whom they do.
     *
     * @param most no fewer links than there are
     * @param nodes (item, …) all nodes
     */
    static ItemNetwork similar(
        Work work, Dataset<Row> links, long most, Dataset<Row> nodes, long size, Power power) {
        UDF4<Double, Long, Long, Long, Float> weigh = (weight, degree, far, shared) ->
            (float) (weight * ((shared + 1.0) / power.divisor((double) degree * (double) far)));
        Dataset<Row> weighed =
            work.keep(links.select(col("src"), col("dst"), col("rises"), col("shared"),
                udf(weigh, DataTypes.FloatType)
                    .apply(col("weight"), col("degree"), col("far"), col("shared"))
                    .as("weight")),
                most);
        Grid grid = Grid.of(weighed.select(col("weight").cast("double").as("value")),
            () -> Work.orderedSums(weighed.select(col("src"), col("rises"), col("dst"),
                                       col("weight").cast("double").as("weight")),
                List.of("src"), List.of("rises", "dst"), List.of("weight")));
        UDF1<Float, Double> round = weight -> (double) grid.round(weight);
        Dataset<Row> rounded = weighed.withColumn(
            "weight", udf(round, DataTypes.DoubleType).apply(col("weight")));
        Dataset<Row> ends = work.keep(rounded.groupBy(col("src").as("item"))
                                          .agg(sum("weight").as("total"),
                                              max(col("shared").gt(lit(0L))).as("shares")),
            size);
        Dataset<Row> kept =
            rounded.join(ends.select(col("item").as("src"), col("shares").as("here")), "src")
                .join(ends.select(col("item").as("dst"), col("shares").as("there")), "dst")
                .filter(col("shared").gt(lit(0L)).or(not(col("here").and(col("there")))))
                .select("src", "dst", "weight");
        Dataset<Row> items =
            nodes.select("item").join(ends, "item", "left")
                .select(col("item"), coalesce(col("total"), lit(0.0)).as("total"));
        return new ItemNetwork(
            work.keepBy(kept, most, "src"), work.keep(items, size), size, most);
    }
}
