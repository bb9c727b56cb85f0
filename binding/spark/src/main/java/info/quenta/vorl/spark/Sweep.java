package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.col;

import info.quenta.vorl.api.Clustering;
import info.quenta.vorl.api.Network;
import info.quenta.vorl.api.Options;
import info.quenta.vorl.api.Score;
import java.io.Serializable;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.Random;
import org.apache.spark.api.java.JavaSparkContext;
import org.apache.spark.api.java.function.MapFunction;
import org.apache.spark.broadcast.Broadcast;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Encoders;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.SparkSession;
import org.apache.spark.sql.types.DataTypes;
import org.apache.spark.sql.types.StructType;

/** Clusters one network with many settings at once. */
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
            if (!(gamma >= 0) || Double.isInfinite(gamma))
                throw new IllegalArgumentException(
                    "gamma is " + gamma + ", at least 0 is expected");
        }
    }

    private static final StructType RESULT = new StructType()
                                                 .add("setting", DataTypes.IntegerType, false)
                                                 .add("gamma", DataTypes.DoubleType, false)
                                                 .add("reduction", DataTypes.StringType, false)
                                                 .add("seed", DataTypes.LongType, false)
                                                 .add("clusters", DataTypes.LongType, false)
                                                 .add("root", DataTypes.LongType, false)
                                                 .add("modularity", DataTypes.FloatType, false)
                                                 .add("conductance", DataTypes.FloatType, false)
                                                 .add("estimated", DataTypes.FloatType, false);

    /** A network as each task has it. */
    private record Edges(long[] low, long[] high, float[] weights) implements Serializable {}

    private Sweep() {}

    /**
     * Clusters a network that one task can hold, a task for each setting.
     *
     * @param links as {@link Communities#run} takes them
     * @return (setting, gamma, reduction, seed, clusters, root, modularity, conductance,
     *     estimated): the place of the setting in the list and what it says, the clusters of all
     *     levels and of the root, and the score: the modularity at gamma, the conductance, and the
     *     resolution estimated from the root
     * @throws IllegalArgumentException as there, and if there are more than 100 million links
     */
    public static Dataset<Row> run(Dataset<Row> links, List<Setting> settings) {
        SparkSession session = links.sparkSession();
        try (Work work = new Work(session, CommunitiesOptions.DEFAULT)) {
            int mark = work.mark();
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
            List<Integer> places = new ArrayList<>();
            for (int i = 0; i < settings.size(); ++i) places.add(i);
            List<Setting> copy = List.copyOf(settings);
            Dataset<Row> result = session.createDataset(places, Encoders.INT())
                                      .repartition(Math.max(1, places.size()), col("value"))
                                      .map((MapFunction<Integer, Row>) place
                                          -> row(place, copy.get(place), shared.value()),
                                          Encoders.row(RESULT));
            Dataset<Row> kept = work.keep(result, places.size());
            work.dropSince(mark, List.of(kept));
            return kept.orderBy("setting");
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

    private static Row row(int place, Setting setting, Edges edges) {
        List<Integer> order = new ArrayList<>();
        for (int i = 0; i < edges.low.length; ++i) order.add(i);
        if (setting.seed() != 0)
            Collections.shuffle(order, new Random(setting.seed()));
        Network.Builder builder = Network.builder();
        for (int i : order) builder.edge(edges.low[i], edges.high[i], edges.weights[i]);
        Options options =
            Options.builder().gamma(setting.gamma()).reduction(setting.reduction()).build();
        try (Network network = builder.build(); Clustering clustering = network.cluster(options)) {
            Score score = clustering.score();
            return RowFactory.create(place, setting.gamma(), setting.reduction().name(),
                setting.seed(), score.clusters(), (long) clustering.root().size(),
                score.modularity(), score.conductance(), score.estimatedGamma());
        }
    }
}
