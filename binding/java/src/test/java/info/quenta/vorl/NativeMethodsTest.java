package info.quenta.vorl;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.TreeSet;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class NativeMethodsTest {
    private static final String PREFIX = "Java_info_quenta_vorl_vorlJNI_";

    @TempDir Path folder;

    @Test
    void libraryExportsThePublishedMethodsAndNoOthers() throws Exception {
        List<String> published = Files.readAllLines(Settings.path("methods"));
        assertEquals(771, published.size());

        Settings.Outcome symbols = Settings.run(
            folder, Map.of(), "nm", "-D", "--defined-only", Settings.path("library").toString());
        assertEquals(0, symbols.code(), symbols.text());
        TreeSet<String> exported = new TreeSet<>();
        for (String line : symbols.text().split("\n")) {
            String name = line.substring(line.lastIndexOf(' ') + 1);
            if (name.startsWith(PREFIX))
                exported.add(name.substring(PREFIX.length()).replace("_1", "_"));
        }
        assertEquals(new TreeSet<>(published), exported);

        TreeSet<String> declared = new TreeSet<>();
        for (Method method : vorlJNI.class.getDeclaredMethods())
            if (Modifier.isNative(method.getModifiers()))
                declared.add(method.getName());
        assertEquals(exported, declared);
    }

    @Test
    void constantsHaveTheirPublishedValues() {
        assertEquals(0xFFFFFFFFL, vorlJNI.ID_NONE_get());
        assertEquals(0xFFFF, vorlJNI.COUPLING_MAX_get());
        assertEquals(-Float.MAX_VALUE, vorlJNI.WEIGHT_NONE_get());
        assertEquals(List.of(2, 8), List.of((int) vorlJNI.rbmin_get(), (int) vorlJNI.rbmax_get()));
        assertEquals(List.of("rcg hig", "nse nsl ncol ll", "nsa", "cnl", "rhb"),
            List.of(vorlJNI.RCG_get(), vorlJNI.NSE_get(), vorlJNI.NSA_get(), vorlJNI.CNL_get(),
                vorlJNI.RHB_get()));
        assertEquals(BigIntegers.of(8), vorlJNI.StructErrors_ERRORS_MAX_get());
        assertEquals(0x3E0A9555, Float.floatToRawIntBits(vorlJNI.SignifclsOptions_dropRatio_get()));
        assertEquals(0xC5, vorlJNI.ClsOutFmt_DEFAULT_get());
        assertEquals(12, vorlJNI.ClsOutFmt_RANGE_SIGNIF_HIGH_get());
        assertEquals(0x80, vorlJNI.Reduction_CRITERIA_WEIGHT_get());
        assertEquals(0x12, vorlJNI.SzFnName_CLSSZ_LOG2_get());
        assertEquals(0xAA, vorlJNI.Validation_STANDARD_get());
        assertEquals(1, vorlJNI.FileFormat_DEFAULT_INPUT_get());
        assertEquals(List.of(true, true, true, false, false),
            Arrays.asList(vorlJNI.Arc_IS_WEIGHTED_get(), vorlJNI.Graph_IS_WEIGHTED_get(),
                vorlJNI.InpLink_IS_WEIGHTED_get(), vorlJNI.SArc_IS_WEIGHTED_get(),
                vorlJNI.SGraph_IS_WEIGHTED_get()));
        assertEquals(1f, vorlJNI.SArc_weight_get());
    }

    @Test
    void numbersOfOverloadsStandForTheirArguments() {
        // The longest form of the options comes first, the list before the pointer.
        long graph = vorlJNI.new_Graph__SWIG_4();
        vorlJNI.Graph_addNodes__SWIG_2(graph, null, 4);
        vorlJNI.Graph_addEdge__SWIG_2(graph, null, 0, 1);
        vorlJNI.Graph_addEdge__SWIG_1(graph, null, 2, 3, 2.5f);
        long pointer = vorlJNI.Graph_release__SWIG_2(graph, null);
        long hierarchy = vorlJNI.cluster__SWIG_7(pointer, null, true);
        assertEquals(7, vorlJNI.Hierarchy_weight(hierarchy, null));
        vorlJNI.delete_HierarchyPtr(hierarchy);
        vorlJNI.delete_NodesPtr(pointer);

        vorlJNI.Graph_addNodes__SWIG_1(graph, null, 2, 5);
        vorlJNI.Graph_addEdge__SWIG_2(graph, null, 5, 6);
        hierarchy = vorlJNI.cluster__SWIG_5(vorlJNI.Graph_nodes(graph, null), null, true);
        assertEquals(2, vorlJNI.Hierarchy_weight(hierarchy, null));
        vorlJNI.delete_HierarchyPtr(hierarchy);
        vorlJNI.delete_Graph(graph);

        long cluster = vorlJNI.new_Cluster__SWIG_0(3, 77, BigIntegers.of(4));
        assertEquals(77, vorlJNI.Cluster_id_get(cluster, null));
        assertEquals(3, vorlJNI.Cluster_levnum_get(cluster, null));
        assertEquals(cluster, vorlJNI.Cluster_SWIGUpcast(cluster));
        long moved = vorlJNI.new_Cluster__SWIG_4(cluster, null);
        assertEquals(77, vorlJNI.NodeI_id_get(moved, null));
        vorlJNI.delete_Cluster(cluster);
        vorlJNI.delete_Cluster(moved);
    }
}
