package info.quenta.vorl.api;

import info.quenta.vorl.Bulk;
import info.quenta.vorl.ClusterOptions;
import info.quenta.vorl.Graph;
import info.quenta.vorl.SGraph;
import java.io.UncheckedIOException;
import java.nio.file.Files;
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.CancellationException;
import java.util.function.Supplier;

/**
 * A network: nodes with ids, joined by edges or arcs, weighted or not.
 *
 * <p>It doesn't change, and can be clustered any number of times.
 */
public final class Network implements AutoCloseable {
    /** The largest id of a node. */
    public static final long MAX_ID = 0xFFFFFFFEL;

    private final Resource<NativeNetwork> resource;

    private final String name; // of the file, empty if it was built
    private final List<String> warnings;

    private Network(NativeNetwork network, String name, List<String> warnings) {
        this.resource = new Resource<>(this, "network", network, NativeNetwork::delete);
        this.name = name;
        this.warnings = warnings;
        String fault = resource.call(NativeNetwork::fault);
        if (fault != null) {
            close();
            throw new VorlException(fault);
        }
    }

    /**
     * Reads a file of links, as the program does: with the same result and the same messages. Its
     * format is told from the name: NSE ({@code .nse}, {@code .ncol}), NSA ({@code .nsa}) or RCG
     * ({@code .rcg}, {@code .hig}), behind which {@code .gz} or {@code .zst} may stand. A file that
     * is compressed by gzip or zstd is unpacked, and a weight of 0 reads as 1.
     *
     * @param file the file
     * @return the network, to be closed
     * @throws UncheckedIOException if there is no such file
     * @throws VorlException if the format is unknown, or the file holds no network that can be
     *     clustered
     * @throws CancellationException if the thread was interrupted meanwhile
     */
    public static Network read(Path file) { return read(file, null); }

    /**
     * Reads as {@link #read(Path)} does, and tells how far it is.
     *
     * @param file the file
     * @param listener hears of it and may end it; null for none
     * @return the network, to be closed
     * @throws UncheckedIOException if there is no such file
     * @throws VorlException if the format is unknown, or the file holds no network that can be
     *     clustered
     * @throws CancellationException if the listener said so, or the thread was interrupted
     */
    public static Network read(Path file, ProgressListener listener) {
        String name = FileNames.toNative(file);
        return orMissing(file, () -> Resource.longCall(false, listener, () -> {
            Bulk.Reading reading = Bulk.read(name);
            NativeNetwork network = reading.weighted() != null
                ? new NativeNetwork.Weighted(reading.weighted())
                : new NativeNetwork.Unweighted(reading.unweighted());
            return new Network(network, name, reading.warnings());
        }));
    }

    /** Calls the operation; a file that isn't there is told in the way of Java. */
    private static <R> R orMissing(Path file, Supplier<R> operation) {
        try {
            return operation.get();
        } catch (VorlException err) {
            if (Files.exists(file))
                throw err;
            NoSuchFileException missing = new NoSuchFileException(file.toString());
            missing.addSuppressed(err);
            throw new UncheckedIOException(err.getMessage(), missing);
        }
    }

    /**
     * What the user should know of the file that was read, such as that links stand in it twice.
     *
     * @return an immutable list of lines without the file's name; empty if there is nothing to say,
     *     or the network was built
     */
    public List<String> warnings() { return warnings; }

    /**
     * Starts a network that is built link by link.
     *
     * @return a new builder
     */
    public static Builder builder() { return new Builder(); }

    /**
     * Clusters the network with the default options.
     *
     * @return the clustering, to be closed
     */
    public Clustering cluster() { return cluster(Options.defaults()); }

    /**
     * Clusters the network. Several networks may be clustered at the same time.
     *
     * @param options how
     * @return the clustering, to be closed; it outlives the network
     * @throws VorlException if the library refuses the network or the options
     * @throws CancellationException if the listener of the options said so, or the thread was
     *     interrupted
     */
    public Clustering cluster(Options options) {
        return resource.callLong(options.trace(), options.progress(), network -> {
            ClusterOptions record = options.toNative();
            try {
                return new Clustering(network.cluster(record));
            } finally {
                record.delete();
            }
        });
    }

    /**
     * Finds the communities of the network with the default options.
     *
     * @return the communities
     */
    public Communities communities() { return communities(CommunitiesOptions.DEFAULT); }

    /**
     * Finds the communities of the network, as the program's {@code communities} does: one flat
     * answer, with shares where nodes belong to several. Directions don't count.
     *
     * @param options how
     * @return the communities, which hold no native memory
     * @throws VorlException if the library refuses the network
     * @throws CancellationException if the thread was interrupted meanwhile
     */
    public Communities communities(CommunitiesOptions options) {
        return communities(options, null);
    }

    /**
     * Finds the communities, and tells how far it is.
     *
     * @param options how
     * @param listener hears of it and may end it; null for none
     * @return the communities, which hold no native memory
     * @throws VorlException if the library refuses the network
     * @throws CancellationException if the listener said so, or the thread was interrupted
     */
    public Communities communities(CommunitiesOptions options, ProgressListener listener) {
        return new Communities(
            resource.callLong(false, listener, network -> network.communities(options)));
    }

    /**
     * Measures clusters of a file, of this library or another one.
     *
     * <p>A cluster a line is expected, {@code [id>] node[:share] ...}, with comments that begin
     * with #; or a table with a node and its cluster in each line, told by names of its columns or
     * by the extension {@code .tsv}, {@code .csv}, {@code .clu} or {@code .json}; or a hierarchy in
     * the format RHB, of which the root counts. Shares that a node doesn't state are even ones, and
     * those that don't add up to 1 are scaled. What the program's {@code evaluate} refuses is
     * refused with the same message.
     *
     * @param clusters the file
     * @param gamma resolution of the modularity, at least 0; 1 is that of the plain one
     * @return the measures
     * @throws IllegalArgumentException if gamma is negative or not a number
     * @throws UncheckedIOException if the file can't be read
     * @throws VorlException if the file is at fault, or names nodes that the network doesn't have
     */
    public Measures evaluate(Path clusters, double gamma) {
        if (!(gamma >= 0) || Double.isInfinite(gamma))
            throw new IllegalArgumentException("gamma is " + gamma + ", at least 0 is expected");
        String file = FileNames.toNative(clusters);
        return orMissing(clusters,
            () -> resource.callLong(false, null, network -> network.evaluate(file, name, gamma)));
    }

    /**
     * The number of nodes.
     *
     * @return a positive number
     */
    public long nodeCount() { return resource.call(NativeNetwork::nodes); }

    /**
     * Whether the network holds arcs.
     *
     * @return false if all links are edges
     */
    public boolean directed() { return resource.call(NativeNetwork::directed); }

    /** Frees the native memory; closing twice is harmless. */
    @Override
    public void close() {
        resource.close();
    }

    /**
     * Collects links. Nodes come into being with their first link; of repeated links the first one
     * counts. An edge and an arc of weight 1 are meant where no weight is given. A link of weight 0
     * adds no weight, unlike in a file, where it reads as 1.
     */
    public static final class Builder {
        private static final float[] NO_WEIGHTS = {};

        /** Consecutive links of one kind. */
        private record Run(int start, boolean directed) {}

        private int[] src = new int[16];
        private int[] dst = new int[16];
        private float[] weights = NO_WEIGHTS; // empty while all weigh 1
        private int count;
        private final List<Run> runs = new ArrayList<>();

        private Builder() {}

        /**
         * Adds an edge.
         *
         * @param a one end, from 0 to {@link Network#MAX_ID}
         * @param b the other end; the same for a self link
         * @return this builder
         * @throws IllegalArgumentException if an id is out of range
         */
        public Builder edge(long a, long b) { return add(false, a, b, 1); }

        /**
         * Adds a weighted edge.
         *
         * @param a one end
         * @param b the other end
         * @param weight not negative
         * @return this builder
         * @throws IllegalArgumentException if an id or the weight is out of range
         */
        public Builder edge(long a, long b, double weight) { return add(false, a, b, weight); }

        /**
         * Adds an arc.
         *
         * @param from its source
         * @param to its destination
         * @return this builder
         * @throws IllegalArgumentException if an id is out of range
         */
        public Builder arc(long from, long to) { return add(true, from, to, 1); }

        /**
         * Adds a weighted arc.
         *
         * @param from its source
         * @param to its destination
         * @param weight not negative
         * @return this builder
         * @throws IllegalArgumentException if an id or the weight is out of range
         */
        public Builder arc(long from, long to, double weight) {
            return add(true, from, to, weight);
        }

        /**
         * Adds many edges.
         *
         * @param a ends
         * @param b the other ends
         * @return this builder
         * @throws IllegalArgumentException if an id is out of range or the lengths differ
         */
        public Builder edges(long[] a, long[] b) { return addAll(false, a, b, null); }

        /**
         * Adds many weighted edges.
         *
         * @param a ends
         * @param b the other ends
         * @param weights not negative
         * @return this builder
         * @throws IllegalArgumentException if a value is out of range or the lengths differ
         */
        public Builder edges(long[] a, long[] b, float[] weights) {
            return addAll(false, a, b, weights.clone());
        }

        /**
         * Adds many arcs.
         *
         * @param from sources
         * @param to destinations
         * @return this builder
         * @throws IllegalArgumentException if an id is out of range or the lengths differ
         */
        public Builder arcs(long[] from, long[] to) { return addAll(true, from, to, null); }

        /**
         * Adds many weighted arcs.
         *
         * @param from sources
         * @param to destinations
         * @param weights not negative
         * @return this builder
         * @throws IllegalArgumentException if a value is out of range or the lengths differ
         */
        public Builder arcs(long[] from, long[] to, float[] weights) {
            return addAll(true, from, to, weights.clone());
        }

        /**
         * Makes the network of the links so far; the builder can be used on.
         *
         * @return the network, to be closed
         * @throws VorlException if there are no links, or they weigh nothing
         */
        public Network build() {
            boolean arcs = runs.stream().anyMatch(Run::directed);
            NativeNetwork network = weights.length > 0 || arcs
                ? new NativeNetwork.Weighted(new Graph())
                : new NativeNetwork.Unweighted(new SGraph());
            return Resource.longCall(false, null, () -> {
                addTo(network);
                return new Network(network, "", List.of());
            });
        }

        private void addTo(NativeNetwork network) {
            for (int i = 0; i < runs.size(); ++i) {
                Run run = runs.get(i);
                int end = i + 1 < runs.size() ? runs.get(i + 1).start : count;
                float[] part =
                    weights.length == 0 ? null : Arrays.copyOfRange(weights, run.start, end);
                network.addLinks(run.directed, Arrays.copyOfRange(src, run.start, end),
                    Arrays.copyOfRange(dst, run.start, end), part, end - run.start);
            }
        }

        private Builder addAll(boolean directed, long[] from, long[] to, float[] given) {
            if (from.length != to.length || (given != null && given.length != to.length))
                throw new IllegalArgumentException("the arrays have different lengths");
            for (int i = 0; i < from.length; ++i) {
                checkId(from[i]);
                checkId(to[i]);
                if (given != null)
                    checkWeight(given[i]);
            }
            for (int i = 0; i < from.length; ++i)
                add(directed, from[i], to[i], given == null ? 1 : given[i]);
            return this;
        }

        private Builder add(boolean directed, long from, long to, double weight) {
            int source = checkId(from);
            int target = checkId(to);
            float value = checkWeight(weight);
            if (count == src.length) {
                int size = Math.addExact(count, count >> 1);
                src = Arrays.copyOf(src, size);
                dst = Arrays.copyOf(dst, size);
            }
            if (weights.length == 0 ? value != 1 : weights.length < src.length) {
                int known = weights.length;
                weights = Arrays.copyOf(weights, src.length);
                Arrays.fill(weights, known, weights.length, 1);
            }
            if (runs.isEmpty() || runs.get(runs.size() - 1).directed != directed)
                runs.add(new Run(count, directed));
            src[count] = source;
            dst[count] = target;
            if (weights.length > 0)
                weights[count] = value;
            ++count;
            return this;
        }

        private static int checkId(long id) {
            if (id < 0 || id > MAX_ID)
                throw new IllegalArgumentException(
                    "the id is " + id + ", 0 to " + MAX_ID + " is expected");
            return (int) id;
        }

        private static float checkWeight(double weight) {
            float value = (float) weight;
            if (!(value >= 0) || Float.isInfinite(value))
                throw new IllegalArgumentException(
                    "the weight is " + weight + ", a number of at least 0 is expected");
            return value;
        }
    }
}
