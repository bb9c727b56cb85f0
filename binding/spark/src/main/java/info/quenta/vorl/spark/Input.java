package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.aggregate;
import static org.apache.spark.sql.functions.array_sort;
import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.collect_list;
import static org.apache.spark.sql.functions.count;
import static org.apache.spark.sql.functions.greatest;
import static org.apache.spark.sql.functions.isnan;
import static org.apache.spark.sql.functions.least;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.sum;
import static org.apache.spark.sql.functions.when;

import java.util.Arrays;
import java.util.List;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.types.DataType;
import org.apache.spark.sql.types.DataTypes;
import org.apache.spark.sql.types.NumericType;

/**
 * The network of a table of links, without directions: the weights of all rows of a pair, both
 * ways, are added up.
 */
final class Input {
    /** (node, item): the nodes that have links, numbered by ascending ids. */
    final Dataset<Row> nodes;
    /** (node): those that have none. */
    final Dataset<Row> isolated;
    /** (low, high, weight): the links between items, each once; equal ends for a self link. */
    final Dataset<Row> edges;
    /** Number of items. */
    final long size;
    /** Number of edges. */
    final long count;

    Input(Work work, Dataset<Row> rows) {
        Dataset<Row> given = checked(work, rows);
        long rowCount = work.size(given);
        given = work.atHand(given);
        Dataset<Row> pairs = work.keep(pairs(given), rowCount);
        long most = 2 * rowCount;
        Dataset<Row> linked =
            pairs.select(col("a").as("node")).union(pairs.select(col("b").as("node"))).distinct();
        Dataset<Row> all =
            given.select(col("src").as("node")).union(given.select(col("dst").as("node")));
        isolated = work.keep(all.distinct().join(linked, "node", "left_anti"), most);
        linked = work.keep(linked, most);
        size = work.size(linked);
        nodes = work.keep(
            work.numbered(linked, "item", size, order(linked)).select("node", "item"), size);

        edges = work.keep(pairs.join(nodes.select(col("node").as("a"), col("item").as("low")), "a")
                              .join(nodes.select(col("node").as("b"), col("item").as("high")), "b")
                              .select("low", "high", "weight"),
            rowCount);
        count = work.size(edges);
    }

    /** Rows (src, dst, weight), with weights of 32 bits, which are kept. */
    static Dataset<Row> checked(Work work, Dataset<Row> rows) {
        List<String> names = Arrays.asList(rows.columns());
        if (!names.contains("src") || !names.contains("dst"))
            throw new IllegalArgumentException(
                "Communities, the columns of links should be src, dst and maybe weight: " + names);
        DataType type = rows.schema().apply("src").dataType();
        if (!type.equals(rows.schema().apply("dst").dataType()))
            throw new IllegalArgumentException(
                "Communities, src and dst should be of one type: " + rows.schema().simpleString());
        boolean text = type.equals(DataTypes.StringType);
        boolean whole = List.<DataType>of(DataTypes.LongType, DataTypes.IntegerType,
                                DataTypes.ShortType, DataTypes.ByteType)
                            .contains(type);
        if (!text && !whole)
            throw new IllegalArgumentException(
                "Communities, src and dst should be whole numbers or strings: "
                + rows.schema().simpleString());
        if (names.contains("weight")
            && !(rows.schema().apply("weight").dataType() instanceof NumericType))
            throw new IllegalArgumentException(
                "Communities, weight should be a number: " + rows.schema().simpleString());
        String id = text ? "string" : "long";
        Column weight = names.contains("weight") ? col("weight").cast("float") : lit(1.0f);
        Dataset<Row> links = rows.select(
            col("src").cast(id).as("src"), col("dst").cast(id).as("dst"), weight.as("weight"));
        Column wrong = col("src").isNull().or(col("dst").isNull()).or(col("weight").isNull());
        wrong = wrong.or(isnan(col("weight"))).or(col("weight").lt(lit(0.0f)));
        wrong = wrong.or(col("weight").equalTo(lit(Float.POSITIVE_INFINITY)));
        if (!text)
            wrong = wrong.or(col("src").lt(lit(0L))).or(col("dst").lt(lit(0L)));
        Work.Counted kept = work.keepCounted(links, Long.MAX_VALUE, wrong);
        if (kept.counts()[0] > 0)
            throw new IllegalArgumentException("Communities, a link should have two ids"
                + (text ? "" : " of 0 or above") + " and a weight of 0 or above: "
                + kept.rows().filter(wrong).first().mkString(" "));
        return kept.rows();
    }

    /**
     * The weight of each pair (a, b, weight). Those of 32 bits are added up from the least on, so
     * that the order of rows is no matter.
     */
    static Dataset<Row> pairs(Dataset<Row> given) {
        Column added = aggregate(
            array_sort(collect_list(col("weight"))), lit(0.0f), (sum, next) -> sum.plus(next));
        return given.filter(col("weight").gt(lit(0.0f)))
            .groupBy(
                least(col("src"), col("dst")).as("a"), greatest(col("src"), col("dst")).as("b"))
            .agg(added.cast("double").as("weight"));
    }

    /** Numbers stand before other texts, in their own order, as in all of vorl. */
    static Column[] order(Dataset<Row> nodes) {
        if (!nodes.schema().apply("node").dataType().equals(DataTypes.StringType))
            return new Column[] {col("node")};
        Column number = when(col("node").rlike("^(0|[1-9][0-9]{0,18}|1[0-9]{19})$"),
            col("node").cast("decimal(20,0)"));
        return new Column[] {number.asc_nulls_last(), col("node")};
    }
}
