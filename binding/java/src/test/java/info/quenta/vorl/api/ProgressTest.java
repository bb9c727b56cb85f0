package info.quenta.vorl.api;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertSame;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import info.quenta.vorl.Settings;
import java.util.List;
import java.util.Queue;
import java.util.concurrent.CancellationException;
import java.util.concurrent.ConcurrentLinkedQueue;
import java.util.random.RandomGenerator;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;

@Timeout(300)
class ProgressTest {
    /** One that takes seconds to cluster. */
    private static Network large;

    @BeforeAll
    static void build() {
        RandomGenerator random = new java.util.Random(1);
        long[] from = random.longs(200_000, 0, 40_000).toArray();
        long[] to = random.longs(200_000, 0, 40_000).toArray();
        large = Network.builder().edges(from, to).build();
    }

    @AfterAll
    static void close() {
        large.close();
    }

    @Test
    void aListenerHearsHowFarItIsAndEndsIt() {
        Queue<Progress> heard = new ConcurrentLinkedQueue<>();
        Options options = Options.builder()
                              .progress(progress -> {
                                  heard.add(progress);
                                  return heard.size() < 5;
                              })
                              .build();
        assertThrows(CancellationException.class, () -> large.cluster(options));
        assertEquals(5, heard.size());
        for (Progress progress : heard) {
            assertFalse(progress.stage().isEmpty());
            assertTrue(progress.done() >= 0, progress::toString);
            assertTrue(progress.level() >= -1, progress::toString);
        }
        assertThrows(CancellationException.class,
            () -> large.communities(CommunitiesOptions.DEFAULT, progress -> false));
    }

    @Test
    void whatAListenerThrowsIsThrown() {
        IllegalStateException fault = new IllegalStateException("mine");
        Options options = Options.builder().progress(progress -> { throw fault; }).build();
        assertSame(fault, assertThrows(IllegalStateException.class, () -> large.cluster(options)));
    }

    @Test
    void anInterruptEndsTheCall() {
        for (int i = 0; i < 2; ++i) {
            Thread.currentThread().interrupt();
            assertThrows(CancellationException.class, large::cluster);
            assertTrue(Thread.interrupted());
        }
    }

    @Test
    void aListenerThatLetsItGoOnChangesNothing() {
        Queue<Progress> heard = new ConcurrentLinkedQueue<>();
        var file = Settings.data("power.nse");
        try (Network network = Network.read(file, heard::add);
             Clustering watched = network.cluster(Options.builder().progress(heard::add).build());
             Clustering plain = network.cluster()) {
            assertEquals(plain.score(), watched.score());
            assertEquals(network.communities().members(),
                network.communities(CommunitiesOptions.DEFAULT, progress -> true).members());
        }
        assertThrows(java.io.UncheckedIOException.class,
            () -> Network.read(Settings.data("none.nse"), progress -> true));
        assertEquals(List.of(), heard.stream().filter(p -> p.stage() == null).toList());
    }
}
