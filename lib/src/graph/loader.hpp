// Assembly of a network whose lists are looked at only when all links have come.
#pragma once

#include "late_links.hpp"

#include <vorl/graph.hpp>
#include <vorl/types/id_numbers.hpp>
#include <vorl/types/progress.hpp>

#include <memory>
#include <utility>
#include <vector>

namespace vorl::detail {

/// Gathers nodes and links, and makes the graph of them in the end.
///
/// The graph is the one that the operations of `Graph` make, called in the same order.
template <bool LINKS_WEIGHTED>
class GraphLoader {
public:
    using GraphT = Graph<LINKS_WEIGHTED>;
    using LinksT = typename GraphT::LinksT;
    using NodeT = typename GraphT::NodeT;
    using InpLinksT = typename GraphT::InpLinksT;

    /// @param expected how many nodes may come
    GraphLoader(Id expected, bool shuffle, bool sumdups)
        : m_graph(std::make_shared<GraphT>(expected, shuffle, sumdups)), m_numbers(expected) {}

    /// Adds the ids firstId to firstId + nodesNum - 1.
    void addNodes(Id nodesNum, Id firstId, StructNodeErrors* errors);
    /// Adds links of a node; all nodes must be there.
    /// @throws std::out_of_range if one is unknown
    template <bool DIRECTED>
    void addNodeLinks(Id id, const InpLinksT& links);
    /// Adds links of a node, and creates the nodes that are missing.
    template <bool DIRECTED>
    void addNodeAndLinks(Id id, const InpLinksT& links);

    /// Puts the nodes that have come so far into the order that the seed draws.
    void shuffle(std::uint64_t seed);
    /// Stores the links and gives the graph away.
    std::shared_ptr<GraphT> graph(StructLinkErrors* errors);

private:
    /// How many links ahead memory is fetched.
    static constexpr Size AHEAD = 24;
    /// How many links pass between looks at whether to go on.
    static constexpr Size CHECKED = 1 << 16;

    using Ends = std::pair<Id, Id>;
    /// Links from a place on, up to the next run, that are all arcs or all edges.
    struct Run {
        Size begin;
        bool arcs;
    };

    Id create(Id id, StructNodeErrors* errors = nullptr);
    Id known(Id id) const;
    template <bool DIRECTED, class NumberT>
    void append(Id src, const InpLinksT& links, NumberT number);
    template <class VisitT>
    void eachLink(VisitT visit) const;
    std::vector<Size> ends() const;
    bool storeDistinct(StructLinkErrors* errors);
    void storeInOrder(StructLinkErrors* errors);

    LinkWeight weight([[maybe_unused]] Size link) const {
        if constexpr (LINKS_WEIGHTED)
            return m_weights[link];
        else
            return 1;
    }

    std::shared_ptr<GraphT> m_graph;
    IdNumbers m_numbers;
    std::vector<NodeT*> m_nodes;  // by number
    std::vector<Ends> m_links;    // of numbers
    std::vector<LinkWeight> m_weights;
    std::vector<Run> m_runs;
    ProgressReporter m_report;
};

extern template class GraphLoader<false>;
extern template class GraphLoader<true>;

}  // namespace vorl::detail
