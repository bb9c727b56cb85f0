package info.quenta.vorl;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.Test;

class LifetimeTest {
    private static Graph triangle() {
        Graph graph = new Graph();
        graph.addNodes(3);
        graph.addEdge(0, 1);
        graph.addEdge(1, 2);
        graph.addEdge(0, 2);
        return graph;
    }

    @Test
    void hierarchyOutlivesItsGraphAndItsPointer() {
        Graph graph = triangle();
        HierarchyPtr pointer = graph.buildHierarchy();
        Hierarchy hierarchy = graph.hierarchy();
        pointer.delete();
        graph.delete();
        assertEquals(6, hierarchy.weight());
        assertTrue(hierarchy.edges());
        hierarchy.delete();
    }

    @Test
    void aPointerIsAnObjectOfItsKind() {
        GraphPtr moved = triangle().toSharedPtr();
        HierarchyPtr hierarchy = moved.buildHierarchy();
        assertEquals(6, hierarchy.toSharedPtr().weight());
        Hierarchy other = triangle().buildHierarchy();
        hierarchy.assign(other);
        other.delete();
        assertEquals(6, hierarchy.weight());
    }

    @Test
    void deletingTwiceIsHarmless() {
        GraphPtr graph = triangle().toSharedPtr();
        graph.delete();
        graph.delete();
        Arcs arcs = new Arcs();
        arcs.delete();
        arcs.delete();
        StructNodeErrors errors = new StructNodeErrors("");
        errors.delete();
        errors.delete();
    }

    @Test
    void emptyPointersHaveNoHandle() {
        assertEquals(0, vorlJNI.new_GraphPtr());
        assertEquals(0, vorlJNI.new_SGraphPtr());
        assertEquals(0, vorlJNI.new_HierarchyPtr());
        assertEquals(0, vorlJNI.new_SHierarchyPtr());
        assertEquals(0, vorlJNI.new_NodesPtr());
        assertEquals(0, vorlJNI.new_SNodesPtr());
        vorlJNI.delete_GraphPtr(0);
        vorlJNI.delete_NodesPtr(0);
        vorlJNI.delete_Graph(0);
        vorlJNI.delete_Hierarchy(0);
        vorlJNI.delete_Ids(0);
        vorlJNI.delete_StructErrors(0);
    }

    private static long residentKilobytes() throws Exception {
        for (String line : Files.readAllLines(Path.of("/proc/self/status")))
            if (line.startsWith("VmRSS:"))
                return Long.parseLong(line.replaceAll("\\D", ""));
        throw new AssertionError("no VmRSS");
    }

    private static void rounds(int count) {
        for (int i = 0; i < count; ++i) {
            long links = vorlJNI.new_InpLinks__SWIG_2(4);
            vorlJNI.InpLinks_reserve(links, null, BigIntegers.of(8));
            vorlJNI.delete_InpLinks(links);
            long options = vorlJNI.new_OutputOptions();
            vorlJNI.OutputOptions_clsfile_set(
                options, null, "a name that is longer than a pointer");
            vorlJNI.delete_OutputOptions(options);
            if (i % 16 == 0)
                clusterOnce();
        }
    }

    private static void clusterOnce() {
        long graph = vorlJNI.new_SGraph__SWIG_4();
        vorlJNI.SGraph_addNodes__SWIG_2(graph, null, 3);
        vorlJNI.SGraph_addEdge__SWIG_2(graph, null, 0, 1);
        long hierarchy = vorlJNI.SGraph_buildHierarchy__SWIG_1(graph, null);
        vorlJNI.delete_SHierarchy(hierarchy);
        long nodes = vorlJNI.SGraph_release__SWIG_2(graph, null);
        vorlJNI.delete_SNodesPtr(nodes);
        vorlJNI.delete_SGraph(graph);
    }

    @Test
    void memoryDoesNotGrowOverAMillionRounds() throws Exception {
        boolean on = Bulk.trace(false);
        rounds(100_000);
        System.gc();
        long before = residentKilobytes();
        rounds(900_000);
        System.gc();
        long grown = residentKilobytes() - before;
        Bulk.trace(on);
        // A leak of one handle a round would be 28 MiB, of one a clustering 2 MiB for each handle.
        assertTrue(grown < 16 * 1024, "grown by " + grown + " KiB");
    }
}
