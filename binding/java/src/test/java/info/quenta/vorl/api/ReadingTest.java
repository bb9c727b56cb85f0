package info.quenta.vorl.api;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import info.quenta.vorl.Settings;
import java.io.ByteArrayOutputStream;
import java.io.UncheckedIOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.NoSuchElementException;
import java.util.TreeMap;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.zip.GZIPOutputStream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.condition.EnabledIfSystemProperty;
import org.junit.jupiter.api.io.TempDir;

/** The same file gives the same network, and the same message, as in the program. */
class ReadingTest {
    @TempDir Path folder;

    private static byte[] bytes(String text) { return text.getBytes(StandardCharsets.ISO_8859_1); }

    private static byte[] packed(String text) throws Exception {
        ByteArrayOutputStream data = new ByteArrayOutputStream();
        try (GZIPOutputStream out = new GZIPOutputStream(data)) {
            out.write(bytes(text));
        }
        return data.toByteArray();
    }

    private Settings.Outcome program(String... arguments) throws Exception {
        List<String> command = new java.util.ArrayList<>(List.of(arguments));
        command.add(0, Settings.path("program").toString());
        return Settings.run(folder, Map.of(), command.toArray(String[] ::new));
    }

    private void assertRead(String name, byte[] contents, double weight, boolean directed,
        String warning) throws Exception {
        Path file = Files.write(folder.resolve(name), contents);
        Path clusters = Files.writeString(folder.resolve("c.cnl"), "0 1\n2\n");
        try (Network network = Network.read(file); Clustering clustering = network.cluster()) {
            assertEquals(weight, clustering.weight(), 1e-6, name);
            assertEquals(directed, network.directed(), name);
            String warnings = String.join("\n", network.warnings());
            assertTrue(
                warning.isEmpty() ? warnings.isEmpty() : warnings.contains(warning), warnings);

            Measures measures = network.evaluate(clusters, 1);
            Settings.Outcome told =
                program("evaluate", "-q", "--json", file.toString(), clusters.toString());
            assertEquals(0, told.code(), told.text());
            for (float value : new float[] {measures.conductance(), measures.modularity()}) {
                var number =
                    java.util.regex.Pattern.compile(": (-?[0-9][^,}]*)").matcher(told.text());
                assertTrue(
                    number.results().anyMatch(found -> Float.parseFloat(found.group(1)) == value),
                    told.text());
            }
        }
    }

    @Test
    @EnabledIfSystemProperty(named = "vorl.test.program", matches = ".+")
    void resultsAreThoseOfTheProgram() throws Exception {
        assertRead("weights.nse", bytes("0 1 .5\n1 2 0.25\n2 0 1\n"), 3.5, false, "");
        assertRead("plain.nsa", bytes("0 1 100\n1 2\n2 0 2\n"), 103, true, "");
        assertRead("unweighted.nsa",
            bytes("# Nodes: 3, Arcs: 3, Weighted: 0\n0 1 100\n1 2\n2 0 2\n"), 3, true, "");
        assertRead("arcs.nse", bytes("# Nodes: 3, Arcs: 3\n0 1\n1 2\n2 0\n"), 3, true, "ARCS");
        assertRead("arcs.rcg", bytes("/Graph weighted:0\n/Arcs\n0> 1\n1> 2\n2> 0\n"), 3, true, "");
        assertRead("both.rcg", bytes("/Edges\n0> 1:2\n/Arcs\n1> 2:3\n"), 7, true, "");
        assertRead("dos.nse", bytes("\u00ef\u00bb\u00bf0 1 2\r\n1 2\r\n2 0"), 8, false, "");
        assertRead("zero.nse", bytes("0 1 0\n1 2 2\n"), 6, false,
            "1 link of weight 0 counts as 1, the first in line 1");
        assertRead("twice.nse", bytes("0 1\n1 0\n1 2\n"), 4, false,
            "1 edge repeats an earlier one, and is left out");
        assertRead("packed.nse.gz", packed("0 1\n1 2 3\n"), 8, false, "");
        assertRead("packed.rcg", packed("/Edges\n0> 1 2\n"), 4, false, "");
    }

    private void assertRefused(String name, byte[] contents, String reason) throws Exception {
        Path file = Files.write(folder.resolve(name), contents);
        String message = assertThrows(VorlException.class, () -> Network.read(file)).getMessage();
        assertTrue(message.startsWith(file + reason), message);
        Settings.Outcome told = program("cluster", "-q", file.toString());
        assertNotEquals(0, told.code());
        assertTrue(told.text().startsWith("vorl: " + message), told.text());
    }

    @Test
    @EnabledIfSystemProperty(named = "vorl.test.program", matches = ".+")
    void messagesAreThoseOfTheProgram() throws Exception {
        assertRefused("x.dat", bytes("hello\n"), ": the format can't be told from the name");
        assertRefused("empty.nse", bytes(""), ": the file is empty");
        assertRefused("none.nse", bytes("# a comment\n"), ":1: the file ends without a link");
        assertRefused("word.nse", bytes("0 1\r\n1 two\r\n"), ":2: the destination is \"two\"");
        assertRefused("minus.nse", bytes("1 2 -5\n"), ":1: the weight is \"-5\"");
        assertRefused("nan.nse", bytes("1 2 nan\n"), ":1: the weight is \"nan\"");
        assertRefused("nul.nse", bytes("1 2\n\0\n"), ":2: a NUL byte");
        assertRefused("much.nse", bytes("1 2 3e38\n"), ": the weights add up to more");
        assertRefused("nodes.nse", bytes("# Nodes: 2\n0 1\n1 2\n"), ":1: the header tells of 2");
        assertRefused("none.rcg", bytes("/Nodes 0 0\n/Edges\n0> 1\n"), ":1: the header tells of 0");
        // Of a byte that is no UTF-8 the JVM is told as one that can't be read.
        assertRefused("latin.rcg", bytes("/Gr\u00e4ph\n"), ":1: the section \"/Gr\ufffdph\"");
        byte[] whole = packed("0 1\n1 2 3\n");
        assertRefused("cut.nse.gz", java.util.Arrays.copyOf(whole, whole.length - 3),
            ": the gzip data ends early");
    }

    @Test
    void filesThatAreNotThereAreTold() {
        Path none = folder.resolve("none.nse");
        UncheckedIOException err =
            assertThrows(UncheckedIOException.class, () -> Network.read(none));
        assertEquals(none + ": No such file or directory", err.getMessage());
        assertEquals(NoSuchFileException.class, err.getCause().getClass());
        assertTrue(assertThrows(VorlException.class, () -> Network.read(folder))
                       .getMessage()
                       .startsWith(folder.toString()));
    }

    /** Reads, clusters, writes and measures in a process of its own. */
    public static final class Run {
        private Run() {}

        public static void main(String[] args) {
            Path clusters = Path.of(args[1]);
            try (Network network = Network.read(Path.of(args[0]));
                 Clustering clustering = network.cluster()) {
                clustering.write(clusters, OutputOptions.of(OutputOptions.Clusters.ALL));
                clustering.write(clusters, OutputOptions.perLevel());
                System.out.println(clustering.weight() + " " + clustering.score());
                System.out.println(network.evaluate(clusters, 0.5));
                System.out.println(network.evaluate(Path.of(args[2]), 1));
            }
            // Repeated links, which the library traces.
            Network.builder().edge(1, 2).edge(2, 1).edge(1, 2).build().close();
        }
    }

    private Settings.Outcome run(Map<String, String> environment, Path network, Path out)
        throws Exception {
        Path shares = Files.writeString(folder.resolve("shares.cnl"), "0 1:.25 2\n1:.75 3\n");
        return Settings.run(folder, environment, Settings.tool("java"), "-Xcheck:jni", "-cp",
            Settings.path("classes") + ":" + Settings.path("jar"), Run.class.getName(),
            network.toString(), out.toString(), shares.toString());
    }

    @Test
    void nothingIsPrintedAndNoNumberFollowsTheLocale() throws Exception {
        Path locales = Files.createDirectory(folder.resolve("locales"));
        Path source = Files.writeString(folder.resolve("source"),
            "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\nEND LC_NUMERIC\n");
        // It warns of the categories that are left out, and fails then.
        Settings.run(folder, Map.of(), "localedef", "-c", "-i", source.toString(),
            locales.resolve("vorl_COMMA").toString());
        Map<String, String> comma = Map.of("LC_ALL", "vorl_COMMA", "LOCPATH", locales.toString());
        assertEquals("2,5", Settings.run(folder, comma, "/usr/bin/printf", "%.1f", "2,5").text());
        Path network =
            Files.writeString(folder.resolve("n.nse"), "0 1 .5\n1 2 0.75\n2 0 1.25e0\n2 3 5.\n");
        Path clusters = folder.resolve("comma.cnl");
        Path point = folder.resolve("point.cnl");
        Settings.Outcome expected = run(Map.of("LC_ALL", "C"), network, point);
        assertEquals(0, expected.code());
        assertTrue(expected.text().startsWith("15.0 "), expected.text());
        assertEquals(3, expected.text().lines().count(), expected.text()); // what it prints itself
        assertEquals(expected, run(comma, network, clusters));
        assertEquals(Files.readString(point), Files.readString(clusters));
        assertEquals(Files.readString(folder.resolve("point.rhb")),
            Files.readString(folder.resolve("comma.rhb")));
    }

    @EnabledIfSystemProperty(named = "vorl.test.program", matches = ".+")
    @Test
    void communitiesAreThoseOfTheProgram() throws Exception {
        for (String name : List.of("karate.nse", "lesmis.nse", "celegansneural.nsa")) {
            Path table = folder.resolve(name + ".tsv");
            Settings.Outcome outcome = program("communities", "--json",
                Settings.data(name).toString(), "--table", table.toString());
            assertEquals(0, outcome.code(), outcome.text());
            try (Network network = Network.read(Settings.data(name))) {
                Communities found = network.communities();
                StringBuilder text = new StringBuilder();
                Map<Integer, List<Member>> members = new TreeMap<>();
                for (long node : found.nodes())
                    for (Communities.Part part : found.of(node)) {
                        text.append(node).append(' ').append(part.community()).append(' ');
                        text.append(part.share()).append('\n');
                        members.computeIfAbsent(part.community(), key -> new ArrayList<>())
                            .add(new Member(node, part.share()));
                    }
                assertEquals(List.copyOf(members.values()), found.members());
                StringBuilder expected = new StringBuilder();
                List<String> lines = Files.readAllLines(table);
                for (String line : lines.subList(1, lines.size())) {
                    String[] cells = line.split("\t");
                    expected.append(cells[0]).append(' ').append(cells[1]).append(' ');
                    expected.append(Float.parseFloat(cells[2])).append('\n');
                }
                assertEquals(expected.toString(), text.toString());
                assertThrows(NoSuchElementException.class, () -> found.of(1L << 20));
                Communities.Score score = found.score();
                Map<String, Double> figures = Map.of("modularity", score.modularity(),
                    "estimated_gamma", score.estimatedGamma(), "conductance", score.conductance(),
                    "saving_bits", score.saving(), "naming_bits", score.naming(), "starts",
                    (double) score.starts(), "rounds", (double) score.rounds());
                figures.forEach((key, value) -> {
                    Matcher told =
                        Pattern.compile("\"" + key + "\": ([-+.e0-9]+)").matcher(outcome.text());
                    assertTrue(told.find(), outcome.text());
                    assertEquals(Double.parseDouble(told.group(1)), value, 1e-8 * Math.abs(value));
                });
                assertTrue(outcome.text().contains("\"start\": \"" + score.start() + "\""));
                Communities whole = network.communities(new CommunitiesOptions(false, 1, 1));
                for (long node : whole.nodes())
                    assertEquals(
                        List.of(1f), whole.of(node).stream().map(part -> part.share()).toList());
            }
        }
        assertThrows(IllegalArgumentException.class, () -> new CommunitiesOptions(true, -1, 0));
    }
}
