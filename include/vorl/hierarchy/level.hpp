/// @file
/// One level of a hierarchy.
#pragma once

#include <vorl/types/item.hpp>

namespace vorl {

/// The clusters formed by one pass.
template <class LinksT>
struct VORL_API Level {
    /// Number of items that make up the hierarchy at this height: the level's own clusters, those
    /// carried past the level, and the root items at that moment.
    Id fullsize;
    Clusters<LinksT> clusters;

    /// @throws std::invalid_argument if fullsize is 0xFFFFFFFF or below the number of clusters.
    Level(Id fullsize, Clusters<LinksT>&& clusters);
    Level(Level&&) noexcept = default;
    Level& operator=(Level&&) noexcept = default;
};

}  // namespace vorl
