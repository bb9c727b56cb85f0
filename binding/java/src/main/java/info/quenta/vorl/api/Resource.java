package info.quenta.vorl.api;

import info.quenta.vorl.Bulk;
import java.lang.ref.Cleaner;
import java.util.concurrent.CancellationException;
import java.util.concurrent.locks.Lock;
import java.util.concurrent.locks.ReadWriteLock;
import java.util.concurrent.locks.ReentrantReadWriteLock;
import java.util.function.Consumer;
import java.util.function.Function;
import java.util.function.Supplier;

/** A native object that is freed when its owner is closed, or collected. */
final class Resource<T> {
    /** The library traces to one stream: calls that do are alone, all others go together. */
    private static final ReadWriteLock TRACE = new ReentrantReadWriteLock(true);

    private static int calls; // that are under way
    private static boolean traced; // before the first of them

    private static final Cleaner CLEANER = Cleaner.create();

    private final State<T> state;
    private final Cleaner.Cleanable cleanable;

    private static final class State<T> implements Runnable {
        private final String name;
        private T object;
        private final Consumer<T> free;

        State(String name, T object, Consumer<T> free) {
            this.name = name;
            this.object = object;
            this.free = free;
        }

        @Override
        public synchronized void run() {
            if (object != null)
                free.accept(object);
            object = null;
        }

        synchronized void check() {
            if (object == null)
                throw new IllegalStateException("the " + name + " is closed");
        }

        synchronized<R> R call(Function<T, R> operation) {
            check();
            return translated(() -> operation.apply(object));
        }

        synchronized<R> R callLong(
            boolean trace, ProgressListener listener, Function<T, R> operation) {
            check();
            return longCall(trace, listener, () -> operation.apply(object));
        }
    }

    Resource(Object owner, String name, T object, Consumer<T> free) {
        this.state = new State<>(name, object, free);
        this.cleanable = CLEANER.register(owner, state);
    }

    void close() { cleanable.clean(); }

    void check() { state.check(); }

    /** Calls the operation; the object isn't freed meanwhile. */
    <R> R call(Function<T, R> operation) { return state.call(operation); }

    /** As {@link #call}, for one that may take long: see {@link #longCall}. */
    <R> R callLong(boolean trace, ProgressListener listener, Function<T, R> operation) {
        return state.callLong(trace, listener, operation);
    }

    /**
     * Calls the operation, without a trace unless one is wanted. It can be interrupted.
     *
     * @param trace whether one is; no other call is under way then
     * @param listener hears of it, null for none
     */
    static <R> R longCall(boolean trace, ProgressListener listener, Supplier<R> operation) {
        Lock lock = trace ? TRACE.writeLock() : TRACE.readLock();
        try {
            lock.lockInterruptibly();
        } catch (InterruptedException err) {
            Thread.currentThread().interrupt();
            throw new CancellationException("interrupted while others trace");
        }
        try {
            enter(trace);
            try {
                return Watch.over(listener, () -> translated(operation));
            } finally {
                leave();
            }
        } finally {
            lock.unlock();
        }
    }

    private static synchronized void enter(boolean trace) {
        if (calls++ == 0)
            traced = Bulk.trace(trace);
    }

    private static synchronized void leave() {
        if (--calls == 0)
            Bulk.trace(traced);
    }

    private static <R> R translated(Supplier<R> operation) {
        try {
            return operation.get();
        } catch (RuntimeException err) {
            // The native methods throw the class itself.
            if (err.getClass() == RuntimeException.class)
                throw new VorlException(err);
            throw err;
        }
    }
}
