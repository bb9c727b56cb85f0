package info.quenta.vorl.api;

import info.quenta.vorl.ClusterOptions;

/** How a network is clustered. The defaults need no parameter. */
public final class Options {
    /** The check of the links before clustering. */
    public enum Validation {
        /** No check. */
        NONE(info.quenta.vorl.Validation.NONE),
        /** Repeated links are removed, missing back links created. */
        STANDARD(info.quenta.vorl.Validation.STANDARD),
        /** As standard, and the order of the links is checked. */
        SEVERE(info.quenta.vorl.Validation.SEVERE);

        private final info.quenta.vorl.Validation value;

        Validation(info.quenta.vorl.Validation value) { this.value = value; }
    }

    /** Whether candidates may depend on the order of the items. */
    public enum Speedup {
        /** They don't. */
        NONE(info.quenta.vorl.Speedup.NONE),
        /** They may. */
        COARSE(info.quenta.vorl.Speedup.COARSE);

        private final info.quenta.vorl.Speedup value;

        Speedup(info.quenta.vorl.Speedup value) { this.value = value; }
    }

    /** Whether the lightest links of items with many links are dropped. */
    public enum Reduction {
        /** No link is dropped. */
        NONE(info.quenta.vorl.Reduction.NONE),
        /** Few are. */
        ACCURATE(info.quenta.vorl.Reduction.ACCURATE),
        /** A moderate number. */
        MEAN(info.quenta.vorl.Reduction.MEAN),
        /** Many. */
        SEVERE(info.quenta.vorl.Reduction.SEVERE);

        private final info.quenta.vorl.Reduction value;

        Reduction(info.quenta.vorl.Reduction value) { this.value = value; }
    }

    private static final Options DEFAULTS = builder().build();

    private final Builder values;

    private Options(Builder values) { this.values = values; }

    /**
     * The defaults.
     *
     * @return options with all defaults
     */
    public static Options defaults() { return DEFAULTS; }

    /**
     * Starts from the defaults.
     *
     * @return a new builder
     */
    public static Builder builder() { return new Builder(); }

    boolean trace() { return values.trace; }

    ProgressListener progress() { return values.progress; }

    /** The native record, to be deleted by the caller. */
    ClusterOptions toNative() {
        ClusterOptions options = new ClusterOptions();
        options.setGamma(values.gamma);
        options.setRootMax(values.rootMax);
        options.setReduction(values.reduction.value);
        options.setSpeedup(values.speedup.value);
        options.setValidation(values.validation.value);
        options.setGainMarg(values.gainMargin);
        options.setModtrace(values.traceModularity);
        return options;
    }

    /** Sets options one by one. */
    public static final class Builder implements Cloneable {
        private float gamma = -1;
        private int rootMax;
        private Reduction reduction = Reduction.NONE;
        private Speedup speedup = Speedup.NONE;
        private Validation validation = Validation.STANDARD;
        private float gainMargin = -1;
        private boolean traceModularity;
        private boolean trace;
        private ProgressListener progress;

        private Builder() {}

        /**
         * The resolution: negative (the default) finds it by itself, 0 merges whatever is linked, 1
         * is that of the modularity, and above it clusters get smaller.
         *
         * @param gamma any number of 32 bits
         * @return this builder
         * @throws IllegalArgumentException if it is infinite or not a number
         */
        public Builder gamma(double gamma) {
            if (!Float.isFinite((float) gamma))
                throw new IllegalArgumentException("gamma is " + gamma + ", a number is expected");
            this.gamma = (float) gamma;
            return this;
        }

        /**
         * Merge on until the root has no more than this many clusters; 0 (the default) for no
         * limit.
         *
         * @param rootMax from 0 to 65535
         * @return this builder
         * @throws IllegalArgumentException if it is out of range
         */
        public Builder rootMax(int rootMax) {
            if (rootMax < 0 || rootMax > 65535)
                throw new IllegalArgumentException(
                    "rootMax is " + rootMax + ", 0 to 65535 is expected");
            this.rootMax = rootMax;
            return this;
        }

        /**
         * Drops the lightest links of items with many.
         *
         * @param reduction how many
         * @return this builder
         */
        public Builder reduction(Reduction reduction) {
            this.reduction = java.util.Objects.requireNonNull(reduction);
            return this;
        }

        /**
         * Trades exactness for speed.
         *
         * @param speedup whether to
         * @return this builder
         */
        public Builder speedup(Speedup speedup) {
            this.speedup = java.util.Objects.requireNonNull(speedup);
            return this;
        }

        /**
         * The check of the links.
         *
         * @param validation which check
         * @return this builder
         */
        public Builder validation(Validation validation) {
            this.validation = java.util.Objects.requireNonNull(validation);
            return this;
        }

        /**
         * Stops at a level that raises the modularity by no more than this.
         *
         * @param gainMargin at most 1; acts only together with {@link #traceModularity}
         * @return this builder
         * @throws IllegalArgumentException if it is above 1, infinite or not a number
         */
        public Builder gainMargin(double gainMargin) {
            if (!(gainMargin <= 1) || Double.isInfinite(gainMargin))
                throw new IllegalArgumentException(
                    "gainMargin is " + gainMargin + ", at most 1 is expected");
            this.gainMargin = (float) gainMargin;
            return this;
        }

        /**
         * Computes the modularity of each level.
         *
         * @param on whether to
         * @return this builder
         */
        public Builder traceModularity(boolean on) {
            this.traceModularity = on;
            return this;
        }

        /**
         * Prints the library's trace on standard error; off by default.
         *
         * @param on whether to
         * @return this builder
         */
        public Builder trace(boolean on) {
            this.trace = on;
            return this;
        }

        /**
         * Tells how far clustering is, and lets a listener end it.
         *
         * @param listener hears of it; null (the default) for none
         * @return this builder
         */
        public Builder progress(ProgressListener listener) {
            this.progress = listener;
            return this;
        }

        /**
         * The options as set so far.
         *
         * @return new options
         */
        public Options build() {
            try {
                return new Options((Builder) clone());
            } catch (CloneNotSupportedException err) {
                throw new AssertionError(err);
            }
        }
    }
}
