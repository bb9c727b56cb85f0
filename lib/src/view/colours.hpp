// The colours of clusters.
#pragma once

#include "nest.hpp"

#include <array>
#include <cstdint>
#include <vector>

namespace vorl::view {

/// Colours that people with any kind of colour vision tell apart, on light and on dark ground.
struct Colour {
    const char* light;
    const char* dark;
};

inline constexpr std::array<Colour, 12> PALETTE{{{"#4b67b7", "#94b1f9"},
                                                 {"#f28705", "#f48801"},
                                                 {"#006834", "#038b48"},
                                                 {"#7d256c", "#a03b8d"},
                                                 {"#bdcc56", "#d5e663"},
                                                 {"#5bd1f4", "#9ce6ff"},
                                                 {"#f44562", "#f54060"},
                                                 {"#088d91", "#0eb2b7"},
                                                 {"#2b026e", "#705dcb"},
                                                 {"#fea9b3", "#ffb9c0"},
                                                 {"#7d8000", "#b5b974"},
                                                 {"#9a3e01", "#be5008"}}};
/// Of what has no colour.
inline constexpr Colour NEUTRAL{"#9a9a9a", "#8a8a8a"};
inline constexpr std::uint8_t GREY = 255;

/// The clusters, by their numbers in the nest, in which those of one level and below lie there;
/// NONE for those above.
std::vector<Number> standing(const HierarchyFile& hierarchy, const Nest& nest, LevelNum level);

/// Colours by their places in the palette. Clusters of a level get different ones as long as there
/// are some, and then such that few links are between those of the same. What is inside has the
/// same colour, what is above that of the largest inside. Clusters of one node are grey.
std::vector<std::uint8_t> colours(const FlatNetwork& network, const Nest& nest,
                                  const std::vector<Number>& base);

}  // namespace vorl::view
