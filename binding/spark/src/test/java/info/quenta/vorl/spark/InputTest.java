package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.monotonically_increasing_id;
import static org.apache.spark.sql.functions.spark_partition_id;
import static org.apache.spark.sql.functions.when;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import info.quenta.vorl.spark.TestBed.Links;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.Random;
import java.util.stream.LongStream;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Encoders;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.SparkSession;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

/** What is taken as a network, and how rows are kept, numbered and added up on the way. */
class InputTest {
    private static final CommunitiesOptions SPREAD =
        CommunitiesOptions.DEFAULT.withLinksOfTask(0).withStarts(1);
    /** Nothing is held by the driver or sorted by one task. */
    private static final CommunitiesOptions SHUFFLED = SPREAD.withRowsOfDriver(0).withRowsOfTask(0);

    @TempDir Path folder;

    private static SparkSession session() { return TestBed.session("local[2]", 2); }

    @ParameterizedTest
    @CsvSource(delimiter = '|',
        value = {"1 AS a, 2 AS b|src, dst and maybe weight: [a, b]",
            "1 AS src, 2 AS weight|src, dst and maybe weight: [src, weight]",
            "1 AS src, 'x' AS dst|of one type: struct<src:int,dst:string>",
            "1.5 AS src, 2.5 AS dst|whole numbers or strings: struct<src:decimal(2,1)",
            "true AS src, false AS dst|whole numbers or strings: struct<src:boolean",
            "1 AS src, 2 AS dst, 'much' AS weight|weight should be a number: struct<src:int",
            "1 AS src, 2 AS dst, true AS weight|weight should be a number: struct<src:int",
            "1 AS src, -2 AS dst|two ids of 0 or above and a weight of 0 or above: 1 -2 1.0",
            "1 AS src, 2 AS dst, -1 AS weight|1 2 -1.0",
            "1 AS src, CAST(NULL AS INT) AS dst|1 null 1.0",
            "'a' AS src, CAST(NULL AS STRING) AS dst|two ids and a weight of 0 or above: a null 1.0",
            "1 AS src, 2 AS dst, CAST(NULL AS FLOAT) AS weight|1 2 null",
            "1 AS src, 2 AS dst, float('NaN') AS weight|1 2 NaN",
            "1 AS src, 2 AS dst, float('Infinity') AS weight|1 2 Infinity",
            "1 AS src, 2 AS dst, 1e300 AS weight|1 2 Infinity"})
    void
    refusesWhatIsNoNetwork(String row, String expected) {
        String good = row.startsWith("'a'") ? "'a' AS src, 'b' AS dst" : "7 AS src, 8 AS dst";
        Dataset<Row> links = session().sql("SELECT " + row);
        if (expected.startsWith("1 2") && row.contains("float"))
            links = links.union(session().sql("SELECT " + good + ", 1f AS weight"));
        Dataset<Row> all = links;
        var error =
            assertThrows(IllegalArgumentException.class, () -> Communities.run(all, SPREAD));
        assertTrue(error.getMessage().startsWith("Communities, "), error.getMessage());
        assertTrue(error.getMessage().contains(expected), error.getMessage());
    }

    @ParameterizedTest
    @ValueSource(longs = {0, 100})
    void nothingHasNoCommunities(long linksOfTask) {
        Dataset<Row> links = session().sql("SELECT 1 AS src, 2 AS dst LIMIT 0");
        CommunitiesOptions options = SPREAD.withLinksOfTask(linksOfTask);
        Dataset<Row> none = Communities.run(links, options);
        assertEquals(List.of(), TestBed.lines(none));
        assertEquals(List.of(), Levels.of(links, none, options).collectAsList());
    }

    /** Links that all weigh nothing leave isolated nodes; so, nearly, do self links. */
    @ParameterizedTest
    @ValueSource(longs = {0, 100})
    void nodesWithoutAnyOtherAreAlone(long linksOfTask) throws Exception {
        CommunitiesOptions options = SPREAD.withLinksOfTask(linksOfTask);
        Dataset<Row> weightless =
            session().sql("SELECT 'b' AS src, '10' AS dst, 0d AS weight UNION SELECT '9', '9', 0d");
        assertEquals(List.of("10 1 1.0", "9 0 1.0", "b 2 1.0"),
            TestBed.lines(Communities.run(weightless, options)));
        Links selves = new Links(
            LongStream.of(3, 1, 2).mapToObj(id -> RowFactory.create(id, id, (double) id)).toList());
        assertEquals(TestBed.expected(selves, folder, "--starts", "1"),
            TestBed.lines(Communities.run(selves.on(session()), options)));
    }

    @Test
    void eachTableIsKeptOnce() {
        Dataset<Row> links = Networks.ring(3, 5).on(session());
        try (Work work = new Work(session(), SPREAD.withRowsOfDriver(0))) {
            new Input(work, links);
            assertEquals(6, work.mark()); // rows, pairs, isolated and linked nodes, numbers, edges
        }
    }

    @Test
    void namesStandInTheOrderOfVorl() {
        List<String> sorted = new ArrayList<>(List.of("0", "7", "10", "9223372036854775808",
            "18446744073709551615", "007", "20000000000000000000000", "Z", "a", "a b", "ä"));
        Collections.shuffle(sorted, new Random(1));
        Dataset<Row> nodes = session().createDataset(sorted, Encoders.STRING()).toDF("node");
        assertEquals(List.of("0", "7", "10", "9223372036854775808", "18446744073709551615", "007",
                         "20000000000000000000000", "Z", "a", "a b", "ä"),
            nodes.orderBy(Input.order(nodes))
                .collectAsList()
                .stream()
                .map(row -> row.getString(0))
                .toList());
    }

    /** In one task and by sorted partitions, held by the driver and by checkpoints. */
    @ParameterizedTest
    @ValueSource(ints = {2, 11}) // the session of more than 10 adapts plans to what it meets
    void rowsAreNumberedAndCountedWhereverTheyAre(int partitions) {
        SparkSession session = TestBed.session("local[2]", partitions);
        Dataset<Row> rows = session.range(0, 500, 1, 5)
                                .select(col("id").multiply(lit(7919)).mod(lit(500)).as("key"));
        for (CommunitiesOptions options : List.of(SPREAD, SHUFFLED))
            try (Work work = new Work(session, options)) {
                Work.Counted kept = work.keepCounted(work.numbered(rows, "number", 500, col("key")),
                    500, col("key").lt(lit(50)), col("key").gt(lit(1000)));
                assertEquals(500, work.size(kept.rows()));
                assertEquals(50, kept.counts()[0]);
                assertEquals(0, kept.counts()[1]);
                assertEquals(0, kept.rows().filter("key <> number").count());
                Dataset<Row> joined =
                    rows.join(rows.filter("key % 3 = 1").groupBy("key").count(), "key");
                assertEquals(167, work.size(work.keep(joined, 500)));
                Dataset<Row> none = work.keep(joined.filter("key % 6 = 3"), 500);
                assertEquals(0, work.size(none));
                assertEquals(0, work.numbered(none, "number", 500, col("key")).count());
            }
    }

    /** A third of the rows have one key. */
    @ParameterizedTest
    @ValueSource(ints = {2, 11})
    void rowsKeptByAColumnStayWhereTheyAre(int partitions) {
        SparkSession session = TestBed.session("local[2]", partitions);
        Dataset<Row> rows = session.range(0, 3000, 1, 5)
                                .select(col("id"),
                                    when(col("id").mod(lit(3)).equalTo(lit(0)), 7)
                                        .otherwise(col("id").mod(lit(40)))
                                        .as("key"));
        Dataset<Row> expected = rows.groupBy("key").count().orderBy("key");
        try (Work work = new Work(session, SHUFFLED)) {
            Dataset<Row> names = rows.select("key").distinct();
            // Of a shuffle by the same column, by another, and of none.
            for (Dataset<Row> made : List.of(rows.join(names, "key"),
                     rows.join(rows.select("id"), "id"), rows, rows.filter("id < 0"))) {
                Dataset<Row> kept = work.keepBy(made, 5000, "key");
                assertEquals(made.count(), work.size(kept));
                assertEquals(0, made.except(kept).count());
                assertEquals(0,
                    kept.select(col("key"), spark_partition_id())
                        .distinct()
                        .groupBy("key")
                        .count()
                        .filter("count > 1")
                        .count());
                Dataset<Row> counts =
                    kept.withColumnRenamed("key", "again").groupBy("again").count();
                if (work.size(kept) == 0)
                    continue;
                assertFalse(((org.apache.spark.sql.classic.Dataset<Row>) counts)
                                .queryExecution()
                                .executedPlan()
                                .toString()
                                .contains("Exchange"));
                assertEquals(expected.collectAsList(), counts.orderBy("again").collectAsList());
                assertEquals(3000, kept.join(names, "key").count());
            }
        }
    }

    @Test
    void whatIsKeptGoesWithTheWork() throws Exception {
        CommunitiesOptions options = SHUFFLED.withCheckpoints(folder.resolve("state").toString());
        Dataset<Row> links = session().sql("SELECT 1 AS src, -1 AS dst");
        assertThrows(IllegalArgumentException.class, () -> Communities.run(links, options));
        assertEquals(0, files());
        Dataset<Row> result = Communities.run(
            session().sql("SELECT 1 AS src, 2 AS dst"), options.withLinksOfTask(10));
        assertEquals(List.of("1 0 1.0", "2 0 1.0"), TestBed.lines(result));
        long afterwards = files();
        assertTrue(afterwards > 0);
        try (Work work = new Work(session(), options)) {
            Dataset<Row> first = work.keep(session().range(9).toDF(), 9);
            int mark = work.mark();
            Dataset<Row> second = work.keep(first.filter("id < 5"), 9);
            Dataset<Row> third = work.keep(first.filter("id > 5"), 9);
            work.dropSince(mark, List.of(third));
            assertThrows(Exception.class, () -> second.collectAsList());
            assertEquals(3, third.collectAsList().size());
            assertEquals(9, first.collectAsList().size());
        }
        assertEquals(afterwards, files());
    }

    /** Files of kept rows. */
    private long files() throws Exception {
        try (var paths = Files.walk(folder)) {
            return paths.filter(path -> path.getFileName().toString().startsWith("part-")).count();
        }
    }

    @Test
    void sumsOnAGridAreExact() {
        Random random = new Random(4);
        List<Double> values = new ArrayList<>();
        for (int i = 0; i < 300; ++i)
            values.add((double) Math.scalb(random.nextFloat(), -random.nextInt(60)));
        Dataset<Row> rows = table(values);
        Grid grid =
            Grid.of(rows, () -> { throw new IllegalStateException("no need of an order"); });
        double sum = 0;
        for (double value : values) sum += grid.round((float) value);
        for (int trial = 0; trial < 20; ++trial) {
            Collections.shuffle(values, random);
            double other = 0;
            for (double value : values) {
                other += grid.round((float) value);
                assertEquals(value, grid.round((float) value), 0x1p-40);
            }
            assertEquals(sum, other);
        }
        assertEquals(0, Grid.of(table(List.of()), () -> null).round(0));

        // Whether the sum reaches 2 hangs on the order in which the halves of its last digit come.
        List<Double> close = List.of(2 - 0x1p-52, 0x1p-54, 0x1p-54, 0x1p-54, 0x1p-54);
        float least = 0x1p-51f; // too little for the grid of a sum of 2 or more
        for (boolean reached : new boolean[] {false, true}) {
            List<Double> order = new ArrayList<>(close);
            if (reached)
                Collections.reverse(order);
            Dataset<Row> ordered = table(order).withColumn("place", monotonically_increasing_id());
            Grid found = Grid.of(table(close), () -> ordered.select("place", "value"));
            assertEquals(reached, found.round(least) == 0);
        }
    }

    private static Dataset<Row> table(List<Double> values) {
        return session().createDataset(values, Encoders.DOUBLE()).toDF("value");
    }
}
