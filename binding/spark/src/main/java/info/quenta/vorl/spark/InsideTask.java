package info.quenta.vorl.spark;

import info.quenta.vorl.api.Cluster;
import info.quenta.vorl.api.Clustering;
import info.quenta.vorl.api.Level;
import info.quenta.vorl.api.Member;
import info.quenta.vorl.api.Network;
import info.quenta.vorl.api.Options;
import java.util.ArrayList;
import java.util.Iterator;
import java.util.List;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;

/**
 * Clusters the inside of communities by the engine. Takes their links (community, low, high,
 * weight), those of a community one after another.
 */
final class InsideTask extends LinksTask {
    private static final long serialVersionUID = 1;

    InsideTask() {
        super(1,
            "community LONG NOT NULL, id LONG NOT NULL, level LONG NOT NULL, number LONG NOT NULL,"
                + " part FLOAT NOT NULL");
    }

    @Override
    Iterator<Row> found(Row link, Network network) {
        List<Row> rows = new ArrayList<>();
        if (network.nodeCount() < 3)
            return rows.iterator();
        try (Clustering clustering = network.cluster(Options.builder().rootMax(0).build())) {
            // One cluster on top is the community itself.
            int depth = clustering.root().size() == 1 ? clustering.root().clusters().get(0).level()
                                                      : clustering.levels().size();
            for (Level level : clustering.levels().subList(0, depth))
                for (Cluster cluster : level.clusters())
                    for (Member member : cluster.members())
                        rows.add(RowFactory.create(link.getLong(0), member.node(),
                            (long) level.index(), cluster.id(), member.share()));
        }
        return rows.iterator();
    }
}
