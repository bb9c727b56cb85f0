// Assembly of a network whose lists are looked at only when all links have come.
#pragma once

#include "late_links.hpp"

#include <vorl/graph.hpp>
#include <vorl/types/progress.hpp>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace vorl::detail {

/// Links between numbered nodes, in the order in which they come.
///
/// Weights take memory from the first one on that isn't 1.
class LinkGatherer {
public:
    void add(Id src, Id dst, LinkWeight weight, bool arc) {
        if (m_runs.empty() || m_runs.back().arcs != arc) m_runs.push_back({m_links.size(), arc});
        if (weight != 1 || !m_weights.empty()) addWeight(weight);
        m_links.emplace_back(src, dst);
    }

    Size size() const { return m_links.size(); }
    /// Visits the links in the order in which they came: (place, source, destination, arc).
    template <class VisitT>
    void eachLink(VisitT visit) const {
        const ProgressReporter report;
        for (auto run = m_runs.begin(); run != m_runs.end(); ++run) {
            const Size end = run + 1 == m_runs.end() ? m_links.size() : run[1].begin;
            for (Size i = run->begin; i < end; ++i) {
                if (i % CHECKED == 0) report.check();
                visit(i, m_links[i].first, m_links[i].second, run->arcs);
            }
        }
    }
    /// Whether a weight is other than 1.
    bool weighted() const { return !m_weights.empty(); }
    LinkWeight weight(Size link) const { return m_weights.empty() ? 1 : m_weights[link]; }

    /// Adds the weights of repeated links up, each sum in the place of the first one.
    /// @param arcs whether the sums are of arcs, an edge counting as both of its own; else all
    ///     links are edges, the same both ways
    void addUp(bool arcs);
    /// Gives each node another number.
    void renumber(const std::vector<Id>& numbers);
    /// Puts the nodes into the order that the seed draws.
    /// @param[in,out] ids of the nodes, by number
    void shuffle(std::uint64_t seed, std::vector<Id>& ids);

private:
    template <bool LINKS_WEIGHTED>
    friend class GraphLoader;

    /// How many links pass between looks at whether to go on.
    static constexpr Size CHECKED = 1 << 16;

    using Ends = std::pair<Id, Id>;
    /// Links from a place on, up to the next run, that are all arcs or all edges.
    struct Run {
        Size begin;
        bool arcs;
    };

    void addWeight(LinkWeight weight) {
        if (m_weights.empty()) m_weights.resize(m_links.size(), 1);
        m_weights.push_back(weight);
    }

    std::vector<Ends> m_links;
    std::vector<LinkWeight> m_weights;  // empty while all are 1
    std::vector<Run> m_runs;
};

/// Makes a graph of nodes and links.
///
/// It is the one that the operations of `Graph` make, called in the same order.
template <bool LINKS_WEIGHTED>
class GraphLoader {
public:
    using GraphT = Graph<LINKS_WEIGHTED>;
    using LinksT = typename GraphT::LinksT;
    using NodeT = typename GraphT::NodeT;

    /// @param links    are spent; all are without weights where the graph is
    /// @param ids      of the nodes, by number
    /// @param expected number of nodes for which the map of ids is laid out at once, if need be
    GraphLoader(LinkGatherer& links, const std::vector<Id>& ids, bool shuffle, bool sumdups,
                Id expected = 0);

    /// Stores the links and gives the graph away.
    std::shared_ptr<GraphT> graph(StructLinkErrors* errors);

private:
    /// How many links ahead memory is fetched.
    static constexpr Size AHEAD = 24;

    std::vector<Size> ends() const;
    bool storeDistinct(StructLinkErrors* errors);
    void storeInOrder(StructLinkErrors* errors);

    LinkGatherer& m_links;
    std::shared_ptr<GraphT> m_graph;
    std::vector<NodeT*> m_nodes;  // by number
    ProgressReporter m_report;
};

extern template class GraphLoader<false>;
extern template class GraphLoader<true>;

}  // namespace vorl::detail
