package info.quenta.vorl.api;

import info.quenta.vorl.Work;
import java.util.concurrent.CancellationException;
import java.util.concurrent.Future;
import java.util.concurrent.ScheduledThreadPoolExecutor;
import java.util.concurrent.TimeUnit;
import java.util.function.Supplier;

/** Looks at a native call from time to time: tells a listener, and ends it when it is to end. */
final class Watch implements Runnable {
    private static final long PERIOD = 100; // milliseconds

    private static final ScheduledThreadPoolExecutor TIMER =
        new ScheduledThreadPoolExecutor(1, task -> {
            Thread thread = new Thread(task, "vorl progress");
            thread.setDaemon(true);
            return thread;
        });

    static { TIMER.setRemoveOnCancelPolicy(true); }

    private final Work work;
    private final ProgressListener listener; // null for none
    private final Thread caller = Thread.currentThread();
    private boolean ended;
    private boolean cancelled;
    private Throwable fault; // of the listener

    private Watch(Work work, ProgressListener listener) {
        this.work = work;
        this.listener = listener;
    }

    /**
     * Calls the operation, which ends before its time if the thread is interrupted or the listener
     * says so.
     *
     * @throws CancellationException if it did; an interrupted thread stays so
     */
    static <R> R over(ProgressListener listener, Supplier<R> operation) {
        try (Work work = new Work()) {
            Watch watch = new Watch(work, listener);
            Future<?> ticks =
                TIMER.scheduleWithFixedDelay(watch, PERIOD, PERIOD, TimeUnit.MILLISECONDS);
            try {
                return operation.get();
            } catch (VorlException err) {
                throw watch.told(err);
            } finally {
                ticks.cancel(false);
                watch.end();
            }
        }
    }

    @Override
    public synchronized void run() {
        if (ended || cancelled)
            return;
        cancelled = caller.isInterrupted();
        Work.State state = work.state();
        if (!cancelled && listener != null && state.stage() != null) {
            try {
                cancelled = !listener.goesOn(
                    new Progress(state.stage(), (int) state.level(), state.done(), state.total()));
            } catch (RuntimeException | Error err) {
                fault = err;
                cancelled = true;
            }
        }
        if (cancelled)
            work.cancel();
    }

    private synchronized void end() { ended = true; }

    private synchronized RuntimeException told(VorlException err) {
        if (fault instanceof Error error)
            throw error;
        if (fault != null)
            return (RuntimeException) fault;
        if (!cancelled)
            return err;
        CancellationException told = new CancellationException(err.getMessage());
        told.initCause(err);
        return told;
    }
}
