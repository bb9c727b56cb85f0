package info.quenta.vorl.spark;

import static org.apache.spark.sql.functions.col;
import static org.apache.spark.sql.functions.count;
import static org.apache.spark.sql.functions.lit;
import static org.apache.spark.sql.functions.sum;

import java.io.Serializable;
import java.util.List;
import java.util.function.Supplier;
import org.apache.spark.sql.Column;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;

/** Rounds a weight to the grid on which sums of up to a given weight are exact. */
final class Grid implements Serializable {
    private static final long serialVersionUID = 1;

    private final double shift;

    private Grid(double weight) {
        int exponent = weight > 0 ? Math.getExponent(weight) + 1 : 0;
        // Adding and taking off 2^e rounds to multiples of 2^(e - 52).
        shift = Math.scalb(1.0, Math.min(exponent, 1023));
    }

    /**
     * The grid of a sum whose exponent alone matters. Only where that hangs on how the sum is
     * rounded, it is made in the given order, by one task.
     *
     * @param values (value), none below 0
     * @param ordered rows that are to be added up in the order of all columns but the last
     */
    static Grid of(Dataset<Row> values, Supplier<Dataset<Row>> ordered) {
        Row row = values.agg(sum("value"), count(lit(1))).first();
        if (row.isNullAt(0))
            return new Grid(0);
        double whole = row.getDouble(0);
        double doubt = whole * 0x1p-51 * (row.getLong(1) + 1);
        if (Math.getExponent(whole - doubt) == Math.getExponent(whole + doubt))
            return new Grid(whole);
        return new Grid(total(ordered.get()));
    }

    private static double total(Dataset<Row> rows) {
        String[] names = rows.columns();
        String value = names[names.length - 1];
        Column[] order = new Column[names.length - 1];
        for (int i = 0; i < order.length; ++i) order[i] = col(names[i]);
        return new RunningSums(List.of(), List.of(value))
            .of(rows.repartition(1).sortWithinPartitions(order).select(value))
            .first()
            .getDouble(0);
    }

    float round(float weight) { return (float) ((weight + shift) - shift); }
}
