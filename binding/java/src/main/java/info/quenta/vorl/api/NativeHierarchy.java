package info.quenta.vorl.api;

import info.quenta.vorl.Bulk;
import info.quenta.vorl.HierScore;
import info.quenta.vorl.Hierarchy;
import info.quenta.vorl.SHierarchy;

/** A native hierarchy of either kind. */
interface NativeHierarchy {
    long[] sizes();

    Bulk.Rows members(int level);

    Bulk.Rows owners(int level);

    HierScore score();

    double weight();

    void output(info.quenta.vorl.OutputOptions options);

    void writeLevels(int first, int last, float step, int format, String file);

    void writeLevelsAround(int clusters, int format, String file);

    void describe(String file);

    void delete();

    record Weighted(Hierarchy hierarchy) implements NativeHierarchy {
        @Override
        public long[] sizes() {
            return Bulk.sizes(hierarchy);
        }

        @Override
        public Bulk.Rows members(int level) {
            return Bulk.members(hierarchy, level);
        }

        @Override
        public Bulk.Rows owners(int level) {
            return Bulk.owners(hierarchy, level);
        }

        @Override
        public HierScore score() {
            return hierarchy.score();
        }

        @Override
        public double weight() {
            return hierarchy.weight();
        }

        @Override
        public void output(info.quenta.vorl.OutputOptions options) {
            hierarchy.output(options);
        }

        @Override
        public void writeLevels(int first, int last, float step, int format, String file) {
            Bulk.writeLevels(hierarchy, first, last, step, format, file);
        }

        @Override
        public void writeLevelsAround(int clusters, int format, String file) {
            Bulk.writeLevelsAround(hierarchy, clusters, format, file);
        }

        @Override
        public void describe(String file) {
            Bulk.describe(hierarchy, file);
        }

        @Override
        public void delete() {
            hierarchy.delete();
        }
    }

    record Unweighted(SHierarchy hierarchy) implements NativeHierarchy {
        @Override
        public long[] sizes() {
            return Bulk.sizes(hierarchy);
        }

        @Override
        public Bulk.Rows members(int level) {
            return Bulk.members(hierarchy, level);
        }

        @Override
        public Bulk.Rows owners(int level) {
            return Bulk.owners(hierarchy, level);
        }

        @Override
        public HierScore score() {
            return hierarchy.score();
        }

        @Override
        public double weight() {
            return hierarchy.weight();
        }

        @Override
        public void output(info.quenta.vorl.OutputOptions options) {
            hierarchy.output(options);
        }

        @Override
        public void writeLevels(int first, int last, float step, int format, String file) {
            Bulk.writeLevels(hierarchy, first, last, step, format, file);
        }

        @Override
        public void writeLevelsAround(int clusters, int format, String file) {
            Bulk.writeLevelsAround(hierarchy, clusters, format, file);
        }

        @Override
        public void describe(String file) {
            Bulk.describe(hierarchy, file);
        }

        @Override
        public void delete() {
            hierarchy.delete();
        }
    }
}
