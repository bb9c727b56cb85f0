package info.quenta.vorl.api;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import info.quenta.vorl.Settings;
import java.io.UncheckedIOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.NoSuchElementException;
import java.util.TreeMap;
import java.util.stream.LongStream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class ApiTest {
    @TempDir Path folder;

    /** Two triangles that are joined by one edge. */
    private static Network.Builder triangles() {
        return Network.builder()
            .edges(new long[] {0, 1, 2, 3, 4, 5}, new long[] {1, 2, 0, 4, 5, 3})
            .edge(2, 3);
    }

    /** The members of all clusters by level, with their shares. */
    private static List<List<List<Member>>> shape(Clustering clustering) {
        return clustering.levels()
            .stream()
            .map(
                level -> level.clusters().stream().map(Cluster::members).map(List::copyOf).toList())
            .toList();
    }

    @Test
    void clustersWhatIsBuiltByHand() {
        try (Network network = triangles().build();
             Clustering clustering = network.cluster(Options.builder().gamma(1).build())) {
            assertEquals(6, network.nodeCount());
            assertFalse(network.directed());
            assertEquals(14, clustering.weight());
            assertEquals(2, clustering.root().size());
            List<Long> first = clustering.root()
                                   .clusters()
                                   .get(0)
                                   .members()
                                   .stream()
                                   .map(Member::node)
                                   .sorted()
                                   .toList();
            assertEquals(List.of(0L, 1L, 2L), first);
            Score score = clustering.score();
            assertEquals(5f / 14, score.modularity(), 1e-6);
            assertEquals(
                clustering.levels().stream().mapToInt(Level::size).sum(), score.clusters());
        }
    }

    @ParameterizedTest
    @ValueSource(strings = {"karate.nse", "lesmis.nse", "jazz.nse", "celegansneural.nsa"})
    void walksAgree(String name) throws Exception {
        try (Network network = Network.read(Settings.data(name));
             Clustering clustering = network.cluster()) {
            // The shares of each node at the root add up to 1.
            Map<Long, Float> shares = new HashMap<>();
            for (Cluster cluster : clustering.root().clusters())
                for (Member member : cluster.members())
                    shares.merge(member.node(), member.share(), Float::sum);
            assertEquals(clustering.nodeCount(), shares.size());
            for (float sum : shares.values()) assertEquals(1, sum, 1e-4);

            // What climbs from a node along its owners is what the root says of the node.
            for (long node : shares.keySet()) {
                Map<Cluster, Double> reached = new HashMap<>();
                climb(clustering.memberships(node), 1, reached);
                List<Membership> told = clustering.root().memberships(node);
                assertEquals(reached.size(), told.size());
                for (Membership m : told)
                    assertEquals(reached.get(m.cluster()), m.share(), 1e-4, "node " + node);
            }

            // A cluster holds a node if and only if the node's own list holds the cluster.
            for (Level level : clustering.levels())
                for (Cluster cluster : level.clusters()) {
                    assertEquals(level.index(), cluster.level());
                    Member some = cluster.members().get(cluster.size() / 2);
                    assertTrue(level.memberships(some.node())
                                   .contains(new Membership(cluster, some.share())));
                }
        }
    }

    private static void climb(
        List<Membership> memberships, double share, Map<Cluster, Double> reached) {
        for (Membership m : memberships) {
            List<Membership> owners = m.cluster().owners();
            if (owners.isEmpty())
                reached.merge(m.cluster(), share * m.share(), Double::sum);
            else
                climb(owners, share * m.share(), reached);
        }
    }

    @Test
    void aNetworkCanBeClusteredAgain() {
        Clustering first;
        try (Network network = Network.read(Settings.data("lesmis.nse"))) {
            first = network.cluster();
            try (Clustering second = network.cluster();
                 Clustering coarse = network.cluster(Options.builder().gamma(0).build())) {
                assertEquals(shape(first), shape(second));
                assertEquals(first.score(), second.score());
                assertEquals(1, coarse.root().size());
            }
        }
        assertTrue(first.root().size() > 1); // outlives the network
        first.close();
    }

    @Test
    void whatIsBuiltEqualsWhatIsRead() throws Exception {
        for (String name : List.of("lesmis.nse", "celegansneural.nsa", "karate.nse")) {
            Network.Builder builder = Network.builder();
            for (String line : Files.readAllLines(Settings.data(name))) {
                if (line.isBlank() || line.startsWith("#"))
                    continue;
                String[] part = line.trim().split("\\s+");
                double weight = part.length > 2 ? Double.parseDouble(part[2]) : 1;
                if (name.endsWith("nsa"))
                    builder.arc(Long.parseLong(part[0]), Long.parseLong(part[1]), weight);
                else
                    builder.edge(Long.parseLong(part[0]), Long.parseLong(part[1]), weight);
            }
            try (Network read = Network.read(Settings.data(name)); Network built = builder.build();
                 Clustering one = read.cluster(); Clustering other = built.cluster()) {
                assertEquals(read.directed(), built.directed());
                assertEquals(one.weight(), other.weight());
                assertEquals(shape(one), shape(other), name);
            }
        }
    }

    @Test
    void idsHaveTheWholeRange() {
        try (Network network =
                 Network.builder().edge(0, Network.MAX_ID).edge(0x80000000L, 5, 2).build();
             Clustering clustering = network.cluster()) {
            TreeMap<Long, Integer> clusters = new TreeMap<>();
            for (long node : new long[] {0, 5, 0x80000000L, Network.MAX_ID})
                clusters.put(node, clustering.root().memberships(node).size());
            assertEquals(Map.of(0L, 1, 5L, 1, 0x80000000L, 1, Network.MAX_ID, 1), clusters);
            assertEquals(Network.MAX_ID,
                clustering.memberships(Network.MAX_ID)
                    .get(0)
                    .cluster()
                    .members()
                    .stream()
                    .mapToLong(Member::node)
                    .max()
                    .getAsLong());
            for (long unknown : new long[] {1, 6, -1, 0xFFFFFFFFL, Long.MIN_VALUE}) {
                assertThrows(NoSuchElementException.class, () -> clustering.memberships(unknown));
                assertThrows(
                    NoSuchElementException.class, () -> clustering.root().memberships(unknown));
            }
        }
    }

    @Test
    void writesWhatCanBeReadBack() throws Exception {
        try (Network network = Network.read(Settings.data("jazz.nse"));
             Clustering clustering = network.cluster()) {
            Path file = folder.resolve("new/jazz.cnl");
            clustering.write(file, OutputOptions.of(OutputOptions.Clusters.ROOT));
            List<String> rows =
                Files.readAllLines(file).stream().filter(l -> !l.startsWith("#")).toList();
            assertEquals(clustering.root().size(), rows.size());
            List<Cluster> clusters = clustering.root().clusters();
            for (int i = 0; i < rows.size(); ++i) {
                String[] part = rows.get(i).trim().split(" ");
                assertEquals(clusters.get(i).id() + ">", part[0]);
                List<Long> ids = List.of(part)
                                     .subList(1, part.length)
                                     .stream()
                                     .map(text -> Long.parseLong(text.split(":")[0]))
                                     .toList();
                assertEquals(clusters.get(i).members().stream().map(Member::node).toList(), ids);
            }
            assertTrue(Files.readString(folder.resolve("new/jazz.rhb")).startsWith("/Hierarchy "));

            Path simple = folder.resolve("simple.cnl");
            clustering.write(simple,
                OutputOptions.of(OutputOptions.Clusters.SIGNIFICANT)
                    .shares(OutputOptions.Shares.NONE)
                    .maxShare(true));
            assertFalse(Files.readString(simple).replaceFirst("#.*\n", "").contains(":"));
            Path denied = Files.createFile(folder.resolve("file")).resolve("x.cnl");
            assertThrows(UncheckedIOException.class,
                () -> clustering.write(denied, OutputOptions.of(OutputOptions.Clusters.ALL)));
        }
    }

    private List<String> written(Clustering clustering, OutputOptions options) throws Exception {
        Path target = Files.createTempDirectory(folder, "out");
        clustering.write(target.resolve("x.cnl"), options);
        try (var files = Files.list(target.resolve("x"))) {
            return files.map(file -> file.getFileName().toString()).sorted().toList();
        }
    }

    @Test
    void levelsAreSelected() throws Exception {
        try (Network network = Network.read(Settings.data("karate.nse"));
             Clustering clustering = network.cluster()) {
            assertEquals(7, clustering.levels().size());
            assertEquals(7, written(clustering, OutputOptions.perLevel()).size());
            assertEquals(
                List.of("x_2.cnl", "x_3.cnl"), written(clustering, OutputOptions.perLevel(2, 3)));
            assertEquals(List.of("x_0.cnl", "x_5.cnl"),
                written(clustering, OutputOptions.perLevel(0, 6, 0.3)));
            List<Long> sizes = clustering.levels().stream().map(Level::itemCount).toList();
            assertEquals(List.of(17L, 13L, 10L, 7L, 6L, 5L, 4L), sizes);
            assertEquals(
                List.of("x_2.cnl", "x_3.cnl"), written(clustering, OutputOptions.around(8)));
            assertEquals(
                List.of("x_0.cnl"), written(clustering, OutputOptions.around(Network.MAX_ID)));
            assertThrows(
                VorlException.class, () -> written(clustering, OutputOptions.perLevel(7, 9)));
        }
        for (double step : new double[] {-0.1, 1.1, Double.NaN})
            assertThrows(IllegalArgumentException.class, () -> OutputOptions.perLevel(0, 1, step));
        assertThrows(IllegalArgumentException.class, () -> OutputOptions.perLevel(2, 1));
        assertThrows(IllegalArgumentException.class, () -> OutputOptions.around(0));
    }

    @Test
    void aClusteringWithoutLevelsCanBeDescribed() throws Exception {
        try (Network network = Network.builder().edge(1, 1, 5).edge(1, 2).build();
             Clustering clustering = network.cluster()) {
            assertTrue(clustering.levels().isEmpty());
            Path file = folder.resolve("new/lone.rhb");
            clustering.write(file, OutputOptions.of(OutputOptions.Clusters.HIERARCHY));
            assertTrue(Files.readString(file).contains("/Nodes 2"));
            assertThrows(VorlException.class,
                ()
                    -> clustering.write(
                        folder.resolve("lone.cnl"), OutputOptions.of(OutputOptions.Clusters.ALL)));
        }
    }

    @Test
    void fileNamesArriveAsTheyAre() throws Exception {
        Path umlaut = Files.writeString(folder.resolve("n\u00e4tz.nse"), "1 2\n");
        try (Network network = Network.read(umlaut); Clustering clustering = network.cluster()) {
            Path out = folder.resolve("\u4e2d.cnl");
            clustering.write(out, OutputOptions.of(OutputOptions.Clusters.ALL));
            assertTrue(Files.size(out) > 0);
        }
        Path beyond = Files.writeString(folder.resolve("\ud83d\ude00.nse"), "1 2\n");
        assertTrue(assertThrows(VorlException.class, () -> Network.read(beyond))
                       .getMessage()
                       .contains("beyond U+FFFF"));
    }

    private Path clusters(String text) throws Exception {
        return Files.writeString(folder.resolve("c.cnl"), text);
    }

    @Test
    void clustersOfAFileAreMeasured() throws Exception {
        try (Network network = triangles().build()) {
            // Of the weight 14 each triangle holds 6 and has a cut of 1.
            Measures expected = new Measures(2, 1f / 7, 12f / 14 - 0.5f, 0, 0);
            for (String text :
                List.of("0 1 2\n3 4 5\n", "# Clusters: 9, Nodes: 1\r\n0 2 1\r\n5 4 3",
                    "# Numbered: 1\n7> 0:1 1 2\n\n8> 3 4 5:0.5\n")) {
                Measures measures = network.evaluate(clusters(text), 1);
                assertEquals(expected.clusters(), measures.clusters());
                assertEquals(expected.conductance(), measures.conductance(), 1e-6);
                assertEquals(expected.modularity(), measures.modularity(), 1e-6);
            }
            // The same shares: even, stated, stated in part, and not adding up to 1.
            Measures even = network.evaluate(clusters("0 1 2 3\n2 3 4 5\n"), 1);
            for (String text : List.of("0 1 2:0.5 3\n2:0.5 3 4 5\n", "0 1 2:0.5 3\n2 3 4 5\n",
                     "0 1 2:0.3 3:0.1\n2:0.3 3:0.1 4 5\n", "0 1 2:1 3\n2 3:1 4 5\n"))
                assertEquals(even, network.evaluate(clusters(text), 1), text);
            Measures uneven = network.evaluate(clusters("0 1 2 3:0.2\n2 3:0.8 4 5\n"), 1);
            assertTrue(uneven.modularity() > even.modularity());

            assertUnmeasured(network, "0 1\n2 3 2\n", "c.cnl:2: ");
            assertUnmeasured(network, "0 1 9\n", "c.cnl:1: the node 9 isn't in the network");
            assertUnmeasured(network, "0 1\n2 3:1.5", "c.cnl:2: the share of node 3 is \"1.5\"");
            assertUnmeasured(network, "0 +1\n", "c.cnl:1: the node is \"+1\"");
            assertUnmeasured(network, "4294967295\n", "an id below 4294967295 is expected");
            assertUnmeasured(network, "# Clusters: 0\n", "there are no clusters");
            assertThrows(
                UncheckedIOException.class, () -> network.evaluate(folder.resolve("none.cnl"), 1));
            for (double gamma : new double[] {-1, Double.NaN, Double.POSITIVE_INFINITY})
                assertThrows(IllegalArgumentException.class,
                    () -> network.evaluate(clusters("0 1\n"), gamma));
            try (Clustering clustering = network.cluster()) { // it is still whole
                assertEquals(14, clustering.weight());
            }
        }
    }

    @Test
    void clustersOfEachFormatAreMeasured() throws Exception {
        try (
            Network apart = Network.builder()
                                .edges(new long[] {0, 1, 2, 3, 4, 5}, new long[] {1, 2, 0, 4, 5, 3})
                                .build()) {
            // Each pair holds 2 of the weight 12, and 2 lead out of it.
            Measures pairs = apart.evaluate(clusters("0 1\n3 4\n"), 1);
            assertEquals(0.5, pairs.conductance(), 1e-6);
            assertEquals(2 * (2. / 12 - 1. / 9), pairs.modularity(), 1e-6);
        }
        try (Network network = triangles().build(); Clustering clustering = network.cluster()) {
            clustering.write(
                folder.resolve("x.rhb"), OutputOptions.of(OutputOptions.Clusters.HIERARCHY));
            Path table = Files.writeString(
                folder.resolve("x.tsv"), "node\tcluster\n0\ta\n1\ta\n2\ta\n3\tb\n4\tb\n5\tb\n");
            Measures listed = network.evaluate(clusters("0 1 2\n3 4 5\n"), 1);
            assertEquals(listed, network.evaluate(folder.resolve("x.rhb"), 1));
            assertEquals(listed, network.evaluate(table, 1));
            assertTrue(Float.isNaN(network.evaluate(clusters("0 1 2 3 4 5\n"), 1).conductance()));
        }
    }

    private void assertUnmeasured(Network network, String text, String reason) throws Exception {
        Path file = clusters(text);
        String message =
            assertThrows(VorlException.class, () -> network.evaluate(file, 1)).getMessage();
        assertTrue(message.startsWith(file.toString()) && message.contains(reason), message);
    }

    @Test
    void badInputIsRefused() throws Exception {
        Network.Builder builder = Network.builder();
        for (long id : new long[] {-1, Network.MAX_ID + 1, Long.MAX_VALUE})
            assertThrows(IllegalArgumentException.class, () -> builder.edge(id, 1));
        for (double weight : new double[] {-1, Double.NaN, Double.POSITIVE_INFINITY, 1e39})
            assertThrows(IllegalArgumentException.class, () -> builder.edge(1, 2, weight));
        assertThrows(IllegalArgumentException.class, () -> builder.arcs(new long[1], new long[2]));
        assertThrows(VorlException.class, builder::build); // nothing of it was taken
        assertThrows(VorlException.class, () -> Network.builder().edge(1, 2, 0).build());
        assertThrows(
            VorlException.class, () -> Network.builder().edge(1, 2, 3e38).edge(2, 3, 3e38).build());
        for (double gamma :
            new double[] {Double.NaN, Double.POSITIVE_INFINITY, Double.NEGATIVE_INFINITY, 1e39})
            assertThrows(IllegalArgumentException.class, () -> Options.builder().gamma(gamma));
        assertThrows(IllegalArgumentException.class,
            () -> Options.builder().gainMargin(Double.NEGATIVE_INFINITY));
        assertThrows(IllegalArgumentException.class, () -> Options.builder().rootMax(65536));
    }

    @Test
    void resolutionsAboveOneSplitFurther() {
        try (Network network = Network.read(Settings.data("karate.nse"));
             Clustering plain = network.cluster(Options.builder().gamma(1).build());
             Clustering fine = network.cluster(Options.builder().gamma(3).build())) {
            assertTrue(fine.root().size() > plain.root().size());
            assertEquals(3, fine.score().gamma());
        }
    }

    @Test
    void linksWithoutWeightAddNone() {
        Network.Builder builder = Network.builder();
        for (int first : new int[] {0, 3})
            for (int i = 0; i < 3; ++i) builder.edge(first + i, first + (i + 1) % 3, 0.2);
        for (int i = 0; i < 9; ++i) builder.edge(i / 3, 3 + i % 3, 0);
        try (Network network = builder.build(); Clustering clustering = network.cluster()) {
            assertEquals(2.4, clustering.weight(), 1e-6);
            assertEquals(2, clustering.root().size());
            for (Cluster cluster : clustering.root().clusters())
                assertEquals(
                    1, cluster.members().stream().map(m -> m.node() / 3).distinct().count());
        }
    }

    @Test
    void unusualNetworksAreClustered() {
        List<Network.Builder> all =
            List.of(Network.builder().edge(1, 1), Network.builder().edge(1, 2),
                Network.builder().arc(1, 2).arc(2, 1, 3).edge(2, 3).edge(3, 3, 2),
                Network.builder().edge(1, 2, 0).edge(2, 3, 1).edge(4, 5, 0),
                Network.builder().edge(1, 2).edge(1, 2).edge(2, 1).edge(3, 4),
                triangles().arcs(new long[] {9}, new long[] {0}, new float[] {0.5f}));
        for (Network.Builder builder : all)
            for (Options.Validation validation : Options.Validation.values())
                try (Network network = builder.build();
                     Clustering clustering =
                         network.cluster(Options.builder().validation(validation).build())) {
                    long members = clustering.root()
                                       .clusters()
                                       .stream()
                                       .flatMap(c -> c.members().stream())
                                       .mapToLong(Member::node)
                                       .distinct()
                                       .count();
                    assertEquals(network.nodeCount(), members);
                }
    }

    @Test
    void useAfterCloseIsAnIllegalState() {
        Network network = triangles().build();
        Clustering clustering = network.cluster();
        Level level = clustering.levels().get(0);
        Cluster cluster = clustering.root().clusters().get(0);
        Cluster owned = clustering.memberships(0).get(0).cluster();
        network.close();
        network.close();
        clustering.close();
        clustering.close();
        assertThrows(IllegalStateException.class, network::cluster);
        assertThrows(IllegalStateException.class, network::nodeCount);
        assertThrows(IllegalStateException.class, clustering::levels);
        assertThrows(IllegalStateException.class, clustering::root);
        assertThrows(IllegalStateException.class, clustering::score);
        assertThrows(IllegalStateException.class, () -> clustering.memberships(0));
        assertThrows(IllegalStateException.class,
            () -> clustering.write(folder, OutputOptions.of(OutputOptions.Clusters.ALL)));
        assertThrows(IllegalStateException.class, level::clusters);
        assertThrows(IllegalStateException.class, cluster::members);
        assertThrows(IllegalStateException.class, owned::size);
        assertThrows(IllegalStateException.class, owned::owners);
    }

    private static long residentMegabytes() throws Exception {
        for (String line : Files.readAllLines(Path.of("/proc/self/status")))
            if (line.startsWith("VmRSS:"))
                return Long.parseLong(line.replaceAll("\\D", "")) / 1024;
        throw new AssertionError("no VmRSS");
    }

    @Test
    void whatIsNotClosedIsFreedByTheCollector() throws Exception {
        long[] a = LongStream.range(0, 50_000).toArray();
        long[] b = LongStream.range(1, 50_001).toArray();
        Network.Builder builder = Network.builder().edges(a, b);
        long before = residentMegabytes();
        for (int i = 0; i < 100; ++i) { // some 10 MiB each
            builder.build();
            System.gc();
        }
        for (int i = 0; i < 50 && residentMegabytes() - before > 200; ++i) {
            System.gc();
            Thread.sleep(100);
        }
        long grown = residentMegabytes() - before;
        assertTrue(grown <= 200, "grown by " + grown + " MiB");
    }

    @Test
    void threadsMayClusterAndCloseAtOnce() throws Exception {
        try (Network network = Network.read(Settings.data("jazz.nse"));
             Clustering expected = network.cluster()) {
            var shape = shape(expected);
            var failures = new java.util.concurrent.ConcurrentLinkedQueue<Throwable>();
            List<Thread> threads = LongStream.range(0, 4)
                                       .mapToObj(i -> new Thread(() -> {
                                           try (Clustering one = network.cluster()) {
                                               assertEquals(shape, shape(one));
                                           } catch (Throwable err) {
                                               failures.add(err);
                                           }
                                       }))
                                       .toList();
            threads.forEach(Thread::start);
            for (Thread thread : threads) thread.join();
            assertEquals(List.of(), List.copyOf(failures));
        }
    }
}
