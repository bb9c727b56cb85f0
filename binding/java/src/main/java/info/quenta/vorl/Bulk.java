package info.quenta.vorl;

import java.util.List;
import java.util.Objects;

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
     * A network that was read: one of the graphs, the other one is null.
     *
     * @param weighted a graph with weights, or with arcs
     * @param unweighted a graph of edges without weights
     * @param warnings what the user should know of the file
     */
    public record Reading(Graph weighted, SGraph unweighted, List<String> warnings) {}

    /**
     * Reads a network as the program does; its format is told from the name.
     *
     * @param file name of the file, "-" for the standard input
     */
    public static Reading read(String file) {
        boolean[] weighted = new boolean[1];
        String[] warnings = new String[1];
        long handle = read(Objects.requireNonNull(file), weighted, warnings);
        return new Reading(weighted[0] ? new GraphPtr(handle, true) : null,
            weighted[0] ? null : new SGraphPtr(handle, true), warnings[0].lines().toList());
    }

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
        checkCount(count, src.length, dst.length, weights == null ? count : weights.length);
        addLinks(live(Graph.getCPtr(graph)), true, directed, src, dst, weights, count);
        keep(graph);
    }

    /** As for weighted links; each link weighs 1. */
    public static void addLinks(SGraph graph, boolean directed, int[] src, int[] dst, int count) {
        checkCount(count, src.length, dst.length);
        addLinks(live(SGraph.getCPtr(graph)), false, directed, src, dst, null, count);
        keep(graph);
    }

    /** What keeps the network from being clustered, null if nothing does. */
    public static String fault(Graph graph) {
        String text = fault(live(Graph.getCPtr(graph)), true);
        keep(graph);
        return text;
    }

    /** As for weighted links. */
    public static String fault(SGraph graph) {
        String text = fault(live(SGraph.getCPtr(graph)), false);
        keep(graph);
        return text;
    }

    /** Number of nodes. */
    public static long nodes(Graph graph) {
        long count = nodes(live(Graph.getCPtr(graph)), true);
        keep(graph);
        return count;
    }

    /** Number of nodes. */
    public static long nodes(SGraph graph) {
        long count = nodes(live(SGraph.getCPtr(graph)), false);
        keep(graph);
        return count;
    }

    /** Clusters a copy of the network, which stays as it is. */
    public static Hierarchy cluster(Graph graph, ClusterOptions options) {
        long handle =
            cluster(live(Graph.getCPtr(graph)), true, live(ClusterOptions.getCPtr(options)));
        keep(graph);
        keep(options);
        return new HierarchyPtr(handle, true);
    }

    /** As for weighted links. */
    public static SHierarchy cluster(SGraph graph, ClusterOptions options) {
        long handle =
            cluster(live(SGraph.getCPtr(graph)), false, live(ClusterOptions.getCPtr(options)));
        keep(graph);
        keep(options);
        return new SHierarchyPtr(handle, true);
    }

    /**
     * Communities.
     *
     * @param rows the nodes by ascending ids, each with its communities, that of the largest share
     *     first
     * @param score modularity, conductance, resolution, bits saved, bits that name them, starts and
     *     rounds
     * @param start the name of the start that won
     */
    public record Found(Rows rows, double[] score, String start) {}

    /**
     * Finds communities.
     *
     * @param shares whether a node may belong to several
     * @param starts from how many starts to search, 0: the smaller the network, the more
     * @param threads 0 for as many as the process may use
     */
    public static Found communities(Graph graph, boolean shares, int starts, int threads) {
        Object[] out = new Object[6];
        communities(live(Graph.getCPtr(graph)), true, shares, starts, threads, out);
        keep(graph);
        return new Found(rows(out), (double[]) out[4], (String) out[5]);
    }

    /** As for weighted links. */
    public static Found communities(SGraph graph, boolean shares, int starts, int threads) {
        Object[] out = new Object[6];
        communities(live(SGraph.getCPtr(graph)), false, shares, starts, threads, out);
        keep(graph);
        return new Found(rows(out), (double[]) out[4], (String) out[5]);
    }

    /**
     * Measures the clusters of a file on a copy of the network, which stays as it is.
     *
     * @param file as the program reads it
     * @param network name of the network for messages, empty if it has none
     * @param gamma resolution of the modularity, not negative
     * @return the number of clusters, their conductance, the modularity, the resolution estimated
     *     from them, and the modularity at it
     */
    public static double[] evaluate(Graph graph, String file, String network, double gamma) {
        double[] result = evaluate(live(Graph.getCPtr(graph)), true, Objects.requireNonNull(file),
            Objects.requireNonNull(network), gamma);
        keep(graph);
        return result;
    }

    /** As for weighted links. */
    public static double[] evaluate(SGraph graph, String file, String network, double gamma) {
        double[] result = evaluate(live(SGraph.getCPtr(graph)), false, Objects.requireNonNull(file),
            Objects.requireNonNull(network), gamma);
        keep(graph);
        return result;
    }

    /** Numbers of the nodes, of the root's clusters, and for each level its clusters and items. */
    public static long[] sizes(Hierarchy hierarchy) {
        long[] result = sizes(live(Hierarchy.getCPtr(hierarchy)), true);
        keep(hierarchy);
        return result;
    }

    /** As for weighted links. */
    public static long[] sizes(SHierarchy hierarchy) {
        long[] result = sizes(live(SHierarchy.getCPtr(hierarchy)), false);
        keep(hierarchy);
        return result;
    }

    /** The clusters of a level, of the root for the number of levels, with their nodes. */
    public static Rows members(Hierarchy hierarchy, int level) {
        Object[] out = new Object[4];
        members(live(Hierarchy.getCPtr(hierarchy)), true, level, out);
        keep(hierarchy);
        return rows(out);
    }

    /** As for weighted links. */
    public static Rows members(SHierarchy hierarchy, int level) {
        Object[] out = new Object[4];
        members(live(SHierarchy.getCPtr(hierarchy)), false, level, out);
        keep(hierarchy);
        return rows(out);
    }

    /** The clusters of a level, or the nodes for -1, with the clusters that own them. */
    public static Rows owners(Hierarchy hierarchy, int level) {
        Object[] out = new Object[4];
        owners(live(Hierarchy.getCPtr(hierarchy)), true, level, out);
        keep(hierarchy);
        return rows(out);
    }

    /** As for weighted links. */
    public static Rows owners(SHierarchy hierarchy, int level) {
        Object[] out = new Object[4];
        owners(live(SHierarchy.getCPtr(hierarchy)), false, level, out);
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
        writeLevels(live(Hierarchy.getCPtr(hierarchy)), true, first, last, step, format,
            Objects.requireNonNull(file));
        keep(hierarchy);
    }

    /** As for weighted links. */
    public static void writeLevels(
        SHierarchy hierarchy, int first, int last, float step, int format, String file) {
        writeLevels(live(SHierarchy.getCPtr(hierarchy)), false, first, last, step, format,
            Objects.requireNonNull(file));
        keep(hierarchy);
    }

    /** As {@link #writeLevels}, for the levels around a number of clusters. */
    public static void writeLevelsAround(
        Hierarchy hierarchy, int clusters, int format, String file) {
        writeLevelsAround(live(Hierarchy.getCPtr(hierarchy)), true, clusters, format,
            Objects.requireNonNull(file));
        keep(hierarchy);
    }

    /** As for weighted links. */
    public static void writeLevelsAround(
        SHierarchy hierarchy, int clusters, int format, String file) {
        writeLevelsAround(live(SHierarchy.getCPtr(hierarchy)), false, clusters, format,
            Objects.requireNonNull(file));
        keep(hierarchy);
    }

    /** Writes the description of a hierarchy, which may have no levels. */
    public static void describe(Hierarchy hierarchy, String file) {
        describe(live(Hierarchy.getCPtr(hierarchy)), true, Objects.requireNonNull(file));
        keep(hierarchy);
    }

    /** As for weighted links. */
    public static void describe(SHierarchy hierarchy, String file) {
        describe(live(SHierarchy.getCPtr(hierarchy)), false, Objects.requireNonNull(file));
        keep(hierarchy);
    }

    /**
     * Turns the trace of the library on, or off, for all threads.
     *
     * @return whether it was on
     */
    public static native boolean trace(boolean on);

    /**
     * Opens a file for a printer to write to, to be deleted.
     *
     * @param file the file, which is overwritten
     */
    public static FileWrapper open(String file) {
        return new FileWrapper(openFile(Objects.requireNonNull(file)), true);
    }

    /** Open files for a {@link CnlPrinter}, which are written out when they are closed. */
    public static final class Files implements AutoCloseable {
        private long handle;

        /**
         * Takes over the files.
         *
         * @param files what {@link Bulk#open} gave; they are closed as wrappers
         */
        public Files(FileWrapper... files) {
            long[] handles = new long[files.length];
            for (int i = 0; i < files.length; ++i) handles[i] = live(FileWrapper.getCPtr(files[i]));
            handle = listFiles(handles);
            keep(files);
        }

        /** The list as a printer takes it, for as long as this object isn't closed. */
        public SWIGTYPE_p_std__vectorT_vorl__FileWrapper_t list() {
            return new SWIGTYPE_p_std__vectorT_vorl__FileWrapper_t(handle, false);
        }

        /** Closes the files; closing twice is harmless. */
        @Override
        public synchronized void close() {
            deleteFiles(handle);
            handle = 0;
        }
    }

    private static long live(long handle) {
        if (handle == 0)
            throw new NullPointerException("the native object is null, or was deleted");
        return handle;
    }

    private static void checkCount(int count, int... lengths) {
        for (int length : lengths) Objects.checkFromIndexSize(0, count, length);
    }

    private static Rows rows(Object[] out) {
        return new Rows((int[]) out[0], (int[]) out[1], (int[]) out[2], (float[]) out[3]);
    }

    /** Keeps the object from being collected, and its handle from being freed, up to here. */
    private static void keep(Object object) { java.lang.ref.Reference.reachabilityFence(object); }

    private static native long read(String file, boolean[] weighted, String[] warnings);

    private static native long openFile(String file);

    private static native long listFiles(long[] files);

    private static native void deleteFiles(long files);

    private static native void addLinks(long graph, boolean weighted, boolean directed, int[] src,
        int[] dst, float[] weights, int count);

    private static native String fault(long graph, boolean weighted);

    private static native long nodes(long graph, boolean weighted);

    private static native long cluster(long graph, boolean weighted, long options);

    private static native void communities(
        long graph, boolean weighted, boolean shares, int starts, int threads, Object[] out);

    private static native double[] evaluate(
        long graph, boolean weighted, String file, String network, double gamma);

    private static native long[] sizes(long hierarchy, boolean weighted);

    private static native void members(long hierarchy, boolean weighted, int level, Object[] out);

    private static native void owners(long hierarchy, boolean weighted, int level, Object[] out);

    private static native void writeLevels(
        long hierarchy, boolean weighted, int first, int last, float step, int format, String file);

    private static native void writeLevelsAround(
        long hierarchy, boolean weighted, int clusters, int format, String file);

    private static native void describe(long hierarchy, boolean weighted, String file);
}
