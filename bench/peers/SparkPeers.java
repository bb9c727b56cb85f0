import info.quenta.vorl.spark.Communities;
import info.quenta.vorl.spark.CommunitiesOptions;
import java.io.PrintWriter;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.function.Supplier;
import org.apache.spark.graphx.Edge;
import org.apache.spark.graphx.Graph;
import org.apache.spark.graphx.lib.ConnectedComponents;
import org.apache.spark.graphx.lib.LabelPropagation;
import org.apache.spark.rdd.RDD;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.SparkSession;
import org.apache.spark.storage.StorageLevel;
import scala.reflect.ClassTag;

/**
 * The clusters that vorl-spark and GraphX find in a list of links, each in FOLDER/NAME.tsv, with
 * the seconds that they took: SparkPeers LINKS FOLDER
 */
public final class SparkPeers {
    /** What the guides of label propagation on Spark take. */
    private static final int ROUNDS = 5;

    private final Dataset<Row> links;
    private final String folder;

    private SparkPeers(Dataset<Row> links, String folder) {
        this.links = links;
        this.folder = folder;
    }

    public static void main(String[] arguments) throws Exception {
        SparkSession session = SparkSession.builder()
                                   .master("local[2]")
                                   .config("spark.ui.enabled", false)
                                   .config("spark.sql.shuffle.partitions", 8)
                                   .getOrCreate();
        session.sparkContext().setLogLevel("ERROR");
        Dataset<Row> links = session.read()
                                 .schema("src LONG, dst LONG")
                                 .option("sep", " ")
                                 .option("comment", "#")
                                 .csv(arguments[0])
                                 .repartition(8)
                                 .cache();
        links.count();
        // The first run of each pays for what the JVM does once.
        new SparkPeers(links.limit(1000).cache(), arguments[1]).inOneGo();
        new SparkPeers(links, arguments[1])
            .inOneGo()
            .forEach((name, seconds) -> System.out.printf("%s %.1f%n", name, seconds));
        session.stop();
    }

    /** @return the seconds of each */
    private Map<String, Double> inOneGo() throws Exception {
        // Shares are left out, since all others give each node one cluster.
        CommunitiesOptions options = CommunitiesOptions.DEFAULT.withShares(false);
        CommunitiesOptions spread = options.withLinksOfTask(0).withStarts(1);
        Graph<Long, Integer> graph = graph();
        Map<String, Double> seconds = new LinkedHashMap<>();
        seconds.put("task", time("task", () -> pairs(Communities.run(links, options))));
        seconds.put("spread", time("spread", () -> pairs(Communities.run(links, spread))));
        seconds.put("labels", time("labels", () -> {
            return pairs(LabelPropagation.run(graph, ROUNDS, tag(Integer.class)).vertices());
        }));
        seconds.put("components", time("components", () -> {
            return pairs(
                ConnectedComponents.run(graph, tag(Long.class), tag(Integer.class)).vertices());
        }));
        return seconds;
    }

    @SuppressWarnings("unchecked")
    private static <T> ClassTag<T> tag(Class<?> type) {
        return (ClassTag<T>) ClassTag.apply(type);
    }

    private Graph<Long, Integer> graph() {
        RDD<Edge<Integer>> edges =
            links.javaRDD().map(row -> new Edge<>(row.getLong(0), row.getLong(1), 1)).rdd();
        StorageLevel memory = StorageLevel.MEMORY_ONLY();
        return Graph.fromEdges(edges, 0L, memory, memory, tag(Long.class), tag(Integer.class));
    }

    private static List<Row> pairs(Dataset<Row> found) {
        return found.select("node", "cluster").collectAsList();
    }

    private static List<Row> pairs(org.apache.spark.graphx.VertexRDD<Object> labels) {
        return labels.toJavaRDD().map(pair -> RowFactory.create(pair._1(), pair._2())).collect();
    }

    private double time(String name, Supplier<List<Row>> find) throws Exception {
        long begin = System.nanoTime();
        List<Row> rows = find.get();
        double seconds = (System.nanoTime() - begin) / 1e9;
        try (PrintWriter out = new PrintWriter(folder + "/" + name + ".tsv")) {
            out.println("node\tcluster");
            for (Row row : rows) out.println(row.get(0) + "\t" + row.get(1));
        }
        return seconds;
    }
}
