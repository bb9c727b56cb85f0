#include <vorl/flat_network.hpp>

#include "flat_loader.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>

namespace vorl {

namespace {

[[noreturn]] void refuse(Id src, Id dst, LinkWeight weight) {
    throw std::invalid_argument("FlatNetwork(), the weight of the link " + std::to_string(src) +
                                " " + std::to_string(dst) +
                                " should be 0 or above: " + std::to_string(weight) + "\n");
}

bool valid(LinkWeight weight) { return weight >= 0 && std::isfinite(weight); }

/// The number of each node, from its address.
template <class NodeT>
class Numbers {
public:
    explicit Numbers(const std::vector<const NodeT*>& byId) {
        m_places.reserve(byId.size());
        for (std::size_t i = 0; i < byId.size(); ++i)
            m_places.push_back({address(byId[i]), static_cast<Id>(i)});
        std::sort(m_places.begin(), m_places.end());
        if (m_places.size() < 2) return;
        // Nodes of an arena lie in equal steps.
        m_step = m_places[1].first - m_places[0].first;
        for (std::size_t i = 2; i < m_places.size() && m_step; ++i)
            if (m_places[i].first - m_places[i - 1].first != m_step) m_step = 0;
    }

    /// ID_NONE for what isn't among them.
    Id operator()(const NodeT* node) const {
        const std::uintptr_t at = address(node);
        if (m_places.empty() || at < m_places.front().first) return ID_NONE;
        if (m_step) {
            const std::uintptr_t index = (at - m_places.front().first) / m_step;
            return index < m_places.size() ? m_places[index].second : ID_NONE;
        }
        const auto found = std::lower_bound(m_places.begin(), m_places.end(), Place{at, 0});
        return found != m_places.end() && found->first == at ? found->second : ID_NONE;
    }

private:
    using Place = std::pair<std::uintptr_t, Id>;
    static std::uintptr_t address(const NodeT* node) {
        return reinterpret_cast<std::uintptr_t>(node);
    }

    std::vector<Place> m_places;
    std::uintptr_t m_step = 0;
};

}  // namespace

/// Makes the lists of what `visit` gives to its argument, a function of source, destination and
/// weight; it is called twice and gives the same links in the same order.
/// @param bothWays whether a link belongs into the lists of both of its ends; else into that of its
///     destination
/// @param weighted whether a weight may be other than 1
template <class VisitT>
void FlatNetwork::assemble(bool bothWays, Repeats repeats, bool weighted, VisitT visit) {
    // Lists of destinations, in the order of the links.
    begin.assign(ids.size() + 1, 0);
    self.assign(ids.size(), 0);
    visit([&](Id src, Id dst, LinkWeight linkWeight) {
        if (!valid(linkWeight)) refuse(ids[src], ids[dst], linkWeight);
        if (src == dst || linkWeight == 0) return;
        ++begin[src + Size{1}];
        if (bothWays) ++begin[dst + Size{1}];
    });
    std::partial_sum(begin.begin(), begin.end(), begin.begin());
    std::vector<Id> dests(begin.back());
    std::vector<LinkWeight> weights(weighted ? begin.back() : 0);
    std::vector<Size> next(begin.begin(), begin.end() - 1);
    const auto put = [&](Id src, Id dst, LinkWeight linkWeight) {
        const Size place = next[src]++;
        dests[place] = dst;
        if (weighted) weights[place] = linkWeight;
    };
    visit([&](Id src, Id dst, LinkWeight linkWeight) {
        if (src == dst) {
            if (repeats == Repeats::ADDED || self[src] == 0)
                self[src] += 2 * static_cast<AccWeight>(linkWeight);
        } else if (linkWeight > 0) {
            put(src, dst, linkWeight);
            if (bothWays) put(dst, src, linkWeight);
        }
    });

    // Turned around, list by list, they ascend, with repeats side by side in their order.
    const std::vector<Size> lists = begin;
    if (!bothWays) {
        std::fill(begin.begin(), begin.end(), 0);
        for (const Id dst : dests) ++begin[dst + Size{1}];
        std::partial_sum(begin.begin(), begin.end(), begin.begin());
    }
    next.assign(begin.begin(), begin.end() - 1);
    neighbour.resize(dests.size());
    weight.resize(dests.size());
    for (Id src = 0; src < ids.size(); ++src)
        for (Size ln = lists[src]; ln < lists[src + Size{1}]; ++ln) {
            const Size place = next[dests[ln]]++;
            neighbour[place] = src;
            weight[place] = weighted ? weights[ln] : 1;
        }

    Size kept = 0;
    for (Size i = 0; i < ids.size(); ++i) {
        const Size first = std::exchange(begin[i], kept);
        for (Size ln = first; ln < begin[i + 1]; ++ln) {
            if (kept == begin[i] || neighbour[kept - 1] != neighbour[ln]) {
                neighbour[kept] = neighbour[ln];
                weight[kept++] = weight[ln];
            } else if (repeats == Repeats::ADDED) {
                weight[kept - 1] += weight[ln];
                if (!valid(weight[kept - 1])) refuse(ids[i], ids[neighbour[ln]], weight[kept - 1]);
            }
        }
    }
    begin.back() = kept;
    neighbour.resize(kept);
    weight.resize(kept);
}

template <class LinksT>
FlatNetwork::FlatNetwork(const Nodes<LinksT>& nodes, bool directed) {
    std::vector<const Node<LinksT>*> byId;
    byId.reserve(nodes.size());
    for (const auto& node : nodes) byId.push_back(&node);
    std::sort(byId.begin(), byId.end(), [](const auto* a, const auto* b) { return a->id < b->id; });
    ids.reserve(byId.size());
    for (const auto* node : byId) ids.push_back(node->id);
    const Numbers<Node<LinksT>> number(byId);
    assemble(directed, Repeats::ADDED, LinksT::value_type::IS_WEIGHTED, [&](const auto& take) {
        for (Id src = 0; src < byId.size(); ++src)
            for (const auto& link : byId[src]->links) {
                const Id dst = number(link.dest);
                if (dst != ID_NONE && dst != src) take(src, dst, link.weight);
            }
    });
    for (Id i = 0; i < byId.size(); ++i) {
        if (!valid(byId[i]->m_sweight)) refuse(ids[i], ids[i], byId[i]->m_sweight);
        self[i] = byId[i]->m_sweight;
    }
}

template FlatNetwork::FlatNetwork(const Nodes<UnweightedLinks>&, bool);
template FlatNetwork::FlatNetwork(const Nodes<WeightedLinks>&, bool);

FlatNetwork FlatNetwork::ofPairs(std::span<const Id> sources, std::span<const Id> destinations,
                                 std::span<const LinkWeight> weights, std::span<const Id> nodes) {
    if (sources.size() != destinations.size() ||
        (!weights.empty() && weights.size() != sources.size()))
        throw std::invalid_argument(
            "FlatNetwork(), sources, destinations and weights should be of "
            "one length: " +
            std::to_string(sources.size()) + ", " + std::to_string(destinations.size()) + ", " +
            std::to_string(weights.size()) + "\n");
    FlatNetwork network;
    std::vector<Id>& ids = network.ids;
    ids.reserve(2 * sources.size() + nodes.size());
    for (const auto& list : {sources, destinations, nodes})
        ids.insert(ids.end(), list.begin(), list.end());
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    ids.shrink_to_fit();
    if (!ids.empty() && ids.back() == ID_NONE)
        throw std::invalid_argument("FlatNetwork(), ids should be below " + std::to_string(ID_MAX) +
                                    "\n");
    // Ids without gaps are their own numbers but for an offset.
    const bool dense = !ids.empty() && ids.back() - ids.front() + Size{1} == ids.size();
    const auto number = [&](Id id) {
        if (dense) return id - ids.front();
        return static_cast<Id>(std::lower_bound(ids.begin(), ids.end(), id) - ids.begin());
    };
    network.assemble(true, Repeats::ADDED, !weights.empty(), [&](const auto& take) {
        for (std::size_t i = 0; i < sources.size(); ++i)
            take(number(sources[i]), number(destinations[i]), weights.empty() ? 1 : weights[i]);
    });
    return network;
}

FlatNetwork detail::loadFlat(LinkGatherer& links, std::vector<Id> ids, bool directed,
                             Size& distinct) {
    if (!std::is_sorted(ids.begin(), ids.end())) {
        std::vector<Id> order(ids.size());
        std::iota(order.begin(), order.end(), Id{0});
        std::sort(order.begin(), order.end(), [&](Id a, Id b) { return ids[a] < ids[b]; });
        std::vector<Id> numbers(ids.size());
        for (Id i = 0; i < order.size(); ++i) numbers[order[i]] = i;
        links.renumber(numbers);
        std::sort(ids.begin(), ids.end());
    }
    FlatNetwork network;
    network.ids = std::move(ids);
    network.assemble(!directed, FlatNetwork::Repeats::DROPPED, links.weighted(),
                     [&](const auto& take) {
                         links.eachLink([&](Size i, Id src, Id dst, bool arc) {
                             take(src, dst, links.weight(i));
                             if (directed && !arc && src != dst) take(dst, src, links.weight(i));
                         });
                     });
    links = LinkGatherer();
    distinct = network.neighbour.size() / (directed ? 1 : 2);
    for (const AccWeight self : network.self) distinct += self != 0;
    if (!directed) return network;

    // What there is of each direction is added up.
    FlatNetwork both;
    both.ids = std::move(network.ids);
    both.assemble(true, FlatNetwork::Repeats::ADDED, true, [&](const auto& take) {
        for (Id dst = 0; dst < both.ids.size(); ++dst)
            for (Size ln = network.begin[dst]; ln < network.begin[dst + Size{1}]; ++ln)
                take(network.neighbour[ln], dst, network.weight[ln]);
    });
    both.self = std::move(network.self);
    return both;
}

}  // namespace vorl
