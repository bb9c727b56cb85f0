// The tolerant comparisons at the edges of their tolerance.
#include <vorl/types/numbers.hpp>

#include <gtest/gtest.h>

namespace vorl {
namespace {

TEST(Tolerance, IsRelativeToTheMeanMagnitude) {
    // One step of 2^-24 below 1 is just the tolerance, one of 2^-23 below 2 or above 1 exceeds it.
    const float below1 = std::nextafter(1.0f, 0.0f);
    const float below2 = std::nextafter(2.0f, 0.0f);
    const float above1 = std::nextafter(1.0f, 2.0f);
    EXPECT_TRUE(equal(below1, 1.0f));
    EXPECT_FALSE(less(below1, 1.0f));
    EXPECT_FALSE(equal(below2, 2.0f));
    EXPECT_TRUE(less(below2, 2.0f));
    EXPECT_FALSE(less(2.0f, below2));
    EXPECT_TRUE(less(1.0f, above1));
    EXPECT_TRUE(less(-above1, -1.0f));
    // It grows by the binary logarithm of the number of terms.
    EXPECT_FALSE(less(1.0f, above1, 2));
    EXPECT_TRUE(equal(1.0f, above1, 2));
    const float above3 = 1 + 3 * 0x1p-23f;
    EXPECT_TRUE(less(1.0f, above3, 16));
    EXPECT_FALSE(equal(1.0f, above3, 16));
    EXPECT_FALSE(less(1.0f, above3, 32));
    EXPECT_TRUE(equal(1.0f, above3, 32));
}

TEST(Tolerance, IsAbsoluteNearZero) {
    EXPECT_TRUE(equal(0, 0));
    EXPECT_TRUE(less(-1));
    EXPECT_TRUE(equal(0.0f));
    EXPECT_FALSE(less(0.0f));
    // Half of the square of 2^-24 is about 1.776e-15.
    EXPECT_FALSE(less(-1.7e-15f));
    EXPECT_TRUE(equal(-1.7e-15f));
    EXPECT_TRUE(less(-1.8e-15f));
    EXPECT_FALSE(equal(1.8e-15f));
}

TEST(Tolerance, Orders64BitValuesAt32Bits) {
    EXPECT_TRUE(equal(1.0, 1.0 + 1e-9));
    EXPECT_FALSE(less(1.0, 1.0 + 1e-9));
    EXPECT_TRUE(less(1.0, 1.0 + 2e-7));
    // The sentinel is below all gains, though the difference overflows 32 bits.
    EXPECT_TRUE(less(GAIN_NONE, 3e38f));
    EXPECT_TRUE(less(AccWeight{GAIN_NONE}, -1e30));
    EXPECT_FALSE(less(AccWeight{GAIN_NONE}, AccWeight{GAIN_NONE}));
}

}  // namespace
}  // namespace vorl
