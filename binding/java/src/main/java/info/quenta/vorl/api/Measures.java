package info.quenta.vorl.api;

/**
 * How well clusters fit a network.
 *
 * @param clusters number of clusters
 * @param conductance mean conductance; 0 where no link runs between clusters
 * @param modularity modularity at the resolution asked for
 * @param gamma the resolution at which the clusters would be the best partition
 * @param modularityAtGamma modularity at that resolution
 */
public record Measures(
    long clusters, float conductance, float modularity, float gamma, float modularityAtGamma) {}
