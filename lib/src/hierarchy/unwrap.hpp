/// @file
/// The unfolding of clusters, one after another, into their nodes.
#pragma once

#include <vorl/types/item.hpp>
#include <vorl/types/item_map.hpp>

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vorl::detail {

/// Unfolds clusters down to their nodes, level by level, and keeps its memory for the next one.
///
/// The nodes of a cluster may be composed of the rows of its descendants, if these were unfolded
/// before. Then its shares are sums in another order. That makes no difference if no sum is rounded
/// in either order, or if the bounds of both results are one number at the precision of a share, or
/// two that are alike to the caller; where that isn't sure, the cluster is unfolded.
template <class LinksT>
class Unwrapper {
public:
    using ClusterT = Cluster<LinksT>;
    using NodeT = Node<LinksT>;
    using Members = std::vector<std::pair<const NodeT*, Share>>;

    /// @param maxshare whether an item goes only to the owners of its largest share
    explicit Unwrapper(bool maxshare) : m_maxshare(maxshare) {}

    /// Whether it makes no difference which of two shares a node has.
    using Alike = std::function<bool(const NodeT&, Share, Share)>;

    /// Keeps what clusters were unfolded to for their owners. Pays where most clusters are
    /// unfolded, descendants first.
    /// @param rowsMax how many members of clusters may be kept
    /// @param alike tells of neighbouring numbers
    void keepRows(std::size_t rowsMax, Alike alike) {
        m_rowsMax = rowsMax;
        m_alike = std::move(alike);
    }

    /// @return the nodes of a cluster with their shares in the order in which they are reached,
    ///     valid until the next call
    const Members& unwrap(const ClusterT& cl);

private:
    using ItemT = NodeI<LinksT>;
    using Places = ItemMap<const ItemT, std::uint32_t>;

    struct Entry {
        const ItemT* item;
        AccWeight share;
        /// Whether no second path leads here: the item and all between it and the cluster that is
        /// unfolded have one owner each.
        bool sole;
    };

    struct RowEntry {
        const NodeT* node;
        AccWeight share;
        std::uint32_t roundings;  ///< of the share at most; 0 if no second path leads here
        /// The share is a multiple of 2 to minus this; INEXACT if that isn't known.
        std::uint32_t exponent;
    };
    /// The nodes of a cluster, by their distance from it.
    struct Row {
        std::vector<RowEntry> entries;
        std::vector<std::size_t> ends;  ///< of those at distance 1, 2 …
        AccWeight roundings = 0;        ///< of a share at most, where the cluster is unfolded
        std::size_t uses = 0;           ///< how many owners are still to be unfolded
    };
    /// A direct descendant of the cluster whose row is composed.
    struct Part {
        const ItemT* item;
        const Row* row;  ///< null for a node
        AccWeight numac;
        AccWeight totac;
        std::uint32_t exponent;  ///< what the exponents of its entries grow by
        bool alone;
    };
    static constexpr std::uint32_t INEXACT = 1000;

    void unfold(const ClusterT& cl, Row* row);
    void addDescendants(const Entry& entry);
    void addNode(const Entry& entry);

    static AccWeight roundingsAt(const ItemT& item);
    bool compose(const ClusterT& cl, Row& row);
    void collectParts(const ClusterT& cl, Row& row);
    void addPart(Row& row, const Part& part, std::size_t distance);
    void addEntry(Row& row, const Part& part, RowEntry entry);
    static std::pair<Share, Share> bounds(const Row& row, const RowEntry& entry);
    bool settle(const Row& row);
    bool provide(const ItemT& item);
    void keep(const ClusterT& cl, Row&& row);
    void release(const ItemT& item);

    const bool m_maxshare;
    Members m_members;
    std::vector<Entry> m_frontier;
    std::vector<Entry> m_next;
    // Where the items stand that several paths may lead to.
    Places m_memberPlaces;
    Places m_nextPlaces;

    // Kept for the owners of their clusters.
    std::unordered_map<const ItemT*, Row> m_rows;
    std::size_t m_rowsMax = 0;
    Alike m_alike;
    std::size_t m_rowsSize = 0;
    std::vector<Part> m_parts;
    std::vector<Share> m_largest;  // that unfolding may give to the members
};

}  // namespace vorl::detail
