#include "loader.hpp"

#include "placing.hpp"

#include <algorithm>
#include <bit>
#include <numeric>
#include <random>
#include <stdexcept>
#include <type_traits>

namespace vorl::detail {

void LinkGatherer::addUp(bool arcs) {
    /// A link as a sum has it, and the weight of a link that it is the sum of.
    struct Part {
        Size key;
        Size place;
        LinkWeight weight;
    };
    std::vector<Part> parts;
    parts.reserve(m_links.size());
    const auto add = [&parts](Id src, Id dst, LinkWeight weight) {
        parts.push_back({Size{src} << 32 | dst, parts.size(), weight});
    };
    eachLink([&](Size i, Id src, Id dst, bool arc) {
        if (!arcs && dst < src) std::swap(src, dst);
        add(src, dst, weight(i));
        if (arcs && !arc && src != dst) add(dst, src, weight(i));
    });
    *this = LinkGatherer();
    std::sort(parts.begin(), parts.end(), [](const Part& a, const Part& b) {
        return a.key != b.key ? a.key < b.key : a.place < b.place;
    });
    auto end = parts.begin();
    for (auto part = parts.begin(); part != parts.end();) {
        Part sum = *part;
        auto weight = static_cast<AccWeight>(sum.weight);
        while (++part != parts.end() && part->key == sum.key)
            weight += static_cast<AccWeight>(part->weight);
        sum.weight = static_cast<LinkWeight>(weight);
        *end++ = sum;
    }
    parts.erase(end, parts.end());
    std::sort(parts.begin(), parts.end(),
              [](const Part& a, const Part& b) { return a.place < b.place; });
    for (const Part& sum : parts)
        this->add(static_cast<Id>(sum.key >> 32), static_cast<Id>(sum.key), sum.weight, arcs);
}

void LinkGatherer::renumber(const std::vector<Id>& numbers) {
    for (auto& [src, dst] : m_links) {
        src = numbers[src];
        dst = numbers[dst];
    }
}

void LinkGatherer::shuffle(std::uint64_t seed, std::vector<Id>& ids) {
    // Which node stands in each place.
    std::vector<Id> order(ids.size());
    std::iota(order.begin(), order.end(), Id{0});
    std::mt19937_64 random(seed);
    for (Size i = order.size(); i > 1; --i) std::swap(order[i - 1], order[random() % i]);
    std::vector<Id> former = ids;
    std::vector<Id> places(order.size());
    for (Size i = 0; i < order.size(); ++i) {
        ids[i] = former[order[i]];
        places[order[i]] = static_cast<Id>(i);
    }
    renumber(places);
}

template <bool LINKS_WEIGHTED>
GraphLoader<LINKS_WEIGHTED>::GraphLoader(LinkGatherer& links, const std::vector<Id>& ids,
                                         bool shuffle, bool sumdups, Id expected)
    : m_links(links), m_graph(std::make_shared<GraphT>(expected, shuffle, sumdups)) {
    m_nodes.reserve(ids.size());
    for (const Id id : ids) {
        m_graph->m_nodes.emplace_back(id, Size{0});
        m_nodes.push_back(&m_graph->m_nodes.back());
    }
}

/// The places where the lists end, repeats counted, if all stand one behind the other.
template <bool LINKS_WEIGHTED>
std::vector<Size> GraphLoader<LINKS_WEIGHTED>::ends() const {
    std::vector<Size> ends(m_nodes.size());
    m_links.eachLink([&](Size, Id src, Id dst, bool arc) {
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
                    Entry{dst} << 32 | std::bit_cast<std::uint32_t>(m_links.weight(link));
            else
                entries[places[src]++] = dst;
        };
        m_links.eachLink([&](Size i, Id src, Id dst, bool arc) {
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
    m_links.eachLink([&](Size i, Id src, Id dst, bool) {
        if (src == dst) addSelfLink(m_nodes[src], m_links.weight(i), m_graph->m_sumdups, errors);
    });
    m_links = LinkGatherer();
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
    m_links.eachLink([&](Size i, Id src, Id dst, bool arc) {
        // The nodes are strewn over the memory.
        if (i + 2 * AHEAD < m_links.size()) {
            const auto [farSrc, farDst] = m_links.m_links[i + 2 * AHEAD];
            __builtin_prefetch(&m_nodes[farSrc]->links);
            __builtin_prefetch(&m_nodes[farDst]->links);
            const auto [nearSrc, nearDst] = m_links.m_links[i + AHEAD];
            for (const Id node : {nearSrc, nearDst})
                __builtin_prefetch(m_nodes[node]->links.data() + m_nodes[node]->links.size());
        }
        m_graph->m_directed |= arc ? storeLink<true>(m_nodes[src], m_nodes[dst], m_links.weight(i),
                                                     m_graph->m_sumdups, errors, &late)
                                   : storeLink<false>(m_nodes[src], m_nodes[dst], m_links.weight(i),
                                                      m_graph->m_sumdups, errors, &late);
    });
    late.merge();
    for (NodeT* node : m_nodes)
        if (node->links.capacity() / 4 * 3 > node->links.size()) node->links.shrink_to_fit();
}

template <bool LINKS_WEIGHTED>
auto GraphLoader<LINKS_WEIGHTED>::graph(StructLinkErrors* errors) -> std::shared_ptr<GraphT> {
    if (!storeDistinct(errors)) storeInOrder(errors);
    m_graph->m_unmapped.reserve(m_nodes.size());
    for (NodeT* node : m_nodes) m_graph->m_unmapped.emplace_back(node->id, node);
    return std::move(m_graph);
}

template class GraphLoader<false>;
template class GraphLoader<true>;

}  // namespace vorl::detail
