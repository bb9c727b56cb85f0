#include "loader.hpp"

#include "placing.hpp"

#include <algorithm>
#include <bit>
#include <numeric>
#include <random>
#include <stdexcept>
#include <type_traits>

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

/// Visits the links in the order in which they came: (place, source, destination, arc).
template <bool LINKS_WEIGHTED>
template <class VisitT>
void GraphLoader<LINKS_WEIGHTED>::eachLink(VisitT visit) const {
    for (auto run = m_runs.begin(); run != m_runs.end(); ++run) {
        const Size end = run + 1 == m_runs.end() ? m_links.size() : run[1].begin;
        for (Size i = run->begin; i < end; ++i) {
            if (i % CHECKED == 0) m_report.check();
            visit(i, m_links[i].first, m_links[i].second, run->arcs);
        }
    }
}

/// The places where the lists end, repeats counted, if all stand one behind the other.
template <bool LINKS_WEIGHTED>
std::vector<Size> GraphLoader<LINKS_WEIGHTED>::ends() const {
    std::vector<Size> ends(m_nodes.size());
    eachLink([&](Size, Id src, Id dst, bool arc) {
        if (src == dst) return;
        ++ends[src];
        if (!arc) ++ends[dst];
    });
    std::partial_sum(ends.begin(), ends.end(), ends.begin());
    return ends;
}

/// Sorts the links into lists, which is faster than to insert each of them.
/// @return false, and nothing is stored, if a link between different nodes is repeated
template <bool LINKS_WEIGHTED>
bool GraphLoader<LINKS_WEIGHTED>::storeDistinct(StructLinkErrors* errors) {
    // A destination above the bits of its weight.
    using Entry = std::conditional_t<LINKS_WEIGHTED, std::uint64_t, Id>;
    const std::vector<Size> ends = this->ends();
    Arena memory;  // zeros where nothing was written
    const Size count = ends.empty() ? 0 : ends.back();
    auto* const entries =
        static_cast<Entry*>(memory.allocate((count + AHEAD) * sizeof(Entry), sizeof(Entry)));
    bool arcs = false;
    {
        std::vector<Size> places(ends.size());
        std::copy(ends.begin(), ends.end() - !ends.empty(), places.begin() + !ends.empty());
        const auto put = [&](Id src, Id dst, Size link) {
            if constexpr (LINKS_WEIGHTED)
                entries[places[src]++] =
                    Entry{dst} << 32 | std::bit_cast<std::uint32_t>(m_weights[link]);
            else
                entries[places[src]++] = dst;
        };
        eachLink([&](Size i, Id src, Id dst, bool arc) {
            if (src == dst) return;
            put(src, dst, i);
            if (!arc) put(dst, src, i);
            arcs |= arc;
        });
    }
    const auto dest = [](Entry entry) {
        return static_cast<Id>(entry >> (LINKS_WEIGHTED ? 32 : 0));
    };
    const auto begin = [&](Size node) { return entries + (node == 0 ? 0 : ends[node - 1]); };
    m_report.begin("sorting links", ends.size());
    for (Size i = 0; i < ends.size(); ++i) {
        m_report.advance();
        Entry* const end = entries + ends[i];
        std::sort(begin(i), end);
        if (std::adjacent_find(begin(i), end,
                               [&](Entry a, Entry b) { return dest(a) == dest(b); }) != end)
            return false;
    }
    eachLink([&](Size i, Id src, Id dst, bool) {
        if (src == dst) addSelfLink(m_nodes[src], weight(i), m_graph->m_sumdups, errors);
    });
    std::vector<Ends>().swap(m_links);
    std::vector<LinkWeight>().swap(m_weights);
    // Nodes were created in the order of their numbers, which is that of their addresses, too.
    m_report.begin("storing links", ends.size());
    for (Size i = 0; i < ends.size(); ++i) {
        m_report.advance();
        auto& links = m_nodes[i]->links;
        links.reserve(static_cast<Size>(entries + ends[i] - begin(i)));
        for (const Entry* entry = begin(i); entry != entries + ends[i]; ++entry) {
            __builtin_prefetch(&m_nodes[dest(entry[AHEAD])]);
            if constexpr (LINKS_WEIGHTED)
                links.emplace_back(m_nodes[dest(*entry)],
                                   std::bit_cast<float>(static_cast<std::uint32_t>(*entry)));
            else
                links.emplace_back(m_nodes[dest(*entry)]);
        }
    }
    m_graph->m_directed = arcs;
    return true;
}

/// Stores link by link, by the rules of repeated ones.
template <bool LINKS_WEIGHTED>
void GraphLoader<LINKS_WEIGHTED>::storeInOrder(StructLinkErrors* errors) {
    LateLinks<LinksT> late;
    eachLink([&](Size i, Id src, Id dst, bool arc) {
        // The nodes are strewn over the memory.
        if (i + 2 * AHEAD < m_links.size()) {
            const auto [farSrc, farDst] = m_links[i + 2 * AHEAD];
            __builtin_prefetch(&m_nodes[farSrc]->links);
            __builtin_prefetch(&m_nodes[farDst]->links);
            const auto [nearSrc, nearDst] = m_links[i + AHEAD];
            for (const Id node : {nearSrc, nearDst})
                __builtin_prefetch(m_nodes[node]->links.data() + m_nodes[node]->links.size());
        }
        m_graph->m_directed |= arc ? storeLink<true>(m_nodes[src], m_nodes[dst], weight(i),
                                                     m_graph->m_sumdups, errors, &late)
                                   : storeLink<false>(m_nodes[src], m_nodes[dst], weight(i),
                                                      m_graph->m_sumdups, errors, &late);
    });
    late.merge();
    for (NodeT* node : m_nodes)
        if (node->links.capacity() / 4 * 3 > node->links.size()) node->links.shrink_to_fit();
}

template <bool LINKS_WEIGHTED>
void GraphLoader<LINKS_WEIGHTED>::shuffle(std::uint64_t seed) {
    // Which node stands in each place.
    std::vector<Id> order(m_nodes.size());
    std::iota(order.begin(), order.end(), Id{0});
    std::mt19937_64 random(seed);
    for (Size i = order.size(); i > 1; --i) std::swap(order[i - 1], order[random() % i]);
    // Nodes have no links yet, so that they change places by their ids.
    std::vector<Id> ids(order.size());
    std::vector<Id> places(order.size());
    for (Size i = 0; i < order.size(); ++i) {
        ids[i] = m_nodes[order[i]]->id;
        places[order[i]] = static_cast<Id>(i);
    }
    for (Size i = 0; i < ids.size(); ++i) m_nodes[i]->id = ids[i];
    for (auto& [src, dst] : m_links) {
        src = places[src];
        dst = places[dst];
    }
}

template <bool LINKS_WEIGHTED>
auto GraphLoader<LINKS_WEIGHTED>::graph(StructLinkErrors* errors) -> std::shared_ptr<GraphT> {
    if (!storeDistinct(errors)) storeInOrder(errors);
    m_graph->m_unmapped.reserve(m_nodes.size());
    for (NodeT* node : m_nodes) m_graph->m_unmapped.emplace_back(node->id, node);
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
