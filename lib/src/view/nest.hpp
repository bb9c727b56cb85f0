// A hierarchy as a tree of places, which is what a map can show.
#pragma once

#include <vorl/flat_network.hpp>
#include <vorl/reading/hierarchy_file.hpp>

#include <cstdint>
#include <vector>

namespace vorl::view {

using Item = HierarchyFile::Item;
using Number = std::uint32_t;

inline constexpr Number NONE = ~Number{0};

/// Clusters, each inside one other, and the places of nodes in them.
///
/// A node has a place in each cluster that owns it. A cluster stands in the owner that has the
/// most of it, unless another would be left without content. Cluster 0 is the whole network.
/// Clusters are in the order of a walk that enters each before its parts, the larger first; the
/// places that a cluster has itself come before those of its parts.
struct Nest {
    struct Cluster {
        Item item;      ///< of the hierarchy; none for the whole
        Number parent;  ///< NONE for the whole
        Number end;     ///< of the clusters inside
        Number places;  ///< the first of its own
        Number own;     ///< end of its own
        Number last;    ///< end of those inside
        double mass;    ///< sum of the shares of all places inside
    };

    std::vector<Cluster> clusters;
    std::vector<Id> node;           ///< of each place, by its number in the network
    std::vector<double> share;      ///< of the node in the cluster
    std::vector<Number> clusterOf;  ///< of each place
    std::vector<Number> numbers;    ///< of clusters, by the item less the number of nodes
    std::vector<Number> home;       ///< of each node, the place of its largest share

    /// @throws InputError for a node of the hierarchy that the network lacks
    Nest(const FlatNetwork& network, const HierarchyFile& hierarchy);

    Number size(Number cluster) const { return clusters[cluster].last - clusters[cluster].places; }
    /// Calls visit(part) for each cluster directly inside.
    template <class VisitT>
    void eachPart(Number cluster, const VisitT& visit) const {
        for (Number part = cluster + 1; part < clusters[cluster].end; part = clusters[part].end)
            visit(part);
    }
};

}  // namespace vorl::view
