// Clusters and nodes that are selected together.

export class Chosen {
    /** In the order in which they were selected. */
    readonly clusters = new Set<number>();
    readonly nodes = new Set<number>();

    get size(): number {
        return this.clusters.size + this.nodes.size;
    }
    toggleCluster(cluster: number) {
        if (!this.clusters.delete(cluster)) this.clusters.add(cluster);
    }
    toggleNode(node: number) {
        if (!this.nodes.delete(node)) this.nodes.add(node);
    }
    clear() {
        this.clusters.clear();
        this.nodes.clear();
    }
}
