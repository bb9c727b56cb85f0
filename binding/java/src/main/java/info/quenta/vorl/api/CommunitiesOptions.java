package info.quenta.vorl.api;

/**
 * How communities are sought. No field changes what the answer is but {@code shares} and
 * {@code starts}.
 *
 * @param shares whether a node may belong to several communities
 * @param starts from how many starts to search, the best one wins; 0: the smaller the network, the
 *     more; above 6 there are no others
 * @param threads threads to work with, 0 for as many as the process may use
 */
public record CommunitiesOptions(boolean shares, int starts, int threads) {
    /** With shares, and the number of starts that the network calls for. */
    public static final CommunitiesOptions DEFAULT = new CommunitiesOptions(true, 0, 0);

    /**
     * Checks the numbers.
     *
     * @throws IllegalArgumentException if one is below 0
     */
    public CommunitiesOptions {
        if (starts < 0 || threads < 0)
            throw new IllegalArgumentException("starts and threads are " + starts + " and "
                + threads + ", at least 0 is expected");
    }
}
