package info.quenta.vorl.api;

/**
 * A cluster that a node, or another cluster, belongs to.
 *
 * @param cluster the cluster
 * @param share how much of the item belongs to it, in (0, 1]; the shares of an item add up to 1
 */
public record Membership(Cluster cluster, float share) {}
