package info.quenta.vorl.api;

/**
 * How good a clustering is.
 *
 * @param modularity modularity of the root
 * @param gamma the resolution used; negative where it was found by itself
 * @param estimatedGamma the resolution estimated from the root by the log-ratio rule
 * @param conductance mean conductance of the root
 * @param clusters number of clusters formed on all levels
 */
public record Score(
    float modularity, float gamma, float estimatedGamma, float conductance, long clusters) {}
