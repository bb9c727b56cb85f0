package info.quenta.vorl.api;

/** Hears how far a long call is, some ten times a second, on a thread of the library. */
@FunctionalInterface
public interface ProgressListener {
    /**
     * Called while the work goes on. What this throws ends the work, and the call throws it.
     *
     * @param progress how far it is
     * @return false to end the work, which the call tells by a {@link
     *     java.util.concurrent.CancellationException}
     */
    boolean goesOn(Progress progress);
}
