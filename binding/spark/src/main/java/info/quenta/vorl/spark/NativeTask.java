package info.quenta.vorl.spark;

import info.quenta.vorl.api.Communities.Part;
import info.quenta.vorl.api.Network;
import java.util.Arrays;
import java.util.Iterator;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;

/** Leaves all links (low, high, weight) of a network to the native library. */
final class NativeTask extends LinksTask {
    private static final long serialVersionUID = 1;

    private final boolean shares;
    private final int starts;

    NativeTask(CommunitiesOptions options) {
        super(0, "item LONG NOT NULL, cluster LONG NOT NULL, share FLOAT NOT NULL");
        shares = options.shares();
        starts = options.starts();
    }

    @Override
    Iterator<Row> found(Row link, Network network) {
        // A task has one core.
        var found =
            network.communities(new info.quenta.vorl.api.CommunitiesOptions(shares, starts, 1));
        return Arrays.stream(found.nodes())
            .boxed()
            .flatMap(node -> found.of(node).stream().map(part -> row(node, part)))
            .iterator();
    }

    private static Row row(long node, Part part) {
        return RowFactory.create(node, (long) part.community(), part.share());
    }
}
