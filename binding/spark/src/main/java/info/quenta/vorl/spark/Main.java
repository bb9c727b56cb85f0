package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.expr;
import static org.apache.spark.sql.functions.not;

import java.io.IOException;
import java.io.PrintStream;
import java.io.UncheckedIOException;
import java.util.ArrayList;
import java.util.List;
import java.util.function.Supplier;
import org.apache.hadoop.fs.FileStatus;
import org.apache.hadoop.fs.Path;
import org.apache.spark.SparkThrowable;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.SaveMode;
import org.apache.spark.sql.SparkSession;

/** The communities of a table in a file, for spark-submit. */
public final class Main {
    private static final String USAGE = String.join("\n", //
        "usage: spark-submit [OPTION OF SPARK...] vorl-spark.jar LINKS OUTPUT [OPTION...]", "",
        "  LINKS                 a Parquet table with the columns src, dst and maybe weight;",
        "                        .csv with a line of names, also .csv.gz; .json with an object a line",
        "  OUTPUT                the table to write: node, cluster, share; with --hierarchy node, level,",
        "                        cluster, share; Parquet, or CSV where it ends in .csv",
        "  --checkpoints FOLDER  of a file system that all executors reach; needed on a cluster",
        "  --hierarchy           also what lies inside the communities, and above them",
        "  --no-shares           each node in one community",
        "  --starts N            from how many starts to search",
        "  --links-of-task N     up to so many links go to the native library, in one task",
        "  --rows-of-task N      up to so many rows are sorted in one task",
        "  --rows-of-driver N    tables of up to so many rows are held by the driver",
        "  --overwrite           an OUTPUT that is there");

    /** A whole number that a LONG can hold. */
    private static final String NUMBER = "^(0|[1-9][0-9]{0,17})$";

    private final List<String> files = new ArrayList<>();
    private CommunitiesOptions options = CommunitiesOptions.DEFAULT;
    private SaveMode mode = SaveMode.ErrorIfExists;
    private boolean hierarchy;

    private Main() {}

    /** Exits with 2 where the arguments are at fault, with 1 where files or links are. */
    public static void main(String[] arguments) {
        int code = run(arguments, System.out, System.err,
            () -> SparkSession.builder().appName("vorl communities").getOrCreate());
        if (SparkSession.getDefaultSession().isDefined())
            SparkSession.getDefaultSession().get().stop();
        if (code != 0)
            System.exit(code);
    }

    /** @return the code to exit with */
    static int run(
        String[] arguments, PrintStream out, PrintStream err, Supplier<SparkSession> session) {
        if (List.of(arguments).contains("--help")) {
            out.println(USAGE);
            return 0;
        }
        Main main = new Main();
        try {
            main.take(arguments);
        } catch (IllegalArgumentException e) {
            err.println("vorl-spark: " + e.getMessage() + "\n" + USAGE);
            return 2;
        }
        try {
            main.run(session.get());
            return 0;
        } catch (UncheckedIOException e) {
            err.println("vorl-spark: " + e.getCause().getMessage());
            return 1;
        } catch (IOException | IllegalArgumentException e) {
            err.println("vorl-spark: " + e.getMessage());
            return 1;
        }
    }

    private void take(String[] arguments) {
        for (int i = 0; i < arguments.length; ++i) {
            String option = arguments[i];
            switch (option) {
                case "--hierarchy" -> hierarchy = true;
                case "--no-shares" -> options = options.withShares(false);
                case "--overwrite" -> mode = SaveMode.Overwrite;
                case "--checkpoints" ->
                    options = options.withCheckpoints(value(arguments, ++i));
                case "--starts" ->
                    options = options.withStarts((int) number(arguments, ++i, Integer.MAX_VALUE));
                case "--links-of-task" ->
                    options = options.withLinksOfTask(number(arguments, ++i, Long.MAX_VALUE));
                case "--rows-of-task" ->
                    options = options.withRowsOfTask(number(arguments, ++i, Long.MAX_VALUE));
                case "--rows-of-driver" ->
                    options = options.withRowsOfDriver(number(arguments, ++i, Long.MAX_VALUE));
                default -> {
                    if (option.startsWith("-"))
                        throw new IllegalArgumentException("no such option: " + option);
                    files.add(option);
                }
            }
        }
        if (files.size() != 2)
            throw new IllegalArgumentException(
                "two names are expected, those of the links and of the output: " + files);
    }

    private static String value(String[] arguments, int place) {
        if (place == arguments.length)
            throw new IllegalArgumentException(arguments[place - 1] + " wants a value");
        return arguments[place];
    }

    private static long number(String[] arguments, int place, long most) {
        String text = value(arguments, place);
        try {
            long number = Long.parseLong(text);
            if (number >= 0 && number <= most)
                return number;
        } catch (NumberFormatException e) {
            // Said below.
        }
        throw new IllegalArgumentException(
            arguments[place - 1] + " wants a whole number from 0 to " + most + ", not " + text);
    }

    private void run(SparkSession session) throws IOException {
        String input = files.get(0);
        String output = files.get(1);
        if (!isThere(session, input))
            throw new IOException(input + ": there is no such file");
        // Told before the work, not after it.
        if (mode == SaveMode.ErrorIfExists && isThere(session, output))
            throw new IOException(output + ": is there already, --overwrite replaces it");
        Dataset<Row> links = table(session, input);
        Dataset<Row> result = Communities.run(links, options);
        if (hierarchy)
            result = Levels.of(links, result, options);
        if (output.endsWith(".csv"))
            result.write().mode(mode).option("header", true).csv(output);
        else
            result.write().mode(mode).parquet(output);
    }

    private static boolean isThere(SparkSession session, String file) throws IOException {
        Path path = new Path(file);
        FileStatus[] found =
            path.getFileSystem(session.sparkContext().hadoopConfiguration()).globStatus(path);
        return found != null && found.length > 0;
    }

    private static Dataset<Row> table(SparkSession session, String file) throws IOException {
        try {
            return read(session, file);
        } catch (Exception e) {
            if (!(e instanceof SparkThrowable))
                throw e;
            Throwable cause = e;
            while (cause.getCause() != null) cause = cause.getCause();
            String reason = String.valueOf(cause.getMessage()).lines().findFirst().orElse("");
            throw new IOException(file + ": isn't a table that Spark reads: " + reason, e);
        }
    }

    private static Dataset<Row> read(SparkSession session, String file) {
        if (file.endsWith(".csv") || file.endsWith(".csv.gz"))
            return typed(session.read()
                             .option("header", true)
                             .option("ignoreLeadingWhiteSpace", true)
                             .option("ignoreTrailingWhiteSpace", true)
                             .csv(file));
        if (file.endsWith(".json") || file.endsWith(".json.gz"))
            return session.read().json(file);
        return session.read().parquet(file);
    }

    /** Ids of texts are numbers if all are; 007 is a name, as in all of vorl. */
    private static Dataset<Row> typed(Dataset<Row> texts) {
        List<String> names = List.of(texts.columns());
        Dataset<Row> links = texts;
        if (names.contains("weight"))
            links = links.withColumn("weight", expr("try_cast(weight AS FLOAT)"));
        if (!names.containsAll(List.of("src", "dst")))
            return links;
        Column numbers = col("src").rlike(NUMBER).and(col("dst").rlike(NUMBER));
        if (!links.filter(not(numbers)).isEmpty())
            return links;
        return links.withColumn("src", col("src").cast("long"))
            .withColumn("dst", col("dst").cast("long"));
    }
}
