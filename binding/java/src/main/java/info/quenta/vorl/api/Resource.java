package info.quenta.vorl.api;

import info.quenta.vorl.Bulk;
import java.lang.ref.Cleaner;
import java.util.function.Consumer;
import java.util.function.Function;
import java.util.function.Supplier;

/** A native object that is freed when its owner is closed, or collected. */
final class Resource<T> {
    /** The library traces to one stream and numbers clusters by one counter: one call at a time. */
    private static final Object LIBRARY = new Object();

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

        synchronized<R> R callAlone(boolean trace, Function<T, R> operation) {
            check();
            return alone(trace, () -> operation.apply(object));
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

    /** As {@link #call}, while no other thread is in a call of this kind. */
    <R> R callAlone(boolean trace, Function<T, R> operation) {
        return state.callAlone(trace, operation);
    }

    /** Calls the operation alone, and without a trace unless one is wanted. */
    static <R> R alone(boolean trace, Supplier<R> operation) {
        synchronized (LIBRARY) {
            boolean on = Bulk.trace(trace);
            try {
                return translated(operation);
            } finally {
                Bulk.trace(on);
            }
        }
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
