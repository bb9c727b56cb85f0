package info.quenta.vorl.spark;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;
import java.util.Random;
import java.util.concurrent.TimeUnit;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.SparkSession;
import org.apache.spark.sql.types.DataType;
import org.apache.spark.sql.types.DataTypes;
import org.apache.spark.sql.types.StructType;

/** Where the tests find what they work on. */
final class TestBed {
    private TestBed() {}

    /** A network as a table of links and as the lines of a file. */
    record Links(DataType id, boolean directed, List<Row> rows) {
        Links(List<Row> rows) { this(DataTypes.LongType, false, rows); }

        Dataset<Row> on(SparkSession session) {
            StructType type =
                new StructType().add("src", id).add("dst", id).add("weight", DataTypes.DoubleType);
            // The order of rows is no matter.
            List<Row> shuffled = new ArrayList<>(rows);
            Collections.shuffle(shuffled, new Random(1));
            return session.createDataFrame(shuffled, type);
        }

        String text() {
            StringBuilder text = new StringBuilder("source,target,weight\n");
            for (Row row : rows)
                text.append(row.get(0))
                    .append(',')
                    .append(row.get(1))
                    .append(',')
                    .append(row.get(2))
                    .append('\n');
            return text.toString();
        }
    }

    /** The session of all tests; it is another only where the master is. */
    static SparkSession session(String master, int partitions) {
        if (SparkSession.getActiveSession().isDefined()
            && !SparkSession.active().sparkContext().master().equals(master))
            SparkSession.active().stop();
        SparkSession session =
            SparkSession.builder()
                .master(master)
                .config("spark.ui.enabled", false)
                .config("spark.ui.showConsoleProgress", false)
                // The queries are small: planning and compiling would take longer than the work.
                .config("spark.sql.adaptive.enabled", partitions > 10)
                .config("spark.sql.codegen.wholeStage", false)
                .config("spark.sql.codegen.factoryMode", "NO_CODEGEN")
                .config("spark.sql.leafNodeDefaultParallelism", 1)
                .config("spark.sql.shuffle.partitions", partitions)
                // Of executors that are processes of their own.
                .config("spark.executor.extraClassPath", System.getProperty("java.class.path"))
                .config("spark.executor.memory", "512m")
                .config(
                    "spark.executor.extraJavaOptions", "-XX:TieredStopAtLevel=1 -XX:+UseSerialGC")
                .getOrCreate();
        session.conf().set("spark.sql.shuffle.partitions", partitions);
        session.sparkContext().setLogLevel("ERROR");
        return session;
    }

    /** A network of the folder data; arcs of files of arcs. */
    static Links data(String name) throws IOException {
        List<Row> rows = new ArrayList<>();
        for (String line : Files.readAllLines(Path.of(System.getProperty("vorl.data"), name))) {
            if (line.isBlank() || line.startsWith("#"))
                continue;
            String[] cells = line.trim().split("\\s+");
            double weight = cells.length > 2 ? Double.parseDouble(cells[2]) : 1;
            rows.add(RowFactory.create(Long.parseLong(cells[0]), Long.parseLong(cells[1]), weight));
        }
        return new Links(DataTypes.LongType, name.endsWith(".nsa"), rows);
    }

    /** The table of the program, line by line in any order. */
    static List<String> expected(Links links, Path folder, String... options) throws Exception {
        Path file = folder.resolve("links.csv");
        Path table = folder.resolve("table.tsv");
        Files.writeString(file, links.text());
        List<String> command = new ArrayList<>(List.of(System.getProperty("vorl.program"),
            "communities", "-q", file.toString(), "--table", table.toString()));
        command.addAll(Arrays.asList(options));
        if (links.directed())
            command.add("--directed");
        Process process = new ProcessBuilder(command).inheritIO().start();
        if (!process.waitFor(60, TimeUnit.SECONDS) || process.exitValue() != 0)
            throw new IOException("failed: " + command);
        List<String> lines = Files.readAllLines(table);
        return lines.stream().skip(1).map(TestBed::wholeShare).sorted().toList();
    }

    private static String wholeShare(String line) {
        String[] cells = line.split("\t");
        // Quotes stand around names that would be misread.
        String name =
            cells[0].startsWith("\"") ? cells[0].substring(1, cells[0].length() - 1) : cells[0];
        return name + " " + cells[1] + " " + Float.parseFloat(cells[2]);
    }

    /** The rows of a result in the same form. */
    static List<String> lines(Dataset<Row> result) {
        return result.collectAsList()
            .stream()
            .map(row -> row.get(0) + " " + row.get(1) + " " + row.getFloat(2))
            .sorted()
            .toList();
    }
}
