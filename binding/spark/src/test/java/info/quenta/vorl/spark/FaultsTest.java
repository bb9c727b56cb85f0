package info.quenta.vorl.spark;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import info.quenta.vorl.spark.TestBed.Links;
import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.TreeSet;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.atomic.AtomicInteger;
import org.apache.spark.SparkContext;
import org.apache.spark.TaskKilled;
import org.apache.spark.scheduler.SparkListener;
import org.apache.spark.scheduler.SparkListenerStageSubmitted;
import org.apache.spark.scheduler.SparkListenerTaskEnd;
import org.apache.spark.scheduler.SparkListenerTaskStart;
import org.apache.spark.sql.SparkSession;
import org.junit.jupiter.api.Tag;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** What is lost on the way is done again, and the result is the same. */
class FaultsTest {
    private static final CommunitiesOptions SPREAD = CommunitiesOptions.DEFAULT.withLinksOfTask(0)
                                                         .withStarts(1)
                                                         .withRowsOfDriver(0)
                                                         .withRowsOfTask(0);

    @TempDir Path folder;

    /** The step that a job belongs to, without its start. */
    private static String step(java.util.Properties properties) {
        String description = properties.getProperty("spark.job.description", "");
        return description.replaceFirst("^communities: ", "").replaceFirst("[,(].*", "").strip();
    }

    /** Kills tasks until one was hit in each step. */
    private static final class Killer extends SparkListener {
        private final SparkContext context;
        private final Map<Integer, String> steps = new ConcurrentHashMap<>();
        private final Set<String> hit = ConcurrentHashMap.newKeySet();

        Killer(SparkContext context) { this.context = context; }

        @Override
        public void onStageSubmitted(SparkListenerStageSubmitted event) {
            steps.put(event.stageInfo().stageId(), step(event.properties()));
        }

        @Override
        public void onTaskStart(SparkListenerTaskStart event) {
            if (!hit.contains(steps.get(event.stageId())))
                context.killTaskAttempt(event.taskInfo().taskId(), true, "test");
        }

        @Override
        public void onTaskEnd(SparkListenerTaskEnd event) {
            if (event.reason() instanceof TaskKilled)
                hit.add(steps.get(event.stageId()));
        }
    }

    @Test
    void aKilledTaskInEachStep() throws Exception {
        SparkSession session = TestBed.session("local[2]", 2);
        try {
            Killer killer = new Killer(session.sparkContext());
            session.sparkContext().addSparkListener(killer);
            Links links = Networks.ring(3, 5);
            assertEquals(TestBed.expected(links, folder, "--starts", "1"),
                TestBed.lines(Communities.run(links.on(session), SPREAD)));
            Set<String> steps = new TreeSet<>(killer.steps.values());
            steps.remove("");
            assertTrue(
                steps.containsAll(List.of("reading links", "similarity", "agglomeration",
                    "refinement", "splitting", "merging", "settling", "shares", "numbering")),
                steps.toString());
            assertTrue(killer.hit.containsAll(steps), killer.hit.toString());
        } finally {
            session.stop();
        }
    }

    /** Kills the process of an executor at the first job of some steps. */
    private static final class Lightning extends SparkListener {
        private final Set<String> steps = ConcurrentHashMap.newKeySet();
        private final AtomicInteger struck = new AtomicInteger();

        Lightning() { steps.addAll(List.of("agglomeration", "splitting")); }

        @Override
        public void onStageSubmitted(SparkListenerStageSubmitted event) {
            if (!steps.remove(step(event.properties())))
                return;
            ProcessHandle.current()
                .descendants()
                .filter(process -> process.info().command().orElse("").endsWith("java"))
                .findFirst()
                .ifPresent(process -> {
                    if (process.destroyForcibly())
                        struck.incrementAndGet();
                });
        }
    }

    @Tag("long")
    @Test
    void aLostExecutor() throws Exception {
        SparkSession session = TestBed.session("local-cluster[2,1,512]", 2);
        try {
            // Losses are told as errors.
            session.sparkContext().setLogLevel("OFF");
            Lightning lightning = new Lightning();
            session.sparkContext().addSparkListener(lightning);
            Links links = Networks.ring(2, 5);
            assertEquals(TestBed.expected(links, folder, "--starts", "1"),
                TestBed.lines(Communities.run(links.on(session),
                    SPREAD.withCheckpoints(folder.resolve("checkpoints").toString()))));
            assertEquals(2, lightning.struck.get());
        } finally {
            session.stop();
        }
    }
}
