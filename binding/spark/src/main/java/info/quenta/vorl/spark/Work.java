package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.count;
import static org.apache.spark.sql.functions.count_if;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.monotonically_increasing_id;
import static org.apache.spark.sql.functions.shiftright;
import static org.apache.spark.sql.functions.udf;

import java.io.IOException;
import java.io.UncheckedIOException;
import java.util.ArrayList;
import java.util.IdentityHashMap;
import java.util.List;
import java.util.Map;
import java.util.stream.Stream;
import org.apache.hadoop.fs.Path;
import org.apache.spark.SparkContext;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.SparkSession;
import org.apache.spark.sql.api.java.UDF1;
import org.apache.spark.sql.catalyst.expressions.Attribute;
import org.apache.spark.sql.catalyst.expressions.Expression;
import org.apache.spark.sql.catalyst.plans.logical.LocalRelation;
import org.apache.spark.sql.catalyst.plans.logical.LogicalPlan;
import org.apache.spark.sql.catalyst.plans.physical.HashPartitioning;
import org.apache.spark.sql.catalyst.plans.physical.Partitioning;
import org.apache.spark.sql.catalyst.plans.physical.UnknownPartitioning;
import org.apache.spark.sql.catalyst.types.DataTypeUtils;
import org.apache.spark.sql.execution.LogicalRDD;
import org.apache.spark.sql.types.DataTypes;
import org.apache.spark.sql.types.StructType;
import scala.Option;
import scala.collection.immutable.Seq;
import scala.jdk.javaapi.CollectionConverters;

/** What the steps of a run have in common: the session, checkpoints, and numbers for rows. */
final class Work implements AutoCloseable {
    private static final int ROW_BITS = 33;
    private static final String COUNTS = "vorl counts";

    private final SparkSession session;
    private final SparkContext context;
    private final CommunitiesOptions options;
    private final String formerDescription;
    private final Map<Dataset<Row>, String> files = new IdentityHashMap<>();
    private final Map<Dataset<Row>, Long> sizes = new IdentityHashMap<>();
    private final List<Dataset<Row>> kept = new ArrayList<>();

    Work(SparkSession session, CommunitiesOptions options) {
        this.context = ((org.apache.spark.sql.classic.SparkSession) session).sparkContext();
        this.session = session;
        this.options = options;
        formerDescription = context.getLocalProperty("spark.job.description");
        if (options.checkpoints() != null) {
            context.setCheckpointDir(options.checkpoints());
        } else if (context.getCheckpointDir().isEmpty()) {
            if (!context.isLocal())
                throw new IllegalArgumentException(
                    "Communities, a folder for checkpoints is missing: set it in the options or"
                    + " by SparkContext.setCheckpointDir");
            context.setCheckpointDir(System.getProperty("java.io.tmpdir") + "/vorl-checkpoints");
            removeAtExit(new Path(context.getCheckpointDir().get()));
        }
    }

    private void removeAtExit(Path folder) {
        try {
            folder.getFileSystem(context.hadoopConfiguration()).deleteOnExit(folder);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    /** The jobs that follow bear the name of a step. */
    void step(String name) { context.setJobDescription("communities: " + name); }

    long rowsOfTask() { return options.rowsOfTask(); }

    /**
     * Computes rows and keeps them where no loss of an executor reaches them. Their {@link #size}
     * is known then.
     *
     * @param atMost no fewer rows than there can be
     */
    Dataset<Row> keep(Dataset<Row> rows, long atMost) { return keepCounted(rows, atMost).rows(); }

    /**
     * Keeps rows, those that agree in a column together: joins and groupings by it leave them where
     * they are.
     */
    Dataset<Row> keepBy(Dataset<Row> rows, long atMost, String column) {
        if (atMost <= options.rowsOfDriver())
            return keep(rows, atMost);
        return checkpointed(rows.repartition(parts(), col(column)), column).rows();
    }

    private int parts() {
        return Integer.parseInt(session.conf().get("spark.sql.shuffle.partitions"));
    }

    /**
     * Rows that are kept, and what was counted on the way, which takes no further job.
     *
     * @param counts of the rows for which each condition is true
     */
    record Counted(Dataset<Row> rows, long[] counts) {}

    /** Keeps rows and counts those of some conditions. */
    Counted keepCounted(Dataset<Row> rows, long atMost, Column... conditions) {
        if (atMost <= options.rowsOfDriver()) {
            long[] counts = new long[conditions.length];
            Dataset<Row> held = held(rows);
            for (int i = 0; i < counts.length; ++i) counts[i] = size(held.filter(conditions[i]));
            return new Counted(held, counts);
        }
        return checkpointed(rows, null, conditions);
    }

    /** @param by the column by whose hash the rows were dealt out to partitions, or null */
    private Counted checkpointed(Dataset<Row> rows, String by, Column... conditions) {
        long[] counts = new long[conditions.length];
        Column[] counters = new Column[conditions.length];
        for (int i = 0; i < counters.length; ++i)
            counters[i] = count_if(conditions[i]).as("count" + i);
        Dataset<Row> counting = rows.observe(COUNTS, count(lit(1)).as("rows"), counters);
        Dataset<Row> result = checkpoint(counting, by);
        Row found = ((org.apache.spark.sql.classic.Dataset<Row>) counting)
                        .queryExecution()
                        .observedMetrics()
                        .apply(COUNTS);
        sizes.put(result, found.getLong(0));
        for (int i = 0; i < counts.length; ++i) counts[i] = found.getLong(i + 1);
        return new Counted(result, counts);
    }

    /** What is kept, by the driver from now on if it fits there. */
    Dataset<Row> atHand(Dataset<Row> kept) {
        return size(kept) <= options.rowsOfDriver() ? held(kept) : kept;
    }

    private Dataset<Row> held(Dataset<Row> rows) {
        return session.createDataFrame(rows.collectAsList(), rows.schema());
    }

    /** A table of rows that the driver has. */
    Dataset<Row> table(List<Row> rows, StructType type) {
        return session.createDataFrame(rows, type);
    }

    Dataset<Row> empty(StructType type) { return table(List.of(), type); }

    /** Whether the driver holds the rows, or what they are made of. */
    static boolean isLocal(Dataset<Row> rows) { return optimised(rows) instanceof LocalRelation; }

    /** The number of rows. */
    long size(Dataset<Row> rows) {
        Long known = sizes.get(rows);
        if (known != null)
            return known;
        return optimised(rows) instanceof LocalRelation local ? local.data().size() : rows.count();
    }

    private static LogicalPlan optimised(Dataset<Row> rows) {
        return ((org.apache.spark.sql.classic.Dataset<Row>) rows).queryExecution().optimizedPlan();
    }

    private Dataset<Row> checkpoint(Dataset<Row> rows, String by) {
        var inner = (org.apache.spark.sql.classic.SparkSession) session;
        var rdd = ((LogicalRDD) ((org.apache.spark.sql.classic.Dataset<Row>) rows.checkpoint(true))
                       .logicalPlan())
                      .rdd();
        List<Attribute> columns =
            List.copyOf(CollectionConverters.asJava(DataTypeUtils.toAttributes(rows.schema())));
        Partitioning partitioning = new UnknownPartitioning(0);
        // Adaptive execution may have put some together.
        if (by != null && rdd.getNumPartitions() == parts()) {
            Expression key =
                columns.stream().filter(one -> one.name().equals(by)).findFirst().get();
            partitioning = new HashPartitioning(list(List.of(key)), parts());
        }
        // Estimates of sizes, which a checkpoint hands on, would grow from step to step.
        Dataset<Row> result = org.apache.spark.sql.classic.Dataset.ofRows(inner,
            new LogicalRDD(list(columns), rdd, partitioning, list(List.of()), false, Option.empty(),
                inner, Option.empty(), Option.empty()));
        Option<String> file = rdd.getCheckpointFile();
        if (file.isDefined()) {
            files.put(result, file.get());
            kept.add(result);
        }
        return result;
    }

    private static <T> Seq<T> list(List<T> values) {
        return CollectionConverters.asScala(values).toSeq();
    }

    /** Where the list of what is kept stands now. */
    int mark() { return kept.size(); }

    /** Deletes what was kept since a mark. */
    void dropSince(int mark, List<Dataset<Row>> but) {
        List<Dataset<Row>> younger = kept.subList(mark, kept.size());
        List<Dataset<Row>> stays = new ArrayList<>();
        for (Dataset<Row> rows : younger)
            if (but.stream().anyMatch(one -> one == rows))
                stays.add(rows);
            else
                delete(rows);
        younger.clear();
        kept.addAll(stays);
    }

    private void delete(Dataset<Row> rows) {
        sizes.remove(rows);
        Path path = new Path(files.remove(rows));
        try {
            path.getFileSystem(context.hadoopConfiguration()).delete(path, true);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    /** Lets rows outlive the work. */
    Dataset<Row> released(Dataset<Row> rows) {
        kept.removeIf(one -> one == rows);
        return rows;
    }

    /** Deletes all that was kept and not released, also where a step failed. */
    @Override
    public void close() {
        dropSince(0, List.of());
        context.setJobDescription(formerDescription);
    }

    /**
     * Numbers rows through from 0.
     *
     * @param name of the column that takes the numbers
     * @param atMost more rows than there can be
     * @param order tells any two rows apart
     */
    Dataset<Row> numbered(Dataset<Row> rows, String name, long atMost, Column... order) {
        if (atMost <= Math.max(options.rowsOfTask(), options.rowsOfDriver()))
            return rows.repartition(1).sortWithinPartitions(order).withColumn(
                name, monotonically_increasing_id());
        Dataset<Row> sorted =
            checkpoint(rows.orderBy(order), null).withColumn(name, monotonically_increasing_id());
        List<Row> counts = sorted.groupBy(shiftright(col(name), ROW_BITS).as("part"))
                               .agg(count(lit(1)))
                               .orderBy("part")
                               .collectAsList();
        int parts = counts.isEmpty() ? 0 : (int) counts.get(counts.size() - 1).getLong(0) + 1;
        long[] sizes = new long[parts];
        for (Row row : counts) sizes[(int) row.getLong(0)] = row.getLong(1);
        long[] first = new long[parts];
        for (int i = 1; i < parts; ++i) first[i] = first[i - 1] + sizes[i - 1];
        UDF1<Long, Long> number =
            place -> first[(int) (place >> ROW_BITS)] + (place & ((1L << ROW_BITS) - 1));
        return sorted.withColumn(name, udf(number, DataTypes.LongType).apply(col(name)));
    }

    /**
     * Sums that aren't exact, made in a given order for each key.
     *
     * @param keys columns of whole numbers
     * @param order by which the values of a key are added up
     * @param values columns of numbers
     * @return the keys with the sums
     */
    static Dataset<Row> orderedSums(
        Dataset<Row> rows, List<String> keys, List<String> order, List<String> values) {
        Column[] columns = Stream.of(keys, values, order)
                               .flatMap(List::stream)
                               .map(name -> col(name))
                               .toArray(Column[] ::new);
        Column[] keyColumns = keys.stream().map(name -> col(name)).toArray(Column[] ::new);
        Column[] sorting = Stream.concat(keys.stream(), order.stream())
                               .map(name -> col(name))
                               .toArray(Column[] ::new);
        return new RunningSums(keys, values)
            .of(rows.select(columns).repartition(keyColumns).sortWithinPartitions(sorting));
    }
}
