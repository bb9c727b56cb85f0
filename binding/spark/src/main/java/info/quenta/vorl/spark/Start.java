package info.quenta.vorl.spark;

import java.util.List;

/**
 * Where a search begins.
 *
 * @param similarity the power of the degrees that divides the number of shared neighbours
 * @param own whether each community has a density of its own
 */
record Start(Similarity.Power similarity, boolean own) {
    /** The starts in the order in which they are tried. */
    static final List<Start> ALL =
        List.of(new Start(Similarity.Power.COSINE, true), new Start(Similarity.Power.COSINE, false),
            new Start(Similarity.Power.COMMON, true), new Start(Similarity.Power.COMMON, false),
            new Start(Similarity.Power.MIXED, true), new Start(Similarity.Power.MIXED, false));

    @Override
    public String toString() {
        return similarity.text() + (own ? ", own densities" : ", one density");
    }
}
