package info.quenta.vorl.api;

import info.quenta.vorl.Bulk;
import info.quenta.vorl.ClusterOptions;
import info.quenta.vorl.Graph;
import info.quenta.vorl.SGraph;

/** A native network of either kind. */
interface NativeNetwork {
    void addLinks(boolean directed, int[] src, int[] dst, float[] weights, int count);

    String fault();

    long nodes();

    boolean directed();

    NativeHierarchy cluster(ClusterOptions options);

    Bulk.Found communities(CommunitiesOptions options);

    Measures evaluate(String clusters, String network, double gamma);

    void delete();

    private static Measures measures(double[] values) {
        return new Measures((long) values[0], (float) values[1], (float) values[2],
            (float) values[3], (float) values[4]);
    }

    record Weighted(Graph graph) implements NativeNetwork {
        @Override
        public void addLinks(boolean directed, int[] src, int[] dst, float[] weights, int count) {
            Bulk.addLinks(graph, directed, src, dst, weights, count);
        }

        @Override
        public String fault() {
            return Bulk.fault(graph);
        }

        @Override
        public long nodes() {
            return Bulk.nodes(graph);
        }

        @Override
        public boolean directed() {
            return graph.directed();
        }

        @Override
        public NativeHierarchy cluster(ClusterOptions options) {
            return new NativeHierarchy.Weighted(Bulk.cluster(graph, options));
        }

        @Override
        public Bulk.Found communities(CommunitiesOptions options) {
            return Bulk.communities(graph, options.shares(), options.starts(), options.threads());
        }

        @Override
        public Measures evaluate(String clusters, String network, double gamma) {
            return measures(Bulk.evaluate(graph, clusters, network, gamma));
        }

        @Override
        public void delete() {
            graph.delete();
        }
    }

    record Unweighted(SGraph graph) implements NativeNetwork {
        @Override
        public void addLinks(boolean directed, int[] src, int[] dst, float[] weights, int count) {
            Bulk.addLinks(graph, directed, src, dst, count);
        }

        @Override
        public String fault() {
            return Bulk.fault(graph);
        }

        @Override
        public long nodes() {
            return Bulk.nodes(graph);
        }

        @Override
        public boolean directed() {
            return graph.directed();
        }

        @Override
        public NativeHierarchy cluster(ClusterOptions options) {
            return new NativeHierarchy.Unweighted(Bulk.cluster(graph, options));
        }

        @Override
        public Bulk.Found communities(CommunitiesOptions options) {
            return Bulk.communities(graph, options.shares(), options.starts(), options.threads());
        }

        @Override
        public Measures evaluate(String clusters, String network, double gamma) {
            return measures(Bulk.evaluate(graph, clusters, network, gamma));
        }

        @Override
        public void delete() {
            graph.delete();
        }
    }
}
