package info.quenta.vorl.api;

import info.quenta.vorl.Bulk;
import java.util.ArrayList;
import java.util.List;
import java.util.NoSuchElementException;

/**
 * The communities of a network, each node of it in at least one.
 *
 * <p>They are numbered from 0 by falling weight, those of equal weight by the least id in them.
 * Isolated nodes come last, each a community of its own.
 */
public final class Communities {
    private final Bulk.Rows rows; // by ascending id
    private final Score score;

    Communities(Bulk.Found found) {
        rows = found.rows();
        double[] figures = found.score();
        score = new Score(figures[0], figures[1], figures[2], figures[3], figures[4], found.start(),
            (int) figures[5], (int) figures[6]);
    }

    /**
     * Figures of the communities. Those of partitions are measured before nodes are shared: each is
     * in the community of its largest share.
     *
     * @param modularity at the resolution 1
     * @param conductance the mean of the communities, in [0, 1]; isolated nodes don't count
     * @param estimatedGamma the resolution estimated by the log-ratio rule
     * @param saving bits that the communities save in the description of the network, less those
     *     that name them; below 0 they may as well be chance
     * @param naming bits that name the communities
     * @param start the start that won
     * @param starts from how many the search began
     * @param rounds of splitting, moving and merging, from the start that won
     */
    public record Score(double modularity, double conductance, double estimatedGamma, double saving,
        double naming, String start, int starts, int rounds) {}

    /**
     * How good the communities are.
     *
     * @return the figures that the program's {@code communities} tells
     */
    public Score score() { return score; }

    /**
     * What a node has in a community.
     *
     * @param community its number
     * @param share in (0, 1]; the shares of a node add up to 1
     */
    public record Part(int community, float share) {}

    /**
     * The ids of the nodes.
     *
     * @return a new array, ascending
     */
    public long[] nodes() {
        long[] nodes = new long[rows.ids().length];
        for (int i = 0; i < nodes.length; ++i) nodes[i] = Integer.toUnsignedLong(rows.ids()[i]);
        return nodes;
    }

    /**
     * The communities of a node.
     *
     * @param node its id
     * @return a new list, the largest share first
     * @throws NoSuchElementException if there is no such node
     */
    public List<Part> of(long node) {
        int place = place(node);
        List<Part> parts = new ArrayList<>();
        for (int i = rows.starts()[place]; i < rows.starts()[place + 1]; ++i)
            parts.add(new Part(rows.others()[i], rows.shares()[i]));
        return parts;
    }

    /**
     * The nodes of all communities.
     *
     * @return a new list by the numbers of the communities, of members by ascending ids
     */
    public List<List<Member>> members() {
        List<List<Member>> members = new ArrayList<>();
        for (int place = 0; place < rows.ids().length; ++place)
            for (int i = rows.starts()[place]; i < rows.starts()[place + 1]; ++i) {
                while (members.size() <= rows.others()[i]) members.add(new ArrayList<>());
                members.get(rows.others()[i])
                    .add(new Member(Integer.toUnsignedLong(rows.ids()[place]), rows.shares()[i]));
            }
        return members;
    }

    private int place(long node) {
        int first = 0;
        int last = rows.ids().length;
        while (first < last) {
            int middle = (first + last) >>> 1;
            long id = Integer.toUnsignedLong(rows.ids()[middle]);
            if (id == node)
                return middle;
            if (id < node)
                first = middle + 1;
            else
                last = middle;
        }
        throw new NoSuchElementException("there is no node " + node);
    }
}
