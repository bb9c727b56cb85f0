// Forces between nodes, and where they bring them.
#include "../../../lib/src/view/forces.hpp"
#include "../../../lib/src/view/squares.hpp"

#include "support/networks.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace vorl::view {

namespace {

TEST(Squares, ComeNearTheSumOverAllPairs) {
    for (const std::size_t count : {1u, 2u, 16u, 17u, 400u, 3000u}) {
        test::Random random(3);
        std::vector<double> x, y, mass;
        for (std::size_t i = 0; i < count; ++i) {
            // Some of them in a heap.
            const double wide = i % 3 ? 1 : 0.05;
            x.push_back(wide * random.below(1000) / 50.);
            y.push_back(wide * random.below(1000) / 50.);
            mass.push_back(0.6 + random.below(100) / 50.);
        }
        std::vector<double> forceX(count, 9), forceY(count, 9);
        Squares(x, y, mass).push(forceX, forceY);
        double error = 0;
        double all = 0;
        for (std::size_t i = 0; i < count; ++i) {
            double sumX = 0;
            double sumY = 0;
            for (std::size_t j = 0; j < count; ++j) {
                const double dx = x[i] - x[j];
                const double dy = y[i] - y[j];
                const double apart2 = dx * dx + dy * dy;
                if (apart2 == 0) continue;
                sumX += mass[j] * dx / apart2;
                sumY += mass[j] * dy / apart2;
            }
            error += std::pow(forceX[i] - sumX, 2) + std::pow(forceY[i] - sumY, 2);
            all += sumX * sumX + sumY * sumY;
        }
        // Few are looked at one by one.
        EXPECT_LE(std::sqrt(error), (count <= 16 ? 1e-4 : 0.03) * std::sqrt(all)) << count;
    }
}

TEST(Settle, PartsNodesAtOnePlaceAndKeepsThemInTheCircle) {
    Drawing drawing;
    for (std::uint32_t i = 0; i < 300; ++i) {
        drawing.x.push_back(0.2);
        drawing.y.push_back(0.3);
        drawing.group.push_back(0);
        if (i > 0) drawing.links.push_back({i / 2, i, i % 5 ? 1.f : 1e30f});
    }
    drawing.links.push_back({0, 299, 0.f});
    settle(drawing, 60);
    for (std::size_t i = 0; i < 300; ++i) {
        ASSERT_LE(std::hypot(drawing.x[i], drawing.y[i]), 1.);
        for (std::size_t j = 0; j < i; ++j)
            ASSERT_GT(std::hypot(drawing.x[i] - drawing.x[j], drawing.y[i] - drawing.y[j]), 1e-4)
                << i << ", " << j;
    }
}

TEST(Settle, DrawsEachPartOfARingToItsNeighbours) {
    // The nodes of a ring, scattered, come to lie in its order around the middle.
    constexpr std::uint32_t count = 24;
    Drawing drawing;
    for (std::uint32_t i = 0; i < count; ++i) {
        const double turn = 6.28318 * (i * 7 % count) / count;
        drawing.x.push_back(std::cos(turn) * 0.9);
        drawing.y.push_back(std::sin(turn) * 0.9);
        drawing.links.push_back({std::min(i, (i + 1) % count), std::max(i, (i + 1) % count), 1.f});
        drawing.group.push_back(0);
    }
    settle(drawing, 300);
    double near = 0;
    double all = 0;
    for (std::uint32_t i = 0; i < count; ++i)
        for (std::uint32_t j = 0; j < count; ++j) {
            const double way = std::hypot(drawing.x[i] - drawing.x[j], drawing.y[i] - drawing.y[j]);
            all += way / (count * (count - 1));
            if (j == (i + 1) % count) near += way / count;
        }
    EXPECT_LT(near, 0.5 * all);
}

}  // namespace

}  // namespace vorl::view
