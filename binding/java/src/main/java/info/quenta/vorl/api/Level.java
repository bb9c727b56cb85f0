package info.quenta.vorl.api;

import java.util.List;

/** The clusters that one pass formed, or those of the root. */
public final class Level {
    private final Clustering clustering;
    private final int index;
    private final int size;
    private final long items;

    Level(Clustering clustering, int index, int size, long items) {
        this.clustering = clustering;
        this.index = index;
        this.size = size;
        this.items = items;
    }

    /**
     * The place of the level in the hierarchy.
     *
     * @return 0 for the bottom level, the number of levels for the root
     */
    public int index() { return index; }

    /**
     * The number of clusters.
     *
     * @return the size of {@link #clusters}
     */
    public int size() { return size; }

    /**
     * The number of items that the hierarchy has at this height: the clusters of the level, and
     * those from below that were carried past it.
     *
     * @return at least {@link #size}
     */
    public long itemCount() { return items; }

    /**
     * The clusters, in the order in which they were formed.
     *
     * @return an immutable list
     * @throws IllegalStateException if the clustering is closed
     */
    public List<Cluster> clusters() { return clustering.clusters(index); }

    /**
     * The clusters of this level that hold a node, and its shares in them. At the root the shares
     * of each node add up to 1; on a level they may add up to less, as clusters from below are
     * carried past it.
     *
     * @param node id of the node
     * @return a new list in the order of the clusters; empty if no cluster of the level holds it
     * @throws java.util.NoSuchElementException if there is no such node
     * @throws IllegalStateException if the clustering is closed
     */
    public List<Membership> memberships(long node) { return clustering.membershipsAt(index, node); }

    @Override
    public String toString() {
        return "level " + index + " of " + size + " clusters";
    }
}
