package info.quenta.vorl.spark;

import info.quenta.vorl.spark.TestBed.Links;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.Random;
import java.util.TreeMap;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.types.DataTypes;

/** Networks of many kinds, all small. */
final class Networks {
    private Networks() {}

    private static Row link(long src, long dst, double weight) {
        return RowFactory.create(src, dst, weight);
    }

    /** Links without repeats, in the order in which they came first. */
    private static final class Pairs {
        private final Map<String, Row> rows = new TreeMap<>();
        private final boolean directed;

        Pairs(boolean directed) { this.directed = directed; }

        void add(long src, long dst, double weight) {
            boolean turn = !directed && src > dst;
            rows.putIfAbsent((turn ? dst + " " + src : src + " " + dst), link(src, dst, weight));
        }

        Links links() {
            return new Links(DataTypes.LongType, directed, new ArrayList<>(rows.values()));
        }
    }

    /** Groups of a size; most links lie inside. */
    static Links planted(int groups, int size, int degree, double inside, long seed) {
        Random random = new Random(seed);
        int nodes = groups * size;
        Pairs pairs = new Pairs(false);
        for (int i = 0; i < nodes * degree / 2; ++i) {
            int src = random.nextInt(nodes);
            int dst = random.nextDouble() < inside ? src / size * size + random.nextInt(size)
                                                   : random.nextInt(nodes);
            if (src != dst)
                pairs.add(src, dst, 1);
        }
        return pairs.links();
    }

    /** D. Chakrabarti, Y. Zhan, C. Faloutsos, R-MAT, SDM (2004): few nodes have most links. */
    static Links rmat(int scale, int links, long seed) {
        Random random = new Random(seed);
        Pairs pairs = new Pairs(false);
        for (int i = 0; i < links; ++i) {
            long src = 0;
            long dst = 0;
            for (int bit = 0; bit < scale; ++bit) {
                double draw = random.nextDouble();
                src = 2 * src + (draw >= 0.76 ? 1 : 0);
                dst = 2 * dst + (draw >= 0.57 && draw < 0.76 || draw >= 0.95 ? 1 : 0);
            }
            pairs.add(src, dst, 1);
        }
        return pairs.links();
    }

    /** Arcs of all kinds of weights, some both ways, with gaps between the ids. */
    static Links arcs(int nodes, int links, long seed) {
        Random random = new Random(seed);
        Pairs pairs = new Pairs(true);
        for (int i = 0; i < links; ++i) {
            long src = 7L * random.nextInt(nodes);
            long dst = random.nextDouble() < 0.8 ? src / 105 * 105 + 7L * random.nextInt(15)
                                                 : 7L * random.nextInt(nodes);
            pairs.add(src, dst, (float) Math.exp(8 * random.nextDouble() - 4));
        }
        return pairs.links();
    }

    /** Nodes with names of all kinds; numbers among them come first, in their own order. */
    static Links named(Links links) {
        String[] forms = {"%d", "node %d", "0%d", "ä%d", "Z%d"};
        List<Row> rows = new ArrayList<>();
        for (Row row : links.rows())
            rows.add(RowFactory.create(
                name(forms, row.getLong(0)), name(forms, row.getLong(1)), row.getDouble(2)));
        return new Links(DataTypes.StringType, false, rows);
    }

    private static String name(String[] forms, long id) {
        return forms[(int) (id % forms.length)].formatted(1000 - 9 * id % 500 + id * 1000);
    }

    /**
     * Several networks side by side, a self link, and nodes that are linked to themselves alone.
     */
    static Links components() {
        List<Row> rows = new ArrayList<>();
        for (int part = 0; part < 4; ++part)
            for (Row row : planted(2, 8, 5, 0.9, part).rows())
                rows.add(link(row.getLong(0) + 100 * part, row.getLong(1) + 100 * part, 1));
        rows.add(link(3, 3, 2));
        rows.add(link(900, 900, 1));
        rows.add(link(901, 902, 1));
        return new Links(rows);
    }

    /** Cliques in a ring, all as good as each other: ties everywhere. */
    static Links ring(int cliques, int size) {
        List<Row> rows = new ArrayList<>();
        for (int clique = 0; clique < cliques; ++clique) {
            for (int i = 0; i < size; ++i)
                for (int j = i + 1; j < size; ++j)
                    rows.add(link(clique * size + i, clique * size + j, 1));
            rows.add(link(clique * size, (clique + 1) % cliques * size + 1, 1));
        }
        return new Links(rows);
    }

    /** A planted network with a node that is linked to all others. */
    static Links hub(Links planted, int nodes) {
        List<Row> rows = new ArrayList<>(planted.rows());
        for (int node = 0; node < nodes; ++node) rows.add(link(node, nodes, 1));
        return new Links(rows);
    }

    /** Groups of 4 cliques of 6 nodes, in a ring. */
    static Links nested(int groups) {
        List<Row> rows = new ArrayList<>();
        for (int group = 0; group < groups; ++group) {
            int first = 24 * group;
            for (int i = 0; i < 24; ++i)
                for (int j = i + 1; j < 24; ++j) {
                    boolean clique = i / 6 == j / 6;
                    boolean close = i % 6 == (j / 6 + 1) % 6 && j % 6 == (i / 6 + 1) % 6
                        || i % 6 == j / 6 && j % 6 == i / 6;
                    if (clique || close)
                        rows.add(link(first + i, first + j, 1));
                }
            rows.add(link(first, (first + 30) % (24 * groups), 1));
        }
        return new Links(rows);
    }
}
