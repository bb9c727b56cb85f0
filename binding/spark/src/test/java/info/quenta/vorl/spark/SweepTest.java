package info.quenta.vorl.spark;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import info.quenta.vorl.api.Clustering;
import info.quenta.vorl.api.Network;
import info.quenta.vorl.api.Options;
import info.quenta.vorl.spark.Sweep.Setting;
import java.nio.file.Path;
import java.util.List;
import org.apache.spark.sql.Dataset;
import org.apache.spark.sql.Row;
import org.apache.spark.sql.RowFactory;
import org.apache.spark.sql.SparkSession;
import org.junit.jupiter.api.Test;

class SweepTest {
    @Test
    void eachSettingGivesTheScoreOfTheEngine() throws Exception {
        List<Setting> settings = List.of(Setting.ofGamma(0.5), Setting.ofGamma(1),
            new Setting(2, Options.Reduction.SEVERE, 0), new Setting(1, Options.Reduction.NONE, 7));
        SparkSession session = TestBed.session("local[2]", 2);
        List<Row> rows =
            Sweep.run(TestBed.data("lesmis.nse").on(session), settings).collectAsList();
        assertEquals(4, rows.size());
        try (Network network =
                 Network.read(Path.of(System.getProperty("vorl.data"), "lesmis.nse"))) {
            for (int i = 0; i < 3; ++i) {
                Setting setting = settings.get(i);
                Options options =
                    Options.builder().gamma(setting.gamma()).reduction(setting.reduction()).build();
                try (Clustering clustering = network.cluster(options)) {
                    assertEquals(i, rows.get(i).getInt(0));
                    assertEquals(clustering.score().modularity(), rows.get(i).getFloat(6), 0.02);
                }
            }
        }
        assertTrue(rows.get(0).getLong(5) <= rows.get(2).getLong(5));
        assertEquals(rows.get(1).getFloat(6), rows.get(3).getFloat(6), 0.05);
    }

    @Test
    void refusesWhatIsNoSetting() {
        for (double gamma : new double[] {-1, Double.NaN, Double.POSITIVE_INFINITY})
            assertTrue(assertThrows(IllegalArgumentException.class, () -> Setting.ofGamma(gamma))
                           .getMessage()
                           .contains("gamma is " + gamma));
        assertThrows(NullPointerException.class, () -> new Setting(1, null, 0));
        SparkSession session = TestBed.session("local[2]", 2);
        Dataset<Row> links = session.sql("SELECT 1 AS src, 2 AS dst, -3 AS weight");
        assertThrows(
            IllegalArgumentException.class, () -> Sweep.run(links, List.of(Setting.ofGamma(1))));
        // No settings, no rows; the order of the links is that of the seed.
        Dataset<Row> good = Networks.ring(4, 4).on(session);
        assertEquals(0, Sweep.run(good, List.of()).count());
        Setting shuffled = new Setting(1, Options.Reduction.NONE, 5);
        List<Row> rows = Sweep.run(good, List.of(shuffled, shuffled)).collectAsList();
        for (int i = 1; i < 9; ++i) assertEquals(rows.get(0).get(i), rows.get(1).get(i));
    }

    @Test
    void communitiesHaveTheScoreOfTheLibrary() throws Exception {
        CommunitiesOptions once = CommunitiesOptions.DEFAULT.withStarts(1);
        List<CommunitiesOptions> settings =
            List.of(once, once.withStarts(6), once.withShares(false).withStarts(6));
        SparkSession session = TestBed.session("local[2]", 2);
        try (Network network =
                 Network.read(Path.of(System.getProperty("vorl.data"), "lesmis.nse"))) {
            List<Row> rows =
                Sweep.communities(TestBed.data("lesmis.nse").on(session), settings).collectAsList();
            for (int i = 0; i < settings.size(); ++i) {
                CommunitiesOptions setting = settings.get(i);
                var found = network.communities(new info.quenta.vorl.api.CommunitiesOptions(
                    setting.shares(), setting.starts(), 1));
                var score = found.score();
                assertEquals(RowFactory.create(i, setting.shares(), setting.starts(),
                                 (long) found.members().size(), i < 2 ? rows.get(i).getLong(4) : 0L,
                                 score.modularity(), score.conductance(), score.estimatedGamma(),
                                 score.saving(), score.naming(), score.start(), score.rounds()),
                    rows.get(i));
            }
            assertTrue(rows.get(0).getLong(4) > 0);
            assertNotEquals(rows.get(0).getString(10), rows.get(1).getString(10));
        }
    }
}
