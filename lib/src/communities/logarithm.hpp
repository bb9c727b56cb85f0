// Logarithms that are the same on every machine; those of system libraries aren't.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace vorl::detail {

/// The natural logarithm of a normal number above 0, to about 1e-13.
inline double ln(double x) {
    constexpr double LN2 = 0.69314718055994530942;
    constexpr std::uint64_t ONE = 0x3FF0000000000000;
    const auto bits = std::bit_cast<std::uint64_t>(x);
    // x = 2^exponent * m with m in [1/sqrt(2), sqrt(2))
    const std::uint64_t shifted = bits - 0x3FE6A09E667F3BCD;
    const auto exponent = static_cast<std::int64_t>(shifted) >> 52;
    const auto m = std::bit_cast<double>(bits - (static_cast<std::uint64_t>(exponent) << 52));
    static_assert(std::bit_cast<std::uint64_t>(1.0) == ONE);
    const double s = (m - 1) / (m + 1);
    const double z = s * s;
    double series = 2.0 / 15;
    series = series * z + 2.0 / 13;
    series = series * z + 2.0 / 11;
    series = series * z + 2.0 / 9;
    series = series * z + 2.0 / 7;
    series = series * z + 2.0 / 5;
    series = series * z + 2.0 / 3;
    series = series * z + 2.0;
    return static_cast<double>(exponent) * LN2 + s * series;
}

/// x ln(x), 0 at 0.
inline double xlnx(double x) { return x > 0 ? x * ln(x) : 0; }

/// The logarithm of the gamma function for x >= 1, by Stirling's series.
inline double lnGamma(double x) {
    constexpr double HALF_LN_2PI = 0.91893853320467274178;
    double product = 1;
    while (x < 10) product *= x++;
    const double r = 1 / x;
    const double rr = r * r;
    const double rest = r * (1.0 / 12 - rr * (1.0 / 360 - rr * (1.0 / 1260 - rr / 1680)));
    return (x - 0.5) * ln(x) - x + HALF_LN_2PI + rest - ln(product);
}

/// The logarithm of a number of ways to choose k of n.
inline double lnChoose(double n, double k) {
    return lnGamma(n + 1) - lnGamma(k + 1) - lnGamma(n - k + 1);
}

}  // namespace vorl::detail
