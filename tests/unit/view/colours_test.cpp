// The palette as people of different colour vision see it.
#include "../../../lib/src/view/colours.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace vorl::view {

namespace {

using Three = std::array<double, 3>;
using Matrix = std::array<Three, 3>;

Three product(const Matrix& matrix, const Three& values) {
    Three result{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) result[i] += matrix[i][j] * values[j];
    return result;
}

/// The light of red, green and blue, each in [0, 1].
Three light(const char* colour) {
    Three result{};
    for (std::size_t i = 0; i < 3; ++i) {
        const double value =
            std::stoi(std::string(colour).substr(1 + 2 * i, 2), nullptr, 16) / 255.;
        result[i] = value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    }
    return result;
}

/// Lightness in [0, 100] and two axes of colour, by which distances are about as large as they
/// look: B. Ottosson, A perceptual color space for image processing, 2020.
Three perceived(const Three& seen) {
    constexpr Matrix CONES{{{0.4122214708, 0.5363325363, 0.0514459929},
                            {0.2119034982, 0.6806995451, 0.1073969566},
                            {0.0883024619, 0.2817188376, 0.6299787005}}};
    constexpr Matrix AXES{{{21.04542553, 79.36177850, -0.40720468},
                           {197.79984951, -242.85922050, 45.05937099},
                           {2.59040371, 78.27717662, -80.86757660}}};
    Three cones{};
    for (std::size_t i = 0; i < 3; ++i) cones[i] = std::clamp(seen[i], 0., 1.);
    cones = product(CONES, cones);
    for (double& cone : cones) cone = std::cbrt(cone);
    return product(AXES, cones);
}

double contrast(const char* a, const char* b) {
    const auto luminance = [](const char* colour) {
        const Three rgb = light(colour);
        return 0.2126 * rgb[0] + 0.7152 * rgb[1] + 0.0722 * rgb[2] + 0.05;
    };
    const double ratio = luminance(a) / luminance(b);
    return std::max(ratio, 1 / ratio);
}

/// G. M. Machado, M. M. Oliveira, L. A. F. Fernandes, A physiologically-based model for simulation
/// of color vision deficiency, 2009, https://doi.org/10.1109/TVCG.2009.113
struct Vision {
    const char* name;
    Matrix matrix;
    double least;  ///< distance of any two colours; 2 can just be seen
};
const Vision VISIONS[] = {{"usual", {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, 12},
                          {"no red",
                           {{{0.152286, 1.052583, -0.204868},
                             {0.114503, 0.786281, 0.099216},
                             {-0.003882, -0.048116, 1.051998}}},
                           6},
                          {"no green",
                           {{{0.367322, 0.860646, -0.227968},
                             {0.280085, 0.672501, 0.047413},
                             {-0.011820, 0.042940, 0.968881}}},
                           6},
                          {"no blue",
                           {{{1.255528, -0.076749, -0.178779},
                             {-0.078411, 0.930809, 0.147602},
                             {0.004733, 0.691367, 0.303900}}},
                           6}};

void expectApart(const char* a, const char* b) {
    for (const Vision& vision : VISIONS) {
        const Three one = perceived(product(vision.matrix, light(a)));
        const Three other = perceived(product(vision.matrix, light(b)));
        EXPECT_GT(std::hypot(one[0] - other[0], one[1] - other[1], one[2] - other[2]), vision.least)
            << a << " and " << b << ", " << vision.name;
    }
}

TEST(Palette, ColoursAreToldApartByAnyVision) {
    for (std::size_t i = 0; i < PALETTE.size(); ++i)
        for (std::size_t j = 0; j < i; ++j) {
            expectApart(PALETTE[i].light, PALETTE[j].light);
            expectApart(PALETTE[i].dark, PALETTE[j].dark);
        }
}

TEST(Palette, ColoursAreSeenOnTheirGround) {
    for (const Colour& colour : PALETTE) {
        EXPECT_GT(contrast(colour.light, "#ffffff"), 1.7) << colour.light;
        EXPECT_GT(contrast(colour.dark, "#14171a"), 2.9) << colour.dark;
    }
}

}  // namespace

}  // namespace vorl::view
