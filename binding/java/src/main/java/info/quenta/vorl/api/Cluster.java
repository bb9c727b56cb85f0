package info.quenta.vorl.api;

import info.quenta.vorl.Bulk;
import java.util.AbstractList;
import java.util.List;

/** A cluster of nodes. */
public final class Cluster {
    private final Clustering clustering;
    private final long id;
    private final int level;
    private final int place;
    private Bulk.Rows rows; // null until the members are asked for

    Cluster(Clustering clustering, long id, int level, Bulk.Rows rows, int place) {
        this.clustering = clustering;
        this.id = id;
        this.level = level;
        this.rows = rows;
        this.place = place;
    }

    /**
     * The id of the cluster, unique in the process.
     *
     * @return from 0 on
     */
    public long id() { return id; }

    /**
     * The level that the cluster was formed on.
     *
     * @return its index in {@link Clustering#levels}
     */
    public int level() { return level; }

    /**
     * The nodes of the cluster.
     *
     * @return an immutable list, never empty
     * @throws IllegalStateException if the clustering is closed
     */
    public List<Member> members() {
        Bulk.Rows all = rows();
        int start = all.starts()[place];
        int count = all.starts()[place + 1] - start;
        return new AbstractList<>() {
            @Override
            public Member get(int index) {
                java.util.Objects.checkIndex(index, count);
                return new Member(Integer.toUnsignedLong(all.others()[start + index]),
                    all.shares()[start + index]);
            }

            @Override
            public int size() {
                return count;
            }
        };
    }

    /**
     * The number of nodes, shared ones counted whole.
     *
     * @return a positive number
     * @throws IllegalStateException if the clustering is closed
     */
    public int size() {
        Bulk.Rows all = rows();
        return all.starts()[place + 1] - all.starts()[place];
    }

    /**
     * The clusters of higher levels that the cluster belongs to.
     *
     * @return a new list; empty for a cluster of the root
     * @throws IllegalStateException if the clustering is closed
     */
    public List<Membership> owners() { return clustering.ownersOf(this); }

    private synchronized Bulk.Rows rows() {
        clustering.check();
        if (rows == null)
            rows = clustering.members(level);
        return rows;
    }

    @Override
    public boolean equals(Object other) {
        return other instanceof Cluster that && that.clustering == clustering && that.id == id;
    }

    @Override
    public int hashCode() {
        return Long.hashCode(id);
    }

    @Override
    public String toString() {
        return "cluster " + id;
    }
}
