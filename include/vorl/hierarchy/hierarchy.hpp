/// @file
/// The finished result of a build.
#pragma once

#include <vorl/hierarchy/level.hpp>
#include <vorl/hierarchy/score.hpp>
#include <vorl/types/item.hpp>
#include <vorl/types/item_map.hpp>
#include <vorl/types/labels.hpp>
#include <vorl/types/options.hpp>

#include <memory>
#include <utility>
#include <vector>

namespace vorl {

/// Nodes of a cluster with their shares in it, in the order in which unfolding reaches them.
template <class LinksT>
using ClusterNodes = ItemMap<const Node<LinksT>, Share>;

/// A bottom-up stack of levels of overlapping clusters over the nodes, its root and its score.
///
/// It owns the nodes and the levels; all other pointers between items own nothing.
template <class LinksT>
class VORL_API Hierarchy {
public:
    using NodeT = Node<LinksT>;
    using ClusterT = Cluster<LinksT>;
    using NodesT = Nodes<LinksT>;
    using ClustersT = Clusters<LinksT>;
    using LevelsT = std::vector<Level<LinksT>>;
    using RootT = std::vector<ClusterT*>;

    Hierarchy(const Hierarchy&) = delete;
    Hierarchy& operator=(const Hierarchy&) = delete;
    virtual ~Hierarchy();

    /// Moves the object into a new shared one of the dynamic type.
    virtual std::shared_ptr<Hierarchy> toSharedPtr() = 0;
    /// Total weight of the network, both directions of each link counted.
    virtual AccWeight weight() const = 0;
    /// Whether the links are symmetric.
    virtual bool edges() const = 0;

    const NodesT& nodes() const { return m_nodes; }
    /// The levels, bottom level first.
    const LevelsT& levels() const { return m_levels; }
    /// The items on top of the hierarchy; a stand-alone node is wrapped in a one-item cluster.
    const RootT& root() const { return m_root; }
    const HierScore& score() const { return m_score; }

    /// The names that ids of nodes stand for in what is written; null for none.
    const Labels* labels() const { return m_labels.get(); }
    void setLabels(std::shared_ptr<const Labels> labels) { m_labels = std::move(labels); }

    /// Unfolds a cluster into its nodes.
    /// @param cl a cluster of this hierarchy
    /// @param maxshare whether a node or cluster goes only to the owners of its largest share
    /// @return the nodes, each with the share in (0, 1] that all paths to it add up to
    ClusterNodes<LinksT> unwrap(const ClusterT& cl, bool maxshare = false) const;

    /// Writes the clusters that the options ask for, and beside them the description of the
    /// hierarchy (RHB) under the name without its extension and with ".rhb".
    ///
    /// A file that can't be opened is reported through perror and left out.
    /// @throws std::invalid_argument for an undefined structure or format of the output
    /// @throws std::logic_error where more files were made than the ratio of levels can fill, as
    ///     the structure per level does from three levels on
    /// @throws std::ios_base::failure with the name of the file if writing fails
    void output(const OutputOptions& opts) const;

protected:
    Hierarchy();
    Hierarchy(Hierarchy&&) noexcept;

    NodesT m_nodes;
    LevelsT m_levels;
    RootT m_root;
    HierScore m_score;
    std::shared_ptr<const Labels> m_labels;
};

}  // namespace vorl
