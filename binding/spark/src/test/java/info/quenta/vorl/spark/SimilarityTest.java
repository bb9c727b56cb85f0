package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.col;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.TreeMap;
import java.util.TreeSet;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.SparkSession;
import org.junit.jupiter.api.Test;

class SimilarityTest {
    /** However small the slices are that the links of a hub are dealt out in. */
    @Test
    void sharedNeighboursAreCountedOnce() {
        List<Row> rows = Networks.rmat(6, 300, 1).rows();
        Map<Long, Set<Long>> neighbours = new TreeMap<>();
        for (Row row : rows)
            if (row.getLong(0) != row.getLong(1)) {
                neighbours.computeIfAbsent(row.getLong(0), key -> new TreeSet<>())
                    .add(row.getLong(1));
                neighbours.computeIfAbsent(row.getLong(1), key -> new TreeSet<>())
                    .add(row.getLong(0));
            }
        SparkSession session = TestBed.session("local[2]", 3);
        Dataset<Row> pairs = Networks.rmat(6, 300, 1).on(session).filter("src <> dst");
        Dataset<Row> links = Similarity.withDegrees(
            pairs.union(pairs.select(col("dst"), col("src"), col("weight"))));
        assertTrue(links.filter("rises")
                       .groupBy("src")
                       .count()
                       .agg(org.apache.spark.sql.functions.max("count"))
                       .first()
                       .getLong(0)
            > 6);
        for (long slice : new long[] {2, 5, 1000}) {
            List<Row> found = Similarity.withShared(links, slice).collectAsList();
            assertEquals(links.count(), found.size());
            for (Row row : found) {
                Set<Long> both = new TreeSet<>(neighbours.get(row.<Long>getAs("src")));
                both.retainAll(neighbours.get(row.<Long>getAs("dst")));
                assertEquals(both.size(), row.<Long>getAs("shared"), row.toString());
            }
        }
    }
}
