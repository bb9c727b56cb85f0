/// @file
/// The entry to clustering.
#pragma once

#include <vorl/hierarchy/hierarchy.hpp>

#include <memory>

namespace vorl {

/// Clusters a network into a hierarchy.
///
/// An unweighted link counts as 1 in both directions: arcs of an unweighted network get back
/// links that read as 1, so that such a network is a symmetric one. Directed networks are to be
/// given in the weighted form.
///
/// @param nodes the nodes with their links; taken over, the list is left empty
/// @param edges true if the links are symmetric, false for arcs
/// @param options options of the build
/// @throws std::invalid_argument if a reduction is asked for without nodes, or if gamma is infinite
///     or NaN
/// @throws std::domain_error if validation refuses the links, if a reduction by weight is asked
///     for on unweighted links, or if the network's weight was lost
/// @throws std::overflow_error if a weight, a gain or the number of levels overflows
template <class LinksT>
VORL_API std::shared_ptr<Hierarchy<LinksT>> cluster(Nodes<LinksT>& nodes, bool edges,
                                                    const ClusterOptions& options);

extern template std::shared_ptr<Hierarchy<UnweightedLinks>> cluster(Nodes<UnweightedLinks>&, bool,
                                                                    const ClusterOptions&);
extern template std::shared_ptr<Hierarchy<WeightedLinks>> cluster(Nodes<WeightedLinks>&, bool,
                                                                  const ClusterOptions&);

}  // namespace vorl
