// The reader of tables of memberships.
#include "json_text.hpp"
#include "node_words.hpp"
#include "settling.hpp"

#include <vorl/reading/cluster_levels.hpp>
#include <vorl/reading/tokens.hpp>
#include <vorl/reading/wording.hpp>

#include <algorithm>
#include <charconv>
#include <deque>
#include <limits>
#include <map>
#include <numeric>
#include <optional>
#include <set>
#include <utility>

namespace vorl {

namespace {

/// The words of a line, without quotes around them.
struct Words {
    std::vector<std::string_view> words;
    std::vector<bool> quoted;      ///< between double quotes
    std::deque<std::string> kept;  ///< what held doubled quotes

    std::size_t size() const { return words.size(); }
    /// Whether the clusters of the nodes follow; between quotes it is but a name.
    bool beginsVector() const;

    void clear();
    /// @param only what alone parts them; 0 for blanks, tabs, commas and semicolons
    void split(std::string_view line, char only = 0);
};

void Words::clear() {
    words.clear();
    quoted.clear();
    kept.clear();
}

void Words::split(std::string_view line, char only) {
    clear();
    const auto separates = [only](char c) {
        return only ? c == only : isBlank(c) || c == ',' || c == ';';
    };
    while (!line.empty()) {
        if (isBlank(line.front()) && line.front() != only) {
            line.remove_prefix(1);
            continue;
        }
        quoted.push_back(line.front() == '"');
        if (quoted.back() || line.front() == '\'') {
            std::size_t end = std::min(line.find(line.front(), 1), line.size());
            std::string_view rest = line;
            if (quoted.back() && line.substr(end).starts_with("\"\"") &&
                detail::takeQuoted(rest, kept.emplace_back())) {
                words.push_back(kept.back());
                line = rest;
            } else {
                words.push_back(line.substr(1, end - 1));
                line.remove_prefix(std::min(end + 1, line.size()));
            }
        } else {
            std::size_t end = 0;
            while (end < line.size() && !separates(line[end])) ++end;
            std::string_view word = line.substr(0, end);
            while (only && !word.empty() && isBlank(word.back())) word.remove_suffix(1);
            words.push_back(word);
            line.remove_prefix(end);
        }
        while (!line.empty() && isBlank(line.front()) && line.front() != only)
            line.remove_prefix(1);
        if (!line.empty() &&
            (only ? line.front() == only : line.front() == ',' || line.front() == ';'))
            line.remove_prefix(1);
    }
}

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), lowered(word)) != names.end();
}

bool Words::beginsVector() const { return !quoted[0] && isOneOf(words[0], {"*vertices"}); }

/// Where the words of a line stand.
struct Columns {
    std::size_t node = 0;
    std::size_t cluster = 1;
    std::optional<std::size_t> share;
    std::optional<std::size_t> level;
};

/// The columns of a line of names, if it is one.
std::optional<Columns> columnsOf(const std::vector<std::string_view>& words) {
    std::optional<std::size_t> node;
    std::optional<std::size_t> cluster;
    std::optional<std::size_t> share;
    std::optional<std::size_t> level;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string_view word = words[i];
        if (!node && isOneOf(word, {"node", "node_id", "nodeid", "id", "vertex", "name", "member"}))
            node = i;
        else if (!cluster &&
                 isOneOf(word, {"cluster", "cluster_id", "community", "community_id", "module",
                                "module_id", "group", "label", "class", "membership", "partition"}))
            cluster = i;
        else if (!share && isOneOf(word, {"share", "shares"}))
            share = i;
        else if (!level && isOneOf(word, {"level"}))
            level = i;
    }
    if (!node || !cluster) return std::nullopt;
    return Columns{*node, *cluster, share, level};
}

/// Whether a line begins an object in JSON, or a list of them.
bool beginsObject(std::string_view line) {
    if (line.starts_with('{')) return true;
    if (!line.starts_with('[')) return false;
    line = trimFront(line.substr(1));
    return line.empty() || line.starts_with('{');
}

class TableReader {
public:
    explicit TableReader(std::shared_ptr<Labels> known) : m_nodes(std::move(known)) {}

    ClustersFile read(Lines& lines) {
        m_file.name = lines.name();
        while (lines.next()) {
            m_line = lines.number();
            std::string_view line = trimFront(lines.line());
            if (line.empty()) continue;
            if (m_rows.empty() && m_named == 0 && beginsObject(line)) {
                readObjects(lines, line);
                break;
            }
            const bool comment = line.front() == '#' || line.front() == '%';
            if (comment) line.remove_prefix(1);
            m_words.split(line);
            if (m_words.size() == 0) continue;
            // Names may hold what else parts them.
            if (m_separator != 0 && m_words.size() > m_named) m_words.split(line, m_separator);
            m_text = line;
            if (comment) {
                if (m_rows.empty()) readNames();
            } else if (m_rows.empty() && m_named == 0 && m_words.beginsVector()) {
                m_vector = true;
            } else if (!m_rows.empty() || m_vector || !readNames()) {
                readRow();
            }
        }
        assemble();
        return std::move(m_file);
    }

private:
    struct Row {
        Id cluster;  ///< number by first appearance
        Id node;
        Share share;
        std::size_t line;
    };

    /// A cluster on a level.
    struct Standing {
        std::size_t line;  ///< the first one
        Size members = 0;
        std::uint64_t sum = 0;  ///< tells who they are
    };

    InputError fault(const std::string& what) const {
        return InputError::at(m_file.name, m_line, what);
    }

    std::string nodeName(Id node) const { return naming::plain(node, m_nodes.labels().get()); }

    /// Takes the names of columns, if the line has them.
    bool readNames() {
        const auto named = columnsOf(m_words.words);
        if (!named) return false;
        m_columns = *named;
        m_named = m_words.size();
        const std::size_t separator = m_text.find_first_of("\t;,");
        m_separator = separator == std::string_view::npos ? '\0' : m_text[separator];
        m_nodes.allowNames();
        return true;
    }

    /// Rows that are objects in JSON, each on its own or all of them in a list.
    void readObjects(Lines& lines, std::string_view line) {
        detail::JsonText text(lines, m_line, line);
        m_nodes.allowNames();
        const bool list = text.takeIf('[');
        while (text.peek() == '{') {
            readObject(text);
            readRow();
            if (list && !text.takeIf(',')) break;
        }
        if (list) text.expect(']');
        if (text.peek() != '\0')
            throw fault("found " + text.shown() + ", an object of a membership is expected");
    }

    void readObject(detail::JsonText& text) {
        m_words.clear();
        std::vector<std::string> keys;
        text.readObject([&](const std::string& key) {
            if (text.peek() == '{' || text.peek() == '[') return text.skip();
            keys.push_back(key);
            m_words.quoted.push_back(text.peek() == '"');
            m_words.words.push_back(m_words.kept.emplace_back(text.readScalar()));
        });
        if (m_named != 0 && keys == m_keys) return;
        if (m_named != 0) throw fault("the object has other keys than those before");
        const auto named = columnsOf({keys.begin(), keys.end()});
        if (!named)
            throw fault(
                "the object has no keys for a node and its cluster, such as \"node\" and "
                "\"cluster\"");
        m_columns = *named;
        m_named = keys.size();
        m_keys = std::move(keys);
    }

    std::string_view word(std::size_t column, const char* what) const {
        if (column >= m_words.size())
            throw fault("the line has " + counted(m_words.size(), "word") + ", a " + what +
                        " is expected in column " + std::to_string(column + 1));
        return m_words.words[column];
    }

    void readRow() {
        const Size number = m_rows.size() + 1;
        if (number > std::numeric_limits<std::uint32_t>::max())
            throw fault("more than 4294967295 members up to here");
        Row row{0, static_cast<Id>(number), 0, m_line};
        if (!m_vector) {
            const std::string_view token = word(m_columns.node, "node");
            row.node = m_nodes.node(token, m_named != 0 && m_words.quoted[m_columns.node],
                                    detail::faultsAt(m_file.name, m_line));
        }
        const std::string_view label = word(m_vector ? 0 : m_columns.cluster, "cluster");
        auto known = m_labels.find(label);
        if (known == m_labels.end())
            known = m_labels.emplace(label, static_cast<Id>(m_labels.size())).first;
        row.cluster = known->second;
        if (m_columns.level && !m_vector && !isFirstTold(row)) return;
        if (m_columns.share && !m_vector) {
            const std::string_view token = word(*m_columns.share, "share");
            const auto [last, err] =
                std::from_chars(token.data(), token.data() + token.size(), row.share);
            if (err != std::errc() || last != token.data() + token.size() ||
                !(row.share >= std::numeric_limits<Share>::min() && row.share <= 1))
                throw fault("the share of node " + nodeName(row.node) + " is " + quoted(token) +
                            ", a number above 0 and up to 1 is expected");
        }
        m_rows.push_back(row);
    }

    /// Notes the level of a row.
    /// @return false if the cluster stands on another level, too, whose rows tell of it
    bool isFirstTold(const Row& row) {
        const std::string_view level = word(*m_columns.level, "level");
        auto known = m_levels.find(level);
        if (known == m_levels.end())
            known = m_levels.emplace(level, static_cast<Id>(m_levels.size())).first;
        const auto [standing, isNew] =
            m_standings.try_emplace({row.cluster, known->second}, Standing{row.line});
        ++standing->second.members;
        standing->second.sum += row.node * std::uint64_t{0x9E3779B97F4A7C15} ^ row.node;
        if (row.cluster == m_firstLevels.size()) m_firstLevels.push_back(known->second);
        return m_firstLevels[row.cluster] == known->second;
    }

    /// The clusters of each level, lowest first, if there are several.
    std::vector<std::vector<Id>> toldLevels(const std::vector<Id>& places) {
        std::vector<std::vector<Id>> levels;
        if (m_levels.size() < 2) return levels;
        for (const auto& [at, standing] : m_standings) {
            const Standing& first = m_standings.at({at.first, m_firstLevels[at.first]});
            if (standing.members == first.members && standing.sum == first.sum) continue;
            m_line = standing.line;
            throw fault("the cluster has other members than on the level of line " +
                        std::to_string(first.line) + ", a name of its own is expected");
        }
        std::vector<std::pair<double, Id>> order;
        for (const auto& [level, number] : m_levels) {
            double value = 0;
            const auto [last, err] =
                std::from_chars(level.data(), level.data() + level.size(), value);
            const bool isNumber = err == std::errc() && last == level.data() + level.size();
            order.emplace_back(isNumber ? value : std::numeric_limits<double>::infinity(), number);
        }
        std::sort(order.begin(), order.end());
        std::vector<Id> ranks(order.size());
        for (Id i = 0; i < order.size(); ++i) ranks[order[i].second] = i;
        levels.resize(order.size());
        for (const auto& [at, standing] : m_standings)
            levels[ranks[at.second]].push_back(places[at.first]);
        for (auto& level : levels) std::sort(level.begin(), level.end());
        return levels;
    }

    /// The ids of the clusters, if all of their names are ids, each another one.
    std::vector<Id> ids() const {
        std::vector<Id> result(m_labels.size());
        std::set<Id> seen;
        for (const auto& [label, number] : m_labels) {
            std::uint32_t id = 0;
            const auto [last, err] = std::from_chars(label.data(), label.data() + label.size(), id);
            if (err != std::errc() || last != label.data() + label.size() || id == ID_NONE ||
                !seen.insert(id).second)
                return {};
            result[number] = id;
        }
        return result;
    }

    /// Puts the clusters together, by their ids or else as they appeared.
    void assemble() {
        const std::vector<Id> ids = this->ids();
        m_file.numbered = !ids.empty();
        std::vector<Id> ranks(m_labels.size());
        std::iota(ranks.begin(), ranks.end(), Id{0});
        if (m_file.numbered)
            std::sort(ranks.begin(), ranks.end(), [&](Id a, Id b) { return ids[a] < ids[b]; });
        std::vector<std::size_t> places(m_labels.size() + 1);
        for (const Row& row : m_rows) ++places[row.cluster];
        m_file.clusters.resize(m_labels.size());
        std::size_t end = 0;
        for (Id i = 0; i < ranks.size(); ++i) {
            auto& cluster = m_file.clusters[i];
            cluster.begin = end;
            end += std::exchange(places[ranks[i]], end);
            cluster.end = end;
            if (m_file.numbered) cluster.id = ids[ranks[i]];
        }
        m_file.members.resize(m_rows.size());
        m_file.lines.resize(m_rows.size());
        if (m_columns.share) m_file.shares.resize(m_rows.size());
        for (const Row& row : m_rows) {
            const std::size_t place = places[row.cluster]++;
            m_file.members[place] = row.node;
            m_file.lines[place] = row.line;
            if (m_columns.share) m_file.shares[place] = row.share;
        }
        for (auto& cluster : m_file.clusters) {
            cluster.line = m_file.lines[cluster.begin];
            requireDistinct(cluster);
        }
        m_file.labels = m_nodes.labels();
        std::vector<Id> rankOf(ranks.size());
        for (Id i = 0; i < ranks.size(); ++i) rankOf[ranks[i]] = i;
        m_file.toldLevels = toldLevels(rankOf);
        detail::settleNodes(m_file, 0);
        if (!m_file.toldLevels.empty()) m_file.severalLevels = true;
        detail::settleShares(m_file);
    }

    void requireDistinct(const ClustersFile::Cluster& cluster) {
        std::vector<std::pair<Id, std::size_t>> members;
        for (std::size_t i = cluster.begin; i < cluster.end; ++i)
            members.emplace_back(m_file.members[i], m_file.lines[i]);
        std::sort(members.begin(), members.end());
        const auto twice =
            std::adjacent_find(members.begin(), members.end(),
                               [](const auto& a, const auto& b) { return a.first == b.first; });
        if (twice == members.end()) return;
        m_line = twice[1].second;
        throw fault("node " + nodeName(twice->first) + " is in its cluster already by line " +
                    std::to_string(twice->second) + ", each member once is expected");
    }

    ClustersFile m_file;
    std::size_t m_line = 0;
    detail::NodeWords m_nodes;
    std::string_view m_text;  ///< the line
    Words m_words;
    std::size_t m_named = 0;  ///< the number of columns that have names
    char m_separator = 0;     ///< between these, where it isn't a blank
    bool m_vector = false;    ///< a line is the cluster of the next node
    Columns m_columns;
    std::vector<std::string> m_keys;  ///< of objects
    std::map<std::string, Id, std::less<>> m_labels;
    std::map<std::string, Id, std::less<>> m_levels;
    std::vector<Id> m_firstLevels;  ///< of each cluster, the one that was told first
    std::map<std::pair<Id, Id>, Standing> m_standings;  ///< of clusters on levels
    std::vector<Row> m_rows;
};

}  // namespace

bool beginsWithNames(Lines& lines) {
    Words words;
    while (lines.next()) {
        const std::string_view line = trimFront(lines.line());
        if (line.starts_with('#')) {
            // The header of a list of clusters, in which nodes may have the names of columns.
            const std::string_view text = trimFront(line.substr(1));
            if (lowered(text.substr(0, 9)) == "clusters:") return false;
        }
        if (line.empty() || line.front() == '#' || line.front() == '%') continue;
        if (beginsObject(line)) return true;
        words.split(line);
        return words.beginsVector() || columnsOf(words.words);
    }
    return false;
}

ClustersFile parseTable(Lines& lines, std::shared_ptr<Labels> known) {
    return TableReader(std::move(known)).read(lines);
}

ClustersFile parseTable(std::string_view text, const std::string& name) {
    TextSource source(text);
    Lines lines(source, name);
    return parseTable(lines);
}

}  // namespace vorl
