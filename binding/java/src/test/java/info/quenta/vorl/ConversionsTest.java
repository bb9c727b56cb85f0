package info.quenta.vorl;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.math.BigInteger;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class ConversionsTest {
    @ParameterizedTest
    @ValueSource(strings = {"0", "1", "127", "128", "255", "256", "9223372036854775807",
                     "9223372036854775808", "18446744073709551615"})
    void
    unsignedNumbersComeBackAsTheyWent(String text) {
        BigInteger value = new BigInteger(text);
        HierScore score = new HierScore();
        score.setNodesLinks(value);
        assertEquals(value, score.getNodesLinks());
        assertEquals(0, score.getClusters().signum());
    }

    @Test
    void numbersOutOfRangeKeepTheirLowBits() {
        HierScore score = new HierScore();
        score.setClusters(BigInteger.ONE.negate());
        assertEquals(BigIntegers.MAX, score.getClusters());
        assertArrayEquals(
            new byte[] {0, -1, -1, -1, -1, -1, -1, -1, -1}, score.getClusters().toByteArray());
        score.setClusters(BigInteger.ONE.shiftLeft(64).add(BigInteger.TEN));
        assertEquals(BigInteger.TEN, score.getClusters());
    }

    @Test
    void integersTakeTheNextWiderKind() {
        ClusterOptions options = new ClusterOptions();
        options.setRootMax(0xFFFF);
        assertEquals(0xFFFF, options.getRootMax());
        LinkSrcDstId ends = new LinkSrcDstId();
        assertEquals(0xFFFFFFFFL, ends.getSid());
        ends.setDid(0xFFFFFFFEL);
        assertEquals(0xFFFFFFFEL, ends.getDid());
        OutputOptions output = new OutputOptions();
        output.setClsfmt((short) 0xC5);
        assertEquals(0xC5, output.getClsfmt());
        assertEquals("clusters.cnl", output.getClsfile());
    }

    @Test
    void opaqueValuesTravelAsHandles() {
        SWIGTYPE_p_State state = vorl.toState((short) (8 | 5));
        assertTrue(vorl.xperpair(state) && vorl.xfurtherprop(state));
        assertFalse(vorl.xpropagated(state));
        assertEquals("PERPAIR, FURTHERPROP", vorl.to_string(state));
        assertEquals("0b00001101", vorl.to_string(state, true));
        assertTrue(vorl.equal(state, (short) 13) && vorl.unequal(state, (short) 12));
        vorl.bitAndAssign(state, (short) 5);
        assertEquals(5, vorl.toMask(state));
        assertEquals(0xE3, vorl.toMask(vorl.libBuild().getClustering()));
    }

    @Test
    void flagsCombine() {
        Reduction both = vorl.bitOr(Reduction.MEAN, Reduction.SKIP_NODES);
        assertEquals(0x12, both.swigValue());
        assertEquals("MEAN, SKIP_NODES", vorl.to_string(both));
        assertEquals(Reduction.swigToEnum(0x12), both);
        assertEquals("ALLCLS, EXTENDED", vorl.strClsOutFmt((short) 0xC5));
        assertEquals("NONE", vorl.strClsOutFmt((short) 0));
        assertFalse(vorl.isset((short) 0xC5, ClsOutFmt.SIMPLE));
        assertEquals("", vorl.to_string(IntrinsicsFlags.swigToEnum(8)));
    }

    @Test
    void textsAreCopied() {
        assertEquals("  ab", vorl.pad("ab", (short) 4));
        assertEquals("ab__", vorl.pad("ab", (short) 4, '_', false));
        assertEquals("abcde", vorl.pad("abcde", (short) 4));
        StructNodeErrors errors = new StructNodeErrors(new String("heading: "));
        assertEquals("heading: ", errors.getMessage());
        SWIGTYPE_p_Clustering crisp = vorl.toClustering((short) 1);
        BuildInfo info = new BuildInfo("7/abc", crisp, null, "C++", "now");
        assertEquals("7", info.rev());
        assertTrue(info.summary().contains("\nCompiler: \nLangEnv: C++\n"));
        assertEquals("", new BuildInfo(null, crisp, null, null, null).rev());
        assertNull(info.getCompiler());
        assertEquals("now", info.getTime());
        info.delete();
        StructNodeErrors copy = new StructNodeErrors("another heading, which is longer than 16: ");
        copy.assign(errors);
        errors.delete();
        assertEquals("heading: ", copy.getMessage());
    }

    @Test
    void listsAreListsOfJava() {
        Ids ids = new Ids(List.of(3L, 4294967294L, 7L));
        assertEquals(List.of(3L, 4294967294L, 7L), ids);
        assertEquals(4294967294L, ids.remove(1));
        ids.add(0, 9L);
        assertEquals(3L, ids.set(1, 5L));
        assertEquals(List.of(9L, 5L, 7L), ids);
        ids.subList(0, 2).clear();
        assertEquals(List.of(7L), ids);
        assertEquals(List.of(0L, 0L), new Ids(2));
        assertEquals(List.of(6L, 6L), new Ids(2, 6));
        ids.reserve(BigIntegers.of(100));
        assertTrue(ids.capacity().intValueExact() >= 100);

        InpLinks links = new InpLinks();
        links.add(new InpLink(5, 2.5f));
        links.get(0).setWeight(4);
        assertEquals(4f, links.get(0).getWeight());
    }

    @Test
    void sharedStorageOfTheOutputHoldsTheRecordSetLast() {
        OutputOptions output = new OutputOptions();
        CustlevsOptions levels = new CustlevsOptions();
        levels.setClsrstep(0.5f);
        output.setCustlevs(levels);
        assertEquals(0.5f, output.getCustlevs().getClsrstep());
        SignifclsExtoptions significant = new SignifclsExtoptions();
        significant.setSzmin(3);
        output.setSignifcls(significant);
        output.getSignifcls().setClszminf(SzFnName.CLSSZ_ROOT2);
        assertEquals(3, output.getSignifcls().getSzmin());
        assertNotEquals(null, output.getSignifcls().getClszminf());
        output.getSignifcls().reset();
        assertEquals(0, output.getSignifcls().getSzmin());
        assertNull(output.getSignifcls().getClszminf());
    }

    private static void refused(String text, Class<? extends Throwable> type, Executable call) {
        Throwable error = assertThrows(type, call);
        assertEquals(type, error.getClass());
        assertEquals(text, error.getMessage());
    }

    @Test
    void nullsAreRefusedWithTheirTexts() {
        Class<NullPointerException> type = NullPointerException.class;
        refused("null string", type, () -> vorl.ensureDir(null));
        refused("null string", type, () -> vorl.inpFileFmt(null));
        refused("BigInteger null", type, () -> new HierScore().setClusters(null));
        refused("toByteArray() of a BigInteger is null", type,
            () -> new HierScore().setClusters(new BigInteger("1") {
                private static final long serialVersionUID = 1;

                @Override
                public byte[] toByteArray() {
                    return null;
                }
            }));
        refused("null string", type, () -> new StructNodeErrors(null));
        refused("null string", type, () -> new StructLinkErrors(null));
        refused("Attempt to dereference null State", type,
            () -> vorl.to_string((SWIGTYPE_p_State) null));
        refused("Attempt to dereference null Clustering", type,
            () -> vorl.to_string((SWIGTYPE_p_Clustering) null));
        refused("Attempt to dereference null vorl::shared_ptr< vorl::Graph< true > >", type,
            () -> vorl.loadClusters(new RawMembership().getClusters(), (GraphPtr) null, "x.cnl"));
        refused("vorl::ClusterOptions const & reference is null", type,
            () -> new Graph().buildHierarchy(null));
        refused("std::vector< vorl::Link< vorl::LinkWeight,true > > const & reference is null",
            type, () -> new Arcs((Arcs) null));
        refused("Attempt to dereference null vorl::SignifclsExtoptions", type,
            () -> new OutputOptions().setSignifcls(null));
        refused("vorl::LinkSrcDstId && reference is null", type,
            () -> new StructLinkErrors("").add(null));
    }

    @Test
    void positionsAndCountsAreChecked() {
        Class<IndexOutOfBoundsException> type = IndexOutOfBoundsException.class;
        Arcs arcs = new Arcs();
        arcs.add(new Arc(null));
        String range = "vector index out of range";
        for (int index : new int[] {-1, 1, Integer.MIN_VALUE, Integer.MAX_VALUE}) {
            refused(range, type, () -> arcs.get(index));
            refused(range, type, () -> arcs.set(index, new Arc(null)));
            refused(range, type, () -> arcs.remove(index));
        }
        refused(range, type, () -> arcs.add(2, new Arc(null)));
        refused(range, type, () -> arcs.removeRange(1, 0));
        refused(range, type, () -> arcs.removeRange(0, 2));
        refused("vector count must be positive", type, () -> new Ids(-1));
        refused("vector count must be positive", type, () -> new Ids(-1, 5));
        assertEquals("vector::reserve",
            assertThrows(type, () -> arcs.reserve(BigIntegers.MAX)).getMessage());
        assertEquals(1, arcs.size());
    }

    @Test
    void errorsOfTheLibraryComeWithTheirTexts() {
        Class<RuntimeException> type = RuntimeException.class;
        Graph graph = new Graph();
        graph.addNodes(2);
        refused("The hierarchy has not been constructed", type, graph::hierarchy);
        Throwable unknown = assertThrows(type, () -> graph.addEdge(0, 9));
        assertTrue(unknown.getMessage().startsWith(
            "addLink(), the link with non-existent node is used: #0.9\n"));
        assertThrows(type, () -> graph.node(9));
        refused("NodeI(), overflow of id\n", type, () -> new Node(0xFFFFFFFFL));
        ClusterOptions options = new ClusterOptions();
        options.setGamma(2);
        boolean traced = vorl.traceBuffered();
        refused("ClusterOptions::validate(), invalid attribute(s).\n", type, options::validate);
        assertEquals(traced, vorl.traceBuffered());
        InpOptions input = new InpOptions();
        input.setFormat(FileFormat.RCG);
        refused("NslParser(), NSL format is expected instead of RCG\n", type,
            () -> new NslParser(input));
        // More than the machine can give.
        refused("std::bad_alloc", OutOfMemoryError.class,
            () -> new Ids().reserve(BigIntegers.of(1L << 60)));
    }
}
