/// @file
/// The counter of the ids of clusters.
#pragma once

#include <vorl/types/export.hpp>

namespace vorl {

/// Lets the ids of clusters over links of one kind begin at 0 again, as in a new process, so that
/// what is built next doesn't depend on what was built before. Hierarchies that are there keep
/// theirs; none must be in the making.
template <class LinksT>
VORL_API void restartClusterIds();

}  // namespace vorl
