package info.quenta.vorl.api;

import info.quenta.vorl.Bulk;
import info.quenta.vorl.HierScore;
import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.AbstractList;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.NoSuchElementException;

/**
 * A hierarchy of overlapping clusters over the nodes of a network.
 *
 * <p>What is asked for a level is fetched in one call and kept, so walking over it is cheap.
 * Threads may share a clustering.
 */
public final class Clustering implements AutoCloseable {
    private static final int NODES = -1;

    private final Resource<NativeHierarchy> resource;
    private final long nodeCount;
    private final List<Level> levels;
    private final Level root;

    // Fetched when they are first asked for.
    private final Bulk.Rows[] members; // of each level, and of the root
    private final Bulk.Rows[] owners; // of the nodes, and of each level
    private final long[][] memberIndex; // places of each level's members by their ids
    private long[] nodeIndex;
    private long[] clusterIndex;
    private int[] levelStarts; // place of each level's first cluster among all clusters

    Clustering(NativeHierarchy hierarchy) {
        resource = new Resource<>(this, "clustering", hierarchy, NativeHierarchy::delete);
        long[] sizes = resource.call(NativeHierarchy::sizes);
        nodeCount = sizes[0];
        int count = (sizes.length - 2) / 2;
        List<Level> all = new ArrayList<>(count);
        for (int i = 0; i < count; ++i)
            all.add(new Level(this, i, Math.toIntExact(sizes[2 + 2 * i]), sizes[3 + 2 * i]));
        levels = List.copyOf(all);
        root = new Level(this, count, Math.toIntExact(sizes[1]), sizes[1]);
        members = new Bulk.Rows[count + 1];
        owners = new Bulk.Rows[count + 1];
        memberIndex = new long[count + 1][];
    }

    /**
     * The levels, bottom level first.
     *
     * @return an immutable list; empty where nothing clusters
     */
    public List<Level> levels() {
        resource.check();
        return levels;
    }

    /**
     * The clusters on top of the hierarchy, as a level above the last one. They come from several
     * levels; together they hold every node.
     *
     * @return the root
     */
    public Level root() {
        resource.check();
        return root;
    }

    /**
     * The clusters that a node belongs to directly. Their own {@link Cluster#owners} lead on up to
     * the root.
     *
     * @param node id of the node
     * @return a new list; one element for a node that isn't shared
     * @throws NoSuchElementException if there is no such node
     */
    public List<Membership> memberships(long node) {
        resource.check();
        int place = requireNode(node);
        return memberships(owners(NODES), place);
    }

    /** The place of a node among all nodes. */
    private int requireNode(long node) {
        Bulk.Rows rows = owners(NODES);
        synchronized (this) {
            if (nodeIndex == null)
                nodeIndex = index(rows.ids());
        }
        int place = find(nodeIndex, node);
        if (place < 0)
            throw new NoSuchElementException("no node has the id " + node);
        return place;
    }

    /**
     * How good the clustering is.
     *
     * @return its score
     */
    public Score score() {
        return resource.call(hierarchy -> {
            HierScore score = hierarchy.score();
            return new Score(score.getModularity(), score.getGamma(), score.getEgamma(),
                score.getConductance(), score.getClusters().longValueExact());
        });
    }

    /**
     * The number of nodes.
     *
     * @return a positive number
     */
    public long nodeCount() {
        resource.check();
        return nodeCount;
    }

    /**
     * The total weight of the network, both directions of each link counted.
     *
     * @return a positive number
     */
    public double weight() { return resource.call(NativeHierarchy::weight); }

    /**
     * Writes clusters into a file, or a file for each level; folders that are missing are created.
     * Beside the file stands the description of the hierarchy, under the same name with the
     * extension {@code .rhb}.
     *
     * @param file the file, which is overwritten
     * @param options what is written
     * @throws UncheckedIOException if the file can't be written to
     * @throws VorlException if writing fails, or the hierarchy has none of the levels
     */
    public void write(Path file, OutputOptions options) {
        Path target = file.toAbsolutePath();
        resource.callLong(false, null, hierarchy -> {
            if (levels.isEmpty() && !options.describesHierarchyOnly())
                throw new VorlException("the clustering has no levels, nothing to write");
            String name = FileNames.toNative(target);
            if (options.hasFolder())
                makeFolder(target.getParent());
            else
                makeFile(target);
            if (!options.hasFolder() && !options.describesHierarchyOnly())
                makeFile(description(target));
            options.write(hierarchy, levels.size(), name);
            return null;
        });
    }

    private static Path description(Path file) {
        String name = file.getFileName().toString();
        int dot = name.lastIndexOf('.');
        return file.resolveSibling((dot < 0 ? name : name.substring(0, dot)) + ".rhb");
    }

    private static void makeFolder(Path folder) {
        try {
            Files.createDirectories(folder);
        } catch (IOException err) {
            throw new UncheckedIOException(err);
        }
    }

    // The library only reports a file that it can't open.
    private static void makeFile(Path file) {
        makeFolder(file.getParent());
        try {
            Files.newOutputStream(file).close();
        } catch (IOException err) {
            throw new UncheckedIOException(err);
        }
    }

    /** Frees the native memory; closing twice is harmless. */
    @Override
    public void close() {
        resource.close();
    }

    void check() { resource.check(); }

    Bulk.Rows members(int level) {
        resource.check();
        synchronized (members) {
            if (members[level] == null)
                members[level] = resource.call(h -> h.members(level));
            return members[level];
        }
    }

    private Bulk.Rows owners(int level) {
        synchronized (owners) {
            int place = level + 1;
            if (owners[place] == null)
                owners[place] = resource.call(h -> h.owners(level));
            return owners[place];
        }
    }

    /** The clusters of a level, or of the root, in their order. */
    List<Cluster> clusters(int level) {
        Bulk.Rows rows = members(level);
        return new AbstractList<>() {
            @Override
            public Cluster get(int place) {
                long id = Integer.toUnsignedLong(rows.ids()[place]);
                return new Cluster(
                    Clustering.this, id, level < levels.size() ? level : levelOf(id), rows, place);
            }

            @Override
            public int size() {
                return rows.ids().length;
            }
        };
    }

    List<Membership> membershipsAt(int level, long node) {
        Bulk.Rows rows = members(level);
        synchronized (this) {
            if (memberIndex[level] == null)
                memberIndex[level] = index(rows.others());
        }
        long[] index = memberIndex[level];
        List<Membership> result = new ArrayList<>();
        List<Cluster> clusters = clusters(level);
        for (int i = lowerBound(index, node); i < index.length && holds(index[i], node); ++i) {
            int member = (int) index[i];
            int cluster = Arrays.binarySearch(rows.starts(), member);
            if (cluster < 0)
                cluster = -cluster - 2;
            result.add(new Membership(clusters.get(cluster), rows.shares()[member]));
        }
        if (result.isEmpty())
            requireNode(node);
        return result;
    }

    List<Membership> ownersOf(Cluster cluster) {
        resource.check();
        int place = placeOf(cluster.id());
        return memberships(owners(cluster.level()), place - levelStarts[cluster.level()]);
    }

    private List<Membership> memberships(Bulk.Rows rows, int item) {
        List<Membership> result = new ArrayList<>();
        for (int i = rows.starts()[item]; i < rows.starts()[item + 1]; ++i) {
            long id = Integer.toUnsignedLong(rows.others()[i]);
            int level = levelOf(id);
            Cluster cluster = new Cluster(this, id, level, null, placeOf(id) - levelStarts[level]);
            result.add(new Membership(cluster, rows.shares()[i]));
        }
        return result;
    }

    /** The place of a cluster among those of all levels. */
    private int placeOf(long id) {
        synchronized (this) {
            if (clusterIndex == null)
                indexClusters();
        }
        return find(clusterIndex, id);
    }

    private int levelOf(long id) {
        int place = Arrays.binarySearch(levelStarts(), placeOf(id));
        return place >= 0 ? place : -place - 2;
    }

    private int[] levelStarts() {
        synchronized (this) {
            if (clusterIndex == null)
                indexClusters();
            return levelStarts;
        }
    }

    private void indexClusters() {
        int[] starts = new int[levels.size()];
        int count = 0;
        for (int i = 0; i < starts.length; ++i) {
            starts[i] = count;
            count = Math.addExact(count, levels.get(i).size());
        }
        int[] ids = new int[count];
        for (int i = 0; i < starts.length; ++i)
            System.arraycopy(owners(i).ids(), 0, ids, starts[i], levels.get(i).size());
        levelStarts = starts;
        clusterIndex = index(ids);
    }

    /** Ids with their places in the low half, ascending by id. */
    private static long[] index(int[] ids) {
        long[] result = new long[ids.length];
        for (int i = 0; i < ids.length; ++i) result[i] = (long) (ids[i] ^ 0x80000000) << 32 | i;
        Arrays.sort(result);
        return result;
    }

    private static int find(long[] index, long id) {
        int place = lowerBound(index, id);
        return place < index.length && holds(index[place], id) ? (int) index[place] : -1;
    }

    /** The first entry whose id isn't below the given one. */
    private static int lowerBound(long[] index, long id) {
        if (id < 0 || id > Network.MAX_ID)
            return index.length;
        int place = Arrays.binarySearch(index, (long) ((int) id ^ 0x80000000) << 32);
        return place < 0 ? -place - 1 : place;
    }

    private static boolean holds(long entry, long id) {
        return (int) (entry >> 32) == ((int) id ^ 0x80000000);
    }
}
