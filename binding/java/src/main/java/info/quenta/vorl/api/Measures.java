package info.quenta.vorl.api;

/**
 * How well clusters fit a network. Nodes of no cluster add nothing themselves; their links to
 * clusters lead out of these.
 *
 * @param clusters number of clusters
 * @param conductance mean conductance; 0 where no link leaves a cluster, NaN for a single cluster
 *     that holds all links or none, since there is no cut
 * @param modularity modularity at the resolution asked for
 * @param estimatedGamma the resolution estimated from the clusters by the log-ratio rule
 * @param modularityAtEstimatedGamma modularity at that resolution
 */
public record Measures(long clusters, float conductance, float modularity, float estimatedGamma,
    float modularityAtEstimatedGamma) {}
