package info.quenta.vorl.spark;

import java.util.Collections;
import java.util.Iterator;
import java.util.List;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;

/** Adds up the values of sorted rows key by key, one after another. */
final class RunningSums extends GroupTask {
    private static final long serialVersionUID = 1;

    private final int keys;
    private final int values;

    RunningSums(List<String> keys, List<String> values) {
        super(keys.size(),
            Stream
                .concat(keys.stream().map(name -> "`" + name + "` LONG NOT NULL"),
                    values.stream().map(name -> "`" + name + "` DOUBLE NOT NULL"))
                .collect(Collectors.joining(", ")));
        this.keys = keys.size();
        this.values = values.size();
    }

    @Override
    Iterator<Row> group(Row first, Iterator<Row> others) {
        double[] sums = new double[values];
        add(sums, first);
        while (others.hasNext()) add(sums, others.next());
        Object[] result = new Object[keys + values];
        for (int i = 0; i < keys; ++i) result[i] = first.get(i);
        for (int i = 0; i < values; ++i) result[keys + i] = sums[i];
        return Collections.singleton(RowFactory.create(result)).iterator();
    }

    private void add(double[] sums, Row row) {
        for (int i = 0; i < values; ++i) sums[i] += row.getDouble(keys + i);
    }
}
