package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.coalesce;
import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.count;
import static org.apache.spark.sql.functions.first;
import static org.apache.spark.sql.functions.greatest;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.max;
import static org.apache.spark.sql.functions.min;
import static org.apache.spark.sql.functions.not;
import static org.apache.spark.sql.functions.sum;
import static org.apache.spark.sql.functions.when;

import java.util.ArrayList;
import java.util.List;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;

/**
 * The search for the partition that describes a network best, from one start.
 *
 * <p>Nodes merge by similarity as far as that goes. Then in rounds each group is split by the
 * merges of its own similar links where that is likelier; groups of every size within the merges
 * move as one, from large to small, and last single nodes; and groups merge. The rounds end when
 * the description gets no shorter.
 */
final class Search {
    /** Rounds of moves with groups, and with single nodes. */
    private static final int GROUP_MOVES = 4;
    private static final int NODE_MOVES = 10;
    /** Rounds of the whole, which is never reached but by chance of a hard network. */
    private static final int ROUNDS = 12;
    /** A round that saves no more than this share of the whole was the last one. */
    private static final double LITTLE = 1e-4;
    /** A group that shares this much with a piece of the last split is settled. */
    private static final double SETTLED = 0.95;
    /**
     * Heights with more than this share of the items below them aren't worth moves of their own.
     */
    private static final double NEARLY_ALL = 0.8;

    private final Work work;
    private final NodeNetwork nodes;
    private final Start start;
    private final ItemNetwork network;
    private Partitioned partition;
    private Dataset<Row> pieces; // (item, label): the part that the last split put each node in
    private Dataset<Row> settled; // (label): groups that the last split made and hardly changed

    /** What a search found. */
    record Found(Start start, Partitioned partition, Description description) {}

    private Search(Work work, NodeNetwork nodes, Start start) {
        this.work = work;
        this.nodes = nodes;
        this.start = start;
        this.network = nodes.network;
    }

    /**
     * @param shared links with the numbers of shared neighbours
     */
    static Found run(Work work, NodeNetwork nodes, Dataset<Row> shared, Start start) {
        int mark = work.mark();
        Found found = new Search(work, nodes, start).run(shared);
        work.dropSince(mark, List.of(found.partition().labels(), found.partition().groups()));
        return found;
    }

    private void step(String name) { work.step(name + " (" + start + ")"); }

    private Found run(Dataset<Row> shared) {
        step("similarity");
        ItemNetwork similar = Similarity.similar(
            work, shared, nodes.links, network.items(), network.size(), start.similarity());
        int begun = work.mark();
        step("agglomeration");
        Dataset<Row> all =
            network.items().select(col("item"), lit(0L).as("label"), lit(false).as("idle"));
        int mark = work.mark();
        Dataset<Row> labels = network.itself();
        long count = network.size();
        for (Step step : Agglomeration.mergeSimilar(work, similar, all, 1)) {
            labels = ItemNetwork.composed(labels, step.labels());
            count = step.count();
        }
        labels = work.keep(labels, network.size());
        partition = new Partitioned(labels, network.holdings(work, labels, count), count,
            new Likelihood(start.own(), nodes.weight, network.size(), nodes.scale));
        work.dropSince(mark, List.of(partition.labels(), partition.groups()));

        step("refinement");
        partition = Refinement.refine(work, network, partition, NODE_MOVES, null, null);
        Found best = new Found(start, partition, description());
        settled = partition.groups().select("label").filter(lit(false));
        for (int round = 1; round <= ROUNDS; ++round) {
            Dataset<Row> asleep = split(similar);
            step("refinement");
            partition = Refinement.refine(work, network, partition, NODE_MOVES, null, asleep);
            Description description = description();
            double saved = description.saving() - best.description().saving();
            if (round > 1 && saved <= 0)
                break;
            best = new Found(start, partition, description);
            if (round > 1 && saved <= LITTLE * description.saving())
                break;
            if (!settle())
                break;
            work.dropSince(begun, List.of(partition.labels(), partition.groups(), settled));
        }
        return best;
    }

    private Description description() {
        return Description.of(
            start.own(), nodes.weight, nodes.scale, Sums.of(partition.groups(), nodes.weight));
    }

    /**
     * Splits groups where that is likelier, moves the pieces of each height, and merges groups.
     *
     * @return (item) the nodes that needn't be looked at again
     */
    private Dataset<Row> split(ItemNetwork similar) {
        step("splitting");
        Dataset<Row> marks = settled.withColumn("idle", lit(true));
        Dataset<Row> groupOf = work.keep(
            partition.labels()
                .join(marks, "label", "left")
                .select(col("item"), col("label"), coalesce(col("idle"), lit(false)).as("idle")),
            network.size());
        Dataset<Row> asleep = groupOf.filter(col("idle")).select("item");
        List<Step> steps =
            new ArrayList<>(Agglomeration.mergeSimilar(work, similar, groupOf, partition.count()));
        pieces = partition.labels();
        if (steps.isEmpty())
            return asleep;

        // The first merges are the base: single nodes leave a group by moves of their own.
        Step first = steps.remove(0);
        Dataset<Row> idle = work.keep(
            asleep.join(first.labels(), "item").select("label").distinct(), first.count());
        ItemNetwork base = base(groupOf, first, idle);
        idle = idle.withColumnRenamed("label", "item");
        // The last step leads to the groups.
        Dataset<Row> inGroup = work.keep(first.labels()
                                             .withColumnRenamed("label", "base")
                                             .join(groupOf, "item")
                                             .groupBy("base")
                                             .agg(min("label").as("label"))
                                             .withColumnRenamed("base", "item"),
            base.size());
        Heights heights = heights(base, steps);
        Dataset<Row> top = steps.isEmpty() ? base.itself() : heights.pieces().get(steps.size() - 1);
        List<Dataset<Row>> held = new ArrayList<>(heights.held());
        held.add(partition.groups().withColumnRenamed("label", "item"));
        List<Step> all = new ArrayList<>(steps);
        all.add(new Step(lastStep(top, inGroup, base.size()), partition.count()));
        Step cut =
            Cut.likeliest(work, all, base.items(), base.size(), held, partition.likelihood());
        Partitioned parts = new Partitioned(cut.labels(),
            base.holdings(work, cut.labels(), cut.count()), cut.count(), partition.likelihood());
        parts = withEstimate(parts);
        pieces = work.keep(ItemNetwork.composed(first.labels(), cut.labels()), network.size());

        parts = movePieces(base, parts, idle, steps, heights.pieces());
        step("refinement");
        parts = Refinement.refine(work, base, parts, GROUP_MOVES, idle, null);
        step("merging");
        parts = merge(base, parts);
        partition = parts.withLabels(
            work.keep(ItemNetwork.composed(first.labels(), parts.labels()), network.size()));
        return asleep;
    }

    /**
     * Steps of merging, each seen from the items below the first one.
     *
     * @param pieces (item, label): the piece of each item after each step
     * @param held (item, inner, total, nodes): what the pieces hold
     */
    private record Heights(List<Dataset<Row>> pieces, List<Dataset<Row>> held) {}

    private Heights heights(ItemNetwork base, List<Step> steps) {
        Heights heights = new Heights(new ArrayList<>(), new ArrayList<>());
        Dataset<Row> piece = base.itself();
        for (Step step : steps) {
            piece = work.keep(ItemNetwork.composed(piece, step.labels()), base.size());
            heights.pieces().add(piece);
            heights.held().add(
                base.holdings(work, piece, step.count()).withColumnRenamed("label", "item"));
        }
        return heights;
    }

    private static Partitioned withEstimate(Partitioned parts) {
        return new Partitioned(parts.labels(), parts.groups(), parts.count(), parts.estimated());
    }

    /** The network of the first merges; settled groups hold what they held. */
    private ItemNetwork base(Dataset<Row> groupOf, Step first, Dataset<Row> idle) {
        ItemNetwork base = network.folded(work, first.labels(), first.count(), idle);
        // Idle items have the links that the others have to them.
        Dataset<Row> idleEnds = idle.select(col("label").as("dst"));
        Dataset<Row> back = base.links()
                                .join(idleEnds, "dst")
                                .select(col("dst").as("src"), col("src").as("dst"), col("weight"));
        Dataset<Row> whole = groupOf.filter(col("idle"))
                                 .withColumnRenamed("label", "group")
                                 .join(first.labels(), "item")
                                 .select(col("label").as("item"), col("group").as("label"))
                                 .distinct()
                                 .join(partition.groups(), "label")
                                 .select("item", "inner", "total", "nodes");
        Dataset<Row> items = base.items()
                                 .join(idle.select(col("label").as("item")), "item", "left_anti")
                                 .unionByName(whole);
        return new ItemNetwork(work.keepBy(base.links().unionByName(back), 2 * base.most(), "src"),
            work.keep(items, base.size()), base.size(), 2 * base.most());
    }

    /** Maps the pieces of the greatest height to the groups. */
    private Dataset<Row> lastStep(Dataset<Row> piece, Dataset<Row> inGroup, long most) {
        return work.keep(piece.withColumnRenamed("label", "piece")
                             .join(inGroup, "item")
                             .groupBy("piece")
                             .agg(min("label").as("label"))
                             .withColumnRenamed("piece", "item"),
            most);
    }

    /** Pieces of a height as far as they lie in one part; the step leads there from finer ones. */
    private record Height(Dataset<Row> step, ItemNetwork network, Dataset<Row> idle) {}

    /** Moves the pieces of each height, from coarse to fine. */
    private Partitioned movePieces(ItemNetwork base, Partitioned parts, Dataset<Row> idle,
        List<Step> steps, List<Dataset<Row>> heights) {
        List<Height> coarser = new ArrayList<>();
        ItemNetwork finest = base;
        // (item of the base, its part, its piece of the finest height so far)
        Dataset<Row> places =
            parts.labels().select(col("item"), col("label").as("part"), col("item").as("place"));
        for (int i = 0; i < heights.size(); ++i) {
            // A piece with several parts is left apart as the pieces below it that have one.
            Dataset<Row> inPieces =
                places.join(heights.get(i).withColumnRenamed("label", "piece"), "item");
            Dataset<Row> broken =
                inPieces.groupBy("piece").agg(not(min("part").equalTo(max("part"))).as("broken"));
            Column label = when(col("broken"), col("place").plus(lit(steps.get(i).count())))
                               .otherwise(col("piece"));
            Dataset<Row> step = inPieces.join(broken, "piece")
                                    .select(col("place").as("item"), label.as("label"))
                                    .distinct();
            Step merged = ItemNetwork.compact(
                work, work.keep(step, finest.size()), finest.size(), finest.size());
            long count = merged.count();
            step = merged.labels();
            if (count > NEARLY_ALL * finest.size())
                continue;
            places =
                work.keep(places.join(step.select(col("item").as("place"), col("label")), "place")
                              .select(col("item"), col("part"), col("label").as("place")),
                    base.size());
            Dataset<Row> still = work.keep(
                places.join(idle, "item").select(col("place").as("item")).distinct(), count);
            finest = finest.folded(work, step, count, null);
            coarser.add(new Height(step, finest, still));
        }
        Dataset<Row> inPart = work.keep(places.groupBy("place")
                                            .agg(first("part").as("label"))
                                            .withColumnRenamed("place", "item"),
            finest.size());
        parts = parts.withLabels(inPart);
        for (int i = coarser.size(); i-- > 0;) {
            step("refinement, height " + (i + 1));
            Height height = coarser.get(i);
            parts =
                Refinement.refine(work, height.network(), parts, GROUP_MOVES, height.idle(), null);
            parts = parts.withLabels(
                work.keep(ItemNetwork.composed(height.step(), parts.labels()), base.size()));
        }
        return parts;
    }

    /** Merges groups where that is likelier. */
    private Partitioned merge(ItemNetwork base, Partitioned parts) {
        ItemNetwork groups = base.folded(work, parts.labels(), parts.count(), null);
        List<Step> steps = Agglomeration.mergeLikely(work, groups, parts.likelihood());
        if (steps.isEmpty())
            return parts;
        Step merged = Cut.likeliest(work, steps, groups.items(), groups.size(),
            heights(groups, steps).held(), parts.likelihood());
        Dataset<Row> labels = ItemNetwork.composed(parts.labels(), merged.labels());
        return withEstimate(new Partitioned(work.keep(labels, base.size()),
            groups.holdings(work, merged.labels(), merged.count()), merged.count(),
            parts.likelihood()));
    }

    /**
     * Finds the groups that a further split wouldn't change.
     *
     * @return whether there are others
     */
    private boolean settle() {
        step("settling");
        Dataset<Row> both =
            work.keep(partition.labels().join(pieces.withColumnRenamed("label", "piece"), "item"),
                network.size());
        Dataset<Row> leaders = both.groupBy("label").agg(min("item").as("item"));
        Dataset<Row> firstPiece = leaders.join(both.select("item", "piece"), "item")
                                      .select(col("label"), col("piece").as("lead"));
        Dataset<Row> together =
            both.join(firstPiece, "label")
                .groupBy("label", "lead")
                .agg(sum(when(col("piece").equalTo(col("lead")), lit(1L)).otherwise(lit(0L)))
                         .as("together"));
        Dataset<Row> sizes = both.groupBy(col("piece").as("lead")).agg(count(lit(1)).as("size"));
        Column larger = greatest(col("size").cast("double"), col("nodes"));
        settled =
            work.keep(together.join(sizes, "lead")
                          .join(partition.groups().select("label", "nodes"), "label")
                          .filter(col("together").cast("double").geq(larger.multiply(lit(SETTLED))))
                          .select("label"),
                partition.count());
        return work.size(settled) < partition.count();
    }
}
