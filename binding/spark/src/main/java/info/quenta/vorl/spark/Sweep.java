package info.quenta.vorl.spark;

import info.quenta.vorl.api.Clustering;
import info.quenta.vorl.api.Network;
import info.quenta.vorl.api.Options;
import info.quenta.vorl.api.Score;
import java.io.Serializable;
import java.util.ArrayList;
import java.util.List;
import java.util.Objects;
import java.util.Random;
import org.apache.spark.api.java.JavaSparkContext;
import org.apache.spark.api.java.function.MapFunction;
import org.apache.spark.broadcast.Broadcast;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Encoders;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.SparkSession;
import org.apache.spark.sql.types.StructType;

/**
 * Clusters one network with many settings at once, or finds its communities.
 *
 * <p>The network is one that a task can hold: each setting has a task of its own. Links are taken
 * as by {@link Communities#run}, and at most 100 million of them.
 */
public final class Sweep {
    private static final long LARGEST = 100_000_000; // links

    /**
     * How to cluster.
     *
     * @param gamma resolution, at least 0
     * @param reduction which links may be left out
     * @param seed of a shuffled order of the links, on which ties hang; 0 for that of the ids
     */
    public record Setting(double gamma, Options.Reduction reduction, long seed)
        implements Serializable {
        /** The whole network in its own order. */
        public static Setting ofGamma(double gamma) {
            return new Setting(gamma, Options.Reduction.NONE, 0);
        }

        /** @throws IllegalArgumentException if gamma is negative or no number */
        public Setting {
            Objects.requireNonNull(reduction, "reduction");
            if (!(gamma >= 0) || Double.isInfinite(gamma))
                throw new IllegalArgumentException(
                    "gamma is " + gamma + ", at least 0 is expected");
        }
    }

    /** A network as each task has it. */
    private record Edges(long[] low, long[] high, float[] weights) implements Serializable {
        Network network(long seed) {
            int[] order = new int[low.length];
            Random random = new Random(seed);
            for (int i = 0; i < order.length; ++i) {
                int other = seed == 0 ? i : random.nextInt(i + 1);
                order[i] = order[other];
                order[other] = i;
            }
            Network.Builder builder = Network.builder();
            for (int i : order) builder.edge(low[i], high[i], weights[i]);
            return builder.build();
        }
    }

    /** What becomes of a setting. */
    private interface Task extends Serializable {
        Row row(int setting, Edges edges);
    }

    private Sweep() {}

    /**
     * Clusters a network.
     *
     * @return (setting, gamma, reduction, seed, clusters, root, modularity, conductance,
     *     estimated): the place of the setting in the list and what it says, the clusters of all
     *     levels and of the root, and the score: the modularity at gamma, the conductance, and the
     *     resolution estimated from the root
     * @throws IllegalArgumentException for links that aren't a network, or too many
     */
    public static Dataset<Row> run(Dataset<Row> links, List<Setting> settings) {
        List<Setting> copy = List.copyOf(settings);
        return swept(links, copy.size(),
            "setting INT NOT NULL, gamma DOUBLE NOT NULL, reduction STRING NOT NULL, seed LONG NOT"
                + " NULL, clusters LONG NOT NULL, root LONG NOT NULL, modularity FLOAT NOT NULL,"
                + " conductance FLOAT NOT NULL, estimated FLOAT NOT NULL",
            (place, edges) -> clustered(place, copy.get(place), edges));
    }

    /**
     * Finds the communities of a network.
     *
     * @param settings of each, shares and starts count
     * @return (setting, shares, starts, communities, shared, modularity, conductance, estimated,
     *     saving, naming, start, rounds): the place of the setting in the list and what it says,
     * the communities, the nodes that are in several, and the score that {@link
     *     info.quenta.vorl.api.Communities.Score} describes; isolated nodes don't count
     * @throws IllegalArgumentException for links that aren't a network, or too many
     */
    public static Dataset<Row> communities(Dataset<Row> links, List<CommunitiesOptions> settings) {
        List<CommunitiesOptions> copy = new ArrayList<>(settings);
        return swept(links, copy.size(),
            "setting INT NOT NULL, shares BOOLEAN NOT NULL, starts INT NOT NULL, communities LONG"
                + " NOT NULL, shared LONG NOT NULL, modularity DOUBLE NOT NULL, conductance DOUBLE"
                + " NOT NULL, estimated DOUBLE NOT NULL, saving DOUBLE NOT NULL, naming DOUBLE NOT"
                + " NULL, start STRING NOT NULL, rounds INT NOT NULL",
            (place, edges) -> divided(place, copy.get(place), edges));
    }

    private static Dataset<Row> swept(Dataset<Row> links, int settings, String type, Task task) {
        SparkSession session = links.sparkSession();
        try (Work work = new Work(session, CommunitiesOptions.DEFAULT)) {
            work.step("reading links");
            Input input = new Input(work, links);
            if (input.count > LARGEST)
                throw new IllegalArgumentException("Sweep, a network of at most " + LARGEST
                    + " links is expected, not " + input.count);
            Edges edges = edges(input.edges.orderBy("low", "high").collectAsList());
            work.step("sweep");
            Broadcast<Edges> shared =
                JavaSparkContext
                    .fromSparkContext(
                        ((org.apache.spark.sql.classic.SparkSession) session).sparkContext())
                    .broadcast(edges);
            Dataset<Row> result = session.range(0, settings, 1, Math.max(1, settings))
                                      .map((MapFunction<Long, Row>) place
                                          -> task.row(place.intValue(), shared.value()),
                                          Encoders.row(StructType.fromDDL(type)));
            Dataset<Row> kept = work.keep(result, settings);
            return work.released(kept).orderBy("setting");
        }
    }

    private static Edges edges(List<Row> rows) {
        Edges edges =
            new Edges(new long[rows.size()], new long[rows.size()], new float[rows.size()]);
        for (int i = 0; i < rows.size(); ++i) {
            edges.low[i] = rows.get(i).getLong(0);
            edges.high[i] = rows.get(i).getLong(1);
            edges.weights[i] = (float) rows.get(i).getDouble(2);
        }
        return edges;
    }

    private static Row clustered(int place, Setting setting, Edges edges) {
        Options options =
            Options.builder().gamma(setting.gamma()).reduction(setting.reduction()).build();
        try (Network network = edges.network(setting.seed());
             Clustering clustering = network.cluster(options)) {
            Score score = clustering.score();
            return RowFactory.create(place, setting.gamma(), setting.reduction().name(),
                setting.seed(), score.clusters(), (long) clustering.root().size(),
                score.modularity(), score.conductance(), score.estimatedGamma());
        }
    }

    private static Row divided(int place, CommunitiesOptions options, Edges edges) {
        // A task has one core.
        var settings =
            new info.quenta.vorl.api.CommunitiesOptions(options.shares(), options.starts(), 1);
        try (Network network = edges.network(0)) {
            var found = network.communities(settings);
            long shared = 0;
            for (long node : found.nodes())
                if (found.of(node).size() > 1)
                    ++shared;
            var score = found.score();
            return RowFactory.create(place, options.shares(), score.starts(),
                (long) found.members().size(), shared, score.modularity(), score.conductance(),
                score.estimatedGamma(), score.saving(), score.naming(), score.start(),
                score.rounds());
        }
    }
}
