package info.quenta.vorl.spark;

import java.util.Collections;
import java.util.Iterator;
import java.util.NoSuchElementException;
import org.apache.spark.api.java.function.MapPartitionsFunction;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Encoders;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.types.StructType;

/**
 * Work on groups of rows. Those of a group follow each other in a partition, and have the same
 * whole numbers in their first columns.
 */
abstract class GroupTask implements MapPartitionsFunction<Row, Row> {
    private static final long serialVersionUID = 1;

    private final int keys;
    private final StructType result;

    /**
     * @param keys how many columns tell a group; without any the whole partition is one
     * @param result columns of what comes out, as SQL declares them
     */
    GroupTask(int keys, String result) {
        this.keys = keys;
        this.result = StructType.fromDDL(result);
    }

    /**
     * What becomes of a group.
     *
     * @param first its first row
     * @param others those that follow; what isn't taken is passed over
     */
    abstract Iterator<Row> group(Row first, Iterator<Row> others);

    Dataset<Row> of(Dataset<Row> rows) { return rows.mapPartitions(this, Encoders.row(result)); }

    @Override
    public Iterator<Row> call(Iterator<Row> rows) {
        return new Groups(rows);
    }

    private final class Groups implements Iterator<Row> {
        private final Iterator<Row> rows;
        private Row next; // not yet taken
        private Iterator<Row> found = Collections.emptyIterator();

        Groups(Iterator<Row> rows) {
            this.rows = rows;
            advance();
        }

        private void advance() { next = rows.hasNext() ? rows.next() : null; }

        @Override
        public boolean hasNext() {
            while (!found.hasNext() && next != null) {
                Others others = new Others(next);
                advance();
                found = group(others.first, others);
                while (others.hasNext()) advance();
            }
            return found.hasNext();
        }

        @Override
        public Row next() {
            if (!hasNext())
                throw new NoSuchElementException();
            return found.next();
        }

        private final class Others implements Iterator<Row> {
            private final Row first;

            Others(Row first) { this.first = first; }

            @Override
            public boolean hasNext() {
                if (next == null)
                    return false;
                for (int i = 0; i < keys; ++i)
                    if (next.getLong(i) != first.getLong(i))
                        return false;
                return true;
            }

            @Override
            public Row next() {
                if (!hasNext())
                    throw new NoSuchElementException();
                Row row = next;
                advance();
                return row;
            }
        }
    }
}
