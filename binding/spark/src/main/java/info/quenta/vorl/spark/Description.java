package info.quenta.vorl.spark;

/**
 * What a partition saves in the description of a network, in natural units.
 *
 * @param likelihood against that of no communities
 * @param naming what names the partition and its densities
 */
record Description(double likelihood, double naming) {
    double saving() { return likelihood - naming; }

    /**
     * L. Zhang, T. P. Peixoto, Phys. Rev. Research 2, 043271 (2020): the uniform and the
     * non-uniform planted partition, without what is the same for all partitions.
     *
     * @param weight of the network, both directions
     * @param scale links for a unit of weight
     */
    static Description of(boolean own, double weight, double scale, Sums sums) {
        double inner = sums.innerWithin(weight);
        double expected = sums.expectedWithin(weight);
        double likelihood = own ? sums.relatives() : Sums.relative(inner, expected);
        likelihood += Sums.relative(weight - inner, weight - expected);
        likelihood *= scale / 2;
        double nodes = sums.nodes();
        double count = sums.count();
        // The number of groups, their sizes, who is in which, and the links inside each.
        double naming = Logarithm.ln(nodes) + Logarithm.lnChoose(nodes - 1, count - 1)
            + Logarithm.lnGamma(nodes + 1) - sums.members();
        if (own)
            naming += Logarithm.lnChoose(weight * scale / 2 + count, count);
        return new Description(likelihood, naming);
    }
}
