package info.quenta.vorl.spark;

import java.util.Iterator;
import java.util.List;
import java.util.NoSuchElementException;
import org.apache.spark.api.java.function.MapPartitionsFunction;
import org.apache.spark.sql.Encoder;
import org.apache.spark.sql.Encoders;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.types.DataTypes;
import org.apache.spark.sql.types.StructType;

/** Adds up the values of sorted rows key by key, one after another. */
final class RunningSums implements MapPartitionsFunction<Row, Row> {
    private static final long serialVersionUID = 1;

    private final int keys;
    private final int values;
    private final StructType schema;

    RunningSums(List<String> keys, List<String> values) {
        this.keys = keys.size();
        this.values = values.size();
        StructType type = new StructType();
        for (String key : keys) type = type.add(key, DataTypes.LongType, false);
        for (String value : values) type = type.add(value, DataTypes.DoubleType, false);
        schema = type;
    }

    Encoder<Row> encoder() { return Encoders.row(schema); }

    @Override
    public Iterator<Row> call(Iterator<Row> rows) {
        return new Iterator<>() {
            private Row next = rows.hasNext() ? rows.next() : null;

            @Override
            public boolean hasNext() {
                return next != null;
            }

            @Override
            public Row next() {
                if (next == null)
                    throw new NoSuchElementException();
                Object[] result = new Object[keys + values];
                for (int i = 0; i < keys; ++i) result[i] = next.getLong(i);
                double[] sums = new double[values];
                do {
                    for (int i = 0; i < values; ++i) sums[i] += next.getDouble(keys + i);
                    next = rows.hasNext() ? rows.next() : null;
                } while (next != null && sameKey(result));
                for (int i = 0; i < values; ++i) result[keys + i] = sums[i];
                return RowFactory.create(result);
            }

            private boolean sameKey(Object[] result) {
                for (int i = 0; i < keys; ++i)
                    if ((Long) result[i] != next.getLong(i))
                        return false;
                return true;
            }
        };
    }
}
