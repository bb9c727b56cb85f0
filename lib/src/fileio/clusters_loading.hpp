// The loading of clusters, with a choice of how the links of shared nodes count.
#pragma once

#include <vorl/fileio/parser_cnl.hpp>

namespace vorl::detail {

/// How the far end of a link counts in the clusters of its node.
enum class FarShares : bool {
    AS_LOADED,  ///< evenly where the near end has no stated shares
    STATED      ///< with its stated shares in any case
};

/// `vorl::loadClusters`.
template <class ParserT, class GraphT>
AccWeight loadClusters(Clusters<typename GraphT::LinksT>& clusters, GraphT& graph,
                       const std::string& filename, Validation validation, FarShares farShares);

}  // namespace vorl::detail
