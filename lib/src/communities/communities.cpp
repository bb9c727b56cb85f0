#include <vorl/communities.hpp>

#include "search.hpp"
#include "sharing.hpp"

#include <vorl/processing/gamma.hpp>
#include <vorl/types/progress.hpp>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace vorl {

namespace {

using detail::ItemNetwork;

/// Links that may be walked by searches, all starts together; the first one is always made.
constexpr Size WALKED = 1000000;
/// How much more than they save communities may cost and still be told, with a saving below 0: a
/// share of what names them, since other ways of naming have their reasons, too, and a few natural
/// units, without which small networks would have none.
constexpr double DOUBT = 0.05;
constexpr double DOUBT_UNITS = 5;
constexpr double BITS = 1.44269504088896340736;  // of a natural unit

/// The network without isolated nodes, its weights on a grid.
struct Linked {
    ItemNetwork<LinkWeight> network;
    std::vector<Id> nodes;  // number of each item
    AccWeight weight = 0;
    double scale = 1;  // links for a unit of weight

    Linked(const FlatNetwork& flat, detail::Workers& workers) {
        AccWeight whole = 0;
        for (Id i = 0; i < flat.size(); ++i)
            if (flat.degree(i) || flat.self[i] > 0) {
                nodes.push_back(i);
                whole += flat.self[i];
            }
        for (const LinkWeight link : flat.weight) whole += static_cast<AccWeight>(link);
        const detail::Grid grid(whole);

        detail::Labels item(flat.size(), ID_NONE);
        for (Id i = 0; i < nodes.size(); ++i) item[nodes[i]] = i;
        auto& links = network.links;
        links.begin.reserve(nodes.size() + 1);
        links.begin.push_back(0);
        for (const Id node : nodes) links.begin.push_back(links.begin.back() + flat.degree(node));
        links.dest.resize(links.begin.back());
        links.weight.resize(links.begin.back());
        network.items.resize(nodes.size());
        workers.each(nodes.size(), [&](Size i) {
            const Size from = flat.begin[nodes[i]];
            AccWeight sum = 0;
            for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln) {
                const Size source = from + ln - links.begin[i];
                links.dest[ln] = item[flat.neighbour[source]];
                const LinkWeight rounded = grid(flat.weight[source]);
                links.weight[ln] = rounded;
                sum += static_cast<AccWeight>(rounded);
            }
            const AccWeight self = grid(static_cast<LinkWeight>(flat.self[nodes[i]]));
            network.items[i] = {self, sum + self, 1};
        });
        // Links of the mean weight count as one each.
        AccWeight sum = 0;
        for (Size i = 0; i < nodes.size(); ++i) {
            weight += network.items[i].total;
            sum += network.items[i].total - network.items[i].inner;
        }
        if (sum > 0) scale = static_cast<double>(links.dest.size()) / sum;
    }
};

}  // namespace

/// Numbers the communities and fills the answer.
class CommunitiesBuilder {
public:
    CommunitiesBuilder(const FlatNetwork& flat, const Linked& linked)
        : m_flat(flat), m_linked(linked) {
        m_result.m_ids = flat.ids;
    }

    Communities take(const detail::Shares& shares, const std::vector<AccWeight>& weights,
                     CommunitiesScore score, std::vector<std::pair<std::string, double>> seconds) {
        Id count = order(shares, weights);
        fill(shares, count);
        list(count);
        m_result.m_score = std::move(score);
        m_result.m_seconds = std::move(seconds);
        return std::move(m_result);
    }

private:
    /// Numbers the communities that have nodes.
    /// @return how many
    Id order(const detail::Shares& shares, const std::vector<AccWeight>& weights) {
        std::vector<Id> least(weights.size(), ID_NONE);
        for (Id i = 0; i < m_linked.nodes.size(); ++i)
            for (const CommunityShare& part : shares.of(i))
                least[part.community] = std::min(least[part.community], i);
        std::vector<Id> order;
        for (Id community = 0; community < weights.size(); ++community)
            if (least[community] != ID_NONE) order.push_back(community);
        std::sort(order.begin(), order.end(), [&](Id a, Id b) {
            return weights[a] > weights[b] || (weights[a] == weights[b] && least[a] < least[b]);
        });
        m_number.resize(weights.size());
        for (Id i = 0; i < order.size(); ++i) m_number[order[i]] = i;
        return static_cast<Id>(order.size());
    }

    void fill(const detail::Shares& shares, Id& count) {
        Communities& result = m_result;
        result.m_first.reserve(m_flat.size() + 1);
        result.m_first.push_back(0);
        result.m_shares.reserve(shares.parts.size() + m_flat.size() - m_linked.nodes.size());
        Size item = 0;
        for (Id node = 0; node < m_flat.size(); ++node) {
            if (item < m_linked.nodes.size() && m_linked.nodes[item] == node) {
                for (const CommunityShare& part : shares.of(item))
                    result.m_shares.push_back({m_number[part.community], part.share});
                // Those of equal shares came in the order of the search.
                std::sort(
                    result.m_shares.begin() + static_cast<std::ptrdiff_t>(result.m_first.back()),
                    result.m_shares.end(), [](const auto& a, const auto& b) {
                        return a.share > b.share ||
                               (a.share == b.share && a.community < b.community);
                    });
                result.m_shared += shares.of(item).size() > 1;
                ++item;
            } else {
                result.m_shares.push_back({count++, 1});
                ++result.m_isolated;
            }
            result.m_first.push_back(result.m_shares.size());
        }
    }

    void list(Id count) {
        Communities& result = m_result;
        result.m_begin.assign(count + Size{1}, 0);
        for (const CommunityShare& part : result.m_shares)
            ++result.m_begin[part.community + Size{1}];
        for (Size i = 0; i < count; ++i) result.m_begin[i + 1] += result.m_begin[i];
        std::vector<Size> next(result.m_begin.begin(), result.m_begin.end() - 1);
        result.m_members.resize(result.m_shares.size());
        for (Id node = 0; node < m_flat.size(); ++node)
            for (const CommunityShare& part : result.of(node))
                result.m_members[next[part.community]++] = {node, part.share};
    }

    const FlatNetwork& m_flat;
    const Linked& m_linked;
    Communities m_result;
    std::vector<Id> m_number;
};

Communities communities(const FlatNetwork& network, const CommunitiesOptions& options) {
    detail::Clock clock;
    const ProgressReporter report;
    report.begin("communities");
    detail::Workers workers(options.threads);
    Linked linked(network, workers);
    CommunitiesBuilder builder(network, linked);
    if (linked.nodes.empty()) return builder.take({{0}, {}}, {}, {}, clock.seconds());
    const Id nodes = linked.network.size();

    report.begin("similarity");
    const detail::OfLinks<Id> shared = detail::sharedNeighbours(linked.network.links, workers);
    clock.book("similarity");
    std::optional<detail::Found> best;
    const Size links = linked.network.links.dest.size();
    const std::size_t starts = std::clamp<std::size_t>(
        options.starts ? options.starts : 1 + WALKED / std::max<Size>(1, links), 1,
        detail::STARTS.size());
    report.begin("communities", starts);
    for (std::size_t i = 0; i < starts; ++i) {
        detail::Found found = detail::search(linked.network, shared, detail::STARTS[i],
                                             linked.weight, linked.scale, clock, workers);
        // No communities are what is left where none of those found is good enough.
        const auto rank = [](const detail::Found& one) {
            return std::pair(one.partition.groups.size() > 1, one.description.saving());
        };
        if (!best || rank(found) > rank(*best)) best.emplace(std::move(found));
        report.advance();
    }

    const std::vector<detail::Holding> whole{[&] {
        detail::Holding all;
        for (const detail::Holding& item : linked.network.items) all += item;
        all.inner = linked.weight;
        return all;
    }()};
    const detail::Density density = best->start.density;
    const detail::Description none = detail::describe(density, linked.weight, linked.scale, whole);
    double saving = best->description.saving() - none.saving();
    if (saving < -(DOUBT * best->description.naming + DOUBT_UNITS)) {
        best->partition = {detail::Labels(nodes, 0), whole};
        best->description = none;
        best->likelihood.estimate(whole);
        saving = 0;
    }

    CommunitiesScore score;
    AccWeight inner = 0;
    AccWeight expected = 0;
    double conductance = 0;
    std::vector<AccWeight> weights;
    for (const detail::Holding& group : best->partition.groups) {
        inner += group.inner;
        expected += group.total * group.total / linked.weight;
        conductance += detail::cutShare(group.total, group.inner, linked.weight);
        weights.push_back(group.total);
    }
    score.modularity = (inner - expected) / linked.weight;
    score.conductance = conductance / static_cast<double>(weights.size());
    // As for other clusters, where all links are inside, or none is.
    const bool apart = inner > 0 && less(inner, linked.weight);
    score.gamma = apart ? newmanGamma(inner, expected, linked.weight) : 1;
    if (!std::isfinite(score.gamma)) score.gamma = 1;
    score.saving = saving * BITS;
    score.naming = best->description.naming * BITS;
    score.ownDensity = density == detail::Density::OWN;
    score.start = best->start.name();
    score.starts = static_cast<unsigned>(starts);
    score.rounds = best->rounds;
    clock.book("measures");

    detail::Shares shares;
    if (options.shares) {
        report.begin("shares");
        shares = detail::shareOut(linked.network, *best, workers);
    } else {
        for (Id i = 0; i < nodes; ++i) {
            shares.first.push_back(i);
            shares.parts.push_back({best->partition.labels[i], 1});
        }
        shares.first.push_back(nodes);
    }
    clock.book("shares");
    return builder.take(shares, weights, std::move(score), clock.seconds());
}

}  // namespace vorl
