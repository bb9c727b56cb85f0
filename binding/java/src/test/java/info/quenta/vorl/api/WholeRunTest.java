package info.quenta.vorl.api;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import info.quenta.vorl.Settings;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.condition.EnabledIfSystemProperty;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class WholeRunTest {
    @TempDir Path folder;

    private static final Map<String, OutputOptions> OUTPUTS =
        Map.of("all.cnl", OutputOptions.of(OutputOptions.Clusters.ALL), "root.cnl",
            OutputOptions.of(OutputOptions.Clusters.ROOT).shares(OutputOptions.Shares.UNEVEN),
            "significant.cnl",
            OutputOptions.of(OutputOptions.Clusters.SIGNIFICANT).shares(OutputOptions.Shares.NONE),
            "levels.cnl", OutputOptions.perLevel().maxShare(true), "range.cnl",
            OutputOptions.perLevel(1, 99, 0.7), "around.txt",
            OutputOptions.around(8).shares(OutputOptions.Shares.UNEVEN), "tree.rhb",
            OutputOptions.of(OutputOptions.Clusters.HIERARCHY));

    private static final Map<String, String> ARGUMENTS =
        Map.of("all.cnl", "--levels all", "root.cnl", "--levels root --shares uneven",
            "significant.cnl", "--levels significant --shares none", "levels.cnl",
            "--levels per-level --max-share", "range.cnl",
            "--levels per-level --level-min 1 --level-max 99 --level-step 0.7", "around.txt",
            "--levels around --clusters 8 --shares uneven", "tree.rhb", "--levels hierarchy");

    /** Clusters a file and writes the clusters, as a program of its own: ids start anew. */
    public static final class Run {
        private Run() {}

        public static void main(String[] args) {
            try (Network network = Network.read(Path.of(args[0]));
                 Clustering clustering = network.cluster()) {
                OUTPUTS.forEach(
                    (name, options) -> clustering.write(Path.of(args[1], name), options));
            }
        }
    }

    private String program(String arguments) throws Exception {
        List<String> command = new ArrayList<>(List.of(Settings.path("program").toString()));
        command.addAll(List.of(arguments.split(" ")));
        Settings.Outcome run =
            Settings.run(folder, Map.of(), command.toArray(new String[command.size()]));
        assertEquals(0, run.code(), run.text());
        return run.text();
    }

    private static Map<String, String> files(Path folder) throws Exception {
        Map<String, String> texts = new TreeMap<>();
        try (Stream<Path> all = Files.walk(folder)) {
            for (Path file : all.filter(Files::isRegularFile).toList())
                texts.put(folder.relativize(file).toString(), Files.readString(file));
        }
        return texts;
    }

    @ParameterizedTest
    @EnabledIfSystemProperty(named = "vorl.test.program", matches = ".+")
    @ValueSource(
        strings = {"karate.nse", "lesmis.nse", "jazz.nse", "power.nse", "celegansneural.nsa"})
    void
    resultsAreThoseOfTheProgram(String name) throws Exception {
        Path network = Settings.data(name);
        Path ours = folder.resolve("java");
        Path theirs = Files.createDirectory(folder.resolve("program"));
        String classes = Settings.path("classes") + ":" + Settings.path("jar");
        Settings.Outcome run = Settings.run(folder, Map.of(), Settings.tool("java"), "-Xcheck:jni",
            "-cp", classes, Run.class.getName(), network.toString(), ours.toString());
        assertEquals(new Settings.Outcome(0, ""), run);
        for (var output : ARGUMENTS.entrySet())
            assertEquals("",
                program("cluster " + network + " -q " + output.getValue() + " -o "
                    + theirs.resolve(output.getKey())));
        assertEquals(files(theirs), files(ours));

        String told = program("evaluate " + network + " " + ours + "/all.cnl --json --gamma 0.5");
        try (Network read = Network.read(network)) {
            Measures measures = read.evaluate(ours.resolve("all.cnl"), 0.5);
            Map<String, Number> values = Map.of("clusters", measures.clusters(), "conductance",
                measures.conductance(), "modularity", measures.modularity(), "estimated_gamma",
                measures.estimatedGamma(), "modularity_at_estimated_gamma",
                measures.modularityAtEstimatedGamma());
            for (var value : values.entrySet()) {
                Matcher field =
                    Pattern.compile("\"" + value.getKey() + "\": ([^,}]+)").matcher(told);
                assertTrue(field.find(), told);
                assertEquals(Double.parseDouble(field.group(1)), value.getValue().doubleValue(),
                    1e-6, value.getKey());
            }
        }
    }

    @Test
    @EnabledIfSystemProperty(named = "vorl.test.program", matches = ".+")
    void networksClusteredAtOnceAreThoseOfTheProgram() throws Exception {
        List<String> names = List.of("jazz.nse", "power.nse", "celegansneural.nsa", "lesmis.nse");
        OutputOptions whole = OutputOptions.of(OutputOptions.Clusters.HIERARCHY);
        ExecutorService threads = Executors.newFixedThreadPool(names.size());
        List<Callable<String>> calls = new ArrayList<>();
        for (String name : names)
            calls.add(() -> {
                Path file = folder.resolve(name + ".rhb");
                try (Network network = Network.read(Settings.data(name));
                     Clustering clustering = network.cluster()) {
                    clustering.write(file, whole);
                }
                return Files.readString(file);
            });
        List<Future<String>> found = threads.invokeAll(calls);
        threads.shutdown();
        for (int i = 0; i < names.size(); ++i) {
            Path file = folder.resolve("program.rhb");
            program("cluster -q " + Settings.data(names.get(i)) + " -o " + file);
            assertEquals(Files.readString(file), found.get(i).get(), names.get(i));
        }
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
