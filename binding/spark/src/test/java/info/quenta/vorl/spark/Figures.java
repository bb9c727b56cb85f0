package info.quenta.vorl.spark;

import info.quenta.vorl.spark.TestBed.Links;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.concurrent.ConcurrentHashMap;
import org.apache.spark.scheduler.SparkListener;
import org.apache.spark.scheduler.SparkListenerJobStart;
import org.apache.spark.scheduler.SparkListenerStageCompleted;
import org.apache.spark.scheduler.SparkListenerStageSubmitted;
import org.apache.spark.scheduler.SparkListenerTaskEnd;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.SparkSession;

/**
 * Prints what a run shuffles, by steps, and how evenly: planted networks and R-MAT of the numbers
 * of links that the arguments tell. Nothing is left to the native library.
 */
final class Figures {
    /** Smaller stages say nothing about skew. */
    private static final long LARGE = 10_000;

    private Figures() {}

    private static final class Meter extends SparkListener {
        private final Map<Integer, String> steps = new ConcurrentHashMap<>();
        private final Map<String, Long> rows = new TreeMap<>();
        private final Map<Integer, List<Long>> read = new ConcurrentHashMap<>();
        private double skew = 1;
        private String skewed = "";
        private long jobs;

        @Override
        public synchronized void onJobStart(SparkListenerJobStart event) {
            ++jobs;
        }

        @Override
        public void onStageSubmitted(SparkListenerStageSubmitted event) {
            steps.put(event.stageInfo().stageId(),
                event.properties()
                    .getProperty("spark.job.description", "")
                    .replaceFirst("^communities: ", "")
                    .replaceFirst("[,(].*", "")
                    .strip());
        }

        @Override
        public synchronized void onTaskEnd(SparkListenerTaskEnd event) {
            if (event.taskMetrics() == null)
                return;
            rows.merge(steps.getOrDefault(event.stageId(), ""),
                event.taskMetrics().shuffleWriteMetrics().recordsWritten(), Long::sum);
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
    }

    public static void main(String[] arguments) throws Exception {
        for (String argument : arguments) {
            int links = Integer.parseInt(argument);
            measure("planted", Networks.planted(links / 500, 50, 20, 0.7, 1));
            int scale = 32 - Integer.numberOfLeadingZeros(links / 12);
            measure("R-MAT", Networks.rmat(scale, links, 1));
        }
    }

    private static void measure(String name, Links links) throws Exception {
        SparkSession session = SparkSession.builder()
                                   .master("local[2]")
                                   .config("spark.ui.enabled", false)
                                   .config("spark.sql.adaptive.enabled", false)
                                   .config("spark.sql.shuffle.partitions", 8)
                                   .getOrCreate();
        session.sparkContext().setLogLevel("ERROR");
        Meter meter = new Meter();
        session.sparkContext().addSparkListener(meter);
        long begin = System.nanoTime();
        List<Row> found =
            Communities
                .run(links.on(session), CommunitiesOptions.DEFAULT.withLinksOfTask(0).withStarts(1))
                .collectAsList();
        double seconds = (System.nanoTime() - begin) / 1e9;
        List<String> expected =
            TestBed.expected(links, Files.createTempDirectory("figures"), "--starts", "1");
        boolean equal =
            expected.equals(found.stream()
                                .map(row -> row.get(0) + " " + row.get(1) + " " + row.getFloat(2))
                                .sorted()
                                .toList());
        session.stop();
        synchronized (meter) {
            long sum = meter.rows.values().stream().mapToLong(Long::longValue).sum();
            double count = links.rows().size();
            System.out.printf("%s: %,d links, %s, %.0f s, %,d jobs, rows shuffled / links %.1f%n",
                name, links.rows().size(), equal ? "equal to the program" : "NOT EQUAL", seconds,
                meter.jobs, sum / count);
            meter.rows.forEach(
                (step, rows) -> System.out.printf("  %-24s %.2f%n", step, rows / count));
            System.out.printf("  largest partition / mean %.2f (%s)%n", meter.skew, meter.skewed);
        }
    }
}
