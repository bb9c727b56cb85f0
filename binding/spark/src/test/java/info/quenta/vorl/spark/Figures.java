package info.quenta.vorl.spark;

import info.quenta.vorl.spark.TestBed.Links;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.Properties;
import java.util.TreeMap;
import java.util.concurrent.ConcurrentHashMap;
import org.apache.spark.scheduler.SparkListener;
import org.apache.spark.scheduler.SparkListenerJobStart;
import org.apache.spark.scheduler.SparkListenerStageCompleted;
import org.apache.spark.scheduler.SparkListenerStageSubmitted;
import org.apache.spark.scheduler.SparkListenerTaskEnd;
import org.apache.spark.sql.SparkSession;

/**
 * Prints what a run shuffles, by steps and by rounds, and how evenly: Figures KIND LINKS
 * PARTITIONS [ROWS_OF_DRIVER], where the kind is planted or R-MAT. Nothing is left to the native
 * library; small networks shuffle like large ones where the driver holds no rows.
 */
final class Figures {
    /** Smaller stages say nothing about skew. */
    private static final long LARGE = 10_000;
    private static final List<String> OF_ROUNDS =
        List.of("splitting", "refinement", "merging", "settling");

    private Figures() {}

    private static final class Meter extends SparkListener {
        private final Map<Integer, String> steps = new ConcurrentHashMap<>();
        private final Map<String, long[]> written = new TreeMap<>(); // rows and bytes
        private final Map<Integer, List<Long>> read = new ConcurrentHashMap<>();
        private String last = "";
        private double skew = 1;
        private String skewed = "";
        private long jobs;
        private double seconds; // of cores
        private long rounds;

        @Override
        public synchronized void onJobStart(SparkListenerJobStart event) {
            ++jobs;
            String step = step(event.properties());
            if (step.equals("splitting") && !step.equals(last))
                ++rounds;
            last = step;
        }

        private static String step(Properties properties) {
            return properties.getProperty("spark.job.description", "")
                .replaceFirst("^communities: ", "")
                .replaceFirst("[,(].*", "")
                .strip();
        }

        @Override
        public void onStageSubmitted(SparkListenerStageSubmitted event) {
            steps.put(event.stageInfo().stageId(), step(event.properties()));
        }

        @Override
        public synchronized void onTaskEnd(SparkListenerTaskEnd event) {
            if (event.taskMetrics() == null)
                return;
            var writes = event.taskMetrics().shuffleWriteMetrics();
            long[] sums = written.computeIfAbsent(
                steps.getOrDefault(event.stageId(), ""), step -> new long[2]);
            sums[0] += writes.recordsWritten();
            sums[1] += writes.bytesWritten();
            seconds += event.taskMetrics().executorCpuTime() / 1e9;
            read.computeIfAbsent(event.stageId(), stage -> new ArrayList<>())
                .add(event.taskMetrics().shuffleReadMetrics().recordsRead());
        }

        @Override
        public synchronized void onStageCompleted(SparkListenerStageCompleted event) {
            List<Long> tasks = read.remove(event.stageInfo().stageId());
            if (tasks == null || tasks.size() < 2)
                return;
            long sum = tasks.stream().mapToLong(Long::longValue).sum();
            long largest = tasks.stream().mapToLong(Long::longValue).max().orElse(0);
            if (sum < LARGE || (double) largest * tasks.size() / sum <= skew)
                return;
            skew = (double) largest * tasks.size() / sum;
            skewed = steps.get(event.stageInfo().stageId());
        }

        /** What was written in all steps, or in those of rounds alone. */
        private double sum(int which, boolean rounds) {
            return written.entrySet()
                .stream()
                .filter(step -> !rounds || OF_ROUNDS.contains(step.getKey()))
                .mapToLong(step -> step.getValue()[which])
                .sum();
        }

        synchronized void print(double links) {
            System.out.printf("  %,d jobs, %d rounds; rows shuffled / links %.1f, %.1f a round; "
                    + "bytes shuffled / links %.0f; %.0f s of cores in tasks%n",
                jobs, rounds, sum(0, false) / links, sum(0, true) / links / Math.max(1, rounds),
                sum(1, false) / links, seconds);
            written.forEach((step, sums)
                                -> System.out.printf("  %-24s %8.2f %8.0f%n", step, sums[0] / links,
                                    sums[1] / links));
            System.out.printf("  largest partition / mean %.2f (%s)%n", skew, skewed);
        }
    }

    private static Links network(String kind, int links) {
        if (kind.equals("planted"))
            return Networks.planted(links / 450, 50, 20, 0.7, 1);
        if (kind.equals("R-MAT"))
            return Networks.rmat(32 - Integer.numberOfLeadingZeros(links / 12), links, 1);
        throw new IllegalArgumentException(kind);
    }

    public static void main(String[] arguments) throws Exception {
        Links network = network(arguments[0], Integer.parseInt(arguments[1]));
        SparkSession session = SparkSession.builder()
                                   .master("local[2]")
                                   .config("spark.ui.enabled", false)
                                   .config("spark.sql.adaptive.enabled", false)
                                   .config("spark.sql.shuffle.partitions", arguments[2])
                                   .getOrCreate();
        session.sparkContext().setLogLevel("ERROR");
        Meter meter = new Meter();
        session.sparkContext().addSparkListener(meter);
        CommunitiesOptions options = CommunitiesOptions.DEFAULT.withLinksOfTask(0).withStarts(1);
        if (arguments.length > 3)
            options = options.withRowsOfDriver(Long.parseLong(arguments[3]));
        long begin = System.nanoTime();
        List<String> found = TestBed.lines(Communities.run(network.on(session), options));
        double seconds = (System.nanoTime() - begin) / 1e9;
        session.stop();
        Path folder = Files.createTempDirectory("figures");
        boolean equal = found.equals(TestBed.expected(network, folder, "--starts", "1"));
        System.out.printf("%s: %,d links, %s partitions, %s, %.0f s%n", arguments[0],
            network.rows().size(), arguments[2], equal ? "equal to the program" : "NOT EQUAL",
            seconds);
        meter.print(network.rows().size());
    }
}
