// Where the nodes of a small network lie, told by its links.
#pragma once

#include <vorl/types/numbers.hpp>

#include <cstdint>
#include <vector>

namespace vorl::view {

/// A network with places for its nodes.
struct Drawing {
    struct Link {
        std::uint32_t a;
        std::uint32_t b;
        LinkWeight weight;
    };
    std::vector<double> x;
    std::vector<double> y;
    std::vector<Link> links;
    /// Of each node, what it is drawn towards: nodes of a group have the same number.
    std::vector<std::uint32_t> group;
};

/// Moves the nodes from where they are by forces: those of a link attract each other, as do those
/// of a group a little, and all repel each other. In the end they lie in the circle of radius 1
/// around the origin.
///
/// @param rounds  how often all are moved
///
/// The forces are those of T. M. J. Fruchterman, E. M. Reingold, Graph drawing by force-directed
/// placement, 1991, https://doi.org/10.1002/spe.4380211102. Only operations that are the same on
/// every machine are used.
void settle(Drawing& drawing, int rounds);

}  // namespace vorl::view
