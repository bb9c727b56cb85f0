package info.quenta.vorl.api;

/**
 * A node in a cluster.
 *
 * @param node id of the node
 * @param share how much of the node belongs to the cluster, in (0, 1]
 */
public record Member(long node, float share) {}
