package info.quenta.vorl.spark;

import java.util.Iterator;
import java.util.NoSuchElementException;
import org.apache.spark.api.java.function.MapPartitionsFunction;
import org.apache.spark.sql.Encoder;
import org.apache.spark.sql.Encoders;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.types.DataTypes;
import org.apache.spark.sql.types.StructType;

/**
 * Best moves of single items.
 *
 * <p>Takes (src, inner, total, nodes, own, label, pull, inner, total, nodes): what an item holds,
 * its group, a group that it has links to, their weight, and what that holds. The rows of an item
 * follow each other, that of its own group first.
 */
final class Mover implements MapPartitionsFunction<Row, Row> {
    private static final long serialVersionUID = 1;
    /** Less than this of what an item weighs is no gain. */
    private static final double CLEAR = 0x1p-30;
    static final long ALONE = -1;
    static final Encoder<Row> ENCODER = Encoders.row(new StructType()
                                                         .add("item", DataTypes.LongType, false)
                                                         .add("inner", DataTypes.DoubleType, false)
                                                         .add("total", DataTypes.DoubleType, false)
                                                         .add("nodes", DataTypes.DoubleType, false)
                                                         .add("from", DataTypes.LongType, false)
                                                         .add("to", DataTypes.LongType, false));

    private final Likelihood likelihood;

    Mover(Likelihood likelihood) { this.likelihood = likelihood; }

    @Override
    public Iterator<Row> call(Iterator<Row> rows) {
        return new Iterator<>() {
            private Row first = rows.hasNext() ? rows.next() : null;
            private Row move = find();

            @Override
            public boolean hasNext() {
                return move != null;
            }

            @Override
            public Row next() {
                if (move == null)
                    throw new NoSuchElementException();
                Row result = move;
                move = find();
                return result;
            }

            /** The next item that is better off elsewhere. */
            private Row find() {
                while (first != null) {
                    Row own = first;
                    long to = best(own);
                    if (to != own.getLong(4))
                        return RowFactory.create(
                            own.get(0), own.get(1), own.get(2), own.get(3), own.get(4), to);
                }
                return null;
            }

            /** Where the item is best off; the group that it is in unless another is better. */
            private long best(Row row) {
                long item = row.getLong(0);
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
                for (;;) {
                    first = rows.hasNext() ? rows.next() : null;
                    if (first == null || first.getLong(0) != item)
                        return to;
                    long label = first.getLong(5);
                    double pull = first.getDouble(6);
                    Holding other = holding(first, 7);
                    if (pull <= likelihood.expected(self.total() * other.total()))
                        continue;
                    Holding both = other.plus(self).withInner(2 * pull);
                    double gain = leave + (likelihood.value(both) - likelihood.value(other));
                    if (gain > best || (gain == best && to != own && to != ALONE && label < to)) {
                        best = gain;
                        to = label;
                    }
                }
            }
        };
    }

    private static Holding holding(Row row, int first) {
        return new Holding(
            row.getDouble(first), row.getDouble(first + 1), row.getDouble(first + 2));
    }
}
