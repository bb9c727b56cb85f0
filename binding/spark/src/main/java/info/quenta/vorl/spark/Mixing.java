package info.quenta.vorl.spark;

/** A hash that spreads numbers which follow each other. */
final class Mixing {
    private Mixing() {}

    /**
     * Steele, Lea, Flood, Fast splittable pseudorandom number generators, OOPSLA (2014).
     *
     * @return 32 bits, without sign
     */
    static long mixed(long number, int round) {
        long z = number * 0x9E3779B97F4A7C15L + (round + 1L) * 0xBF58476D1CE4E5B9L;
        z = (z ^ (z >>> 30)) * 0xBF58476D1CE4E5B9L;
        z = (z ^ (z >>> 27)) * 0x94D049BB133111EBL;
        return (z ^ (z >>> 31)) >>> 32;
    }
}
