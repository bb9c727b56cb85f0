/// @file
/// The builder of a network.
#pragma once

#include <vorl/hierarchy/cluster.hpp>
#include <vorl/processing/struct_errors.hpp>
#include <vorl/types/item.hpp>
#include <vorl/types/options.hpp>

#include <memory>
#include <unordered_map>
#include <vector>

namespace vorl {

namespace detail {
template <class LinksT>
class LateLinks;
template <bool LINKS_WEIGHTED>
class GraphLoader;
}  // namespace detail

/// Ids of nodes.
using NodesIdsT = std::vector<Id>;

/// Links as a caller gives them, without their source.
template <bool WEIGHTED>
using InpLinks = std::vector<InpLink<WEIGHTED>>;

/// Nodes by their ids.
template <class LinksT>
using IdNodes = std::unordered_map<Id, Node<LinksT>*>;

/// @name The logic of `Graph` on a list of nodes and a map of their ids
/// @{

/// Creates a node unless the id is there already, which is reported.
/// @return the position in the map
template <class LinksT>
VORL_API typename IdNodes<LinksT>::iterator acsAddNode(Nodes<LinksT>& nodes,
                                                       IdNodes<LinksT>& idnodes, Id id,
                                                       StructNodeErrors* errors = nullptr);

/// Creates the listed nodes, with `shuffle` from both ends of the list at random.
template <class LinksT>
VORL_API void acsAddNodes(Nodes<LinksT>& nodes, IdNodes<LinksT>& idnodes, const NodesIdsT& ids,
                          bool shuffle, StructNodeErrors* errors = nullptr);

/// Puts one link into the ordered list of its source. A repeated link is reported, or with
/// `sumdups` and weighted links accumulated unless its destination is the last one of the list.
/// @throws std::invalid_argument if the weight is negative or no number
template <class NodeT>
VORL_API void insertLink(NodeT* src, NodeT* dst, LinkWeight weight, bool sumdups,
                         StructLinkErrors* errors);

/// Drops the lightest links of one node and moves their weight into the self weights of both ends.
/// `links` is left sorted by weight.
/// @throws std::out_of_range if a dropped link leads to an unknown node
VORL_API void acsReduceLinks(Node<WeightedLinks>& node, InpLinks<true>& links,
                             IdNodes<WeightedLinks>& idnodes, Reduction reduction, Id linksMarg,
                             bool sumdups, StructLinkErrors* errors);

/// Adds links between existing nodes.
/// @return whether an arc between different nodes was stored
/// @throws std::out_of_range if a node is unknown; the links before it stay stored
/// @throws std::invalid_argument if a weight is negative or no number; nothing is stored then
template <bool DIRECTED, bool WEIGHTED>
VORL_API bool acsAddNodeLinks(IdNodes<Links<Link<LinkWeight, WEIGHTED>>>& idnodes, Id id,
                              const InpLinks<WEIGHTED>& links, bool sumdups, Reduction reduction,
                              Id linksMarg, StructLinkErrors* errors);

/// Adds links and creates the nodes that are missing.
/// @return whether an arc between different nodes was stored
/// @throws std::invalid_argument if a weight is negative or no number; nothing is stored then
template <bool DIRECTED, bool WEIGHTED>
VORL_API bool acsAddNodeAndLinks(Nodes<Links<Link<LinkWeight, WEIGHTED>>>& nodes,
                                 IdNodes<Links<Link<LinkWeight, WEIGHTED>>>& idnodes, Id id,
                                 const InpLinks<WEIGHTED>& links, bool shuffle, bool sumdups,
                                 Reduction reduction, Id linksMarg, StructLinkErrors* errors);
/// @}

/// Builds a network node by node and link by link, and hands it to clustering.
///
/// An edge is stored as two links with the full weight each, an arc as one link at its source. A
/// self link adds twice its weight to the self weight of its node. Repeated nodes and links never
/// throw; they are counted in the collectors, which may be null.
///
/// A link takes logarithmic time at most, also at a node of millions of links in random order,
/// until `nodes`, `node` or `buildHierarchy` is called for the first time. As the caller may look
/// at the nodes then, later links are in their lists at once, and one that comes out of order takes
/// time by the length of the list.
template <bool LINKS_WEIGHTED>
class VORL_API Graph {
public:
    static constexpr bool IS_WEIGHTED = LINKS_WEIGHTED;
    using LinksT = Links<Link<LinkWeight, LINKS_WEIGHTED>>;
    using NodeT = Node<LinksT>;
    using NodesT = Nodes<LinksT>;
    using IdNodesT = IdNodes<LinksT>;
    using InpLinksT = InpLinks<LINKS_WEIGHTED>;
    using HierarchyT = Hierarchy<LinksT>;

    /// @param nodesNum expected number of nodes
    /// @param shuffle nodes are created in randomised order
    /// @param sumdups repeated links of a weighted network accumulate
    /// @param reduction reduction of arcs as they arrive; needs weighted links and nodesNum
    /// @throws std::invalid_argument if the reduction can't be performed
    explicit Graph(Id nodesNum = 0, bool shuffle = false, bool sumdups = false,
                   Reduction reduction = Reduction::NONE);
    Graph(Graph&& other) noexcept;
    ~Graph();

    /// Moves the graph into a new shared object.
    std::shared_ptr<Graph> toSharedPtr();
    /// Drops all nodes and starts over, as a new graph does; the hierarchy stays.
    /// @throws std::invalid_argument as the constructor; nothing is dropped then
    void reset(Id nodesNum = 0, bool shuffle = false, bool sumdups = false,
               Reduction reduction = Reduction::NONE);

    /// Whether an arc between two different nodes has been added.
    bool directed() const { return m_directed; }
    /// Whether arcs are reduced as they arrive.
    bool reduced() const { return m_directed && m_linksMarg != 0; }
    NodesT& nodes();
    /// The node of an id, also after `buildHierarchy` while that hierarchy lives.
    /// @throws std::out_of_range if the id is unknown
    NodeT* node(Id id);
    /// @throws std::runtime_error "The hierarchy has not been constructed"
    std::shared_ptr<HierarchyT> hierarchy();

    /// Clusters the network; the nodes go into the hierarchy, and the list of nodes is left empty.
    /// @throws std::invalid_argument if a weight is negative or no number, as a parser may read it
    /// @throws as `cluster`
    std::shared_ptr<HierarchyT> buildHierarchy(const ClusterOptions& options = ClusterOptions());

    /// Adds the ids firstId to firstId + nodesNum - 1; nodesNum must be positive.
    void addNodes(Id nodesNum, Id firstId = 0, StructNodeErrors* errors = nullptr);
    /// Adds the listed ids; there must be one.
    void addNodes(const NodesIdsT& ids, StructNodeErrors* errors = nullptr);

    /// Adds a link between existing nodes.
    /// @throws std::out_of_range if a node is unknown
    /// @throws std::domain_error for a second link of a node under reduction
    /// @throws std::invalid_argument if the weight is negative or no number
    template <bool DIRECTED>
    void addLink(Id src, Id dst, LinkWeight weight = 1, StructLinkErrors* errors = nullptr);
    /// Adds links of one node; all nodes must exist.
    /// @throws std::out_of_range if a node is unknown; the links before it stay stored
    /// @throws std::invalid_argument if a weight is negative or no number; nothing is stored then
    template <bool DIRECTED>
    void addNodeLinks(Id id, const InpLinksT& links, StructLinkErrors* errors = nullptr);
    /// Adds links of one node; missing nodes are created.
    /// @throws std::invalid_argument if a weight is negative or no number; nothing is stored then
    template <bool DIRECTED>
    void addNodeAndLinks(Id id, const InpLinksT& links, StructLinkErrors* errors = nullptr);

    /// Gives the nodes away and leaves the graph empty.
    /// @param[out] idnodes takes the map of ids
    /// @param[out] directed takes whether the network is directed
    std::shared_ptr<NodesT> release(IdNodesT* idnodes = nullptr, bool* directed = nullptr);

private:
    friend class detail::GraphLoader<LINKS_WEIGHTED>;
    using UnmappedT = std::vector<typename IdNodesT::value_type>;

    void show();
    void mergeLate();
    IdNodesT& idNodes();
    detail::LateLinks<LinksT>& late();

    NodesT m_nodes;
    bool m_directed = false;
    Reduction m_reduction = Reduction::NONE;
    Id m_linksMarg = 0;
    IdNodesT m_idnodes;
    UnmappedT m_unmapped;  // nodes that the map lacks until it is needed
    bool m_shuffle = false;
    bool m_sumdups = false;
    std::shared_ptr<HierarchyT> m_hierarchy;
    std::unique_ptr<detail::LateLinks<LinksT>> m_late;
    bool m_shown = false;
};

}  // namespace vorl
