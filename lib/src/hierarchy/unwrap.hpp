/// @file
/// The unfolding of clusters, one after another, into their nodes.
#pragma once

#include <vorl/types/item.hpp>
#include <vorl/types/item_map.hpp>

#include <cstdint>
#include <utility>
#include <vector>

namespace vorl::detail {

/// Unfolds clusters down to their nodes, level by level, and keeps its memory for the next one.
template <class LinksT>
class Unwrapper {
public:
    using ClusterT = Cluster<LinksT>;
    using NodeT = Node<LinksT>;
    using Members = std::vector<std::pair<const NodeT*, Share>>;

    /// @param maxshare whether an item goes only to the owners of its largest share
    explicit Unwrapper(bool maxshare) : m_maxshare(maxshare) {}

    /// @return the nodes of a cluster with their shares in the order in which they are reached,
    ///     valid until the next call
    const Members& unwrap(const ClusterT& cl);

private:
    using ItemT = NodeI<LinksT>;

    struct Entry {
        const ItemT* item;
        AccWeight share;
        /// Whether no second path leads here: the item and all between it and the cluster that is
        /// unfolded have one owner each.
        bool sole;
    };
    using Places = ItemMap<const ItemT, std::uint32_t>;

    void addDescendants(const Entry& entry);
    void addNode(const Entry& entry);

    const bool m_maxshare;
    Members m_members;
    std::vector<Entry> m_frontier;
    std::vector<Entry> m_next;
    // Where the items stand that several paths may lead to.
    Places m_memberPlaces;
    Places m_nextPlaces;
};

}  // namespace vorl::detail
