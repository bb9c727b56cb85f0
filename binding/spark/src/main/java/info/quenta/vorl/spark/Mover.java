package info.quenta.vorl.spark;

import java.util.Collections;
import java.util.Iterator;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;

/**
 * Best moves of single items.
 *
 * <p>Takes (src, inner, total, nodes, own, label, pull, inner, total, nodes): what an item holds,
 * its group, a group that it has links to, their weight, and what that holds. The rows of an item
 * follow each other, that of its own group first. Gives (item, inner, total, nodes, from, to) of
 * those that are better off elsewhere.
 */
final class Mover extends GroupTask {
    private static final long serialVersionUID = 1;
    /** Less than this of what an item weighs is no gain. */
    private static final double CLEAR = 0x1p-30;
    /** Where an item goes that founds a group. */
    static final long ALONE = -1;

    private final Likelihood likelihood;

    Mover(Likelihood likelihood) {
        super(1,
            "item LONG NOT NULL, `inner` DOUBLE NOT NULL, total DOUBLE NOT NULL, nodes DOUBLE NOT"
                + " NULL, `from` LONG NOT NULL, `to` LONG NOT NULL");
        this.likelihood = likelihood;
    }

    @Override
    Iterator<Row> group(Row own, Iterator<Row> others) {
        long to = best(own, others);
        if (to == own.getLong(4))
            return Collections.emptyIterator();
        return Collections
            .singleton(
                RowFactory.create(own.get(0), own.get(1), own.get(2), own.get(3), own.get(4), to))
            .iterator();
    }

    /** Where the item is best off; the group that it is in unless another is better. */
    private long best(Row row, Iterator<Row> others) {
        long own = row.getLong(4);
        Holding self = holding(row, 1);
        Holding group = holding(row, 7);
        Holding rest = group.minus(self).withInner(-2 * row.getDouble(6));
        double leave = likelihood.value(rest) - likelihood.value(group);
        long to = own;
        double best = CLEAR * (1 + likelihood.scale() * self.total());
        if (rest.nodes() > 0 && leave + likelihood.value(self) > best) {
            best = leave + likelihood.value(self);
            to = ALONE;
        }
        while (others.hasNext()) {
            Row next = others.next();
            long label = next.getLong(5);
            double pull = next.getDouble(6);
            Holding other = holding(next, 7);
            if (pull <= likelihood.expected(self.total() * other.total()))
                continue;
            Holding both = other.plus(self).withInner(2 * pull);
            double gain = leave + (likelihood.value(both) - likelihood.value(other));
            if (gain > best || (gain == best && to != own && to != ALONE && label < to)) {
                best = gain;
                to = label;
            }
        }
        return to;
    }

    private static Holding holding(Row row, int first) {
        return new Holding(
            row.getDouble(first), row.getDouble(first + 1), row.getDouble(first + 2));
    }
}
