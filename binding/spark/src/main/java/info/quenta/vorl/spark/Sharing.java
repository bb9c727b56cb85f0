package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.coalesce;
import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.max;

import java.util.List;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;

/**
 * Sharing out of nodes that belong to several communities.
 *
 * <p>Nodes share in several communities where that makes their links likelier by more than it
 * costs to name those, and how common shared nodes are is learnt from the network.
 */
final class Sharing {
    /** Rounds until the communities of a network with many shared nodes are stable. */
    private static final int ROUNDS = 5;
    /** They are stable when no more than one in so many nodes has others. */
    private static final long FEW = 1000;
    /** How common shared nodes are thought to be before any is known. */
    private static final double PRIOR = 0.05;

    private Sharing() {}

    /** Each node in one community: (node, community, share, place). */
    static Dataset<Row> whole(Partitioned partition) {
        return partition.labels().select(col("item").as("node"), col("label").as("community"),
            lit(1.0f).as("share"), lit(0).as("place"));
    }

    /** The communities of each node, the largest share in the first place, in the same form. */
    static Dataset<Row> shareOut(Work work, ItemNetwork network, Partitioned partition) {
        Likelihood likelihood = partition.likelihood();
        Dataset<Row> shares = work.keep(whole(partition), network.size());
        Dataset<Row> communities = partition.groups().select(
            col("label").as("community"), col("inner").as("inside"), col("total").as("all"));
        double naming = Logarithm.ln(Math.max(2, (double) partition.count()));
        double common = PRIOR;
        long nodes = network.size();
        long most = network.most() + nodes;
        for (int round = 0; round < ROUNDS; ++round) {
            int mark = work.mark();
            Dataset<Row> pulls = work.keep(pulls(network, shares), most * Sharer.MOST);
            if (round > 0)
                communities = work.keep(holdings(network, shares, pulls), partition.count());
            Sharer sharer =
                new Sharer(likelihood, naming + Logarithm.ln((1 - common) / common), naming);
            Column first = col("place").equalTo(lit(0));
            Work.Counted found =
                work.keepCounted(sharer.of(touched(network, shares, pulls, communities)),
                    most * Sharer.MOST, first.and(col("changed")), first.and(col("several")));
            Dataset<Row> next = found.rows();
            long changed = found.counts()[0];
            long several = found.counts()[1];
            shares = next.select("node", "community", "share", "place");
            common = Math.min(Math.max((double) several / nodes, 1.0 / nodes), 0.5);
            work.dropSince(mark, List.of(next));
            if (changed * FEW <= nodes)
                break;
        }
        return shares;
    }

    /**
     * Weight of the links of each node to communities: (node, community, pull). Sums of products
     * aren't exact, so they are made in the order in which the library has the links of a node.
     */
    private static Dataset<Row> pulls(ItemNetwork network, Dataset<Row> shares) {
        Dataset<Row> ends =
            network.links()
                .select("src", "dst", "weight", "rises")
                .join(shares.select(col("node").as("dst"), col("community"), col("share")), "dst")
                .select(col("src").as("node"), col("community"), col("rises"), col("dst"),
                    col("share").cast("double").multiply(col("weight")).as("pull"));
        return Work.orderedSums(
            ends, List.of("node", "community"), List.of("rises", "dst"), List.of("pull"));
    }

    /** What communities hold while their nodes are shared: (community, inside, all). */
    private static Dataset<Row> holdings(
        ItemNetwork network, Dataset<Row> shares, Dataset<Row> pulls) {
        Dataset<Row> parts =
            shares.select(col("node"), col("community"), col("share").cast("double").as("share"))
                .join(pulls, new String[] {"node", "community"}, "left")
                .join(network.items().select(col("item").as("node"), col("total")), "node")
                .select(col("community"), col("node"),
                    col("share").multiply(coalesce(col("pull"), lit(0.0))).as("inside"),
                    col("share").multiply(col("total")).as("all"));
        return Work.orderedSums(
            parts, List.of("community"), List.of("node"), List.of("inside", "all"));
    }

    private static Dataset<Row> touched(
        ItemNetwork network, Dataset<Row> shares, Dataset<Row> pulls, Dataset<Row> communities) {
        Dataset<Row> both =
            pulls
                .select(col("node"), col("community"), col("pull"), lit(0.0f).as("share"),
                    lit(true).as("linked"))
                .unionByName(shares.select(col("node"), col("community"), lit(0.0).as("pull"),
                    col("share"), lit(false).as("linked")))
                .groupBy("node", "community")
                .agg(max("pull").as("pull"), max("share").as("share"), max("linked").as("linked"));
        return both.join(communities, "community")
            .join(
                network.items().select(col("item").as("node"), col("total"), col("inner")), "node")
            .select(
                "node", "total", "inner", "community", "pull", "share", "linked", "all", "inside")
            .repartition(col("node"))
            .sortWithinPartitions("node");
    }
}
