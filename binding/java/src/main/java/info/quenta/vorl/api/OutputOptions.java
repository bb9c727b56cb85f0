package info.quenta.vorl.api;

import info.quenta.vorl.ClsOutFmt;
import info.quenta.vorl.SignifclsExtoptions;
import java.util.Objects;

/** What of a clustering is written to a file, or to one file for each level. */
public final class OutputOptions {
    /** Which clusters are written. */
    public enum Clusters {
        /** All clusters of all levels, each once. */
        ALL(ClsOutFmt.ALLCLS),
        /** The root alone. */
        ROOT(ClsOutFmt.ROOT),
        /** Those that stand out from their owners by density and weight. */
        SIGNIFICANT(ClsOutFmt.SIGNIF_DEFAULT),
        /** The hierarchy: nodes and clusters with their owners, in the format RHB. */
        HIERARCHY(ClsOutFmt.HIER);

        private final ClsOutFmt value;

        Clusters(ClsOutFmt value) { this.value = value; }
    }

    /** Which shares of nodes are written. */
    public enum Shares {
        /** None, nor the ids of clusters. */
        NONE(ClsOutFmt.SIMPLE),
        /** Those of nodes that belong unevenly to their clusters. */
        UNEVEN(ClsOutFmt.SHARED),
        /** As uneven, with the ids of the clusters. */
        FULL(ClsOutFmt.EXTENDED);

        private final ClsOutFmt value;

        Shares(ClsOutFmt value) { this.value = value; }
    }

    private record LevelRange(int first, int last, float step) {}

    // Of the first three one is set.
    private final Clusters clusters;
    private final LevelRange levels;
    private final Long wanted;
    private final Shares shares;
    private final boolean maxShare;

    private OutputOptions(
        Clusters clusters, LevelRange levels, Long wanted, Shares shares, boolean maxShare) {
        this.clusters = clusters;
        this.levels = levels;
        this.wanted = wanted;
        this.shares = Objects.requireNonNull(shares);
        this.maxShare = maxShare;
    }

    /**
     * The given clusters with full shares.
     *
     * @param clusters which clusters
     * @return new options
     */
    public static OutputOptions of(Clusters clusters) {
        return new OutputOptions(Objects.requireNonNull(clusters), null, null, Shares.FULL, false);
    }

    /**
     * Each level in a file of its own, with full shares: that of level 3 in {@code dir/name.cnl} is
     * {@code dir/name/name_3.cnl}, its number padded to the width of the highest one.
     *
     * @return new options
     */
    public static OutputOptions perLevel() { return perLevel(0, Integer.MAX_VALUE); }

    /**
     * As {@link #perLevel()}, for a range of levels.
     *
     * @param first index of a level
     * @param last index of a level; where there are fewer levels, the top one is meant
     * @return new options
     * @throws IllegalArgumentException if first is negative, or above last
     */
    public static OutputOptions perLevel(int first, int last) { return perLevel(first, last, 1); }

    /**
     * As {@link #perLevel()}, for a range of levels that is thinned out.
     *
     * @param first index of a level
     * @param last index of a level; where there are fewer levels, the top one is meant
     * @param step ratio in [0, 1]: each level written has at most this ratio of the clusters of the
     *     one before; 1 for all levels
     * @return new options
     * @throws IllegalArgumentException if first is negative, or above last, or step is out of range
     */
    public static OutputOptions perLevel(int first, int last, double step) {
        if (first < 0 || first > last)
            throw new IllegalArgumentException(
                "the levels are " + first + " to " + last + ", a range from 0 is expected");
        if (!(step >= 0 && step <= 1))
            throw new IllegalArgumentException("the step is " + step + ", 0 to 1 is expected");
        return new OutputOptions(
            null, new LevelRange(first, last, (float) step), null, Shares.FULL, false);
    }

    /**
     * The levels with this number of clusters, and one on each side of them; each in a file of its
     * own as for {@link #perLevel()}, with full shares.
     *
     * @param clusters the wanted number, from 1 to {@link Network#MAX_ID}
     * @return new options
     * @throws IllegalArgumentException if the number is out of range
     */
    public static OutputOptions around(long clusters) {
        if (clusters < 1 || clusters > Network.MAX_ID)
            throw new IllegalArgumentException("the number of clusters is " + clusters + ", 1 to "
                + Network.MAX_ID + " is expected");
        return new OutputOptions(null, null, clusters, Shares.FULL, false);
    }

    /**
     * The same clusters with other shares.
     *
     * @param shares which shares
     * @return new options
     */
    public OutputOptions shares(Shares shares) {
        return new OutputOptions(clusters, levels, wanted, shares, maxShare);
    }

    /**
     * The same, but a node goes only to the clusters of its largest share.
     *
     * @param maxShare whether it does
     * @return new options
     */
    public OutputOptions maxShare(boolean maxShare) {
        return new OutputOptions(clusters, levels, wanted, shares, maxShare);
    }

    /** Writes a hierarchy of at least one level, or the description of any. */
    void write(NativeHierarchy hierarchy, int levelCount, String file) {
        int format = shares.value.swigValue() | (maxShare ? ClsOutFmt.MAXSHARE.swigValue() : 0);
        if (describesHierarchyOnly()) {
            hierarchy.describe(file);
        } else if (wanted != null) {
            hierarchy.writeLevelsAround(wanted.intValue(), format, file);
        } else if (levels != null) {
            if (levels.first >= levelCount)
                throw new VorlException("the hierarchy has " + levelCount
                    + " levels, there is no level " + levels.first);
            hierarchy.writeLevels(
                levels.first, Math.min(levels.last, levelCount - 1), levels.step, format, file);
        } else {
            writeClusters(hierarchy, format | clusters.value.swigValue(), file);
        }
    }

    private void writeClusters(NativeHierarchy hierarchy, int format, String file) {
        info.quenta.vorl.OutputOptions options = new info.quenta.vorl.OutputOptions();
        SignifclsExtoptions bounds = new SignifclsExtoptions();
        try {
            options.setClsfmt((short) format);
            options.setClsfile(file);
            if (clusters == Clusters.SIGNIFICANT) {
                bounds.reset(true);
                options.setSignifcls(bounds);
            }
            hierarchy.output(options);
        } finally {
            bounds.delete();
            options.delete();
        }
    }

    boolean describesHierarchyOnly() { return clusters == Clusters.HIERARCHY; }

    /** Whether the file that is asked for becomes a folder of files. */
    boolean hasFolder() { return clusters == null; }
}
