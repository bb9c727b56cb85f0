#include <vorl/reading/clusters_file.hpp>

#include <vorl/reading/tokens.hpp>
#include <vorl/reading/wording.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
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

class Reader {
public:
    explicit Reader(const std::string& name) { m_file.name = name; }

    ClustersFile read(std::string_view text) {
        if (text.starts_with(BYTE_ORDER_MARK)) text.remove_prefix(BYTE_ORDER_MARK.size());
        while (!text.empty()) {
            ++m_line;
            std::string_view line = takeLine(text);
            if (line.ends_with('\r')) line.remove_suffix(1);
            if (std::memchr(line.data(), '\0', line.size()))
                throw fault("a NUL byte: the file is binary, lines of text are expected");
            line = trimFront(line);
            if (line.empty()) continue;
            if (line.front() != '#')
                readCluster(line);
            else if (m_lines == 0 && m_header == 0)
                readHeader(trimFront(line.substr(1)));
        }
        m_file.nodes = m_file.members;
        std::sort(m_file.nodes.begin(), m_file.nodes.end());
        m_file.nodes.erase(std::unique(m_file.nodes.begin(), m_file.nodes.end()),
                           m_file.nodes.end());
        findDeviations();
        return std::move(m_file);
    }

private:
    InputError fault(const std::string& what) const {
        return InputError::at(m_file.name, m_line, what);
    }

    /// The value of a key of the header, if one follows.
    std::optional<Size> headerValue(std::string_view& text, const char* key) {
        if (text.empty()) return std::nullopt;
        const std::string_view token = takeValue(text);
        std::uint32_t value = 0;
        const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), value);
        if (token.empty() || err != std::errc() || last != token.data() + token.size())
            throw fault(std::string("the header's \"") + key + "\" is " + quoted(token) +
                        ", a whole number below 4294967296 is expected");
        return value;
    }

    void readHeader(std::string_view text) {
        if (!takeKey(text, "clusters:")) return;
        m_header = m_line;
        m_toldClusters = headerValue(text, "Clusters:");
        if (takeKey(text, "nodes:")) m_file.toldNodes = headerValue(text, "Nodes:");
        if (takeKey(text, "fuzzy:")) headerValue(text, "Fuzzy:");
        if (takeKey(text, "numbered:")) m_toldNumbered = headerValue(text, "Numbered:");
    }

    Id toId(std::string_view token, const char* what) const {
        return vorl::toId(token, what, [this](const std::string& told) { return fault(told); });
    }

    Share toShare(std::string_view token, Id node) const {
        Share share = 0;
        const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), share);
        // Shares that 32 bits hold with a part of their digits only are refused by the library.
        if (err != std::errc() || last != token.data() + token.size() ||
            !(share >= std::numeric_limits<Share>::min() && share <= 1))
            throw fault("the share of node " + std::to_string(node) + " is " + quoted(token) +
                        ", a number above 0 and up to 1 is expected");
        return share;
    }

    /// Cuts the cluster's id off the line.
    Id readNumber(std::string_view& line) const {
        const std::size_t end = line.find_first_not_of("0123456789");
        if (end == 0 || end == std::string_view::npos || line[end] != '>')
            throw fault("the line begins with " + quoted(nextToken(line)) +
                        ", a cluster's id directly followed by \">\" is expected");
        const Id id = toId(line.substr(0, end), "cluster's id");
        line.remove_prefix(end + 1);
        return id;
    }

    void readCluster(std::string_view line) {
        if (m_lines++ == 0) {
            const std::size_t digits = line.find_first_not_of("0123456789");
            m_file.numbered = m_toldNumbered ? *m_toldNumbered != 0
                                             : digits != 0 && digits != std::string_view::npos &&
                                                   line[digits] == '>';
        }
        ClustersFile::Cluster cluster;
        cluster.line = m_line;
        cluster.begin = m_file.members.size();
        if (m_file.numbered) cluster.id = readNumber(line);
        for (std::string_view token = nextToken(line); !token.empty(); token = nextToken(line)) {
            const std::size_t colon = std::min(token.find(':'), token.size());
            const Id node = toId(token.substr(0, colon), "node");
            m_file.members.push_back(node);
            if (colon != token.size()) {
                m_file.shares.resize(m_file.members.size());
                m_file.shares.back() = toShare(token.substr(colon + 1), node);
            }
        }
        cluster.end = m_file.members.size();
        if (cluster.end > std::numeric_limits<std::uint32_t>::max())
            throw fault("more than 4294967295 members up to here");
        if (cluster.begin == cluster.end) {
            if (m_emptyClusters++ == 0) m_firstEmpty = m_line;
            return;
        }
        requireDistinct(m_file.membersOf(cluster));
        m_file.clusters.push_back(cluster);
    }

    void requireDistinct(std::span<const Id> members) {
        if (std::adjacent_find(members.begin(), members.end(), std::greater_equal<>()) ==
            members.end())
            return;
        m_sorted.assign(members.begin(), members.end());
        std::sort(m_sorted.begin(), m_sorted.end());
        const auto twice = std::adjacent_find(m_sorted.begin(), m_sorted.end());
        if (twice != m_sorted.end())
            throw fault("node " + std::to_string(*twice) +
                        " stands twice in the line, each member once is expected");
    }

    void deviation(Deviation::Kind kind, std::size_t line, const std::string& found,
                   const char* remedy) {
        m_file.deviations.push_back({kind, line, found, remedy});
    }

    void findDeviations() {
        if (m_toldClusters && *m_toldClusters != 0 && *m_toldClusters != m_lines)
            deviation(Deviation::CLUSTERS_COUNT, m_header,
                      "the header tells of " + counted(*m_toldClusters, "cluster") +
                          ", the file has " + grouped(m_lines),
                      "the latter counts");
        if (m_file.toldNodes && *m_file.toldNodes != 0 && *m_file.toldNodes < m_file.nodes.size())
            deviation(Deviation::NODES_COUNT, m_header,
                      "the header tells of " + counted(*m_file.toldNodes, "node") +
                          ", the file has " + grouped(m_file.nodes.size()),
                      "the latter counts");
        if (m_file.numbered && !m_toldNumbered)
            deviation(Deviation::UNTOLD_NUMBERS,
                      m_file.clusters.empty() ? m_firstEmpty : m_file.clusters.front().line,
                      "the clusters are numbered, which the header doesn't tell",
                      "the numbers are read");
        if (m_emptyClusters != 0)
            deviation(Deviation::EMPTY_CLUSTERS, m_firstEmpty,
                      counted(m_emptyClusters, "cluster") + " without members", "left out");
        if (m_file.shares.empty()) return;
        m_file.shares.resize(m_file.members.size());
        findShareDeviations();
    }

    void findShareDeviations() {
        Size leftOut = 0;
        Size rounded = 0;
        Size unbalanced = 0;
        std::uint32_t firstLeftOut = 0;
        std::uint32_t firstRounded = 0;
        std::uint32_t firstUnbalanced = 0;
        double sum = 0;
        Owners(m_file).forEach(m_file, [&](std::span<const std::uint32_t> members) {
            const NodeShares shares = sharesOf(m_file, members);
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
        const auto nodes = [this](Size count, std::uint32_t first) {
            const std::string node = std::to_string(m_file.members[first]);
            return count == 1 ? "node " + node
                              : grouped(count) + " nodes (the first is " + node + ")";
        };
        if (leftOut != 0)
            deviation(Deviation::SHARES_LEFT_OUT, lineOf(firstLeftOut),
                      "shares in some of its clusters only for " + nodes(leftOut, firstLeftOut),
                      "the others are even ones");
        if (rounded != 0)
            deviation(Deviation::SHARES_ROUNDED, lineOf(firstRounded),
                      "shares rounded to six digits for " + nodes(rounded, firstRounded),
                      "scaled to add up to 1");
        if (unbalanced != 0)
            deviation(Deviation::SHARES_UNBALANCED, lineOf(firstUnbalanced),
                      "shares that don't add up to 1 for " + nodes(unbalanced, firstUnbalanced) +
                          ", but to " + number(sum, 6),
                      "scaled to add up to 1");
    }

    std::size_t lineOf(std::uint32_t member) const {
        const auto next =
            std::upper_bound(m_file.clusters.begin(), m_file.clusters.end(), member,
                             [](std::size_t place, const ClustersFile::Cluster& cluster) {
                                 return place < cluster.begin;
                             });
        return std::prev(next)->line;
    }

    ClustersFile m_file;
    std::size_t m_line = 0;
    std::size_t m_header = 0;  ///< its line, 0 if there is none
    std::optional<Size> m_toldClusters;
    std::optional<Size> m_toldNumbered;
    Size m_lines = 0;  ///< lines of clusters
    Size m_emptyClusters = 0;
    std::size_t m_firstEmpty = 0;
    std::vector<Id> m_sorted;
};

}  // namespace

std::vector<Share> ClustersFile::completeShares() const {
    std::vector<Share> result(members.size());
    Owners(*this).forEach(*this, [&](std::span<const std::uint32_t> places) {
        const NodeShares own = sharesOf(*this, places);
        for (std::size_t i = 0; i < places.size(); ++i) result[places[i]] = own.shares[i];
    });
    return result;
}

std::string ClustersFile::strictText() const {
    std::vector<Share> stated(members.size());
    bool fuzzy = false;
    Owners(*this).forEach(*this, [&](std::span<const std::uint32_t> places) {
        const NodeShares own = sharesOf(*this, places);
        if (places.size() == 1 || (own.even && !own.scaled)) return;
        fuzzy = true;
        for (std::size_t i = 0; i < places.size(); ++i) stated[places[i]] = own.shares[i];
    });
    std::string text = "# Clusters: " + std::to_string(clusters.size()) +
                       ", Nodes: " + std::to_string(nodes.size()) +
                       ", Fuzzy: " + (fuzzy ? "1" : "0") +
                       ", Numbered: " + (numbered ? "1\n" : "0\n");
    text.reserve(text.size() + (fuzzy ? 20 : 11) * members.size() + 13 * clusters.size());
    for (const Cluster& cluster : clusters) {
        if (numbered) text += std::to_string(cluster.id) + "> ";
        for (std::size_t i = cluster.begin; i < cluster.end; ++i) {
            text += std::to_string(members[i]);
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

void ClustersFile::requireNodes(std::vector<Id> ids, const std::string& network) const {
    std::sort(ids.begin(), ids.end());
    if (std::includes(ids.begin(), ids.end(), nodes.begin(), nodes.end())) return;
    for (const Cluster& cluster : clusters)
        for (const Id id : membersOf(cluster))
            if (!std::binary_search(ids.begin(), ids.end(), id))
                throw InputError::at(name, cluster.line,
                                     "the node " + std::to_string(id) + " isn't in the network" +
                                         (network.empty() ? "" : " " + network));
}

ClustersFile parseClusters(std::string_view text, const std::string& name) {
    return Reader(name).read(text);
}

}  // namespace vorl
