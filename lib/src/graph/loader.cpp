#include "loader.hpp"

#include "placing.hpp"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace vorl::detail {

template <bool LINKS_WEIGHTED>
Id GraphLoader<LINKS_WEIGHTED>::create(Id id, StructNodeErrors* errors) {
    const Id number = m_numbers.find(id);
    if (number != ID_NONE) {
        if (errors) errors->add(id);
        return number;
    }
    m_graph->m_nodes.emplace_back(id, Size{0});
    m_nodes.push_back(&m_graph->m_nodes.back());
    return m_numbers.append(id);
}

template <bool LINKS_WEIGHTED>
Id GraphLoader<LINKS_WEIGHTED>::known(Id id) const {
    const Id number = m_numbers.find(id);
    if (number != ID_NONE) return number;
    try {
        typename GraphT::IdNodesT().at(id);
    } catch (const std::out_of_range& err) {
        refuseLink(id, err.what());
    }
    return number;
}

template <bool LINKS_WEIGHTED>
void GraphLoader<LINKS_WEIGHTED>::addNodes(Id nodesNum, Id firstId, StructNodeErrors* errors) {
    VORL_ASSERT(nodesNum != 0, "addNodes(), the number of nodes to instantiate must be positive");
    eachNode(firstId, firstId + nodesNum, m_graph->m_shuffle, [&](Id id) { create(id, errors); });
}

template <bool LINKS_WEIGHTED>
template <bool DIRECTED, class NumberT>
void GraphLoader<LINKS_WEIGHTED>::append(Id src, const InpLinksT& links, NumberT number) {
    if (m_runs.empty() || m_runs.back().arcs != DIRECTED)
        m_runs.push_back({m_links.size(), DIRECTED});
    for (const auto& ln : links) {
        m_links.emplace_back(src, number(ln.id));
        if constexpr (LINKS_WEIGHTED) m_weights.push_back(ln.weight);
    }
}

template <bool LINKS_WEIGHTED>
template <bool DIRECTED>
void GraphLoader<LINKS_WEIGHTED>::addNodeLinks(Id id, const InpLinksT& links) {
    append<DIRECTED>(known(id), links, [this](Id dst) { return known(dst); });
}

template <bool LINKS_WEIGHTED>
template <bool DIRECTED>
void GraphLoader<LINKS_WEIGHTED>::addNodeAndLinks(Id id, const InpLinksT& links) {
    if (m_graph->m_shuffle)
        eachNode(Size{0}, links.size() + 1, true,
                 [&](Size place) { create(place == 0 ? id : links[place - 1].id); });
    append<DIRECTED>(create(id), links, [this](Id dst) { return create(dst); });
}

template <bool LINKS_WEIGHTED>
template <class VisitT>
void GraphLoader<LINKS_WEIGHTED>::eachRun(VisitT visit) const {
    for (auto run = m_runs.begin(); run != m_runs.end(); ++run)
        visit(run->arcs, run->begin, run + 1 == m_runs.end() ? m_links.size() : run[1].begin);
}

/// How many links each node gets at most.
template <bool LINKS_WEIGHTED>
std::vector<Id> GraphLoader<LINKS_WEIGHTED>::degrees() const {
    std::vector<Id> degrees(m_nodes.size());
    eachRun([&](bool arcs, Size begin, Size end) {
        for (Size i = begin; i < end; ++i) {
            const auto [src, dst] = m_links[i];
            if (src == dst) continue;
            ++degrees[src];
            if (!arcs) ++degrees[dst];
        }
    });
    return degrees;
}

template <bool LINKS_WEIGHTED>
template <bool DIRECTED>
void GraphLoader<LINKS_WEIGHTED>::store(Size begin, Size end, StructLinkErrors* errors,
                                        LateLinks<LinksT>& late) {
    // The nodes are strewn over the memory, so some of them are fetched at a time.
    constexpr Size most = 64;
    std::array<std::pair<NodeT*, NodeT*>, most> nodes;
    const auto fetchLast = [](const NodeT* node) {
        __builtin_prefetch(node->links.data() + node->links.size());
    };
    for (Size first = begin; first < end; first += most) {
        const Size count = std::min(most, end - first);
        for (Size i = 0; i < count; ++i) {
            const auto [src, dst] = m_links[first + i];
            nodes[i] = {m_nodes[src], m_nodes[dst]};
            __builtin_prefetch(&nodes[i].first->links);
            if constexpr (!DIRECTED) __builtin_prefetch(&nodes[i].second->links);
        }
        for (Size i = 0; i < count; ++i) {
            fetchLast(nodes[i].first);
            if constexpr (!DIRECTED) fetchLast(nodes[i].second);
        }
        for (Size i = 0; i < count; ++i) {
            LinkWeight weight = 1;
            if constexpr (LINKS_WEIGHTED) weight = m_weights[first + i];
            m_graph->m_directed |= storeLink<DIRECTED>(nodes[i].first, nodes[i].second, weight,
                                                       m_graph->m_sumdups, errors, &late);
        }
    }
}

template <bool LINKS_WEIGHTED>
auto GraphLoader<LINKS_WEIGHTED>::graph(StructLinkErrors* errors) -> std::shared_ptr<GraphT> {
    const std::vector<Id> room = degrees();
    for (Size i = 0; i < room.size(); ++i) m_nodes[i]->links.reserve(room[i]);
    LateLinks<LinksT> late;
    eachRun([&](bool arcs, Size begin, Size end) {
        arcs ? store<true>(begin, end, errors, late) : store<false>(begin, end, errors, late);
    });
    late.merge();
    // Repeated links leave gaps.
    for (NodeT* node : m_nodes)
        if (node->links.capacity() / 4 * 3 > node->links.size()) node->links.shrink_to_fit();
    m_graph->m_unmapped = std::move(m_nodes);
    return std::move(m_graph);
}

#define VORL_INSTANTIATE_ADD(WEIGHTED, DIRECTED)                                                \
    template void GraphLoader<WEIGHTED>::addNodeLinks<DIRECTED>(Id, const InpLinks<WEIGHTED>&); \
    template void GraphLoader<WEIGHTED>::addNodeAndLinks<DIRECTED>(Id, const InpLinks<WEIGHTED>&);

template class GraphLoader<false>;
template class GraphLoader<true>;
VORL_INSTANTIATE_ADD(false, false)
VORL_INSTANTIATE_ADD(false, true)
VORL_INSTANTIATE_ADD(true, false)
VORL_INSTANTIATE_ADD(true, true)

}  // namespace vorl::detail
