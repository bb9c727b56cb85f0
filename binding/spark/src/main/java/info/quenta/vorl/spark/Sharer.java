package info.quenta.vorl.spark;

import java.io.Serializable;
import java.util.ArrayList;
import java.util.Comparator;
import java.util.Iterator;
import java.util.List;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;

/**
 * The communities of single nodes.
 *
 * <p>Takes (node, total, inner, community, pull, share, linked, all, inside): what a node has, a
 * community that it has links to or a share in, the weight of its links there, its share, whether
 * there are such links, and the weights of the community, all of it and that inside. The rows of a
 * node follow each other.
 */
final class Sharer extends GroupTask {
    private static final long serialVersionUID = 1;
    /** A community with less than this of what the best one has of a node's links gets no share. */
    private static final double LEAST_PULL = 1.0 / 3;
    /** No node is in more communities than this. */
    static final int MOST = 64;
    private final Likelihood likelihood;
    private final double cost;
    private final double further;

    /** Gives shares, each with whether the node has others than before and whether several. */
    Sharer(Likelihood likelihood, double cost, double further) {
        super(1,
            "node LONG NOT NULL, community LONG NOT NULL, share FLOAT NOT NULL, place INT NOT NULL,"
                + " several BOOLEAN NOT NULL, changed BOOLEAN NOT NULL");
        this.likelihood = likelihood;
        this.cost = cost;
        this.further = further;
    }

    private record Touched(
        long community, double pull, float share, boolean linked, double total, double inner) {}

    private record Candidate(long community, double pull, double expected, double density,
        double likelihood) implements Serializable {}

    private record Part(long community, float share) {}

    private static final Comparator<Part> LARGEST =
        Comparator.comparing((Part part) -> - part.share()).thenComparing(Part::community);
    private static final Comparator<Candidate> LIKELIEST =
        Comparator.comparing((Candidate one) -> - one.likelihood())
            .thenComparing(Candidate::community);

    @Override
    Iterator<Row> group(Row first, Iterator<Row> others) {
        List<Touched> touched = new ArrayList<>();
        touched.add(touched(first));
        while (others.hasNext()) touched.add(touched(others.next()));
        return decide(first.getLong(0), first.getDouble(1), first.getDouble(2), touched);
    }

    private static Touched touched(Row row) {
        return new Touched(row.getLong(3), row.getDouble(4), row.getFloat(5), row.getBoolean(6),
            row.getDouble(7), row.getDouble(8));
    }

    private Iterator<Row> decide(long node, double total, double inner, List<Touched> touched) {
        List<Part> former = new ArrayList<>();
        for (Touched one : touched)
            if (one.share() > 0)
                former.add(new Part(one.community(), one.share()));
        former.sort(LARGEST);
        List<Part> parts = parts(total, inner, touched, former);
        boolean changed = !communities(parts).equals(communities(former));
        List<Row> result = new ArrayList<>();
        for (Part part : parts)
            result.add(RowFactory.create(
                node, part.community(), part.share(), result.size(), parts.size() > 1, changed));
        return result.iterator();
    }

    private static List<Long> communities(List<Part> parts) {
        return parts.stream().map(Part::community).sorted().toList();
    }

    private List<Part> parts(double total, double inner, List<Touched> touched, List<Part> former) {
        if (former.size() == 1 && !rivals(touched, former.get(0).community()))
            return former;
        List<Candidate> candidates = candidates(total, inner, touched, former);
        if (candidates.isEmpty())
            return former;
        candidates.sort(LIKELIEST);
        int taken = 1;
        double best = candidates.get(0).likelihood();
        double sum = candidates.get(0).pull();
        double price = cost;
        double outside = outside(total, inner, touched, former);
        for (int count = 2; count <= Math.min(MOST, candidates.size()); ++count) {
            double pull = candidates.get(count - 1).pull();
            if (pull < LEAST_PULL * candidates.get(0).pull())
                break;
            sum += pull;
            double value = together(candidates, count, sum, outside) - price;
            price += further;
            if (value > best) {
                best = value;
                taken = count;
            }
        }
        double whole = 0;
        for (int i = 0; i < taken; ++i) whole += candidates.get(i).pull();
        List<Part> parts = new ArrayList<>();
        for (int i = 0; i < taken; ++i)
            parts.add(new Part(
                candidates.get(i).community(), (float) (candidates.get(i).pull() / whole)));
        parts.sort(LARGEST);
        return parts;
    }

    /** Whether another community has enough of the links; mostly none has. */
    private static boolean rivals(List<Touched> touched, long own) {
        double pull = 0;
        for (Touched one : touched)
            if (one.community() == own)
                pull = one.pull();
        double least = LEAST_PULL * pull;
        return touched.stream().anyMatch(
            one -> one.linked() && one.community() != own && one.pull() >= least);
    }

    /** The density outside as the node sees it: its own links may be most of those there. */
    private double outside(double total, double inner, List<Touched> touched, List<Part> former) {
        double out = total - inner;
        for (Part part : former)
            for (Touched one : touched)
                if (one.community() == part.community())
                    out -= part.share() * one.pull();
        return likelihood.outsideWithout(Math.max(0.0, out));
    }

    /** The communities to which the node has more links than by chance. */
    private List<Candidate> candidates(
        double total, double inner, List<Touched> touched, List<Part> former) {
        double outside = outside(total, inner, touched, former);
        List<Candidate> candidates = new ArrayList<>();
        for (Touched one : touched) {
            if (!one.linked())
                continue;
            double share = one.share();
            // The node itself mustn't speak for its community.
            double rest = one.total() - share * total;
            double inside = one.inner() - 2 * share * one.pull();
            if (!(rest > 0))
                continue;
            double expected = total * rest / likelihood.weight();
            double density = likelihood.own()
                ? Math.max(0.0, inside) * likelihood.weight() / (rest * rest)
                : likelihood.inside();
            if (density <= outside || one.pull() <= outside * expected)
                continue;
            Candidate candidate = new Candidate(one.community(), one.pull(), expected, density, 0);
            double alone = alone(candidate, 1, outside);
            if (alone <= 0)
                continue;
            candidates.add(new Candidate(one.community(), one.pull(), expected, density, alone));
        }
        return candidates;
    }

    private double alone(Candidate candidate, double share, double outside) {
        return likelihood.scale()
            * (candidate.pull() * Logarithm.ln(share * candidate.density() / outside)
                - (share * candidate.density() - outside) * candidate.expected());
    }

    private double together(List<Candidate> candidates, int count, double sum, double outside) {
        double value = 0;
        for (int i = 0; i < count; ++i)
            value += alone(candidates.get(i), candidates.get(i).pull() / sum, outside);
        return value;
    }
}
