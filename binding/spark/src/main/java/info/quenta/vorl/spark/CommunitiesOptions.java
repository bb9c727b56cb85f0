package info.quenta.vorl.spark;

import java.io.Serializable;

/**
 * How communities are sought. Nothing here changes what the answer is but {@code shares} and
 * {@code starts}.
 *
 * @param shares whether a node may belong to several communities
 * @param starts from how many starts to search, the best one wins; 0: the smaller the network, the
 *     more; above 6 there are no others
 * @param linksOfTask a network of up to so many links is left to the native library, in one task
 *     that has all of them in memory (about 100 bytes each); 0 for never
 * @param rowsOfTask up to so many rows are sorted and numbered in one task, which saves shuffles
 * @param rowsOfDriver tables of up to so many rows are held by the driver between steps, larger
 *     ones by checkpoints; it must have room for some dozens of them
 * @param checkpoints folder of a file system that all executors reach, where state between steps is
 *     kept; null for that of the context
 */
public record CommunitiesOptions(boolean shares, int starts, long linksOfTask, long rowsOfTask,
    long rowsOfDriver, String checkpoints) implements Serializable {
    /** What is taken unless something else is said. */
    public static final CommunitiesOptions DEFAULT =
        new CommunitiesOptions(true, 0, 10_000_000, 1_000_000, 20_000, null);

    /** @throws IllegalArgumentException if a number is below 0 */
    public CommunitiesOptions {
        if (starts < 0 || linksOfTask < 0 || rowsOfTask < 0 || rowsOfDriver < 0)
            throw new IllegalArgumentException("CommunitiesOptions, numbers should be 0 or above: "
                + starts + ", " + linksOfTask + ", " + rowsOfTask + ", " + rowsOfDriver);
    }

    /** With or without shares. */
    public CommunitiesOptions withShares(boolean value) {
        return new CommunitiesOptions(
            value, starts, linksOfTask, rowsOfTask, rowsOfDriver, checkpoints);
    }

    /** With another number of starts. */
    public CommunitiesOptions withStarts(int value) {
        return new CommunitiesOptions(
            shares, value, linksOfTask, rowsOfTask, rowsOfDriver, checkpoints);
    }

    /** With another bound of what one task takes over. */
    public CommunitiesOptions withLinksOfTask(long value) {
        return new CommunitiesOptions(shares, starts, value, rowsOfTask, rowsOfDriver, checkpoints);
    }

    /** With another bound of what one task sorts. */
    public CommunitiesOptions withRowsOfTask(long value) {
        return new CommunitiesOptions(
            shares, starts, linksOfTask, value, rowsOfDriver, checkpoints);
    }

    /** With another bound of what the driver holds. */
    public CommunitiesOptions withRowsOfDriver(long value) {
        return new CommunitiesOptions(shares, starts, linksOfTask, rowsOfTask, value, checkpoints);
    }

    /** With another folder of checkpoints. */
    public CommunitiesOptions withCheckpoints(String folder) {
        return new CommunitiesOptions(
            shares, starts, linksOfTask, rowsOfTask, rowsOfDriver, folder);
    }
}
