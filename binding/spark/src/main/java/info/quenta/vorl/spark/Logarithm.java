package info.quenta.vorl.spark;

/**
 * Logarithms that are the same on every machine, operation by operation those of the C++ library.
 * Those of the JVM and of system libraries differ in the last digit.
 */
final class Logarithm {
    private static final double LN2 = 0.69314718055994530942;
    private static final double HALF_LN_2PI = 0.91893853320467274178;

    private Logarithm() {}

    /** The natural logarithm of a normal number above 0, to about 1e-13. */
    static double ln(double x) {
        long bits = Double.doubleToRawLongBits(x);
        // x = 2^exponent * m with m in [1/sqrt(2), sqrt(2))
        long exponent = (bits - 0x3FE6A09E667F3BCDL) >> 52;
        double m = Double.longBitsToDouble(bits - (exponent << 52));
        double s = (m - 1) / (m + 1);
        double z = s * s;
        double series = 2.0 / 15;
        series = series * z + 2.0 / 13;
        series = series * z + 2.0 / 11;
        series = series * z + 2.0 / 9;
        series = series * z + 2.0 / 7;
        series = series * z + 2.0 / 5;
        series = series * z + 2.0 / 3;
        series = series * z + 2.0;
        return exponent * LN2 + s * series;
    }

    /** The logarithm of the gamma function for x >= 1, by Stirling's series. */
    static double lnGamma(double x) {
        double product = 1;
        while (x < 10) product *= x++;
        double r = 1 / x;
        double rr = r * r;
        double rest = r * (1.0 / 12 - rr * (1.0 / 360 - rr * (1.0 / 1260 - rr / 1680)));
        return (x - 0.5) * ln(x) - x + HALF_LN_2PI + rest - ln(product);
    }

    /** The logarithm of a number of ways to choose k of n. */
    static double lnChoose(double n, double k) {
        return lnGamma(n + 1) - lnGamma(k + 1) - lnGamma(n - k + 1);
    }
}
