package info.quenta.vorl.spark;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import info.quenta.vorl.spark.TestBed.Links;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.SparkSession;
import org.junit.jupiter.api.Tag;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;

/** The result is that of the program, row by row, however the work is dealt out. */
class CommunitiesTest {
    private static final CommunitiesOptions SPREAD =
        CommunitiesOptions.DEFAULT.withLinksOfTask(0).withStarts(1);
    private static final CommunitiesOptions SHUFFLED = SPREAD.withRowsOfDriver(0).withRowsOfTask(0);

    @TempDir static Path folder;

    static Links network(String name) throws Exception {
        return switch (name) {
            case "planted" -> Networks.planted(3, 12, 6, 0.85, 1);
            case "R-MAT" -> Networks.rmat(6, 160, 2);
            case "arcs" -> Networks.arcs(40, 140, 3);
            case "names" -> Networks.named(Networks.planted(3, 10, 6, 0.8, 4));
            case "planted of 100,000" -> Networks.planted(225, 50, 20, 0.7, 1);
            case "components" -> Networks.components();
            case "hub" -> Networks.hub(Networks.planted(22, 50, 8, 0.9, 1), 1100);
            case "small ring" -> Networks.ring(3, 5);
            case "ring" -> Networks.ring(8, 4);
            case "no communities" -> Networks.planted(1, 20, 5, 1, 5);
            default -> TestBed.data(name);
        };
    }

    private static SparkSession session(int partitions) {
        return TestBed.session("local[2]", partitions);
    }

    @ParameterizedTest(name = "{0}, {1} partitions")
    @CsvSource({"planted, 1", "names, 2", "ring, 2"})
    void equalsTheProgram(String name, int partitions) throws Exception {
        check(name, partitions, SPREAD);
    }

    /** Without the driver's help, all of it shuffled. */
    @ParameterizedTest(name = "{0}, {1} partitions")
    @CsvSource({"small ring, 2"})
    void equalsTheProgramWhenNothingIsSmall(String name, int partitions) throws Exception {
        check(name, partitions, SHUFFLED);
    }

    @Tag("long")
    @ParameterizedTest(name = "{0}, {1} partitions")
    @MethodSource("matrix")
    void equalsTheProgramWithAnyPartitions(String name, int partitions) throws Exception {
        check(name, partitions, SPREAD);
    }

    /** Each network with one number of partitions, or with all of them where that is asked for. */
    static List<Arguments> matrix() {
        List<String> names = List.of("karate.nse", "football.nse", "planted of 100,000",
            "celegansneural.nsa", "R-MAT", "hub", "arcs", "names", "components", "no communities");
        List<Integer> partitions = List.of(2, 1, 7, 64);
        boolean all = Boolean.getBoolean("vorl.matrix");
        List<Arguments> matrix = new ArrayList<>();
        for (int i = 0; i < names.size(); ++i)
            for (int j = 0; j < partitions.size(); ++j)
                if (all || i % partitions.size() == j)
                    matrix.add(arguments(names.get(i), partitions.get(j)));
        return matrix;
    }

    /** Each of these has another winner among the starts. */
    @Tag("long")
    @ParameterizedTest(name = "{0}, {1} starts")
    @CsvSource({"karate.nse, 2", "dolphins.nse, 2", "lesmis.nse, 3"})
    void equalsTheProgramFromSeveralStarts(String name, int starts) throws Exception {
        check(name, 2, SPREAD.withStarts(starts));
    }

    /** Where the whole is left to the native library, from all starts. */
    @ParameterizedTest
    @ValueSource(strings = {"football.nse", "celegansneural.nsa", "names", "components"})
    void equalsTheProgramInOneTask(String name) throws Exception {
        Links links = network(name);
        assertEquals(TestBed.expected(links, folder),
            TestBed.lines(Communities.run(links.on(session(7)), CommunitiesOptions.DEFAULT)));
        assertEquals(TestBed.expected(links, folder, "--no-shares"),
            TestBed.lines(Communities.run(
                links.on(session(1)), CommunitiesOptions.DEFAULT.withShares(false))));
    }

    /** Rows in any order and direction, repeats that add up, nodes without links. */
    @ParameterizedTest
    @ValueSource(longs = {0, 100})
    void rowsOfAPairAddUp(long linksOfTask) throws Exception {
        Dataset<Row> links =
            session(2).sql("SELECT src, dst FROM VALUES (4, 5), (6, 5), (6, 4), (1, 2), (2, 3), "
                + "(3, 1), (3, 4) AS links(src, dst)");
        Dataset<Row> halves =
            links.selectExpr("dst AS src", "src AS dst", "0.25f AS weight")
                .union(links.selectExpr("src", "dst", "0.75f"))
                .union(session(2).sql("SELECT 9, 9, 0f UNION SELECT 1, 8, 0f"));
        CommunitiesOptions options = SPREAD.withLinksOfTask(linksOfTask);
        List<String> found = TestBed.lines(Communities.run(links, options));
        assertEquals(6, found.size());
        List<String> more = new ArrayList<>(TestBed.lines(Communities.run(halves, options)));
        assertTrue(more.remove(more.size() - 1).startsWith("9 "));
        assertTrue(more.remove(more.size() - 1).startsWith("8 "));
        assertEquals(found, more);
    }

    private static void check(String name, int partitions, CommunitiesOptions options)
        throws Exception {
        Links links = network(name);
        List<String> expected =
            TestBed.expected(links, folder, "--starts", Integer.toString(options.starts()));
        assertTrue(expected.size() > 4);
        assertEquals(
            expected, TestBed.lines(Communities.run(links.on(session(partitions)), options)));
    }
}
