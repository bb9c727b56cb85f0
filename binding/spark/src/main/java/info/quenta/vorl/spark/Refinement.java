package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.coalesce;
import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.max;
import static org.apache.spark.sql.functions.negate;
import static org.apache.spark.sql.functions.not;
import static org.apache.spark.sql.functions.sum;
import static org.apache.spark.sql.functions.udf;
import static org.apache.spark.sql.functions.when;

import java.util.List;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.api.java.UDF1;
import org.apache.spark.sql.types.DataTypes;

/**
 * Moves of items to the group with which the partition is likelier.
 *
 * <p>Each round takes the items in some classes by a hash; those of a class decide at once, from
 * what is there before any of them moves. After the first round only those decide again around
 * which something moved.
 */
final class Refinement {
    private static final int CLASSES = 4;
    /** Rounds end when no more than one in so many items moves. */
    private static final long FEW = 1000;

    private final Work work;
    private final ItemNetwork network;
    private Dataset<Row> state; // (item, inner, total, nodes, label, idle, active, touched)
    private Dataset<Row> groups;
    private long count;
    private Likelihood likelihood;

    private Refinement(Work work, ItemNetwork network) {
        this.work = work;
        this.network = network;
    }

    /**
     * Moves items to a neighbouring group, or alone into a new one, while that raises the
     * likelihood.
     *
     * @param idle (item) those that never move; null for none
     * @param asleep (item) those that move only after something around them did; null for none
     * @return with groups by their least items and the densities after the last round
     */
    static Partitioned refine(Work work, ItemNetwork network, Partitioned partition, int rounds,
        Dataset<Row> idle, Dataset<Row> asleep) {
        int mark = work.mark();
        Refinement refinement = new Refinement(work, network);
        refinement.begin(partition, idle, asleep);
        for (int round = 0; round < rounds; ++round)
            if (refinement.round(round) * FEW <= network.size())
                break;
        Partitioned result = refinement.tidy();
        work.dropSince(mark, List.of(result.labels(), result.groups()));
        return result;
    }

    private void begin(Partitioned partition, Dataset<Row> idle, Dataset<Row> asleep) {
        Dataset<Row> items = network.items().join(partition.labels(), "item");
        items = marked(items, idle, "idle");
        items = marked(items, asleep, "asleep");
        state = work.keep(items.withColumn("active", not(col("asleep")))
                              .drop("asleep")
                              .withColumn("touched", lit(false)),
            network.size());
        groups = partition.groups();
        count = partition.count();
        likelihood = partition.estimated();
    }

    private static Dataset<Row> marked(Dataset<Row> items, Dataset<Row> which, String name) {
        if (which == null)
            return items.withColumn(name, lit(false));
        return items.join(which.select("item").withColumn(name, lit(true)), "item", "left")
            .withColumn(name, coalesce(col(name), lit(false)));
    }

    /** @return how many moves there were */
    private long round(int round) {
        long moved = 0;
        for (int turn = 0; turn < CLASSES; ++turn) moved += turn(round, turn);
        likelihood = likelihood.estimated(Sums.of(groups, likelihood.weight()));
        state = state.withColumn("active", col("touched")).withColumn("touched", lit(false));
        return moved;
    }

    private long turn(int round, int turn) {
        int mark = work.mark();
        Dataset<Row> deciders = deciders(round, turn);
        if (Work.isLocal(deciders) && work.size(deciders) == 0)
            return 0;
        Work.Counted moves =
            work.keepCounted(moves(deciders), network.size(), col("to").equalTo(lit(Mover.ALONE)));
        long moved = work.size(moves.rows());
        if (moved > 0)
            carryOut(foundGroups(moves.rows(), moved, moves.counts()[0]));
        work.dropSince(mark, List.of(state, groups));
        return moved;
    }

    /** The items that may move now. */
    private Dataset<Row> deciders(int round, int turn) {
        UDF1<Long, Boolean> inTurn = item -> Mixing.mixed(item, round) % CLASSES == turn;
        return state
            .filter(col("active")
                        .and(not(col("idle")))
                        .and(udf(inTurn, DataTypes.BooleanType).apply(col("item"))))
            .select(col("item").as("src"), col("inner").as("si"), col("total").as("st"),
                col("nodes").as("sn"), col("label").as("own"));
    }

    /** The best moves: (item, inner, total, nodes, from, to), by {@link Mover}. */
    private Dataset<Row> moves(Dataset<Row> deciders) {
        Column[] key = {col("src"), col("si"), col("st"), col("sn"), col("own"), col("label")};
        Dataset<Row> pulls =
            network.links()
                .select("src", "dst", "weight")
                .join(deciders, "src")
                .join(state.select(col("item").as("dst"), col("label")), "dst")
                .select(col("src"), col("si"), col("st"), col("sn"), col("own"), col("label"),
                    col("weight"))
                .unionByName(
                    deciders.withColumn("label", col("own")).withColumn("weight", lit(0.0)))
                .groupBy(key)
                .agg(sum("weight").as("pull"));
        return new Mover(likelihood)
            .of(pulls.join(groups, "label")
                    .select(col("src"), col("si"), col("st"), col("sn"), col("own"), col("label"),
                        col("pull"), col("inner"), col("total"), col("nodes"))
                    .repartition(col("src"))
                    .sortWithinPartitions(col("src"), not(col("label").equalTo(col("own")))));
    }

    /** Numbers the groups that moves are to found. */
    private Dataset<Row> foundGroups(Dataset<Row> moves, long moved, long founded) {
        if (founded == 0)
            return moves;
        Dataset<Row> alone = moves.filter(col("to").equalTo(lit(Mover.ALONE)));
        Dataset<Row> numbers = work.numbered(alone.select("item"), "number", founded, col("item"));
        Dataset<Row> result =
            moves.join(numbers.select("item", "number"), "item", "left")
                .select(col("item"), col("inner"), col("total"), col("nodes"), col("from"),
                    coalesce(col("number").plus(lit(count)), col("to")).as("to"));
        count += founded;
        return work.keep(result, moved);
    }

    private void carryOut(Dataset<Row> moves) {
        Dataset<Row> ends = work.keep(
            network.links()
                .join(moves.select(col("item").as("src"), col("from"), col("to")), "src")
                .join(state.select(col("item").as("dst"), col("label")), "dst")
                .join(moves.select(col("item").as("dst"), col("to").as("moved")), "dst", "left")
                .select("src", "dst", "weight", "from", "to", "label", "moved"),
            network.most());
        // A link between two items that move is met at both of its ends.
        Column weight =
            when(col("moved").isNull(), col("weight").multiply(lit(2.0))).otherwise(col("weight"));
        Column zero = lit(0.0);
        Dataset<Row> left = ends.filter(col("label").equalTo(col("from")))
                                .select(col("from").as("label"), negate(weight).as("inner"),
                                    zero.as("total"), zero.as("nodes"));
        Dataset<Row> joined = ends.filter(coalesce(col("moved"), col("label")).equalTo(col("to")))
                                  .select(col("to").as("label"), weight.as("inner"),
                                      zero.as("total"), zero.as("nodes"));
        Dataset<Row> out = moves.select(col("from").as("label"), negate(col("inner")).as("inner"),
            negate(col("total")).as("total"), negate(col("nodes")).as("nodes"));
        Dataset<Row> in =
            moves.select(col("to").as("label"), col("inner"), col("total"), col("nodes"));
        groups = work.keep(
            groups.select("label", "inner", "total", "nodes")
                .unionByName(left)
                .unionByName(joined)
                .unionByName(out)
                .unionByName(in)
                .groupBy("label")
                .agg(sum("inner").as("inner"), sum("total").as("total"), sum("nodes").as("nodes")),
            count);

        Dataset<Row> news =
            ends.select(
                    col("dst").as("item"), lit(null).cast("long").as("to"), lit(true).as("near"))
                .unionByName(moves.select(col("item"), col("to"), lit(false).as("near")))
                .groupBy("item")
                .agg(max("to").as("to"), max("near").as("near"));
        state = work.keep(state.join(news, "item", "left")
                              .select(col("item"), col("inner"), col("total"), col("nodes"),
                                  coalesce(col("to"), col("label")).as("label"), col("idle"),
                                  col("active").or(coalesce(col("near"), lit(false))).as("active"),
                                  col("touched").or(col("near").isNotNull()).as("touched")),
            network.size());
    }

    /** Leaves out groups that are empty. */
    private Partitioned tidy() {
        Dataset<Row> labels = state.select("item", "label");
        Dataset<Row> numbers =
            work.keep(ItemNetwork.numbers(work, labels, network.size()), network.size());
        Dataset<Row> numbered =
            labels.join(numbers, "label").select(col("item"), col("number").as("label"));
        Dataset<Row> tidied =
            groups.join(numbers, "label")
                .select(col("number").as("label"), col("inner"), col("total"), col("nodes"));
        return new Partitioned(work.keep(numbered, network.size()),
            work.keep(tidied, network.size()), work.size(numbers), likelihood);
    }
}
