package info.quenta.vorl.spark;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import info.quenta.vorl.spark.TestBed.Links;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.PrintStream;
import java.io.UncheckedIOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.function.Function;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.SparkSession;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class MainTest {
    @TempDir Path folder;

    /** What a run says, after the code that it ends with. */
    private static String run(String... arguments) {
        ByteArrayOutputStream said = new ByteArrayOutputStream();
        PrintStream stream = new PrintStream(said, true, StandardCharsets.UTF_8);
        int code = Main.run(arguments, stream, stream, () -> TestBed.session("local[2]", 2));
        return code + " " + said.toString(StandardCharsets.UTF_8);
    }

    @ParameterizedTest
    @CsvSource(delimiter = '|',
        value = {"|two names are expected, those of the links and of the output: []",
            "links.csv|of the output: [links.csv]", "a b c|of the output: [a, b, c]",
            "a b --hierachy|no such option: --hierachy", "a b -x|no such option: -x",
            "a b --starts|--starts wants a value",
            "a b --starts two|--starts wants a whole number from 0 to 2147483647, not two",
            "a b --starts 2147483648|not 2147483648", "a b --links-of-task -1|not -1",
            "a b --rows-of-driver 1e6|--rows-of-driver wants a whole number"})
    void
    refusesWrongArguments(String arguments, String expected) {
        String said = run(arguments == null ? new String[0] : arguments.split(" "));
        assertTrue(said.startsWith("2 vorl-spark: ") && said.contains(expected), said);
        assertTrue(said.contains("usage: spark-submit"), said);
    }

    @Test
    void eachOptionChangesOneThing() {
        CommunitiesOptions all = CommunitiesOptions.DEFAULT.withShares(false)
                                     .withStarts(2)
                                     .withLinksOfTask(3)
                                     .withRowsOfTask(4)
                                     .withRowsOfDriver(5)
                                     .withCheckpoints("6");
        assertEquals(new CommunitiesOptions(false, 2, 3, 4, 5, "6"), all);
        List<Function<CommunitiesOptions, CommunitiesOptions>> wrong = List.of(a
            -> a.withStarts(-1),
            a -> a.withLinksOfTask(-1), a -> a.withRowsOfTask(-1), a -> a.withRowsOfDriver(-1));
        for (var change : wrong)
            assertThrows(IllegalArgumentException.class, () -> change.apply(all));
    }

    /** From file to file, in all forms. */
    @Test
    void filesGoInAndOut() throws Exception {
        Links links = Networks.named(Networks.ring(3, 5));
        List<String> expected = TestBed.expected(links, folder);
        Path output = folder.resolve("found");
        Path csv = folder.resolve("src.csv");
        Files.writeString(csv, links.text().replace("source,target", "src,dst").replace(",", ", "));
        SparkSession session = TestBed.session("local[2]", 2);
        links.on(session).write().parquet(folder.resolve("table").toString());

        assertEquals("0 ", run(csv.toString(), output.toString()));
        String again = run(csv.toString(), output.toString());
        assertEquals("1 vorl-spark: " + output + ": is there already, --overwrite replaces it",
            again.strip());
        assertEquals(expected, TestBed.lines(session.read().parquet(output.toString())));

        assertEquals("0 ",
            run(folder.resolve("table").toString(), output.toString(), "--overwrite", "--hierarchy",
                "--no-shares", "--starts", "1"));
        Dataset<Row> levels = session.read().parquet(output.toString());
        assertEquals(List.of("node", "level", "cluster", "share"), List.of(levels.columns()));
        assertEquals(3, levels.filter("level = 0").select("cluster").distinct().count());
    }

    /** Numbers are ids of whole numbers, unless one of them isn't written as vorl writes it. */
    @Test
    void idsOfTextFiles() throws Exception {
        Path file = folder.resolve("links.csv");
        Path output = folder.resolve("found.csv");
        Files.writeString(file, "weight,dst,src\n0.5,2,1\n2,10,2\n1,1,10\n");
        assertEquals("0 ", run(file.toString(), output.toString()));
        assertEquals(List.of("1,0,1.0", "10,0,1.0", "2,0,1.0"), lines(output));
        Files.writeString(file, "src,dst\n1,2\n1,02\n2,02\n");
        assertEquals("0 ", run(file.toString(), output.toString(), "--overwrite"));
        assertEquals(List.of("02,0,1.0", "1,0,1.0", "2,0,1.0"), lines(output));
        Files.writeString(file, "src,dst,weight\n1,2,1\n1,3,much\n");
        String wrong = run(file.toString(), output.toString(), "--overwrite");
        assertTrue(wrong.startsWith("1 vorl-spark: Communities, a link should have"), wrong);
        assertTrue(
            run("none.csv", output.toString()).startsWith("1 vorl-spark: none.csv: there is no"));
        assertEquals(3, lines(output).size());
    }

    @Test
    void tellsFailuresOfFilesWithoutTrace() throws Exception {
        Path text = Files.writeString(folder.resolve("links.parquet"), "1 2\n");
        Path output = folder.resolve("found");
        String said = run(text.toString(), output.toString());
        assertTrue(said.startsWith("1 vorl-spark: " + text + ": isn't a table that Spark reads: ")
                && said.contains("is not a Parquet file"),
            said);
        assertEquals(1, said.lines().count(), said);
        Path empty = Files.createDirectory(folder.resolve("empty"));
        said = run(empty.toString(), output.toString());
        assertTrue(said.startsWith("1 vorl-spark: " + empty + ": isn't a table"), said);

        ByteArrayOutputStream stream = new ByteArrayOutputStream();
        int code = Main.run(new String[] {"a", "b"}, System.out, new PrintStream(stream),
            () -> { throw new UncheckedIOException(new IOException("disk full")); });
        assertEquals("1 vorl-spark: disk full", code + " " + stream.toString().strip());
    }

    private static List<String> lines(Path output) throws Exception {
        List<String> lines = new ArrayList<>();
        try (var parts = Files.newDirectoryStream(output, "part-*.csv")) {
            for (Path part : parts)
                for (String line : Files.readAllLines(part))
                    if (!line.equals("node,cluster,share"))
                        lines.add(line);
        }
        lines.sort(null);
        return lines;
    }
}
