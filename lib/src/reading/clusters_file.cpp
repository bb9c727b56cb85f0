#include "settling.hpp"

#include <vorl/reading/wording.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vorl {

namespace {

/// The members of each node of a file, in the file's order.
class Owners {
public:
    explicit Owners(const ClustersFile& file) : m_members(file.members.size()) {
        for (std::size_t i = 0; i < m_members.size(); ++i)
            m_members[i] = static_cast<std::uint32_t>(i);
        std::sort(m_members.begin(), m_members.end(), [&file](std::uint32_t a, std::uint32_t b) {
            return std::pair(file.members[a], a) < std::pair(file.members[b], b);
        });
    }

    /// Calls the operation with the members of each node, nodes in ascending order.
    template <class OperationT>
    void forEach(const ClustersFile& file, OperationT operation) const {
        for (std::size_t begin = 0, end = 0; begin < m_members.size(); begin = end) {
            const Id node = file.members[m_members[begin]];
            while (end < m_members.size() && file.members[m_members[end]] == node) ++end;
            operation(std::span(m_members).subspan(begin, end - begin));
        }
    }

private:
    std::vector<std::uint32_t> m_members;
};

/// The shares of one node.
struct NodeShares {
    std::vector<Share> shares;
    bool even = true;      ///< none is stated
    bool partial = false;  ///< some are stated, others aren't
    double sum = 1;        ///< before scaling
    bool scaled = false;
};

Share accumulated(const std::vector<Share>& shares) {
    Share sum = 0;
    for (Share share : shares) sum += share;
    return sum;
}

/// Scales shares so that they add up to 1, also when they are added up at 32 bits: each takes over
/// the rounding of those before it.
void scale(std::vector<Share>& shares, double sum) {
    constexpr Share least = std::numeric_limits<Share>::min();
    const Share most = std::nextafter(Share{1}, Share{0});
    double target = 0;
    Share reached = 0;
    for (Share& share : shares) {
        target += static_cast<double>(share) / sum;
        share = std::clamp(static_cast<Share>(target - static_cast<double>(reached)), least, most);
        reached += share;
    }
}

NodeShares sharesOf(const ClustersFile& file, std::span<const std::uint32_t> members) {
    NodeShares result;
    const Size count = members.size();
    const Share even = Share{1} / static_cast<Share>(count);
    result.shares.assign(count, even);
    if (count == 1 && (file.shares.empty() || file.shares[members[0]] == 0)) return result;
    if (!file.shares.empty()) {
        Size stated = 0;
        for (std::uint32_t member : members) {
            const Share share = file.shares[member];
            stated += share != 0;
            result.even = result.even && (share == 0 || share == 1);
        }
        result.partial = !result.even && stated < count;
        for (std::size_t i = 0; i < count && !result.even; ++i)
            if (const Share share = file.shares[members[i]]; share != 0) result.shares[i] = share;
    }
    // Beside a smaller stated share one of exactly 1 would count as not stated.
    const bool whole = count > 1 && std::find(result.shares.begin(), result.shares.end(),
                                              Share{1}) != result.shares.end();
    if (whole || !equal(accumulated(result.shares), 1, count)) {
        result.sum = 0;
        for (Share share : result.shares) result.sum += static_cast<double>(share);
        result.scaled = true;
        if (count == 1)
            result.shares[0] = 1;
        else
            scale(result.shares, result.sum);
    }
    return result;
}

/// The line that tells of a member.
std::size_t lineOf(const ClustersFile& file, std::uint32_t member) {
    const auto next = std::upper_bound(file.clusters.begin(), file.clusters.end(), member,
                                       [](std::size_t place, const ClustersFile::Cluster& cluster) {
                                           return place < cluster.begin;
                                       });
    return file.lineOf(*std::prev(next), member);
}

}  // namespace

std::vector<Share> ClustersFile::completeShares() const {
    std::vector<Share> result(members.size());
    Owners(*this).forEach(*this, [&](std::span<const std::uint32_t> places) {
        const NodeShares own = sharesOf(*this, places);
        for (std::size_t i = 0; i < places.size(); ++i) result[places[i]] = own.shares[i];
    });
    return result;
}

std::string ClustersFile::strictText(Size told, bool names) const {
    std::vector<Share> stated(members.size());
    bool fuzzy = false;
    Owners(*this).forEach(*this, [&](std::span<const std::uint32_t> places) {
        const NodeShares own = sharesOf(*this, places);
        if (places.size() == 1 || (own.even && !own.scaled)) return;
        fuzzy = true;
        for (std::size_t i = 0; i < places.size(); ++i) stated[places[i]] = own.shares[i];
    });
    std::string text = "# Clusters: " + std::to_string(clusters.size()) +
                       ", Nodes: " + std::to_string(std::max(told, nodes.size())) +
                       ", Fuzzy: " + (fuzzy ? "1" : "0") +
                       ", Numbered: " + (numbered && !clusters.empty() ? "1\n" : "0\n");
    text.reserve(text.size() + (fuzzy ? 20 : 11) * members.size() + 13 * clusters.size());
    for (const Cluster& cluster : clusters) {
        if (numbered) text += std::to_string(cluster.id) + "> ";
        for (std::size_t i = cluster.begin; i < cluster.end; ++i) {
            naming::appendQuoted(text, members[i], names ? labels.get() : nullptr);
            if (stated[i] != 0) text += ":" + number(static_cast<double>(stated[i]));
            text += ' ';
        }
        text.back() = '\n';
    }
    return text;
}

std::string ClustersFile::deviationsText(bool withShares) const {
    std::string text;
    for (const Deviation& deviation : deviations)
        if (withShares || !deviation.ofShares())
            text += (text.empty() ? "" : "; ") + deviation.found + ": " + deviation.remedy;
    return text;
}

void ClustersFile::requireStrict() const {
    if (!deviations.empty()) throw InputError::at(name, deviations[0].line, deviations[0].found);
}

void ClustersFile::requireClusters() const {
    if (clusters.empty())
        throw InputError(name + ": there are no clusters, at least one is expected");
}

void ClustersFile::requireNodes(std::vector<Id> ids, const std::string& network,
                                const std::shared_ptr<Labels>& known) const {
    std::sort(ids.begin(), ids.end());
    // Names of different tables have nothing to do with each other.
    const bool foreign = labels && labels != known;
    if (!foreign && std::includes(ids.begin(), ids.end(), nodes.begin(), nodes.end())) return;
    for (const Cluster& cluster : clusters)
        for (std::size_t member = cluster.begin; member < cluster.end; ++member)
            if ((foreign && labels->has(members[member])) ||
                !std::binary_search(ids.begin(), ids.end(), members[member]))
                throw InputError::at(name, lineOf(cluster, member),
                                     "the node " + nodeName(members[member]) +
                                         " isn't in the network" +
                                         (network.empty() ? "" : " " + network));
}

void detail::settleShares(ClustersFile& file) {
    if (file.shares.empty()) return;
    file.shares.resize(file.members.size());
    if (file.severalLevels) return;
    Size leftOut = 0;
    Size rounded = 0;
    Size unbalanced = 0;
    std::uint32_t firstLeftOut = 0;
    std::uint32_t firstRounded = 0;
    std::uint32_t firstUnbalanced = 0;
    double sum = 0;
    Owners(file).forEach(file, [&](std::span<const std::uint32_t> members) {
        const NodeShares shares = sharesOf(file, members);
        if (shares.partial && leftOut++ == 0) firstLeftOut = members[0];
        if (!shares.scaled || shares.even) return;
        // Half a unit of the sixth digit for each share.
        const double rounding = 5e-7 * static_cast<double>(members.size());
        if (std::abs(shares.sum - 1) <= rounding + detail::WEIGHT_EPS) {
            if (rounded++ == 0) firstRounded = members[0];
        } else if (unbalanced++ == 0) {
            firstUnbalanced = members[0];
            sum = shares.sum;
        }
    });
    const auto nodes = [&file](Size count, std::uint32_t first) {
        const std::string node = file.nodeName(file.members[first]);
        return count == 1 ? "node " + node : grouped(count) + " nodes (the first is " + node + ")";
    };
    if (leftOut != 0)
        file.deviations.push_back(
            {Deviation::SHARES_LEFT_OUT, lineOf(file, firstLeftOut),
             "shares in some of its clusters only for " + nodes(leftOut, firstLeftOut),
             "the others are even ones"});
    if (rounded != 0)
        file.deviations.push_back(
            {Deviation::SHARES_ROUNDED, lineOf(file, firstRounded),
             "shares rounded to six digits for " + nodes(rounded, firstRounded),
             "scaled to add up to 1"});
    if (unbalanced != 0)
        file.deviations.push_back({Deviation::SHARES_UNBALANCED, lineOf(file, firstUnbalanced),
                                   "shares that don't add up to 1 for " +
                                       nodes(unbalanced, firstUnbalanced) + ", but to " +
                                       number(sum, 6),
                                   "scaled to add up to 1"});
}

}  // namespace vorl
