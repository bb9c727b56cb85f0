package info.quenta.vorl.spark;

import info.quenta.vorl.api.Network;
import java.util.Iterator;
import org.apache.spark.sql.Row;

/** Leaves links to the native library. Takes rows (key..., low, high, weight), a network a key. */
abstract class LinksTask extends GroupTask {
    private static final long serialVersionUID = 1;

    private final int keys;

    /**
     * @param keys how many columns tell a network; without any the whole partition is one
     * @param result columns of what comes out, as SQL declares them
     */
    LinksTask(int keys, String result) {
        super(keys, result);
        this.keys = keys;
    }

    /**
     * What becomes of a network, which lives until this returns.
     *
     * @param link one of its rows
     */
    abstract Iterator<Row> found(Row link, Network network);

    @Override
    final Iterator<Row> group(Row first, Iterator<Row> others) {
        Network.Builder builder = Network.builder();
        add(builder, first, keys);
        while (others.hasNext()) add(builder, others.next(), keys);
        try (Network network = builder.build()) {
            return found(first, network);
        }
    }

    /** @param place of the first of the three columns of a link */
    static void add(Network.Builder builder, Row link, int place) {
        builder.edge(link.getLong(place), link.getLong(place + 1), link.getDouble(place + 2));
    }
}
