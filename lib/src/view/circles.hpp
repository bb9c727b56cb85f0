// Circles packed into circles. Nothing but sums, products, quotients and square roots is used,
// which are the same on every machine.
#pragma once

#include <span>

namespace vorl::view {

struct Circle {
    double x = 0;
    double y = 0;
    double r = 0;
};

/// The smallest circle around all of them, but for a thousandth.
Circle enclosing(std::span<const Circle> circles);

/// Places circles of given radii, none above 0 overlapping another, close around the origin, in
/// their order. Falling radii give the closest packing.
void pack(std::span<Circle> circles);

}  // namespace vorl::view
