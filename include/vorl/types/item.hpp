/// @file
/// Items: the nodes of the network and the clusters formed of them.
#pragma once

#include <vorl/types/arena.hpp>
#include <vorl/types/context.hpp>
#include <vorl/types/link.hpp>
#include <vorl/types/numbers.hpp>

#include <atomic>
#include <list>
#include <memory>
#include <vector>

namespace vorl {

/// One membership of an item in a cluster.
template <class ClusterT>
struct Owner {
    ClusterT* dest;
    /// Number of active candidates: how many of the item's mutual candidates lie in this cluster.
    std::uint16_t numac;

    /// @throws std::overflow_error if the number is above 65534.
    explicit Owner(ClusterT* cluster, Size num = 0);

    bool operator==(const Owner& other) const { return dest == other.dest; }
    bool operator==(const ClusterT* cluster) const { return dest == cluster; }
};

/// What can be clustered: a node or a cluster.
template <class LinksT>
class VORL_API NodeI {
public:
    using OwnersT = std::vector<Owner<Cluster<LinksT>>>;
    using DescsT = std::vector<NodeI*>;

    Id id;  ///< the caller's id of a node, a number from a counter for a cluster
    /// Total number of active candidates, the denominator of the item's shares.
    std::uint32_t totac = 0;
    OwnersT owners;  ///< ascending by address of `dest`

    /// @throws std::overflow_error "NodeI(), overflow of id\n" if the id is ID_MAX.
    explicit NodeI(Id id);
    NodeI(const NodeI&) = delete;
    NodeI& operator=(const NodeI&) = delete;
    virtual ~NodeI();

    /// The self weight: all weight inside the item, both directions counted.
    virtual AccWeight weight() const = 0;
    /// Adds to the self weight.
    virtual void addWeight(AccWeight weight) = 0;
    /// Total in-out weight of the item: that of the context if there is one; else WEIGHT_NONE, or
    /// with `defined` false the sum of a node's weights, or what `tidy` kept of a cluster.
    virtual AccWeight ctxWeight(bool defined = true) const = 0;
    /// The direct descendants, null for a node.
    virtual const DescsT* descs() const = 0;
    /// Number of nodes in the item, in fractions where descendants are shared.
    virtual AccWeight nnodes() const = 0;
    /// Gives up links and context of an item that is finished with.
    virtual void tidy() = 0;

    /// The direct descendants; must not be called on a node.
    const DescsT& dsccs() const;
    const OwnersT& owncs() const { return owners; }

protected:
    NodeI(NodeI&&) = default;
};

/// A node of the network.
template <class LinksT>
class VORL_API Node final : public NodeI<LinksT> {
public:
    using LinkT = typename LinksT::value_type;
    using typename NodeI<LinksT>::DescsT;

    LinksT links;              ///< links to other nodes, ascending by address
    LinkWeight m_sweight = 0;  ///< twice the given weight of the self link
    std::unique_ptr<Context<Node>> m_context;

    /// @throws std::overflow_error if the id is ID_MAX.
    explicit Node(Id id, Size reserve = 0);
    Node(Node&&) noexcept;
    ~Node() override;

    AccWeight weight() const override;
    void addWeight(AccWeight weight) override;
    AccWeight ctxWeight(bool defined = true) const override;
    const DescsT* descs() const override;
    AccWeight nnodes() const override;
    void tidy() override;
};

/// A cluster of items of the level below.
template <class LinksT>
class VORL_API Cluster final : public NodeI<LinksT> {
public:
    using LinkT = AccLink<LinksT>;
    using typename NodeI<LinksT>::DescsT;

    Links<LinkT> links;       ///< accumulated links to other clusters, ascending by address
    DescsT des;               ///< direct descendants, ascending by address
    AccWeight m_sweight = 0;  ///< all weight inside the cluster
    std::unique_ptr<Context<Cluster>> m_context;
    LinkWeight m_tweight = WEIGHT_NONE;  ///< total in-out weight kept by `tidy`
    AccWeight m_nnodes = 0;              ///< number of nodes; 0 until initialised
    LevelNum levnum;                     ///< the level that the cluster was formed for

    /// The counter of ids, shared by all hierarchies of the process and never reset. Clusters may
    /// be made on several threads, but the ids of builds that run at the same time mix; a
    /// `ClusterIdsScope` numbers those of one by themselves.
    static inline std::atomic<Id> m_uid = 0;

    Cluster(LevelNum levnum, Id id, Size reserve);
    Cluster(LevelNum levnum, Size reserve);
    Cluster(Cluster&&) noexcept;
    ~Cluster() override;

    AccWeight weight() const override;
    void addWeight(AccWeight weight) override;
    AccWeight ctxWeight(bool defined = true) const override;
    const DescsT* descs() const override;
    AccWeight nnodes() const override;
    void tidy() override;
};

/// A share of membership, as read from a file.
template <class ItemT>
struct ItemShare {
    ItemT* dest;
    Share share;
};

/// Owns the nodes; cells never move.
template <class LinksT>
using Nodes = std::list<Node<LinksT>, ArenaAllocator<Node<LinksT>>>;

/// Owns clusters; cells never move.
template <class LinksT>
using Clusters = std::list<Cluster<LinksT>, ArenaAllocator<Cluster<LinksT>>>;

/// A node or a cluster of either link type.
template <class ItemT>
concept Item =
    std::same_as<ItemT, Node<UnweightedLinks>> || std::same_as<ItemT, Node<WeightedLinks>> ||
    std::same_as<ItemT, Cluster<UnweightedLinks>> || std::same_as<ItemT, Cluster<WeightedLinks>>;

/// Whether an item is a node.
template <class ItemT>
inline constexpr bool IS_NODE = false;
template <class LinksT>
inline constexpr bool IS_NODE<Node<LinksT>> = true;

}  // namespace vorl
