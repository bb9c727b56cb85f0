package info.quenta.vorl;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

/** Whatever the public methods are given, they answer with an exception and not with a crash. */
class BulkTest {
    @TempDir Path folder;

    private static final Class<NullPointerException> NULL = NullPointerException.class;
    private static final Class<IndexOutOfBoundsException> BOUNDS = IndexOutOfBoundsException.class;
    private static final Class<RuntimeException> FAULT = RuntimeException.class;

    private static void refused(Class<? extends Throwable> type, Executable... calls) {
        for (int i = 0; i < calls.length; ++i)
            assertEquals(type, assertThrows(type, calls[i], "call " + i).getClass());
    }

    private static Graph path() {
        Graph graph = new Graph();
        Bulk.addLinks(graph, false, new int[] {0, 1, 2}, new int[] {1, 2, 3}, null, 3);
        return graph;
    }

    @Test
    void linksAreChecked() {
        Graph graph = path();
        SGraph simple = new SGraph();
        int[] two = {0, 1};
        float[] one = {1};
        refused(NULL,
            ()
                -> Bulk.addLinks(null, false, two, two, null, 2),
            ()
                -> Bulk.addLinks((SGraph) null, false, two, two, 2),
            ()
                -> Bulk.addLinks(graph, false, null, two, null, 2),
            ()
                -> Bulk.addLinks(graph, false, two, null, null, 2),
            () -> Bulk.addLinks(simple, false, two, null, 2));
        refused(BOUNDS,
            ()
                -> Bulk.addLinks(graph, false, two, two, null, 3),
            ()
                -> Bulk.addLinks(graph, false, two, two, null, -1),
            ()
                -> Bulk.addLinks(graph, false, two, new int[1], null, 2),
            ()
                -> Bulk.addLinks(graph, true, two, two, one, 2),
            () -> Bulk.addLinks(simple, true, two, two, Integer.MAX_VALUE));
        assertEquals(4, Bulk.nodes(graph)); // nothing of it was taken
        assertEquals(0, Bulk.nodes(simple));
    }

    @Test
    void graphsAreChecked() {
        Graph deleted = path();
        deleted.delete();
        ClusterOptions options = new ClusterOptions();
        for (Graph graph : new Graph[] {null, deleted})
            refused(NULL,
                ()
                    -> Bulk.nodes(graph),
                ()
                    -> Bulk.fault(graph),
                () -> Bulk.cluster(graph, options), () -> Bulk.evaluate(graph, "c.cnl", "", 1));
        refused(NULL,
            ()
                -> Bulk.cluster(path(), null),
            ()
                -> Bulk.cluster(new SGraph(), null),
            ()
                -> Bulk.evaluate(path(), null, "", 1),
            ()
                -> Bulk.evaluate(path(), "c.cnl", null, 1),
            () -> Bulk.read(null), () -> Bulk.open(null));
        // What the engine would stop the process over.
        options.setGamma(Float.NaN);
        refused(FAULT, () -> Bulk.cluster(path(), options));
        refused(FAULT,
            ()
                -> Bulk.cluster(new Graph(), new ClusterOptions()),
            () -> Bulk.cluster(new SGraph(), new ClusterOptions()));
    }

    @Test
    void levelsAreChecked() throws Exception {
        Hierarchy hierarchy = Bulk.cluster(path(), new ClusterOptions());
        int levels = (Bulk.sizes(hierarchy).length - 2) / 2;
        String file = folder.resolve("x.cnl").toString();
        refused(NULL,
            ()
                -> Bulk.sizes((Hierarchy) null),
            ()
                -> Bulk.members((Hierarchy) null, 0),
            ()
                -> Bulk.owners((SHierarchy) null, 0),
            ()
                -> Bulk.describe(hierarchy, null),
            ()
                -> Bulk.describe((SHierarchy) null, file),
            ()
                -> Bulk.writeLevels(hierarchy, 0, 0, 1, 0xC0, null),
            () -> Bulk.writeLevelsAround(hierarchy, 1, 0xC0, null));
        refused(FAULT,
            ()
                -> Bulk.members(hierarchy, -1),
            ()
                -> Bulk.members(hierarchy, levels + 1),
            ()
                -> Bulk.owners(hierarchy, levels),
            ()
                -> Bulk.writeLevels(hierarchy, 1, 0, 1, 0xC0, file),
            ()
                -> Bulk.writeLevels(hierarchy, 0, levels, 1, 0xC0, file),
            ()
                -> Bulk.writeLevels(hierarchy, -1, -1, 1, 0xC0, file),
            () -> Bulk.writeLevels(hierarchy, 0, 0, Float.NaN, 0xC0, file));
        assertArrayEquals(new String[] {}, folder.toFile().list());
        for (int format = 0; format < 256; ++format) try {
                Bulk.writeLevels(hierarchy, 0, levels - 1, 1, format, file);
            } catch (RuntimeException err) {
                assertTrue(err.getMessage().contains("undefined ClsOutFmt"), err.getMessage());
            }
        assertTrue(Files.exists(folder.resolve("x.rhb")));
        assertThrows(FAULT, () -> Bulk.open(folder + "/none/x"));
    }

    @Test
    void printersWantOpenFiles() {
        Hierarchy hierarchy = Bulk.cluster(path(), new ClusterOptions());
        FileWrapper none = new FileWrapper();
        refused(NULL,
            ()
                -> new RhbPrinter(hierarchy).output(none),
            ()
                -> new RhbPrinter(hierarchy).output(null),
            ()
                -> new CnlPrinter(hierarchy).output(null, (short) 0xC5),
            () -> new Bulk.Files((FileWrapper) null));
        refused(FAULT, () -> new Bulk.Files(none));
        Bulk.Files closed = new Bulk.Files();
        closed.close();
        closed.close();
        refused(NULL, () -> new CnlPrinter(hierarchy).output(closed.list(), (short) 0xC5));
        refused(NULL, () -> hierarchy.unwrap(null));
    }

    /** Shows faults on the trace, on and off. */
    public static final class Shown {
        private Shown() {}

        public static void main(String[] args) {
            StructNodeErrors errors = new StructNodeErrors("repeated: ");
            errors.show(); // none
            errors.add(7);
            boolean on = Bulk.trace(false);
            errors.show();
            Bulk.trace(on);
            errors.add(4294967294L);
            errors.show();
        }
    }

    @Test
    void faultsAreShownOnTheTrace() throws Exception {
        Settings.Outcome run = Settings.run(folder, Map.of(), Settings.tool("java"), "-cp",
            Settings.path("classes") + ":" + Settings.path("jar"), Shown.class.getName());
        assertEquals(List.of("repeated:  7 4294967294"), run.text().lines().toList());
    }
}
