package info.quenta.vorl.api;

import info.quenta.vorl.ClsOutFmt;
import info.quenta.vorl.SignifclsExtoptions;
import java.nio.file.Path;
import java.util.Objects;

/** What of a clustering is written to a file. */
public final class OutputOptions {
    /** Which clusters are written. */
    public enum Clusters {
        /** All clusters of all levels, each once. */
        ALL(ClsOutFmt.ALLCLS),
        /** The root alone. */
        ROOT(ClsOutFmt.ROOT),
        /** Those that stand out from their owners. */
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

    private final Clusters clusters;
    private final Shares shares;
    private final boolean maxShare;

    private OutputOptions(Clusters clusters, Shares shares, boolean maxShare) {
        this.clusters = Objects.requireNonNull(clusters);
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
        return new OutputOptions(clusters, Shares.FULL, false);
    }

    /**
     * The same clusters with other shares.
     *
     * @param shares which shares
     * @return new options
     */
    public OutputOptions shares(Shares shares) {
        return new OutputOptions(clusters, shares, maxShare);
    }

    /**
     * The same, but a node goes only to the clusters of its largest share.
     *
     * @param maxShare whether it does
     * @return new options
     */
    public OutputOptions maxShare(boolean maxShare) {
        return new OutputOptions(clusters, shares, maxShare);
    }

    /** The native record for a file, to be deleted by the caller. */
    info.quenta.vorl.OutputOptions toNative(Path file) {
        info.quenta.vorl.OutputOptions options = new info.quenta.vorl.OutputOptions();
        int mask = clusters.value.swigValue() | shares.value.swigValue();
        if (maxShare)
            mask |= ClsOutFmt.MAXSHARE.swigValue();
        options.setClsfmt((short) mask);
        options.setClsfile(file.toString());
        if (clusters == Clusters.SIGNIFICANT)
            options.setSignifcls(new SignifclsExtoptions());
        return options;
    }

    boolean describesHierarchyOnly() { return clusters == Clusters.HIERARCHY; }
}
