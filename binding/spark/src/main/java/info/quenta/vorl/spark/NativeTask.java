package info.quenta.vorl.spark;

import info.quenta.vorl.api.Communities.Part;
import info.quenta.vorl.api.Network;
import java.util.Arrays;
import java.util.Collections;
import java.util.Iterator;
import org.apache.spark.api.java.function.MapPartitionsFunction;
import org.apache.spark.sql.Encoder;
import org.apache.spark.sql.Encoders;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.types.DataTypes;
import org.apache.spark.sql.types.StructType;

/** Leaves all links (low, high, weight) of a network to the native library. */
final class NativeTask implements MapPartitionsFunction<Row, Row> {
    private static final long serialVersionUID = 1;
    static final Encoder<Row> ENCODER = Encoders.row(new StructType()
                                                         .add("item", DataTypes.LongType, false)
                                                         .add("cluster", DataTypes.LongType, false)
                                                         .add("share", DataTypes.FloatType, false));

    private final boolean shares;
    private final int starts;

    NativeTask(CommunitiesOptions options) {
        shares = options.shares();
        starts = options.starts();
    }

    @Override
    public Iterator<Row> call(Iterator<Row> rows) {
        if (!rows.hasNext())
            return Collections.emptyIterator();
        Network.Builder builder = Network.builder();
        while (rows.hasNext()) {
            Row row = rows.next();
            builder.edge(row.getLong(0), row.getLong(1), row.getDouble(2));
        }
        // A task has one core.
        try (Network network = builder.build()) {
            var found =
                network.communities(new info.quenta.vorl.api.CommunitiesOptions(shares, starts, 1));
            return Arrays.stream(found.nodes())
                .boxed()
                .flatMap(node -> found.of(node).stream().map(part -> row(node, part)))
                .iterator();
        }
    }

    private static Row row(long node, Part part) {
        return RowFactory.create(node, (long) part.community(), part.share());
    }
}
