package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.max;
import static org.apache.spark.sql.functions.min;
import static org.apache.spark.sql.functions.sum;

import java.util.List;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;

/**
 * The communities of a network whose links are a table.
 *
 * <p>The answer is that of {@code vorl communities}, bit for bit: it depends on the ids and the
 * weights of the network alone, not on partitions, executors or the order of rows.
 */
public final class Communities {
    /** Links that may be walked by searches, all starts together; the first one is always made. */
    private static final long WALKED = 1000000;
    /**
     * How much more than they save communities may cost and still be told, with a saving below 0: a
     * share of what names them, and a few natural units.
     */
    private static final double DOUBT = 0.05;
    private static final double DOUBT_UNITS = 5;

    private final Work work;
    private final CommunitiesOptions options;

    private Communities(Work work, CommunitiesOptions options) {
        this.work = work;
        this.options = options;
    }

    /**
     * Finds the communities of a network, each node of it in at least one.
     *
     * <p>Directions don't count: the weights of all rows of a pair, both ways, are added up. A row
     * of equal ends is a self link, and nodes whose links all weigh 0 are isolated. Communities are
     * numbered from 0 by falling weight, those of equal weight by the least id in them; isolated
     * nodes come last, each a community of its own. State between steps lies in checkpoints, so
     * that a lost executor costs a retry.
     *
     * @param links (src, dst[, weight]): ids are whole numbers of 0 or above, or strings, and
     *     weights are taken at 32 bits; without that column all weigh 1
     * @return (node, cluster, share): shares are in (0, 1], those of a node add up to 1
     * @throws IllegalArgumentException for other columns, a missing value or a weight below 0, and
     *     on a cluster without a folder for checkpoints
     */
    public static Dataset<Row> run(Dataset<Row> links, CommunitiesOptions options) {
        try (Work work = new Work(links.sparkSession(), options)) {
            return work.released(run(work, links, options));
        }
    }

    static Dataset<Row> run(Work work, Dataset<Row> links, CommunitiesOptions options) {
        return new Communities(work, options).run(links);
    }

    private Dataset<Row> run(Dataset<Row> links) {
        int mark = work.mark();
        work.step("reading links");
        Input input = new Input(work, links);
        Dataset<Row> result;
        if (input.size == 0)
            result = isolated(input, 0);
        else if (input.count <= options.linksOfTask())
            result = inOneTask(input);
        else
            result = found(input, new NodeNetwork(work, input));
        result = work.keep(result, Long.MAX_VALUE);
        work.dropSince(mark, List.of(result));
        return result;
    }

    /** What the native library finds. */
    private Dataset<Row> inOneTask(Input input) {
        work.step("the whole, in one task");
        Dataset<Row> found =
            work.keep(new NativeTask(options).of(input.edges.repartition(1)), Long.MAX_VALUE);
        long count = found.agg(max("cluster")).first().getLong(0) + 1;
        return found.join(input.nodes, "item")
            .select("node", "cluster", "share")
            .unionByName(isolated(input, count));
    }

    /** Isolated nodes, numbered behind so many communities. */
    private Dataset<Row> isolated(Input input, long count) {
        long size = work.size(input.isolated);
        return work.numbered(input.isolated, "number", size, Input.order(input.isolated))
            .select(
                col("node"), col("number").plus(lit(count)).as("cluster"), lit(1.0f).as("share"));
    }

    private Dataset<Row> found(Input input, NodeNetwork nodes) {
        work.step("similarity");
        Dataset<Row> shared = work.keep(Similarity.withShared(nodes.network.links()), nodes.links);
        long wanted =
            options.starts() > 0 ? options.starts() : 1 + WALKED / Math.max(1, nodes.links);
        int starts = (int) Math.min(wanted, Start.ALL.size());
        Search.Found best = null;
        for (Start start : Start.ALL.subList(0, starts)) {
            Search.Found found = Search.run(work, nodes, shared, start);
            if (best == null || better(found, best))
                best = found;
        }
        Partitioned partition = partition(nodes, best);
        work.step("shares");
        Dataset<Row> shares = options.shares() ? Sharing.shareOut(work, nodes.network, partition)
                                               : Sharing.whole(partition);
        work.step("numbering");
        return answer(input, partition, shares);
    }

    /** No communities are what is left where none of those found is good enough. */
    private static boolean better(Search.Found a, Search.Found b) {
        boolean several = a.partition().count() > 1;
        if (several != b.partition().count() > 1)
            return several;
        return a.description().saving() > b.description().saving();
    }

    /** The best partition, or that of one community where it is no better than chance. */
    private Partitioned partition(NodeNetwork nodes, Search.Found best) {
        Dataset<Row> whole = nodes.network.items()
                                 .agg(sum("total").as("total"), sum("nodes").as("nodes"))
                                 .select(lit(0L).as("label"), lit(nodes.weight).as("inner"),
                                     col("total"), col("nodes"));
        Description none = Description.of(
            best.start().own(), nodes.weight, nodes.scale, Sums.of(whole, nodes.weight));
        double saving = best.description().saving() - none.saving();
        if (saving >= -(DOUBT * best.description().naming() + DOUBT_UNITS))
            return best.partition();
        whole = work.keep(whole, 1);
        return new Partitioned(nodes.network.items().select(col("item"), lit(0L).as("label")),
            whole, 1, best.partition().likelihood().estimated(Sums.of(whole, nodes.weight)));
    }

    private Dataset<Row> answer(Input input, Partitioned partition, Dataset<Row> shares) {
        Dataset<Row> least = shares.groupBy("community").agg(min("node").as("least"));
        Dataset<Row> weights =
            partition.groups().select(col("label").as("community"), col("total").as("weight"));
        Dataset<Row> numbers = work.keep(work.numbered(least.join(weights, "community"), "cluster",
                                             partition.count(), col("weight").desc(), col("least")),
            partition.count());
        long count = work.size(numbers);
        Dataset<Row> named = shares.withColumnRenamed("node", "item")
                                 .join(numbers.select("community", "cluster"), "community")
                                 .join(input.nodes, "item")
                                 .select("node", "cluster", "share");
        return named.unionByName(isolated(input, count));
    }
}
