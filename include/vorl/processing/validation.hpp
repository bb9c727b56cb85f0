/// @file
/// Validation of the nodes' links.
#pragma once

#include <vorl/processing/struct_errors.hpp>
#include <vorl/types/item.hpp>

namespace vorl {

/// Heading of the report of created back links.
inline constexpr const char* BACKLINKS_MESSAGE =
    "> WARNING validate(), backlink does not exist. Created (with zero weight if weighted): ";

/// Makes link lists that the engine may trust.
///
/// Self links and repeated destinations are removed, of a run of repeats all but the last. For
/// arcs (NONSYMMETRIC) a missing back link is created with weight 0; in an unweighted network it
/// reads as 1. What was repaired is reported on the trace.
///
/// @param[in,out] nodes the nodes with their links
/// @param[in,out] weight total weight of the network, corrected for what was removed
/// @param[in,out] linksNum number of link records, corrected for what was removed and created
/// @param severe whether the order of each list is checked beforehand
/// @throws std::domain_error "validate(), backlinks should always exist for the symmetric
///     links\n" if a back link of an edge is missing
template <bool NONSYMMETRIC, class NodesT>
VORL_API void validate(NodesT& nodes, AccWeight& weight, Size& linksNum, bool severe = false);

namespace detail {

/// `validate`, with the back links that `createBackLinks` has made already.
/// @return whether the links are mirrored, as `isMirrored` tells it
template <bool NONSYMMETRIC, class NodesT>
bool validate(NodesT& nodes, AccWeight& weight, Size& linksNum, bool severe,
              const StructLinkErrors* created);

/// Whether it shows without a search that each link has its back link, for edges with the same
/// weight.
/// @param nodes that weren't clustered yet
template <bool NONSYMMETRIC, class NodesT>
bool isMirrored(NodesT& nodes);

/// Creates every missing back link with weight 0 and counts it in `created`.
template <class NodesT>
void createBackLinks(NodesT& nodes, StructLinkErrors& created);

}  // namespace detail

}  // namespace vorl
