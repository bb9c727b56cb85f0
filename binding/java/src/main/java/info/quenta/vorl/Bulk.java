package info.quenta.vorl;

/**
 * Native methods that carry whole networks and levels in one call.
 *
 * <p>This is the ground of the package {@link info.quenta.vorl.api}, which is the one to use. Ids
 * travel as ints whose bits are those of the unsigned id.
 */
public final class Bulk {
    static { NativeLibrary.load(); }

    private Bulk() {}

    /**
     * Items with, for each of them, a run of other items and shares: the run of item {@code i} lies
     * from {@code starts[i]} to {@code starts[i + 1]} in {@code others} and {@code shares}.
     *
     * @param ids ids of the items
     * @param starts where the runs start, and where the last one ends
     * @param others ids of the other items
     * @param shares the shares, in (0, 1]
     */
    public record Rows(int[] ids, int[] starts, int[] others, float[] shares) {}

    /**
     * Adds links in their order, and the nodes that are missing.
     *
     * @param graph the network
     * @param directed whether the links are arcs
     * @param weights null where each link weighs 1
     * @param count how many elements of the arrays are used
     */
    public static void addLinks(
        Graph graph, boolean directed, int[] src, int[] dst, float[] weights, int count) {
        addLinks(Graph.getCPtr(graph), true, directed, src, dst, weights, count);
        keep(graph);
    }

    /** As for weighted links; each link weighs 1. */
    public static void addLinks(SGraph graph, boolean directed, int[] src, int[] dst, int count) {
        addLinks(SGraph.getCPtr(graph), false, directed, src, dst, null, count);
        keep(graph);
    }

    /** What keeps the network from being clustered, null if nothing does. */
    public static String fault(Graph graph) {
        String text = fault(Graph.getCPtr(graph), true);
        keep(graph);
        return text;
    }

    /** As for weighted links. */
    public static String fault(SGraph graph) {
        String text = fault(SGraph.getCPtr(graph), false);
        keep(graph);
        return text;
    }

    /** Number of nodes. */
    public static long nodes(Graph graph) {
        long count = nodes(Graph.getCPtr(graph), true);
        keep(graph);
        return count;
    }

    /** Number of nodes. */
    public static long nodes(SGraph graph) {
        long count = nodes(SGraph.getCPtr(graph), false);
        keep(graph);
        return count;
    }

    /** Clusters a copy of the network, which stays as it is. */
    public static Hierarchy cluster(Graph graph, ClusterOptions options) {
        long handle = cluster(Graph.getCPtr(graph), true, ClusterOptions.getCPtr(options));
        keep(graph);
        keep(options);
        return new HierarchyPtr(handle, true);
    }

    /** As for weighted links. */
    public static SHierarchy cluster(SGraph graph, ClusterOptions options) {
        long handle = cluster(SGraph.getCPtr(graph), false, ClusterOptions.getCPtr(options));
        keep(graph);
        keep(options);
        return new SHierarchyPtr(handle, true);
    }

    /**
     * Measures the clusters of a file on a copy of the network, which stays as it is.
     *
     * @param file without a header
     * @param gamma resolution of the modularity, not negative
     * @return the number of clusters, their conductance, the modularity, the resolution estimated
     *     from them, and the modularity at it
     */
    public static double[] evaluate(Graph graph, String file, double gamma) {
        double[] result = evaluate(Graph.getCPtr(graph), true, file, gamma);
        keep(graph);
        return result;
    }

    /** As for weighted links. */
    public static double[] evaluate(SGraph graph, String file, double gamma) {
        double[] result = evaluate(SGraph.getCPtr(graph), false, file, gamma);
        keep(graph);
        return result;
    }

    /** Numbers of the nodes, of the root's clusters, and for each level its clusters and items. */
    public static long[] sizes(Hierarchy hierarchy) {
        long[] result = sizes(Hierarchy.getCPtr(hierarchy), true);
        keep(hierarchy);
        return result;
    }

    /** As for weighted links. */
    public static long[] sizes(SHierarchy hierarchy) {
        long[] result = sizes(SHierarchy.getCPtr(hierarchy), false);
        keep(hierarchy);
        return result;
    }

    /** The clusters of a level, of the root for the number of levels, with their nodes. */
    public static Rows members(Hierarchy hierarchy, int level) {
        Object[] out = new Object[4];
        members(Hierarchy.getCPtr(hierarchy), true, level, out);
        keep(hierarchy);
        return rows(out);
    }

    /** As for weighted links. */
    public static Rows members(SHierarchy hierarchy, int level) {
        Object[] out = new Object[4];
        members(SHierarchy.getCPtr(hierarchy), false, level, out);
        keep(hierarchy);
        return rows(out);
    }

    /** The clusters of a level, or the nodes for -1, with the clusters that own them. */
    public static Rows owners(Hierarchy hierarchy, int level) {
        Object[] out = new Object[4];
        owners(Hierarchy.getCPtr(hierarchy), true, level, out);
        keep(hierarchy);
        return rows(out);
    }

    /** As for weighted links. */
    public static Rows owners(SHierarchy hierarchy, int level) {
        Object[] out = new Object[4];
        owners(SHierarchy.getCPtr(hierarchy), false, level, out);
        keep(hierarchy);
        return rows(out);
    }

    /**
     * Writes one file for each level of a range, and beside their folder the description.
     *
     * @param first index of a level
     * @param last index of a level, not below first
     * @param step ratio of the numbers of clusters of two levels, in [0, 1]; 1 takes all levels
     * @param format file format and filtering, as the value of a {@link ClsOutFmt}
     */
    public static void writeLevels(
        Hierarchy hierarchy, int first, int last, float step, int format, String file) {
        writeLevels(Hierarchy.getCPtr(hierarchy), true, first, last, step, format, file);
        keep(hierarchy);
    }

    /** As for weighted links. */
    public static void writeLevels(
        SHierarchy hierarchy, int first, int last, float step, int format, String file) {
        writeLevels(SHierarchy.getCPtr(hierarchy), false, first, last, step, format, file);
        keep(hierarchy);
    }

    /** As {@link #writeLevels}, for the levels around a number of clusters. */
    public static void writeLevelsAround(
        Hierarchy hierarchy, int clusters, int format, String file) {
        writeLevelsAround(Hierarchy.getCPtr(hierarchy), true, clusters, format, file);
        keep(hierarchy);
    }

    /** As for weighted links. */
    public static void writeLevelsAround(
        SHierarchy hierarchy, int clusters, int format, String file) {
        writeLevelsAround(SHierarchy.getCPtr(hierarchy), false, clusters, format, file);
        keep(hierarchy);
    }

    /** Writes the description of a hierarchy, which may have no levels. */
    public static void describe(Hierarchy hierarchy, String file) {
        describe(Hierarchy.getCPtr(hierarchy), true, file);
        keep(hierarchy);
    }

    /** As for weighted links. */
    public static void describe(SHierarchy hierarchy, String file) {
        describe(SHierarchy.getCPtr(hierarchy), false, file);
        keep(hierarchy);
    }

    /**
     * Directs the trace of the library to a stream.
     *
     * @param stream what an earlier call returned, or 0 for no trace
     * @return the stream up to now
     */
    public static native long trace(long stream);

    private static Rows rows(Object[] out) {
        return new Rows((int[]) out[0], (int[]) out[1], (int[]) out[2], (float[]) out[3]);
    }

    /** Keeps the object from being collected, and its handle from being freed, up to here. */
    private static void keep(Object object) { java.lang.ref.Reference.reachabilityFence(object); }

    private static native void addLinks(long graph, boolean weighted, boolean directed, int[] src,
        int[] dst, float[] weights, int count);

    private static native String fault(long graph, boolean weighted);

    private static native long nodes(long graph, boolean weighted);

    private static native long cluster(long graph, boolean weighted, long options);

    private static native double[] evaluate(
        long graph, boolean weighted, String file, double gamma);

    private static native long[] sizes(long hierarchy, boolean weighted);

    private static native void members(long hierarchy, boolean weighted, int level, Object[] out);

    private static native void owners(long hierarchy, boolean weighted, int level, Object[] out);

    private static native void writeLevels(
        long hierarchy, boolean weighted, int first, int last, float step, int format, String file);

    private static native void writeLevelsAround(
        long hierarchy, boolean weighted, int clusters, int format, String file);

    private static native void describe(long hierarchy, boolean weighted, String file);
}
