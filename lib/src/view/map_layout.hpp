// Where clusters and nodes lie on the map.
#pragma once

#include "circles.hpp"
#include "nest.hpp"

#include <vector>

namespace vorl::view {

/// Circles inside circles. The whole has the radius 1 around the origin. The areas of places are as
/// their shares, and clusters are as large as what is in them needs.
struct MapLayout {
    std::vector<Circle> clusters;
    double unit = 1;        ///< radius of a place with a share of 1
    std::vector<double> x;  ///< of each place
    std::vector<double> y;

    explicit MapLayout(const Nest& nest);
};

}  // namespace vorl::view
