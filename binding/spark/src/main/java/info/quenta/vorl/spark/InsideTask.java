package info.quenta.vorl.spark;

import info.quenta.vorl.api.Cluster;
import info.quenta.vorl.api.Clustering;
import info.quenta.vorl.api.Level;
import info.quenta.vorl.api.Member;
import info.quenta.vorl.api.Network;
import info.quenta.vorl.api.Options;
import java.util.ArrayList;
import java.util.Collections;
import java.util.Iterator;
import java.util.List;
import org.apache.spark.api.java.function.MapPartitionsFunction;
import org.apache.spark.sql.Encoder;
import org.apache.spark.sql.Encoders;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.types.DataTypes;
import org.apache.spark.sql.types.StructType;

/**
 * Clusters the inside of communities by the engine. Takes their links (community, low, high,
 * weight), those of a community one after another.
 */
final class InsideTask implements MapPartitionsFunction<Row, Row> {
    private static final long serialVersionUID = 1;
    static final Encoder<Row> ENCODER =
        Encoders.row(new StructType()
                         .add("community", DataTypes.LongType, false)
                         .add("id", DataTypes.LongType, false)
                         .add("level", DataTypes.LongType, false)
                         .add("number", DataTypes.LongType, false)
                         .add("part", DataTypes.FloatType, false));

    @Override
    public Iterator<Row> call(Iterator<Row> rows) {
        return new Iterator<>() {
            private Row first = rows.hasNext() ? rows.next() : null;
            private Iterator<Row> found = Collections.emptyIterator();

            @Override
            public boolean hasNext() {
                while (!found.hasNext() && first != null) found = community();
                return found.hasNext();
            }

            @Override
            public Row next() {
                hasNext();
                return found.next();
            }

            private Iterator<Row> community() {
                long community = first.getLong(0);
                Network.Builder builder = Network.builder();
                do {
                    builder.edge(first.getLong(1), first.getLong(2), first.getDouble(3));
                    first = rows.hasNext() ? rows.next() : null;
                } while (first != null && first.getLong(0) == community);
                try (Network network = builder.build()) {
                    return clustered(community, network).iterator();
                }
            }
        };
    }

    private static List<Row> clustered(long community, Network network) {
        List<Row> rows = new ArrayList<>();
        if (network.nodeCount() < 3)
            return rows;
        try (Clustering clustering = network.cluster(Options.builder().rootMax(0).build())) {
            // One cluster on top is the community itself.
            int depth = clustering.root().size() == 1 ? clustering.root().clusters().get(0).level()
                                                      : clustering.levels().size();
            for (Level level : clustering.levels().subList(0, depth))
                for (Cluster cluster : level.clusters())
                    for (Member member : cluster.members())
                        rows.add(RowFactory.create(community, member.node(), (long) level.index(),
                            cluster.id(), member.share()));
        }
        return rows;
    }
}
