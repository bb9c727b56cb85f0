package info.quenta.vorl;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class FilesTest {
    @TempDir Path folder;

    private String write(String name, String text) throws Exception {
        return Files.writeString(folder.resolve(name), text).toString();
    }

    private static InpOptions input(String file) {
        InpOptions options = new InpOptions();
        options.setFilename(file);
        options.setFormat(vorl.inpFileFmt(file));
        return options;
    }

    @Test
    void networksAreReadInEachFormat() throws Exception {
        NslParser arcs = new NslParser(input(write("a.nsa", "0 1 0.5\n1 2\n")));
        assertTrue(arcs.weighted());
        GraphPtr graph = arcs.build();
        assertTrue(graph.directed());
        assertEquals(0.5, vorl.NodeEdgesWeight(graph.node(0)));
        assertEquals(2, graph.buildHierarchy().score().getClusters().signum() * 2);

        RcgParser sections = new RcgParser(input(write("a.rcg",
            "/Graph weighted:0 validated:1\n/Nodes 3 7\n"
                + "/Edges\n7> 8 9\n8> 9\n")));
        assertTrue(!sections.weighted() && sections.validated());
        SGraphPtr unweighted = sections.sbuild();
        assertEquals(6, unweighted.buildHierarchy().weight());
        assertEquals(9, unweighted.node(9).getId());
    }

    @Test
    void clustersOfAFileAreMeasured() throws Exception {
        String pair = write("pair.nse", "1 2\n");
        String alone = write("alone.cnl", "1\n2\n");
        SRawMembership membership = new SRawMembership();
        double weight = vorl.sloadClusters(
            membership.getClusters(), new NslParser(input(pair)).sbuild(), alone);
        assertEquals(2, weight);
        Intrinsics measures = new Intrinsics();
        measures.setFlags(IntrinsicsFlags.swigToEnum(2 | 4));
        vorl.intrinsicMeasuresSEdges(measures, membership.getClusters(), weight);
        assertTrue(measures.defined());
        // Two clusters of the in-out weight 1 and no inner weight.
        assertEquals(-0.5, measures.getMod());
        assertEquals(-0.5, measures.getSgmod());
        assertEquals(1, measures.getGamma());
        assertEquals(0, measures.getCdn()); // wasn't asked for
        assertThrows(RuntimeException.class,
            () -> vorl.intrinsicMeasuresSEdges(measures, membership.getClusters(), -1));
    }

    @Test
    void faultsOfClusterFilesComeWithTheirTexts() throws Exception {
        String network = write("n.nse", "1 2\n2 3\n");
        String shares = write("c.cnl", "1 2:0.3\n2:0.3 3\n");
        RuntimeException error = assertThrows(RuntimeException.class,
            ()
                -> vorl.loadClusters(new RawMembership().getClusters(),
                    (Graph) new NslParser(input(network)).build(), shares));
        assertEquals("Accumulated value of the node share should be equal to 1, failed for #2: "
                + "'0.600000\n",
            error.getMessage());
        assertThrows(RuntimeException.class, () -> new CnlParser(folder + "/none.cnl"));
    }

    @Test
    void printersWriteIntoWrappedFiles() {
        Hierarchy hierarchy =
            new NslParser(input(Settings.data("lesmis.nse").toString())).build().buildHierarchy();
        RhbPrinter printer = new RhbPrinter(hierarchy);
        FileWrapper none = new FileWrapper();
        assertEquals(0, none.reset());
        assertEquals(null, none.release());
        assertEquals(null, new FileWrapper(none).fdescr());
        new RhbPrinter(printer).delete();
        new CnlPrinter(hierarchy).delete();
        assertTrue(hierarchy.levels() != null && hierarchy.nodes() != null);
    }

    @Test
    void faultsOfLinksAreCollected() {
        StructNodeErrors nodes = new StructNodeErrors("repeated: ");
        StructLinkErrors links = new StructLinkErrors("repeated: ");
        Graph graph = new Graph(3, false, true);
        graph.addNodes(new Ids(List.of(1L, 2L, 1L, 1L)), nodes);
        assertEquals(BigIntegers.of(2), nodes.getSize());
        InpLinks list = new InpLinks(List.of(new InpLink(2, 3), new InpLink(5), new InpLink(2)));
        graph.addNodeAndEdges(1, list, links);
        graph.addEdge(1, 5, 1, links);
        // The repeat of 2 adds up at 1 and is a fault at 2, where it is the last link; that of 5 is
        // the last one at both ends.
        assertEquals(BigIntegers.of(3), links.getSize());
        assertEquals(4, graph.node(1).getLinks().get(0).getWeight());
        assertThrows(RuntimeException.class, () -> graph.addNodeArcs(1, new InpLinks(1)));
        assertEquals(BigIntegers.of(4), links.add(new LinkSrcDstId(1, 2)));
    }
}
