#include "sharing.hpp"

#include <algorithm>
#include <cmath>

namespace vorl::detail {

namespace {

/// Rounds until the communities of a network with many shared nodes are stable.
constexpr unsigned SHARING_ROUNDS = 5;
/// They are stable when no more than one in so many nodes has others.
constexpr Size FEW = 1000;
/// A community that has less than this of what the best one has of a node's links gets no share.
constexpr double LEAST_PULL = 1.0 / 3;
/// No node is in more communities than this.
constexpr std::size_t MOST = 64;
/// How common shared nodes are thought to be before any is known.
constexpr double PRIOR = 0.05;

struct Candidate {
    Id community;
    AccWeight pull;     // weight of the links to the community, shares counted
    double expected;    // the same by chance, at the density 1
    double density;     // of the community
    double likelihood;  // of a node that is in it alone, against one that isn't
};

/// What communities hold while their nodes are shared.
struct Community {
    AccWeight inner = 0;
    AccWeight total = 0;
};

class Sharing {
public:
    Sharing(const ItemNetwork<LinkWeight>& network, const Found& found, const Shares& shares,
            const Labels& sole, const std::vector<Community>& communities, double cost,
            double further)
        : m_network(network),
          m_likelihood(found.likelihood),
          m_common(found.start.density == Density::COMMON),
          m_shares(shares),
          m_sole(sole),
          m_communities(communities),
          m_cost(cost),
          m_further(further),
          m_pull(communities.size()) {}

    /// Weight of the node's links to each community, in a list that the next call reuses.
    std::span<const Id> pulls(Id node) {
        for (const Id community : touched()) m_pull[community] = 0;
        m_met = 0;
        const ItemLinks<LinkWeight>& links = m_network.links;
        const Size last = links.begin[node + Size{1}];
        for (Size ln = links.begin[node]; ln < last; ++ln) {
            const auto weight = static_cast<AccWeight>(links.weight[ln]);
            const Id sole = m_sole[links.dest[ln]];
            if (sole != ID_NONE)
                add(sole, weight);
            else
                for (const CommunityShare& part : m_shares.of(links.dest[ln]))
                    add(part.community, static_cast<AccWeight>(part.share) * weight);
        }
        return touched();
    }
    AccWeight pull(Id community) const { return m_pull[community]; }

    /// The communities of a node.
    void decide(Id node, std::vector<CommunityShare>& parts) {
        const std::span<const Id> touched = pulls(node);
        const auto former = m_shares.of(node);
        parts.assign(former.begin(), former.end());
        // Mostly no other community has enough of the links.
        if (former.size() == 1) {
            const Id own = former[0].community;
            const AccWeight least = LEAST_PULL * m_pull[own];
            if (std::none_of(touched.begin(), touched.end(),
                             [&](Id other) { return other != own && m_pull[other] >= least; }))
                return;
        }
        gather(node);
        if (m_candidates.empty()) return;
        parts.clear();
        std::sort(m_candidates.begin(), m_candidates.end(), [](const auto& a, const auto& b) {
            return a.likelihood > b.likelihood ||
                   (a.likelihood == b.likelihood && a.community < b.community);
        });
        std::size_t taken = 1;
        double best = m_candidates[0].likelihood;
        const std::size_t most = std::min(MOST, m_candidates.size());
        AccWeight sum = m_candidates[0].pull;
        double cost = m_cost;
        for (std::size_t count = 2; count <= most; ++count) {
            const AccWeight pull = m_candidates[count - 1].pull;
            if (pull < LEAST_PULL * m_candidates[0].pull) break;
            sum += pull;
            const double value = together(count, sum) - cost;
            cost += m_further;
            if (value > best) {
                best = value;
                taken = count;
            }
        }
        AccWeight whole = 0;
        for (std::size_t i = 0; i < taken; ++i) whole += m_candidates[i].pull;
        for (std::size_t i = 0; i < taken; ++i)
            parts.push_back(
                {m_candidates[i].community, static_cast<Share>(m_candidates[i].pull / whole)});
        std::sort(parts.begin(), parts.end(), [](const auto& a, const auto& b) {
            return a.share > b.share || (a.share == b.share && a.community < b.community);
        });
    }

private:
    std::span<const Id> touched() const { return std::span(m_touched).first(m_met); }
    void add(Id community, AccWeight weight) {
        if (m_met == m_touched.size()) m_touched.resize(2 * m_met + 16);
        // Without a branch, as the processor couldn't guess it. A link may be too light to weigh
        // anything, and a pull of 0 is that of no link yet.
        AccWeight& pull = m_pull[community];
        m_touched[m_met] = community;
        m_met += (pull == 0) & (weight > 0);
        pull += weight;
    }

    /// The communities to which the node has more links than by chance.
    void gather(Id node) {
        m_candidates.clear();
        const AccWeight total = m_network.items[node].total;
        const auto own = m_shares.of(node);
        AccWeight out = total - m_network.items[node].inner;
        for (const CommunityShare& part : own)
            out -= static_cast<AccWeight>(part.share) * m_pull[part.community];
        // In a small network the links of the node itself may be most of those outside.
        m_outside = m_likelihood.outsideWithout(std::max(0.0, out));
        const double outside = m_outside;
        for (const Id community : touched()) {
            const AccWeight pull = m_pull[community];
            AccWeight share = 0;
            for (const CommunityShare& part : own)
                if (part.community == community) share = static_cast<AccWeight>(part.share);
            // The node itself mustn't speak for its community.
            const Community& all = m_communities[community];
            const AccWeight rest = all.total - share * total;
            const AccWeight inner = all.inner - 2 * share * pull;
            if (!(rest > 0)) continue;
            const double expected = total * rest / m_likelihood.weight();
            const double density =
                m_common ? m_likelihood.inside(Holding{})
                         : std::max(0.0, inner) * m_likelihood.weight() / (rest * rest);
            if (density <= outside || pull <= outside * expected) continue;
            const Candidate candidate{community, pull, expected, density, 0};
            const double likelihood = alone(candidate, 1);
            if (likelihood <= 0) continue;
            m_candidates.push_back(candidate);
            m_candidates.back().likelihood = likelihood;
        }
    }

    double alone(const Candidate& candidate, double share) const {
        return m_likelihood.scale() *
               (candidate.pull * ln(share * candidate.density / m_outside) -
                (share * candidate.density - m_outside) * candidate.expected);
    }

    double together(std::size_t count, AccWeight sum) const {
        double value = 0;
        for (std::size_t i = 0; i < count; ++i)
            value += alone(m_candidates[i], m_candidates[i].pull / sum);
        return value;
    }

    const ItemNetwork<LinkWeight>& m_network;
    const Likelihood& m_likelihood;
    bool m_common;
    const Shares& m_shares;
    const Labels& m_sole;
    const std::vector<Community>& m_communities;
    double m_cost;
    double m_further;
    std::vector<AccWeight> m_pull;
    std::vector<Id> m_touched;
    Size m_met = 0;  // communities in it
    std::vector<Candidate> m_candidates;
    double m_outside = 0;  // density outside, as the node at hand sees it
};

/// The shares of a range of nodes, until all lie in one list.
struct Part {
    Size first;
    std::vector<Id> counts;
    std::vector<CommunityShare> shares;
};

Shares joined(std::vector<Part>& parts, Size nodes) {
    std::sort(parts.begin(), parts.end(),
              [](const Part& a, const Part& b) { return a.first < b.first; });
    Shares result;
    result.first.reserve(nodes + 1);
    result.first.push_back(0);
    for (const Part& part : parts) {
        for (const Id count : part.counts) result.first.push_back(result.first.back() + count);
        result.parts.insert(result.parts.end(), part.shares.begin(), part.shares.end());
    }
    return result;
}

bool sameCommunities(std::span<const CommunityShare> a, std::span<const CommunityShare> b) {
    return a.size() == b.size() && std::all_of(a.begin(), a.end(), [&](const auto& part) {
               return std::any_of(b.begin(), b.end(), [&](const auto& other) {
                   return other.community == part.community;
               });
           });
}

}  // namespace

Shares shareOut(const ItemNetwork<LinkWeight>& network, const Found& found, Workers& workers) {
    const Id nodes = network.size();
    Shares shares;
    shares.first.resize(nodes + Size{1});
    for (Size i = 0; i <= nodes; ++i) shares.first[i] = i;
    shares.parts.reserve(nodes);
    for (const Id label : found.partition.labels) shares.parts.push_back({label, 1});
    std::vector<Community> communities;
    for (const Holding& group : found.partition.groups)
        communities.push_back({group.inner, group.total});
    const double naming = ln(std::max<double>(2, static_cast<double>(communities.size())));

    Labels sole = found.partition.labels;  // the community of a node that has but one
    double common = PRIOR;
    for (unsigned round = 0; round < SHARING_ROUNDS; ++round) {
        std::vector<Sharing> sharing(workers.count(),
                                     Sharing(network, found, shares, sole, communities,
                                             naming + ln((1 - common) / common), naming));
        if (round > 0) {
            // Sums of products aren't exact, so each is made in the order of the nodes.
            std::vector<AccWeight> pulls(shares.parts.size());
            workers.share(nodes, 1024, [&](Size first, Size last, unsigned worker) {
                for (Size i = first; i < last; ++i) {
                    sharing[worker].pulls(static_cast<Id>(i));
                    for (Size at = shares.first[i]; at < shares.first[i + 1]; ++at)
                        pulls[at] = sharing[worker].pull(shares.parts[at].community);
                }
            });
            for (Community& community : communities) community = {};
            for (Size i = 0; i < nodes; ++i)
                for (Size at = shares.first[i]; at < shares.first[i + 1]; ++at) {
                    const auto share = static_cast<AccWeight>(shares.parts[at].share);
                    Community& community = communities[shares.parts[at].community];
                    community.inner += share * pulls[at];
                    community.total += share * network.items[i].total;
                }
        }

        std::vector<Part> parts;
        std::mutex mutex;
        std::atomic<Size> changed{0};
        std::atomic<Size> shared{0};
        workers.share(nodes, 1024, [&](Size first, Size last, unsigned worker) {
            Part part{first, {}, {}};
            std::vector<CommunityShare> mine;
            Size others = 0;
            Size several = 0;
            for (Size i = first; i < last; ++i) {
                sharing[worker].decide(static_cast<Id>(i), mine);
                others += !sameCommunities(mine, shares.of(i));
                several += mine.size() > 1;
                part.counts.push_back(static_cast<Id>(mine.size()));
                part.shares.insert(part.shares.end(), mine.begin(), mine.end());
            }
            changed += others;
            shared += several;
            const std::lock_guard lock(mutex);
            parts.push_back(std::move(part));
        });
        shares = joined(parts, nodes);
        for (Id i = 0; i < nodes; ++i)
            sole[i] = shares.of(i).size() == 1 ? shares.of(i).front().community : ID_NONE;
        common = std::clamp(static_cast<double>(shared) / nodes, 1.0 / nodes, 0.5);
        if (changed * FEW <= nodes) break;
    }
    return shares;
}

}  // namespace vorl::detail
