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

    private static List<Float> weights(Node node) {
        return node.getLinks().stream().map(Arc::getWeight).toList();
    }

    @Test
    void networksAreReadInEachFormat() throws Exception {
        NslParser arcs = new NslParser(input(write("a.nsa", "0 1 0.5\n1 2\n")));
        assertTrue(arcs.weighted());
        GraphPtr graph = arcs.build();
        assertTrue(graph.directed());
        assertEquals(List.of(0.5f), weights(graph.node(0)));
        assertEquals(List.of(1f), weights(graph.node(1)));
        assertEquals(List.of(), weights(graph.node(2)));
        assertEquals(1.5, graph.buildHierarchy().weight());

        RcgParser sections = new RcgParser(input(write("a.rcg",
            "/Graph weighted:0 validated:1\n/Nodes 3 7\n"
                + "/Edges\n7> 8 9\n8> 9\n")));
        assertTrue(!sections.weighted() && sections.validated());
        SGraphPtr unweighted = sections.sbuild();
        for (long id = 7; id < 10; ++id) {
            SNode node = unweighted.node(id);
            assertEquals(id, node.getId());
            assertEquals(2, vorl.SNodeEdgesWeight(node));
        }
        assertEquals(6, unweighted.buildHierarchy().weight());
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
    void printersWriteIntoWrappedFiles() throws Exception {
        Graph graph = new NslParser(input(Settings.data("lesmis.nse").toString())).build();
        Hierarchy hierarchy = graph.buildHierarchy();
        OutputOptions options = new OutputOptions();
        options.setClsfile(folder + "/expected.cnl");
        options.setClsfmt((short) (ClsOutFmt.ROOT.swigValue() | ClsOutFmt.EXTENDED.swigValue()));
        hierarchy.output(options);

        FileWrapper description = Bulk.open(folder + "/printed.rhb");
        new RhbPrinter(new RhbPrinter(hierarchy)).output(description);
        assertEquals(0, description.reset());
        assertEquals(Files.readString(folder.resolve("expected.rhb")),
            Files.readString(folder.resolve("printed.rhb")));

        try (Bulk.Files files = new Bulk.Files(Bulk.open(folder + "/printed.cnl"))) {
            new CnlPrinter(new CnlPrinter(hierarchy)).output(files.list(), options.getClsfmt());
        }
        assertEquals(Files.readString(folder.resolve("expected.cnl")),
            Files.readString(folder.resolve("printed.cnl")));
    }

    /** The bits of an object of eight bytes, where a native method takes a pointer to a number. */
    private static long bits(LinkSrcDstId place) { return place.getDid() << 32 | place.getSid(); }

    private static LinkSrcDstId place(long bits) {
        return new LinkSrcDstId(bits & 0xFFFFFFFFL, bits >>> 32);
    }

    @Test
    void networksAreValidated() {
        Graph graph = new Graph(3, false, true);
        graph.addNodes(3);
        graph.addArc(0, 1, 0.5f);
        graph.addArc(1, 2, 2);
        graph.addArc(2, 2, 4);
        LinkSrcDstId weight = place(Double.doubleToLongBits(6.5));
        LinkSrcDstId count = place(2);
        vorl.validateArcs(graph.nodes(), new SWIGTYPE_p_double(LinkSrcDstId.getCPtr(weight), false),
            new SWIGTYPE_p_unsigned_long_long(LinkSrcDstId.getCPtr(count), false), true);
        assertEquals(6.5, Double.longBitsToDouble(bits(weight)));
        assertEquals(4, bits(count)); // with the back links that were missing
        assertEquals(0, graph.node(1).getLinks().get(0).getWeight());
        assertEquals(1.25, vorl.NodeArcsWeight(graph.node(1)));
    }

    @Test
    void linksOfClustersAreWeighed() {
        Cluster one = new Cluster(0);
        Cluster two = new Cluster(0);
        LinkSrcDstId nowhere = place(0); // the end of an empty list
        CArcPos end = new CArcPos(LinkSrcDstId.getCPtr(nowhere), false);
        vorl.addCArc(one.getLinks(), end, two, 2.5);
        vorl.addCArc(two.getLinks(), end, one, 1.5);
        assertEquals(2, vorl.carcsWeight(one)); // half of what goes out and comes in
        assertEquals(2.5, vorl.cedgesWeight(one));
        assertEquals(1.5, vorl.cedgesWeight(two));
        assertEquals(0, vorl.reducedLinksMarg(5, Reduction.ACCURATE));
        assertEquals(7, vorl.reducedLinksMarg(1000, Reduction.MEAN));
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
