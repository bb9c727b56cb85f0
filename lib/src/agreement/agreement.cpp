#include <vorl/agreement/agreement.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <random>
#include <utility>

namespace vorl {

namespace {

Size pairsOf(Size count) { return count == 0 ? 0 : count * (count - 1) / 2; }

/// Entropies in bits of events that w of n nodes see: -w/n log2(w/n), without the factor 1/n.
class Entropy {
public:
    explicit Entropy(Size nodes) : m_nodes(static_cast<double>(nodes)) {
        m_small.resize(std::min<Size>(nodes + 1, 1 << 14));
        for (Size count = 0; count < m_small.size(); ++count) m_small[count] = computed(count);
    }

    double operator()(Size count) const {
        return count < m_small.size() ? m_small[count] : computed(count);
    }

private:
    double computed(Size count) const {
        const double value = static_cast<double>(count);
        return count == 0 ? 0 : -value * std::log2(value / m_nodes);
    }

    double m_nodes;
    std::vector<double> m_small;
};

/// What is gathered of the clusters of one clustering.
struct Side {
    Side(const Cover& cover, const Entropy& entropy) {
        const Size nodes = cover.nodes();
        const Size clusters = cover.clusters();
        sizes.reserve(clusters);
        whole.reserve(clusters);
        for (Id cluster = 0; cluster < clusters; ++cluster) {
            const Size size = cover.members(cluster).size();
            sizes.push_back(size);
            whole.push_back(entropy(size) + entropy(nodes - size));
            // Clusters without a common node count for the other's conditional entropy only if
            // their sizes sum up to half of all nodes. With shares b and c of the nodes inside and
            // a outside of both, the condition asks h(a) >= h(b) + h(c) >= h(b + c) = h(1 - a).
            if (4 * size >= nodes) large.push_back(cluster);
        }
        rest = whole;
        bestF1.assign(clusters, 0);
    }

    std::vector<Size> sizes;
    std::vector<double> whole;   ///< entropy of each cluster
    std::vector<double> rest;    ///< the part that the best cluster of the other side doesn't tell
    std::vector<double> bestF1;  ///< with a cluster of the other side
    std::vector<Id> large;       ///< clusters of at least a quarter of all nodes
};

/// What is gathered of the pairs of clusters of two partitions.
struct CommonNodes {
    Size pairs = 0;  ///< pairs of nodes that are together on both sides
    double information = 0;
};

/// Walks over the pairs of clusters, the rows being those of the first clustering.
class PairWalk {
public:
    PairWalk(const Cover& first, const Cover& second)
        : m_first(first),
          m_second(second),
          m_nodes(first.nodes()),
          m_entropy(m_nodes),
          x(first, m_entropy),
          y(second, m_entropy),
          m_common(second.clusters()) {}

    void run() {
        for (Id i = 0; i < m_first.clusters(); ++i) {
            for (Id node : m_first.members(i))
                for (Id j : m_second.clustersOf(node))
                    if (m_common[j]++ == 0) m_touched.push_back(j);
            for (Id j : m_touched) overlapping(i, j, m_common[j]);
            if (4 * x.sizes[i] >= m_nodes) {
                for (Id j = 0; j < m_second.clusters(); ++j)
                    if (m_common[j] == 0) conditional(i, j, 0);
            } else {
                for (Id j : y.large)
                    if (m_common[j] == 0) conditional(i, j, 0);
            }
            for (Id j : m_touched) m_common[j] = 0;
            m_touched.clear();
        }
    }

private:
    void overlapping(Id i, Id j, Size common) {
        conditional(i, j, common);
        const double both = static_cast<double>(common);
        const double f1 = 2 * both / static_cast<double>(x.sizes[i] + y.sizes[j]);
        x.bestF1[i] = std::max(x.bestF1[i], f1);
        y.bestF1[j] = std::max(y.bestF1[j], f1);
        if (!partitions) return;
        const double nodes = static_cast<double>(m_nodes);
        const double product = static_cast<double>(x.sizes[i]) * static_cast<double>(y.sizes[j]);
        together.pairs += pairsOf(common);
        together.information += both / nodes * std::log(both * nodes / product);
    }

    /// Takes the pair into account for the conditional entropies of both clusters, unless each
    /// tells more of the other's complement.
    void conditional(Id i, Id j, Size both) {
        const Size onlyX = x.sizes[i] - both;
        const Size onlyY = y.sizes[j] - both;
        const double inside = m_entropy(both);
        const double outside = m_entropy(m_nodes - onlyX - onlyY - both);
        const double left = m_entropy(onlyX);
        const double right = m_entropy(onlyY);
        if (outside + inside < left + right) return;
        const double joint = (outside + inside) + (left + right);
        x.rest[i] = std::min(x.rest[i], std::max(0., joint - y.whole[j]));
        y.rest[j] = std::min(y.rest[j], std::max(0., joint - x.whole[i]));
    }

    const Cover& m_first;
    const Cover& m_second;
    Size m_nodes;
    Entropy m_entropy;

public:
    Side x;
    Side y;
    CommonNodes together;
    bool partitions = m_first.isPartition() && m_second.isPartition();

private:
    std::vector<std::uint32_t> m_common;  ///< nodes that the row has in common with each cluster
    std::vector<Id> m_touched;
};

double sum(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.);
}

double mean(const std::vector<double>& values) {
    return sum(values) / static_cast<double>(values.size());
}

double nmiMax(const Side& x, const Side& y) {
    const double top = std::max(sum(x.whole), sum(y.whole));
    if (top == 0) return 1;
    return 0.5 * (sum(x.whole) - sum(x.rest) + sum(y.whole) - sum(y.rest)) / top;
}

/// Mean part of the entropies that the other side doesn't tell. A cluster of all nodes has none
/// and counts as told if the other side has one, too.
double meanRest(const Side& own, const Side& other) {
    const bool otherHasAll =
        std::find(other.whole.begin(), other.whole.end(), 0.) != other.whole.end();
    double result = 0;
    for (std::size_t i = 0; i < own.whole.size(); ++i) {
        if (own.whole[i] > 0)
            result += own.rest[i] / own.whole[i];
        else if (!otherHasAll)
            result += 1;
    }
    return result / static_cast<double>(own.whole.size());
}

/// Entropy in nats of the cluster of a node.
double entropyOf(const std::vector<Size>& sizes, Size count) {
    double result = 0;
    for (Size size : sizes) {
        const double part = static_cast<double>(size) / static_cast<double>(count);
        result -= part * std::log(part);
    }
    return result;
}

/// Numbers of pairs of nodes by the number of clusters that they have in common, without those that
/// have none.
struct TogetherCounts {
    std::vector<double> pairs;  ///< at place t: pairs that are in t + 1 common clusters

    void add(std::size_t times, double count) {
        if (pairs.size() < times) pairs.resize(times);
        pairs[times - 1] += count;
    }
    double total() const { return sum(pairs); }
};

/// @param disagree  number of pairs that aren't together equally often on both sides
/// @param every     number of all pairs
double omegaOf(const TogetherCounts& x, const TogetherCounts& y, double disagree, double every) {
    // All pairs less those expected to agree, without the difference of two large numbers.
    double expected = x.total() + y.total() - x.total() * (y.total() / every);
    for (std::size_t t = 0; t < std::min(x.pairs.size(), y.pairs.size()); ++t)
        expected -= x.pairs[t] * (y.pairs[t] / every);
    return expected == 0 ? 1 : 1 - disagree / expected;
}

double exactOmega(const Cover& x, const Cover& y) {
    const auto nodes = static_cast<Id>(std::max(x.clusteredNodes(), y.clusteredNodes()));
    std::array<const Cover*, 2> covers{&x, &y};
    std::vector<std::array<std::uint32_t, 2>> times(nodes);  // that each is with the node
    std::array<std::vector<Size>, 2> counts;
    // Where the members of each cluster stand that come behind the node of the walk.
    std::array<std::vector<std::uint32_t>, 2> behind;
    for (std::size_t side = 0; side < 2; ++side) {
        behind[side].resize(covers[side]->clusters());
        counts[side].resize(1);
    }
    std::vector<Id> partners;
    Size disagree = 0;
    for (Id node = 0; node < nodes; ++node) {
        for (std::size_t side = 0; side < 2; ++side)
            for (Id cluster : covers[side]->clustersOf(node))
                for (Id partner : covers[side]->members(cluster).subspan(++behind[side][cluster])) {
                    auto& both = times[partner];
                    if (both[0] == 0 && both[1] == 0) partners.push_back(partner);
                    ++both[side];
                }
        for (Id partner : partners) {
            const auto both = std::exchange(times[partner], {});
            disagree += both[0] != both[1];
            for (std::size_t side = 0; side < 2; ++side) {
                const std::uint32_t count = both[side];
                if (counts[side].size() <= count) counts[side].resize(count + 1);
                ++counts[side][count];
            }
        }
        partners.clear();
    }
    std::array<TogetherCounts, 2> together;
    for (std::size_t side = 0; side < 2; ++side)
        for (std::size_t t = 1; t < counts[side].size(); ++t)
            together[side].add(t, static_cast<double>(counts[side][t]));
    return omegaOf(together[0], together[1], static_cast<double>(disagree),
                   static_cast<double>(pairsOf(x.nodes())));
}

/// The number of clusters that two nodes have in common.
std::size_t timesTogether(const Cover& cover, Id u, Id v) {
    const auto a = cover.clustersOf(u);
    const auto b = cover.clustersOf(v);
    std::size_t result = 0;
    for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
        result += a[i] == b[j];
        const bool next = a[i] <= b[j];
        j += b[j] <= a[i];
        i += next;
    }
    return result;
}

/// Estimates over the pairs that a clustering puts together.
struct PairSample {
    TogetherCounts together;
    double equal = 0;  ///< pairs that the other clustering puts together equally often
    double both = 0;   ///< pairs that it puts together, too
};

/// Draws pairs inside clusters, evenly spread over the clusters' pairs. A pair that is together
/// t times is drawn t times as often, and so counts 1/t of a draw.
PairSample drawPairs(const Cover& x, const Cover& y, Size samples) {
    PairSample result;
    const Size inner = x.innerPairs();
    if (inner == 0) return result;
    struct Draws {
        Size all = 0;
        Size equal = 0;
        Size both = 0;
    };
    std::vector<Draws> draws;  // by the number of clusters in common
    std::mt19937_64 random(1);
    const double step = static_cast<double>(inner) / static_cast<double>(samples);
    Id cluster = 0;
    double end = static_cast<double>(pairsOf(x.members(0).size()));
    for (Size draw = 0; draw < samples; ++draw) {
        const double offset = static_cast<double>(random() >> 11) * 0x1p-53;
        const double place = (static_cast<double>(draw) + offset) * step;
        while (place >= end && cluster + 1 < x.clusters())
            end += static_cast<double>(pairsOf(x.members(++cluster).size()));
        const auto members = x.members(cluster);
        if (members.size() < 2) continue;
        const std::size_t a = random() % members.size();
        std::size_t b = random() % (members.size() - 1);
        b += b >= a;
        const std::size_t times = timesTogether(x, members[a], members[b]);
        const std::size_t otherTimes = timesTogether(y, members[a], members[b]);
        if (draws.size() < times) draws.resize(times);
        ++draws[times - 1].all;
        draws[times - 1].equal += times == otherTimes;
        draws[times - 1].both += otherTimes != 0;
    }
    for (std::size_t t = 1; t <= draws.size(); ++t) {
        const double weight = step / static_cast<double>(t);
        result.together.add(t, weight * static_cast<double>(draws[t - 1].all));
        result.equal += weight * static_cast<double>(draws[t - 1].equal);
        result.both += weight * static_cast<double>(draws[t - 1].both);
    }
    return result;
}

double sampledOmega(const Cover& x, const Cover& y, Size samples) {
    const PairSample fromX = drawPairs(x, y, samples);
    const PairSample fromY = drawPairs(y, x, samples);
    const double both = 0.5 * (fromX.both + fromY.both);
    const double equal = 0.5 * (fromX.equal + fromY.equal);
    const double disagree = fromX.together.total() + fromY.together.total() - both - equal;
    return omegaOf(fromX.together, fromY.together, disagree,
                   static_cast<double>(pairsOf(x.nodes())));
}

}  // namespace

Cover::Cover(Size nodes, const std::vector<std::vector<Id>>& clusters) : m_nodes(nodes) {
    std::vector<std::size_t> ends;
    std::vector<Id> members;
    for (const auto& cluster : clusters) {
        members.insert(members.end(), cluster.begin(), cluster.end());
        ends.push_back(members.size());
    }
    *this = Cover(nodes, ends, members);
}

Cover::Cover(Size nodes, std::span<const std::size_t> ends, std::span<const Id> members)
    : m_nodes(nodes) {
    m_members.begins.push_back(0);
    for (std::size_t end : ends)
        if (end != m_members.begins.back()) m_members.begins.push_back(end);
    m_members.items.assign(members.begin(), members.end());
    const auto last = std::max_element(members.begin(), members.end());
    m_clusters = transposed(m_members, last == members.end() ? 0 : Size{*last} + 1);
    m_members = transposed(m_clusters, clusters());  // puts the members in order
}

Cover::Lists Cover::transposed(const Lists& lists, Size count) {
    Lists result;
    result.begins.resize(count + 2);
    for (Id item : lists.items) ++result.begins[item + 2];
    std::partial_sum(result.begins.begin(), result.begins.end(), result.begins.begin());
    result.items.resize(lists.items.size());
    for (std::size_t index = 0; index + 1 < lists.begins.size(); ++index)
        for (Id item : lists.list(index))
            result.items[result.begins[item + 1]++] = static_cast<Id>(index);
    result.begins.pop_back();
    return result;
}

Size Cover::coveredNodes() const {
    Size result = 0;
    for (Size node = 0; node < clusteredNodes(); ++node) result += !m_clusters.list(node).empty();
    return result;
}

Size Cover::sharedNodes() const {
    Size result = 0;
    for (Size node = 0; node < clusteredNodes(); ++node) result += m_clusters.list(node).size() > 1;
    return result;
}

bool Cover::isPartition() const {
    return m_clusters.items.size() == nodes() && coveredNodes() == nodes();
}

Size Cover::innerPairs() const {
    Size result = 0;
    for (Size cluster = 0; cluster < clusters(); ++cluster)
        result += pairsOf(m_members.list(cluster).size());
    return result;
}

Agreement agreement(const Cover& first, const Cover& second, const OmegaLimits& limits) {
    PairWalk walk(first, second);
    walk.run();
    Agreement result;
    result.nmiMax = nmiMax(walk.x, walk.y);
    result.nmiLfk = 1 - 0.5 * (meanRest(walk.x, walk.y) + meanRest(walk.y, walk.x));
    result.f1 = 0.5 * (mean(walk.x.bestF1) + mean(walk.y.bestF1));

    const Size pairs = std::max(first.innerPairs(), second.innerPairs());
    if (walk.partitions) {
        // Of partitions the omega index is the adjusted Rand index.
        const double inX = static_cast<double>(first.innerPairs());
        const double inY = static_cast<double>(second.innerPairs());
        const double inBoth = static_cast<double>(walk.together.pairs);
        const double every = static_cast<double>(pairsOf(first.nodes()));
        result.omega = every == 0 ? 1 : omegaOf({{inX}}, {{inY}}, inX + inY - 2 * inBoth, every);
        result.ari = result.omega;
        const double entropies =
            entropyOf(walk.x.sizes, first.nodes()) + entropyOf(walk.y.sizes, first.nodes());
        const double information = walk.together.information;
        result.nmi = entropies == 0 ? 1 : 2 * information / entropies;
        result.vi = std::max(0., entropies - 2 * information);
    } else if (pairsOf(first.nodes()) == 0) {
        result.omega = 1;
    } else if (pairs <= limits.exactPairs) {
        result.omega = exactOmega(first, second);
    } else {
        result.omega = sampledOmega(first, second, limits.samples);
        result.omegaSamples = limits.samples;
    }
    return result;
}

}  // namespace vorl
