package info.quenta.vorl.spark;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.HashSet;
import java.util.List;
import java.util.Random;
import java.util.Set;
import java.util.stream.LongStream;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.types.StructType;
import org.junit.jupiter.api.Test;

class CutTest {
    private static final int ITEMS = 8;

    /** Weights of 8 items, 4 pairs of them and 2 pairs of pairs. */
    private static List<List<Holding>> tree(Random random) {
        List<List<Holding>> heights = new ArrayList<>();
        for (int height = 0; height < 3; ++height) {
            List<Holding> held = new ArrayList<>();
            for (int i = 0; i < ITEMS >> height; ++i) {
                if (height == 0) {
                    held.add(new Holding(random.nextInt(4), 8 + random.nextInt(8), 2));
                    continue;
                }
                List<Holding> below = heights.get(height - 1);
                held.add(below.get(2 * i).plus(below.get(2 * i + 1)).withInner(random.nextInt(13)));
            }
            heights.add(held);
        }
        return heights;
    }

    /** All ways to cut what lies in an item, each as (height, item) of the parts. */
    private static List<List<int[]>> cuts(int height, int item) {
        List<List<int[]>> result = new ArrayList<>();
        result.add(List.of(new int[] {height, item}));
        if (height == 0)
            return result;
        for (List<int[]> left : cuts(height - 1, 2 * item))
            for (List<int[]> right : cuts(height - 1, 2 * item + 1)) {
                List<int[]> both = new ArrayList<>(left);
                both.addAll(right);
                result.add(both);
            }
        return result;
    }

    private static Dataset<Row> held(Work work, List<Holding> held) {
        List<Row> rows = new ArrayList<>();
        for (Holding one : held)
            rows.add(RowFactory.create((long) rows.size(), one.inner(), one.total(), one.nodes()));
        return work.table(
            rows, StructType.fromDDL("item LONG, inner DOUBLE, total DOUBLE, nodes DOUBLE"));
    }

    private static Step halved(Work work, int items) {
        List<Row> rows =
            LongStream.range(0, items).mapToObj(i -> RowFactory.create(i, i / 2)).toList();
        return new Step(work.table(rows, StructType.fromDDL("item LONG, label LONG")), items / 2);
    }

    /** It is the best of all that there are, at any mix of heights. */
    @Test
    void theLikeliestIsFound() {
        Random random = new Random(5);
        Set<String> shapes = new HashSet<>();
        CommunitiesOptions options = CommunitiesOptions.DEFAULT;
        try (Work work = new Work(TestBed.session("local[2]", 2), options)) {
            for (int trial = 0; trial < 6; ++trial) {
                List<List<Holding>> heights = tree(random);
                Sums sums = new Sums(0, 0, 0, 0, 0, 0);
                for (Holding group : heights.get(1))
                    sums = sums.with(group.inner(), group.total(), group.nodes(), 120);
                Likelihood likelihood = new Likelihood(true, 120, 16, 4).estimated(sums);
                long[] expected = new long[ITEMS];
                double best = Double.NEGATIVE_INFINITY;
                for (List<int[]> left : cuts(2, 0))
                    for (List<int[]> right : cuts(2, 1)) {
                        List<int[]> parts = new ArrayList<>(left);
                        parts.addAll(right);
                        double value = 0;
                        for (int[] part : parts)
                            value += likelihood.value(heights.get(part[0]).get(part[1]));
                        if (value <= best)
                            continue;
                        best = value;
                        for (int i = 0; i < parts.size(); ++i) {
                            int[] part = parts.get(i);
                            Arrays.fill(expected, part[1] << part[0], part[1] + 1 << part[0], i);
                        }
                    }
                Step cut = Cut.likeliest(work, List.of(halved(work, 8), halved(work, 4)),
                    held(work, heights.get(0)), ITEMS,
                    List.of(held(work, heights.get(1)), held(work, heights.get(2))), likelihood);
                long[] labels = new long[ITEMS];
                for (Row row : cut.labels().collectAsList())
                    labels[(int) row.getLong(0)] = row.getLong(1);
                assertArrayEquals(expected, labels, Arrays.toString(labels));
                shapes.add(Arrays.toString(labels));
                assertEquals(expected[ITEMS - 1] + 1, cut.count());
            }
        }
        assertTrue(shapes.size() > 3, shapes.toString());
    }
}
