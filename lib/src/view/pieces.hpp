// The parts of a network that are small enough to be drawn with all nodes and links.
#pragma once

#include "forces.hpp"
#include "map_layout.hpp"
#include "nest.hpp"

#include <vector>

namespace vorl::view {

/// A cluster whose nodes and links are drawn.
struct Piece {
    Number cluster;
    std::vector<Id> nodes;  ///< in the order of their first places
    Drawing drawing;        ///< of these nodes, in the circle of radius 1
    Size links = 0;         ///< inside, of which not all need be in the drawing
};

/// The largest clusters that have at most so many places.
///
/// @param base as `standing` has it; nodes of one such cluster are drawn together
/// @param threads 0 for as many as the process may use
std::vector<Piece> pieces(const FlatNetwork& network, const Nest& nest, const MapLayout& map,
                          const std::vector<Number>& base, unsigned threads = 0,
                          Number most = 3000);

/// The weight of all links between two clusters that are directly inside the same one.
struct Bundle {
    Number a;
    Number b;
    double weight;
};

/// The heaviest bundles inside each cluster that has more than so many places, each node being at
/// the place of its largest share.
std::vector<Bundle> bundles(const FlatNetwork& network, const Nest& nest, Number most = 3000);

}  // namespace vorl::view
