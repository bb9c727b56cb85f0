package info.quenta.vorl.api;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import info.quenta.vorl.Settings;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Map;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.condition.EnabledIfSystemProperty;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class WholeRunTest {
    @TempDir Path folder;

    /** Clusters a file and writes the hierarchy, as a program of its own: ids start anew. */
    public static final class Run {
        private Run() {}

        public static void main(String[] args) {
            try (Network network = Network.read(Path.of(args[0]));
                 Clustering clustering = network.cluster()) {
                clustering.write(
                    Path.of(args[1]), OutputOptions.of(OutputOptions.Clusters.HIERARCHY));
            }
        }
    }

    @ParameterizedTest
    @EnabledIfSystemProperty(named = "vorl.test.program", matches = ".+")
    @ValueSource(
        strings = {"karate.nse", "lesmis.nse", "jazz.nse", "power.nse", "celegansneural.nsa"})
    void
    resultsAreThoseOfTheProgram(String name) throws Exception {
        Path network = Settings.data(name);
        Path ours = folder.resolve("java.rhb");
        Path theirs = folder.resolve("program.rhb");
        String classes = Settings.path("classes") + ":" + Settings.path("jar");
        Settings.Outcome run = Settings.run(folder, Map.of(), Settings.tool("java"), "-Xcheck:jni",
            "-cp", classes, Run.class.getName(), network.toString(), ours.toString());
        assertEquals(new Settings.Outcome(0, ""), run);
        run = Settings.run(folder, Map.of(), Settings.path("program").toString(), "cluster",
            network.toString(), "-q", "--levels", "hierarchy", "-o", theirs.toString());
        assertEquals(new Settings.Outcome(0, ""), run);
        assertTrue(Files.size(ours) > 100);
        assertEquals(-1, Files.mismatch(ours, theirs));
    }

    @Test
    void theExampleRunsAsItsUserWouldRunIt() throws Exception {
        String jar = Settings.path("jar").toString();
        Path source = Settings.path("examples").resolve("Communities.java");
        Settings.Outcome run = Settings.run(folder, Map.of(), Settings.tool("javac"), "-cp", jar,
            "-d", folder.toString(), source.toString());
        assertEquals(new Settings.Outcome(0, ""), run);
        run = Settings.run(folder, Map.of(), Settings.tool("java"), "-cp", jar + ":" + folder,
            "Communities", Settings.data("karate.nse").toString(), "9");
        assertEquals(new Settings.Outcome(0,
                         "34 nodes, 7 levels, 4 clusters at the root, modularity 0.4126\n"
                             + "1.00 of node 9 in cluster 24 with 11 nodes\n"),
            run);
    }
}
