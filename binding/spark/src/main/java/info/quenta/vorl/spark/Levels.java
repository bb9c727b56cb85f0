package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.aggregate;
import static org.apache.spark.sql.functions.array_sort;
import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.collect_list;
import static org.apache.spark.sql.functions.count;
import static org.apache.spark.sql.functions.countDistinct;
import static org.apache.spark.sql.functions.greatest;
import static org.apache.spark.sql.functions.least;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.max;
import static org.apache.spark.sql.functions.not;
import static org.apache.spark.sql.functions.row_number;
import static org.apache.spark.sql.functions.struct;

import info.quenta.vorl.api.Cluster;
import info.quenta.vorl.api.Clustering;
import info.quenta.vorl.api.Level;
import info.quenta.vorl.api.Member;
import info.quenta.vorl.api.Network;
import java.util.ArrayList;
import java.util.List;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.types.StructType;

/**
 * The hierarchy of communities: what lies inside of each, and what they form together.
 *
 * <p>Communities whose links fit a task are clustered by the engine on their own links, each in one
 * task; so is the network of the communities, by the driver, or it is asked for its communities in
 * turn where it is too large.
 */
public final class Levels {
    private static final StructType ABOVE =
        StructType.fromDDL("community LONG, level LONG, number LONG, part FLOAT");

    private final Work work;
    private final CommunitiesOptions options;

    private Levels(Work work, CommunitiesOptions options) {
        this.work = work;
        this.options = options;
    }

    /**
     * Builds the levels inside and above communities.
     *
     * <p>Levels inside all begin at 0. Behind the last of them comes that of the communities, then
     * those above. A level has the clusters that came up there: what found no partner is missing in
     * further ones until it is part of a cluster again. Clusters are numbered from 0, level by
     * level. A node of several communities takes part in each with its share, at both ends of a
     * link.
     *
     * @param links as {@link Communities#run} takes them
     * @param communities what that gave for the links
     * @param options the same
     * @return (node, level, cluster, share)
     */
    public static Dataset<Row> of(
        Dataset<Row> links, Dataset<Row> communities, CommunitiesOptions options) {
        try (Work work = new Work(links.sparkSession(), options)) {
            return work.released(new Levels(work, options).levels(links, communities));
        }
    }

    private Dataset<Row> levels(Dataset<Row> links, Dataset<Row> communities) {
        int mark = work.mark();
        work.step("links of communities");
        Dataset<Row> parts = communities.withColumnRenamed("cluster", "community");
        Dataset<Row> ends =
            work.keep(ends(Input.pairs(Input.checked(work, links)), parts), UNKNOWN);
        work.step("inside communities");
        Dataset<Row> inside = work.keep(inside(ends), UNKNOWN);
        Row highest = inside.agg(max("level")).first();
        long level = highest.isNullAt(0) ? 0 : highest.getLong(0) + 1;
        work.step("above communities");
        Dataset<Row> above = above(ends, parts, level + 1);
        Dataset<Row> own = parts.select(col("node"), lit(level).as("level"),
            col("community").as("number"), lit(-1L).as("community"), col("share"));
        Dataset<Row> all = work.keep(inside.unionByName(own).unionByName(above), UNKNOWN);
        long most = work.size(all);
        Dataset<Row> clusters = all.select("level", "community", "number").distinct();
        Dataset<Row> numbers =
            work.numbered(clusters, "cluster", most, col("level"), col("community"), col("number"));
        Dataset<Row> result =
            work.keep(all.join(numbers, new String[] {"level", "community", "number"})
                          .select("node", "level", "cluster", "share"),
                most);
        work.dropSince(mark, List.of(result));
        return result;
    }

    private static final long UNKNOWN = Long.MAX_VALUE;

    /** (a, b, from, to, weight): links with the communities of their ends, by shares of both. */
    private static Dataset<Row> ends(Dataset<Row> pairs, Dataset<Row> parts) {
        Column weight = col("weight").multiply(
            col("shareA").cast("double").multiply(col("shareB").cast("double")));
        return pairs
            .join(parts.select(
                      col("node").as("a"), col("community").as("from"), col("share").as("shareA")),
                "a")
            .join(parts.select(
                      col("node").as("b"), col("community").as("to"), col("share").as("shareB")),
                "b")
            .select(col("a"), col("b"), col("from"), col("to"), weight.as("weight"), col("shareA"),
                col("shareB"));
    }

    private Dataset<Row> inside(Dataset<Row> ends) {
        Dataset<Row> own =
            ends.filter(col("from").equalTo(col("to"))).withColumnRenamed("from", "community");
        Dataset<Row> fit = own.groupBy("community")
                               .agg(count(lit(1)).as("links"))
                               .filter(col("links").leq(lit(taskLinks())))
                               .select("community");
        Dataset<Row> nodes =
            own.select(col("community"), col("a").as("node"), col("shareA").as("share"))
                .union(own.select(col("community"), col("b").as("node"), col("shareB")))
                .distinct();
        // Ids for the engine, in the order of the nodes.
        Dataset<Row> local =
            work.keep(nodes.withColumn("id",
                          row_number()
                              .over(org.apache.spark.sql.expressions.Window.partitionBy("community")
                                        .orderBy(Input.order(nodes)))
                              .cast("long")),
                2 * work.size(ends));
        Dataset<Row> numbered =
            own.join(fit, "community")
                .join(local.select(col("community"), col("node").as("a"), col("id").as("low")),
                    new String[] {"community", "a"})
                .join(local.select(col("community"), col("node").as("b"), col("id").as("high")),
                    new String[] {"community", "b"})
                .select(col("community"), least(col("low"), col("high")).as("low"),
                    greatest(col("low"), col("high")).as("high"), col("weight"))
                .filter(col("weight").gt(lit(0.0)))
                .repartition(col("community"))
                .sortWithinPartitions("community", "low", "high");
        return new InsideTask()
            .of(numbered)
            .join(local, new String[] {"community", "id"})
            .select(col("node"), col("level"), col("number"), col("community"),
                col("part").multiply(col("share")).cast("float").as("share"));
    }

    private long taskLinks() {
        return options.linksOfTask() > 0 ? options.linksOfTask()
                                         : CommunitiesOptions.DEFAULT.linksOfTask();
    }

    /** (node, level, number, community, share) of clusters of communities. */
    private Dataset<Row> above(Dataset<Row> ends, Dataset<Row> parts, long firstLevel) {
        Dataset<Row> sorted = ends.withColumn("src", least(col("from"), col("to")))
                                  .withColumn("dst", greatest(col("from"), col("to")));
        Dataset<Row> network = work.keep(Work.orderedSums(sorted, List.of("src", "dst"),
                                             List.of("a", "b", "from"), List.of("weight")),
            work.size(ends));
        Dataset<Row> between = network.filter(not(col("src").equalTo(col("dst"))));
        Dataset<Row> above;
        if (between.isEmpty())
            above = work.empty(ABOVE);
        else if (work.size(network) <= taskLinks())
            above = work.table(clustered(network.orderBy("src", "dst").collectAsList()), ABOVE);
        else
            above = inTurn(between);
        Column value = col("share").cast("double").multiply(col("part"));
        Column added =
            aggregate(array_sort(collect_list(struct(col("community"), value.as("value")))),
                lit(0.0), (sum, next) -> sum.plus(next.getField("value")));
        return parts.join(above, "community")
            .groupBy(col("node"), col("level").plus(lit(firstLevel)).as("level"), col("number"))
            .agg(added.cast("float").as("share"))
            .withColumn("community", lit(-1L));
    }

    /** The hierarchy of the network of the communities, found as that of nodes is. */
    private Dataset<Row> inTurn(Dataset<Row> between) {
        Dataset<Row> communities = Communities.run(work, between, options);
        Row counts = communities.agg(countDistinct("cluster"), countDistinct("node")).first();
        if (counts.getLong(0) == counts.getLong(1))
            return work.empty(ABOVE);
        work.step("above communities");
        Dataset<Row> levels = levels(between, communities);
        // Communities are clusters already.
        Dataset<Row> several = levels.groupBy("cluster")
                                   .agg(count(lit(1)).as("members"))
                                   .filter(col("members").gt(lit(1)))
                                   .select("cluster");
        return levels.join(several, "cluster")
            .select(col("node").as("community"), col("level"), col("cluster").as("number"),
                col("share").as("part"));
    }

    /** What the engine makes of the network of the communities. */
    private static List<Row> clustered(List<Row> links) {
        Network.Builder builder = Network.builder();
        for (Row link : links) LinksTask.add(builder, link, 0);
        List<Row> rows = new ArrayList<>();
        try (Network network = builder.build(); Clustering clustering = network.cluster()) {
            for (Level level : clustering.levels())
                for (Cluster cluster : level.clusters()) {
                    // Communities are clusters already.
                    if (level.index() == 0 && cluster.size() == 1)
                        continue;
                    for (Member member : cluster.members())
                        rows.add(RowFactory.create(
                            member.node(), (long) level.index(), cluster.id(), member.share()));
                }
        }
        return rows;
    }
}
