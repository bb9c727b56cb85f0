// The reader of the format CNL.
#include "node_words.hpp"
#include "settling.hpp"

#include <vorl/reading/tokens.hpp>
#include <vorl/reading/wording.hpp>

#include <algorithm>
#include <charconv>
#include <functional>
#include <limits>
#include <utility>

namespace vorl {

namespace {

class Reader {
public:
    explicit Reader(std::shared_ptr<Labels> known) : m_words(std::move(known)) {}

    ClustersFile read(Lines& lines) {
        m_file.name = lines.name();
        while (lines.next()) {
            m_line = lines.number();
            const std::string_view line = trimFront(lines.line());
            if (line.empty()) continue;
            if (line.front() != '#')
                readCluster(line);
            else if (m_lines == 0 && m_header == 0)
                readHeader(trimFront(line.substr(1)));
        }
        m_file.labels = m_words.labels();
        detail::settleNodes(m_file, m_toldClusters.value_or(0));
        findDeviations();
        return std::move(m_file);
    }

private:
    InputError fault(const std::string& what) const {
        return InputError::at(m_file.name, m_line, what);
    }

    std::string nodeName(Id node) const { return naming::plain(node, m_words.labels().get()); }

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
        return vorl::toId(token, what, detail::faultsAt(m_file.name, m_line));
    }

    Share toShare(std::string_view token, Id node) const {
        Share share = 0;
        const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), share);
        // Shares that 32 bits hold with a part of their digits only are refused by the library.
        if (err != std::errc() || last != token.data() + token.size() ||
            !(share >= std::numeric_limits<Share>::min() && share <= 1))
            throw fault("the share of node " + nodeName(node) + " is " + quoted(token) +
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
        for (line = trimFront(line); !line.empty(); line = trimFront(line)) {
            const bool named = line.front() == '"';
            if (named && !detail::takeQuoted(line, m_name))
                throw fault("the quotes that begin with " + quoted(line) + " aren't closed");
            std::string_view token = named && !line.empty() && isBlank(line.front())
                                         ? std::string_view()
                                         : nextToken(line);
            const std::size_t colon = std::min(token.find(':'), token.size());
            if (named && colon != 0)
                throw fault(quoted(token) + " stands behind closing quotes, a blank is expected");
            const Id node = m_words.node(named ? std::string_view(m_name) : token.substr(0, colon),
                                         named, detail::faultsAt(m_file.name, m_line));
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
            throw fault("node " + nodeName(*twice) +
                        " stands twice in the line, each member once is expected");
    }

    void deviation(Deviation::Kind kind, std::size_t line, const std::string& found,
                   const char* remedy) {
        m_file.deviations.push_back({kind, line, found, remedy});
    }

    void findDeviations() {
        // Where all levels are in one file, the header counts what holds the nodes of another
        // cluster, too, which has no line of its own.
        const bool counts = m_toldClusters && *m_toldClusters != 0 &&
                            !(m_file.severalLevels && *m_toldClusters > m_lines);
        if (counts && *m_toldClusters != m_lines)
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
        detail::settleShares(m_file);
    }

    ClustersFile m_file;
    detail::NodeWords m_words;
    std::string m_name;  ///< the last one between quotes
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

ClustersFile parseClusters(Lines& lines, std::shared_ptr<Labels> known) {
    return Reader(std::move(known)).read(lines);
}

ClustersFile parseClusters(std::string_view text, const std::string& name) {
    TextSource source(text);
    Lines lines(source, name);
    return parseClusters(lines);
}

}  // namespace vorl
