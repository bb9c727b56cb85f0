package info.quenta.vorl;

/**
 * The native work of a thread, which other threads may look at and end.
 *
 * <p>It holds all calls of the thread from its creation up to {@link #close}, which is for the same
 * thread.
 */
public final class Work implements AutoCloseable {
    static { NativeLibrary.load(); }

    /**
     * A look at the work.
     *
     * @param stage what is done, null before the first stage
     * @param level the level of the hierarchy, -1 where there is none
     * @param done how many items of the stage are done
     * @param total of how many, 0 where that isn't known
     */
    public record State(String stage, long level, long done, long total) {}

    private long handle = begin();

    /** Begins, for the calling thread. */
    public Work() {}

    /** How far the work is; null once it is closed. */
    public synchronized State state() {
        if (handle == 0)
            return null;
        long[] numbers = new long[3];
        String stage = state(handle, numbers);
        return new State(stage, numbers[0], numbers[1], numbers[2]);
    }

    /** Lets the call that is under way throw soon, and all later ones. */
    public synchronized void cancel() {
        if (handle != 0)
            cancel(handle);
    }

    /** Closing twice is harmless. */
    @Override
    public synchronized void close() {
        if (handle != 0)
            end(handle);
        handle = 0;
    }

    private static native long begin();

    private static native String state(long work, long[] numbers);

    private static native void cancel(long work);

    private static native void end(long work);
}
