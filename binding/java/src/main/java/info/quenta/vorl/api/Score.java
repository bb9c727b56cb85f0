package info.quenta.vorl.api;

/**
 * How good a clustering is.
 *
 * @param modularity modularity of the root
 * @param gamma the resolution used; negative where it was found by itself
 * @param estimatedGamma the resolution at which the root would be the best partition
 * @param conductance mean conductance of the root
 * @param clusters number of clusters formed on all levels
 */
public record Score(
    float modularity, float gamma, float estimatedGamma, float conductance, long clusters) {}
