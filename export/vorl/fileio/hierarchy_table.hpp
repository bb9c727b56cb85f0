/// @file
/// Tables of the nodes in the clusters of a hierarchy.
#pragma once

#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/types/membership_table.hpp>
#include <vorl/types/options.hpp>

#include <string>
#include <vector>

namespace vorl {

/// A line "node level cluster share" for each membership, by level, and there by ascending node and
/// falling share.
///
/// Of the structures `ROOT`, `ALLCLS` and those of significant clusters: the level of a root
/// cluster is the last one, that of any other cluster the one that formed it.
/// @param opts structure and filtering, bounds of significant clusters; its file isn't looked at
/// @throws std::invalid_argument for other structures
template <class LinksT>
VORL_API std::string tableText(const Hierarchy<LinksT>& hier, const OutputOptions& opts,
                               TableForm form);

/// The same of the clusters that stand at levels: those that these formed, and those carried past.
/// @param levels indices of levels, ascending
/// @param maxshare as that of `Hierarchy::unwrap`
/// @throws std::out_of_range if there is no such level
template <class LinksT>
VORL_API std::string tableText(const Hierarchy<LinksT>& hier, const std::vector<LevelNum>& levels,
                               bool maxshare, TableForm form);

}  // namespace vorl
