// The loading of clusters, with a choice of how the links of shared and of uncovered nodes count.
#pragma once

#include <vorl/fileio/parser_cnl.hpp>

#include <unordered_map>

namespace vorl::detail {

/// How the far end of a link counts in the clusters of its node.
enum class FarShares : bool {
    AS_LOADED,  ///< evenly where the near end has no stated shares
    STATED      ///< with its stated shares in any case
};

/// Weight of the links of clusters to nodes of no cluster, both directions of a link counted half.
template <class LinksT>
using OutsideWeights = std::unordered_map<const Cluster<LinksT>*, AccWeight>;

/// `vorl::loadClusters`.
/// @param[out] outside takes what the links of clusters leave out, if it isn't null
template <class ParserT, class GraphT>
AccWeight loadClusters(Clusters<typename GraphT::LinksT>& clusters, GraphT& graph,
                       const std::string& filename, Validation validation, FarShares farShares,
                       OutsideWeights<typename GraphT::LinksT>* outside = nullptr);

}  // namespace vorl::detail
