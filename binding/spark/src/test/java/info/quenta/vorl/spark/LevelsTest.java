package info.quenta.vorl.spark;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import info.quenta.vorl.spark.TestBed.Links;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.TreeMap;
import java.util.TreeSet;
import java.util.stream.Collectors;
import java.util.stream.LongStream;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.SparkSession;
import org.junit.jupiter.api.Tag;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class LevelsTest {
    @TempDir Path folder;

    private String program(String... arguments) throws Exception {
        List<String> command = new ArrayList<>(List.of(System.getProperty("vorl.program")));
        command.addAll(Arrays.asList(arguments));
        Path output = folder.resolve("output");
        Process process =
            new ProcessBuilder(command).inheritIO().redirectOutput(output.toFile()).start();
        assertEquals(0, process.waitFor());
        return Files.readString(output);
    }

    /** Each cluster is one of the program's hierarchy, at the same level, with the same shares. */
    @Test
    void clustersAreThoseOfTheProgramsHierarchy() throws Exception {
        Links links = CommunitiesTest.network("football.nse");
        Path file = folder.resolve("links.csv");
        Path hierarchy = folder.resolve("links.rhb");
        Files.writeString(file, links.text());
        program("communities", "-q", file.toString(), "--hierarchy", hierarchy.toString());

        SparkSession session = TestBed.session("local[2]", 3);
        Dataset<Row> rows = links.on(session);
        CommunitiesOptions options = CommunitiesOptions.DEFAULT;
        Dataset<Row> communities = Communities.run(rows, options);
        Dataset<Row> levels = Levels.of(rows, communities, options);
        Map<Long, Map<Long, List<String>>> found = new TreeMap<>();
        for (Row row : levels.orderBy("level", "cluster", "node").collectAsList())
            found.computeIfAbsent(row.getLong(1), level -> new TreeMap<>())
                .computeIfAbsent(row.getLong(2), cluster -> new ArrayList<>())
                .add(row.getLong(0) + (row.getFloat(3) < 1 ? " shared" : ""));
        assertTrue(found.size() >= 3, found.keySet().toString());
        int above = 0;
        for (var level : found.entrySet()) {
            List<List<String>> expected = new ArrayList<>();
            String cut =
                program("cut", "-q", hierarchy.toString(), "--level", level.getKey().toString());
            for (String line : cut.split("\n"))
                if (!line.startsWith("#"))
                    expected.add(members(line));
            for (List<String> cluster : level.getValue().values())
                assertTrue(expected.contains(cluster), level.getKey() + ": " + cluster);
            if (level.getValue().size() > 1)
                ++above;
        }
        assertTrue(above >= 3);
    }

    /** Names may be texts, and no limit that holds everything changes anything. */
    @Test
    void limitsAndNamesChangeNothing() throws Exception {
        SparkSession session = TestBed.session("local[2]", 2);
        Dataset<Row> links = TestBed.data("football.nse").on(session);
        Dataset<Row> found = Communities.run(links, CommunitiesOptions.DEFAULT);
        List<String> expected = shapes(links, found, 0);
        assertTrue(expected.get(expected.size() - 1).startsWith("[6,"), expected.toString());
        // Names in the order of the numbers.
        links = links.selectExpr("'n' || (1000 + src) AS src", "'n' || (1000 + dst) AS dst");
        found = found.selectExpr("'n' || (1000 + node) AS node", "cluster", "share");
        assertEquals(expected, shapes(links, found, Long.MAX_VALUE));
    }

    /** The level of each row, and what its cluster has there. */
    private static List<String> shapes(
        Dataset<Row> links, Dataset<Row> communities, long linksOfTask) {
        CommunitiesOptions options = CommunitiesOptions.DEFAULT.withLinksOfTask(linksOfTask);
        return Levels.of(links, communities, options)
            .selectExpr("level", "count(*) OVER (PARTITION BY level, cluster)", "share")
            .collectAsList()
            .stream()
            .map(Row::toString)
            .sorted()
            .toList();
    }

    /** Where the network of the communities is too large for the driver, too. */
    @Tag("long")
    @Test
    void communitiesOfCommunities() {
        SparkSession session = TestBed.session("local[2]", 3);
        Dataset<Row> rows = Networks.nested(4).on(session);
        CommunitiesOptions options = CommunitiesOptions.DEFAULT.withLinksOfTask(20);
        Dataset<Row> communities = Communities.run(rows, options.withLinksOfTask(1000));
        Map<Long, Map<Long, Set<Long>>> found = new TreeMap<>();
        for (Row row : Levels.of(rows, communities, options).collectAsList()) {
            assertEquals(1, row.getFloat(3));
            found.computeIfAbsent(row.getLong(1), level -> new TreeMap<>())
                .computeIfAbsent(row.getLong(2), cluster -> new TreeSet<>())
                .add(row.getLong(0));
        }
        List<Set<Set<Long>>> levels =
            found.values().stream().map(level -> Set.copyOf(level.values())).toList();
        int cliques = levels.indexOf(parts(6));
        int groups = levels.indexOf(parts(24));
        assertTrue(0 <= cliques && cliques < groups, found.toString());
        // Each clique is told at one level alone.
        for (var level : levels.subList(cliques + 1, levels.size()))
            for (Set<Long> cluster : level) assertTrue(cluster.size() > 6, found.toString());
    }

    /** 96 nodes, so many next to each other in each. */
    private static Set<Set<Long>> parts(int size) {
        return LongStream.range(0, 96)
            .boxed()
            .collect(Collectors.groupingBy(node -> node / size, Collectors.toSet()))
            .values()
            .stream()
            .collect(Collectors.toSet());
    }

    private static List<String> members(String line) {
        List<String> members = new ArrayList<>();
        for (String cell : line.substring(line.indexOf('>') + 1).trim().split(" ")) {
            String[] parts = cell.split(":");
            members.add(
                parts[0] + (parts.length > 1 && Float.parseFloat(parts[1]) < 1 ? " shared" : ""));
        }
        members.sort(
            (a, b)
                -> Long.compare(Long.parseLong(a.split(" ")[0]), Long.parseLong(b.split(" ")[0])));
        return members;
    }
}
