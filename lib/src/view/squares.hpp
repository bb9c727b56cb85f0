// What nodes of a drawing do to each other from afar.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vorl::view {

/// Squares inside squares around points, each with the sum of what is in it.
///
/// J. Barnes, P. Hut, A hierarchical O(N log N) force-calculation algorithm, 1986,
/// https://doi.org/10.1038/324446a0; points that lie together are looked at together.
class Squares {
public:
    /// @param x, y where the points are
    /// @param mass of each, above 0
    Squares(std::span<const double> x, std::span<const double> y, std::span<const double> mass);

    /// Sets the force on each point: of all others the mass, divided by the distance, away from
    /// there. Squares whose side is below 0.9 of the distance act from their middle. Points at the
    /// same place do nothing to each other.
    void push(std::span<double> forceX, std::span<double> forceY) const;

private:
    struct Square {
        double x, y, mass, side;
        std::uint32_t begin, end;
        std::uint32_t next;  ///< behind all inside
    };
    struct Source {
        float x, y, mass;
    };

    void divide(std::uint32_t begin, std::uint32_t end, double left, double low, double side,
                int depth);
    void find(const Square& leaf, std::vector<Source>& sources) const;

    // In an order by which each square has a range of them.
    std::vector<std::uint32_t> m_order;
    std::vector<double> m_x;
    std::vector<double> m_y;
    std::vector<double> m_mass;
    std::vector<std::uint32_t> m_spare;
    std::vector<Square> m_squares;
};

}  // namespace vorl::view
