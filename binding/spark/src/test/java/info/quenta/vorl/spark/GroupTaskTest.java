package info.quenta.vorl.spark;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.Collections;
import java.util.Iterator;
import java.util.List;
import java.util.Random;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.junit.jupiter.api.Test;

/** What tasks make of the rows of a partition, without Spark. */
class GroupTaskTest {
    private static List<Row> run(GroupTask task, List<Row> rows) {
        List<Row> result = new ArrayList<>();
        task.call(rows.iterator()).forEachRemaining(result::add);
        return result;
    }

    private static Row row(Object... values) { return RowFactory.create(values); }

    @Test
    void sumsAreMadeInTheOrderOfRows() {
        RunningSums sums = new RunningSums(List.of("a", "b"), List.of("x", "y"));
        assertEquals(List.of(), run(sums, List.of()));
        // Added up in another order, 1 and 1 wouldn't be lost.
        assertEquals(
            List.of(row(1L, 1L, 1e16, 3.0), row(1L, 2L, 1e16 + 2, 3.0), row(2L, 2L, 5.0, 0.5)),
            run(sums,
                List.of(row(1L, 1L, 1e16, 1.0), row(1L, 1L, 1.0, 1.0), row(1L, 1L, 1.0, 1.0),
                    row(1L, 2L, 1.0, 1.0), row(1L, 2L, 1.0, 1.0), row(1L, 2L, 1e16, 1.0),
                    row(2L, 2L, 5.0, 0.5))));
        RunningSums whole = new RunningSums(List.of(), List.of("x"));
        assertEquals(List.of(row(6.0)), run(whole, List.of(row(1.0), row(2.0), row(3.0))));
    }

    @Test
    void whatAGroupLeavesIsPassedOver() {
        GroupTask takesSome = new GroupTask(1, "key LONG") {
            private static final long serialVersionUID = 1;

            @Override
            Iterator<Row> group(Row first, Iterator<Row> others) {
                for (long i = 1; i < first.getLong(1); ++i) others.next();
                boolean told = first.getLong(0) % 2 == 1;
                return told ? Collections.nCopies(2, first).iterator()
                            : Collections.emptyIterator();
            }
        };
        Row first = row(1L, 2L);
        Row third = row(3L, 1L);
        assertEquals(List.of(first, first, third, third),
            run(takesSome,
                List.of(first, row(1L, 0L), row(1L, 0L), row(2L, 1L), row(2L, 0L), third,
                    row(3L, 0L), row(4L, 1L))));
    }

    private static Likelihood likelihood(boolean own, List<Holding> groups) {
        Sums sums = new Sums(0, 0, 0, 0, 0, 0);
        for (Holding group : groups)
            sums = sums.with(group.inner(), group.total(), group.nodes(), 1000);
        return new Likelihood(own, 1000, 200, 1).estimated(sums);
    }

    /** The move is the best of all by the sum over all groups, each worth what it is after it. */
    @Test
    void moversFindTheBestOfAllMoves() {
        Random random = new Random(3);
        int moved = 0;
        int founded = 0;
        for (int trial = 0; trial < 400; ++trial) {
            Holding self = new Holding(0, 1 + random.nextInt(30), 1);
            int count = 2 + random.nextInt(4);
            List<Holding> groups = new ArrayList<>();
            double[] pull = new double[count];
            List<Row> rows = new ArrayList<>();
            for (int i = 0; i < count; ++i) {
                pull[i] = random.nextInt(1 + (int) self.total() / 2);
                double inner = 2 * pull[i] + random.nextInt(150);
                double total = inner + self.total() + random.nextInt(60);
                groups.add(new Holding(inner, total, 2 + random.nextInt(40)));
                rows.add(row(7L, 0.0, self.total(), 1.0, 0L, (long) i, pull[i], inner, total,
                    groups.get(i).nodes()));
            }
            Likelihood likelihood = likelihood(trial % 2 == 0, groups);
            Holding rest = groups.get(0).minus(self).withInner(-2 * pull[0]);
            double[] value = new double[count + 1]; // of all groups; the last one for itself alone
            for (int to = 0; to <= count; ++to)
                for (int i = 0; i <= count; ++i) {
                    Holding group = i == count ? new Holding(0, 0, 0)
                        : i == 0               ? rest
                                               : groups.get(i);
                    double met = i == count ? 0 : pull[i];
                    value[to] +=
                        likelihood.value(i == to ? group.plus(self).withInner(2 * met) : group);
                }
            int best = 0;
            for (int to = 1; to <= count; ++to)
                if (value[to] > value[best] + 1e-6)
                    best = to;
            // A group with no more links than by chance is none to go to.
            if (best > 0 && best < count
                && pull[best] <= likelihood.expected(self.total() * groups.get(best).total()))
                continue;
            List<Row> found = run(new Mover(likelihood), rows);
            long to = best == count ? Mover.ALONE : best;
            assertEquals(best == 0 ? List.of() : List.of(row(7L, 0.0, self.total(), 1.0, 0L, to)),
                found, "trial " + trial);
            moved += best > 0 && best < count ? 1 : 0;
            founded += best == count ? 1 : 0;
        }
        assertTrue(moved > 50 && founded > 10, moved + " moved, " + founded + " alone");
    }

    @Test
    void equalMovesGoToTheLeastGroup() {
        Likelihood likelihood = likelihood(true, List.of(new Holding(200, 250, 20)));
        List<Row> rows = List.of(row(1L, 0.0, 10.0, 1.0, 5L, 5L, 0.0, 0.0, 200.0, 20.0),
            row(1L, 0.0, 10.0, 1.0, 5L, 9L, 8.0, 80.0, 100.0, 10.0),
            row(1L, 0.0, 10.0, 1.0, 5L, 4L, 8.0, 80.0, 100.0, 10.0),
            row(1L, 0.0, 10.0, 1.0, 5L, 6L, 8.0, 80.0, 100.0, 10.0));
        assertEquals(4L, run(new Mover(likelihood), rows).get(0).getLong(5));
    }

    private static final Likelihood DENSE =
        likelihood(true, List.of(new Holding(90, 100, 10), new Holding(90, 100, 10)));

    /** A community that a node has links to, and a share in. */
    private static Row touched(long node, double total, long community, double pull, float share) {
        return row(node, total, 0.0, community, pull, share, pull > 0, 100.0, 90.0);
    }

    @Test
    void nodesBetweenCommunitiesShareInThem() {
        List<Row> rows = List.of(touched(1, 10, 0, 10, 1), // all its links lead to its own
            touched(2, 10, 0, 5, 1), touched(2, 10, 1, 5, 0), // half of them
            touched(3, 10, 0, 8, 1), touched(3, 10, 1, 2, 0), // too few for a share
            touched(4, 10, 0, 4, 0.5f), touched(4, 10, 1, 6, 0.5f), // it has both already
            touched(5, 10, 1, 1, 1), touched(5, 10, 2, 9, 0)); // it is better off elsewhere
        assertEquals(List.of(row(1L, 0L, 1f, 0, false, false), row(2L, 0L, 0.5f, 0, true, true),
                         row(2L, 1L, 0.5f, 1, true, true), row(3L, 0L, 1f, 0, false, false),
                         row(4L, 1L, 0.6f, 0, true, false), row(4L, 0L, 0.4f, 1, true, false),
                         row(5L, 2L, 1f, 0, false, true)),
            run(new Sharer(DENSE, 1, 1), rows));
        // Where shares cost much, there are none.
        for (Row found : run(new Sharer(DENSE, 100, 100), rows.subList(1, 3)))
            assertEquals(row(2L, 0L, 1f, 0, false, false), found);
    }

    @Test
    void nobodyIsInMoreCommunitiesThanTheMost() {
        List<Row> rows = new ArrayList<>();
        for (int i = 0; i < 2 * Sharer.MOST; ++i)
            rows.add(row(1L, 1.0, 0.0, (long) i, 1.0, i == 100 ? 1f : 0f, true, 5.0, 5.0));
        List<Row> found = run(new Sharer(DENSE, 0, 0), rows);
        assertEquals(Sharer.MOST, found.size());
        double sum = 0;
        for (Row row : found) sum += row.getFloat(2);
        assertEquals(1, sum, 1e-5);
    }
}
