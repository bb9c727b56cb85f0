package info.quenta.vorl.spark;

import java.util.ArrayList;
import java.util.List;
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

    private final List<String> files = new ArrayList<>();
    private CommunitiesOptions options = CommunitiesOptions.DEFAULT;
    private SaveMode mode = SaveMode.ErrorIfExists;
    private boolean hierarchy;

    private Main() {}

    /** Exits with 2 where the arguments are at fault. */
    public static void main(String[] arguments) {
        Main main = new Main();
        if (List.of(arguments).contains("--help")) {
            System.out.println(USAGE);
            return;
        }
        try {
            main.take(arguments);
        } catch (IllegalArgumentException e) {
            System.err.println("vorl-spark: " + e.getMessage() + "\n" + USAGE);
            System.exit(2);
        }
        SparkSession session = SparkSession.builder().appName("vorl communities").getOrCreate();
        try {
            main.run(session);
        } finally {
            session.stop();
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
                    options = options.withStarts(Math.toIntExact(number(arguments, ++i)));
                case "--links-of-task" ->
                    options = options.withLinksOfTask(number(arguments, ++i));
                case "--rows-of-task" -> options = options.withRowsOfTask(number(arguments, ++i));
                case "--rows-of-driver" ->
                    options = options.withRowsOfDriver(number(arguments, ++i));
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

    private static long number(String[] arguments, int place) {
        String text = value(arguments, place);
        try {
            return Long.parseLong(text);
        } catch (NumberFormatException e) {
            throw new IllegalArgumentException(
                arguments[place - 1] + " wants a number, not " + text, e);
        }
    }

    private void run(SparkSession session) {
        Dataset<Row> links = read(session, files.get(0));
        Dataset<Row> result = Communities.run(links, options);
        if (hierarchy) result = Levels.of(links, result, options);
        if (files.get(1).endsWith(".csv"))
            result.write().mode(mode).option("header", true).csv(files.get(1));
        else
            result.write().mode(mode).parquet(files.get(1));
    }

    private static Dataset<Row> read(SparkSession session, String file) {
        if (file.endsWith(".csv") || file.endsWith(".csv.gz"))
            return session.read().option("header", true).option("inferSchema", true).csv(file);
        if (file.endsWith(".json") || file.endsWith(".json.gz")) return session.read().json(file);
        return session.read().parquet(file);
    }
}
