// The reader of link lists in their many dialects: a link a line, columns parted in one of several
// ways, perhaps below a line of their names.
#include "network_reader.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <deque>
#include <vector>

namespace vorl::detail {

namespace {

constexpr char BLANKS = ' ';

/// Names that columns bear in pairs.
constexpr std::pair<std::string_view, std::string_view> ENDS[] = {
    {"source", "target"},   {"source", "destination"},
    {"src", "dst"},         {"src", "dest"},
    {"from", "to"},         {"fromnode", "tonode"},
    {"fromid", "toid"},     {"fromnodeid", "tonodeid"},
    {"node1", "node2"},     {"nodea", "nodeb"},
    {"id1", "id2"},         {"sourceid", "targetid"},
    {"sender", "receiver"}, {"name1", "name2"},
    {"person1", "person2"}, {"vertex1", "vertex2"},
};
constexpr std::string_view WEIGHTS[] = {"weight", "weights",  "w",     "value",
                                        "count",  "strength", "score", "wt"};

/// The name in small letters, without what only parts its words.
std::string plainName(std::string_view name) {
    std::string result;
    for (const char c : lowered(name))
        if (c != ' ' && c != '_' && c != '-' && c != '.') result += c;
    return result;
}

/// Whether the columns of a table of clusters bear these names.
bool areOfClusters(const std::vector<std::string>& names) {
    const auto has = [&names](std::string_view name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    return has("node") && (has("community") || has("cluster"));
}

bool isNumber(std::string_view text) {
    double value = 0;
    const auto [last, err] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isRead = err == std::errc() || err == std::errc::result_out_of_range;
    return isRead && last == text.data() + text.size();
}

/// Whether a number with a decimal comma might be one of thousands, as `1,234`.
bool mayBeThousands(std::string_view number) {
    const std::size_t comma = number.find(',');
    return comma >= 1 && comma <= 3 && number[0] != '0' && number.size() == comma + 4 &&
           std::all_of(number.begin(), number.end(),
                       [](char c) { return c == ',' || (c >= '0' && c <= '9'); });
}

std::string_view trimmed(std::string_view text) {
    text = trimFront(text);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

class EdgeListReader : public LineNetworkReader {
public:
    EdgeListReader(Lines& lines, const ScanOptions& options, NodeNames& nodes,
                   const LinkVisitor& visit)
        : LineNetworkReader(lines, options, nodes, visit),
          m_arcs(options.directed.value_or(false)) {
        m_facts.toldDirected = m_arcs;
        if (!options.columns.empty()) readColumns(options.columns);
    }

protected:
    void readLine(std::string_view line) override {
        if (line.front() == '#' || line.front() == '%' || line.starts_with("//")) {
            line.remove_prefix(line.front() == '/' ? 2 : 1);
            if (!m_started) readComment(line);
            return;
        }
        if (!m_started && readNames(rawLine(), false)) return;
        if (!m_started && (!m_src.name.empty() || !m_dst.name.empty()) && !m_named)
            throw fault("the line has no names of columns, which are asked for");
        split(rawLine(), wanted());
        if (!std::exchange(m_started, true) && mayBeNames()) {
            m_pending = rawLine();
            m_pendingLine = m_line;
            return;
        }
        if (m_pendingLine != 0) settlePending();
        readLink();
    }

    void checkTotals() override {
        tellDialect();
        if (m_firstEnds && m_facts.links() > 1)
            m_facts.doubt = "line " + std::to_string(m_firstLine) + " is read as a link between " +
                            quoted(m_firstEnds->first) + " and " + quoted(m_firstEnds->second) +
                            ", which stand nowhere else; if they are names of columns, tell so "
                            "(--columns A,B[,W])";
        else if (!m_thousands.empty())
            m_facts.doubt = "weights are read with decimal commas, " + quoted(m_thousands) +
                            " among them, and might be meant as thousands";
    }

    void atEnd() override {
        if (m_pendingLine == 0) return;
        const std::size_t last = m_line;
        readPending();
        m_line = last;
    }

private:
    /// A column by its place, or by its name while that isn't known.
    struct Column {
        std::size_t place = 0;
        std::string name;
    };

    void readColumns(std::string_view text) {
        const std::string_view all = text;
        std::vector<Column> columns;
        while (!text.empty()) {
            const std::size_t end = std::min(text.find(','), text.size());
            const std::string_view word = trimmed(text.substr(0, end));
            Column column{0, std::string(word)};
            const auto [last, err] =
                std::from_chars(word.data(), word.data() + word.size(), column.place);
            if (err == std::errc() && last == word.data() + word.size() && column.place != 0) {
                --column.place;
                column.name.clear();
            } else if (word.empty()) {
                break;
            }
            columns.push_back(std::move(column));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        if (columns.size() < 2 || columns.size() > 3 || !text.empty() || all.ends_with(','))
            throw InputError(InputError::Parts{
                .file = m_file,
                .wrong = "the columns asked for are " + quoted(all) +
                         ", two or three names or numbers with commas are expected"});
        m_src = columns[0];
        m_dst = columns[1];
        m_told = true;
        if (columns.size() == 3)
            m_weight = columns[2];
        else
            m_weight.reset();
    }

    bool needsNames() const {
        return !m_src.name.empty() || !m_dst.name.empty() ||
               (m_weight && !m_weight->name.empty()) || !m_options.weightName.empty();
    }

    void readComment(std::string_view line) {
        try {
            readNames(line, true);
        } catch (const InputError&) {
            // Its quotes may be of any kind.
        }
    }

    /// Takes the names of columns, if the line has them.
    /// @param comment whether it is one, which is free to tell of other things
    bool readNames(std::string_view line, bool comment) {
        m_separator = separatorOf(line);
        if (line.size() > LONGEST_NAME) return false;
        std::vector<std::string> names;
        if (comment) line = trimmed(line);
        splitNames(line);
        if (!m_data.empty()) return false;
        for (const std::string_view field : m_fields) names.emplace_back(trimmed(field));
        const auto place = [&names](std::string_view name) -> std::optional<std::size_t> {
            for (const bool exact : {true, false})
                for (std::size_t i = 0; i < names.size(); ++i)
                    if (exact ? names[i] == name : plainName(names[i]) == plainName(name)) return i;
            return std::nullopt;
        };
        const auto settle = [&](Column& column) {
            if (column.name.empty()) return true;
            const auto found = place(column.name);
            if (!found) {
                if (comment) return false;
                throw fault("there is no column " + quoted(column.name) + ", the columns are " +
                            listOf(names));
            }
            column.place = *found;
            return true;
        };
        const auto ends = knownEnds(names);
        if (!ends && !m_told && areOfClusters(names))
            throw fault("the columns " + listOf(names) +
                        " are those of a table of clusters, a network is expected; --columns A,B "
                        "reads links all the same");
        if (needsNames()) {
            if (!m_told && ends) {
                m_src.place = ends->first;
                m_dst.place = ends->second;
            }
            if (!m_options.weightName.empty()) m_weight = Column{0, m_options.weightName};
            if (comment && !(settle(m_src) && settle(m_dst))) return false;
            settle(m_src);
            settle(m_dst);
            if (m_weight && !settle(*m_weight)) return false;
        } else if (!ends && (comment || m_told || !namesWeight(names))) {
            return false;
        } else if (!ends) {
            m_weight = Column{2, {}};
        } else if (!m_told) {
            m_src.place = ends->first;
            m_dst.place = ends->second;
            m_weight.reset();
            for (const std::string_view name : WEIGHTS)
                if (!m_weight && place(name) && place(name) != ends->first &&
                    place(name) != ends->second)
                    m_weight = Column{*place(name), {}};
        }
        m_started = m_named = true;
        m_namesLine = m_line;
        const auto kind = place("type");
        if (kind && *kind != m_src.place && *kind != m_dst.place) m_kind = kind;
        return true;
    }

    /// Whether the third field is the name of a weight, where a number would stand.
    static bool namesWeight(const std::vector<std::string>& names) {
        return names.size() > 2 && std::find(std::begin(WEIGHTS), std::end(WEIGHTS),
                                             plainName(names[2])) != std::end(WEIGHTS);
    }

    /// The places of a pair of names that columns of ends bear.
    static std::optional<std::pair<std::size_t, std::size_t>> knownEnds(
        const std::vector<std::string>& names) {
        std::vector<std::string> plain;
        for (const std::string& name : names) plain.push_back(plainName(name));
        for (const auto& [first, second] : ENDS) {
            const auto a = std::find(plain.begin(), plain.end(), first);
            const auto b = std::find(plain.begin(), plain.end(), second);
            if (a != plain.end() && b != plain.end())
                return std::pair{static_cast<std::size_t>(a - plain.begin()),
                                 static_cast<std::size_t>(b - plain.begin())};
        }
        return std::nullopt;
    }

    static std::string listOf(const std::vector<std::string>& names) {
        std::string text;
        for (std::size_t i = 0; i < std::min<std::size_t>(names.size(), 8); ++i)
            text += (i ? ", " : "") + quoted(names[i]);
        return text + (names.size() > 8 ? ", ..." : "");
    }

    /// What parts the fields of a line.
    char separatorOf(std::string_view line) {
        line = line.substr(0, dataBegin(line));
        bool quote = false;
        std::size_t tabs = 0;
        std::size_t commas = 0;
        std::size_t semicolons = 0;
        for (const char c : line) {
            if (c == '"') quote = !quote;
            if (quote) continue;
            tabs += c == '\t';
            commas += c == ',';
            semicolons += c == ';';
        }
        if (tabs != 0 && line.find(' ') == std::string_view::npos) return '\t';
        if (tabs != 0) {
            // Numbers hold no blanks, so that both may part them.
            std::string_view rest = line;
            bool numbers = true;
            for (std::string_view token = nextToken(rest); !token.empty(); token = nextToken(rest))
                numbers = numbers && isNumber(token);
            return numbers ? BLANKS : '\t';
        }
        return semicolons != 0 ? ';' : commas != 0 ? ',' : BLANKS;
    }

    /// Where the attributes of a link begin, as `{'weight': 3.0}`; the size of the line if there
    /// are none.
    static std::size_t dataBegin(std::string_view line) {
        std::size_t end = line.size();
        while (end > 0 && isBlank(line[end - 1])) --end;
        if (end == 0 || line[end - 1] != '}') return line.size();
        const std::size_t begin = line.find('{');
        return begin != std::string_view::npos && begin > 0 && !isWord(line[begin - 1])
                   ? begin
                   : line.size();
    }
    static bool isWord(char c) { return !isBlank(c) && c != ',' && c != ';'; }

    /// Fills the fields where there may be names for columns.
    void splitNames(std::string_view line) {
        constexpr std::size_t most = 100'000;
        split(line, most + 1);
        if (m_fields.size() > most)
            throw fault("the line has more than " + counted(most, "field") +
                        ", a source and a destination are expected");
    }

    /// The number of fields that a line is read for.
    std::size_t wanted() const {
        return std::max({m_src.place, m_dst.place, m_weight ? m_weight->place : 0,
                         m_kind.value_or(0), WIDE}) +
               1;
    }

    /// Fills the first fields, and the attributes behind all of them.
    void split(std::string_view line, std::size_t most) {
        m_most = most;
        m_fields.clear();
        m_unquoted.clear();
        const std::size_t data = line.empty() || line.back() != '}' ? line.size() : dataBegin(line);
        m_data = line.substr(data);
        line = line.substr(0, data);
        while (true) {
            if (m_separator != '\t') line = trimFront(line);
            if (line.empty() && (m_separator == BLANKS || !m_data.empty() || m_fields.empty()))
                break;
            if (!line.empty() && line.front() == '"') {
                line = takeQuoted(line);
            } else {
                std::size_t end = 0;
                if (m_separator == BLANKS)
                    while (end < line.size() && !isBlank(line[end])) ++end;
                else
                    while (end < line.size() && line[end] != m_separator) ++end;
                add(trimmed(line.substr(0, end)));
                line.remove_prefix(end);
            }
            if (m_separator == BLANKS) continue;
            if (line.empty()) break;
            line.remove_prefix(1);
            if (line.empty() && m_data.empty()) {
                add(line);
                break;
            }
        }
    }

    void add(std::string_view field) {
        if (m_fields.size() < m_most) m_fields.push_back(field);
    }

    /// Takes a field between quotes, with its separator still behind it.
    std::string_view takeQuoted(std::string_view line) {
        std::string* kept = nullptr;
        std::size_t begin = 1;
        for (std::size_t from = 1;;) {
            const std::size_t end = line.find('"', from);
            if (end == std::string_view::npos)
                throw fault("the quotes that begin with " + quoted(line) +
                            " aren't closed in their line, over which a field can't go");
            const bool doubled = end + 1 < line.size() && line[end + 1] == '"';
            if (doubled && !kept && m_fields.size() < m_most) kept = &m_unquoted.emplace_back();
            if (kept) appendBounded(*kept, line.substr(begin, end - begin + doubled));
            from = begin = end + 2;
            if (doubled) continue;
            add(kept ? std::string_view(*kept) : line.substr(1, end - 1));
            line.remove_prefix(end + 1);
            break;
        }
        const std::string_view rest = m_separator == '\t' ? line : trimFront(line);
        if (m_separator == BLANKS ? !line.empty() && !isBlank(line.front())
                                  : !rest.empty() && rest.front() != m_separator)
            throw fault(quoted(rest) + " stands behind closing quotes, " + separatorName() +
                        " is expected");
        return rest;
    }

    const char* separatorName() const {
        switch (m_separator) {
            case ',': return "a comma";
            case ';': return "a semicolon";
            case '\t': return "a tab";
            default: return "a blank";
        }
    }

    /// Whether the first line may have names of columns, none of them known.
    bool mayBeNames() {
        Id id = 0;
        return !m_named && m_data.empty() && rawLine().size() <= LONGEST_NAME &&
               m_fields.size() > std::max(m_src.place, m_dst.place) &&
               !m_fields[m_src.place].empty() && !m_fields[m_dst.place].empty() &&
               !isNumber(m_fields[m_src.place]) && !isNumber(m_fields[m_dst.place]) &&
               !Labels::isId(m_fields[m_src.place], id);
    }

    /// Tells by the second line whether the first one has names of columns or of nodes.
    void settlePending() {
        const std::size_t line = m_line;
        const bool numbers = m_fields.size() > std::max(m_src.place, m_dst.place) &&
                             isNumber(m_fields[m_src.place]) && isNumber(m_fields[m_dst.place]);
        if (numbers) {
            splitNames(m_pending);
            m_named = true;
            m_namesLine = m_pendingLine;
            m_pendingLine = 0;
            for (std::size_t i = 0; i < m_fields.size(); ++i)
                if (plainName(m_fields[i]) == "type" && i != m_src.place && i != m_dst.place)
                    m_kind = i;
            if (!m_told) {
                m_weight.reset();
                for (std::size_t i = 2; i < m_fields.size(); ++i)
                    for (const std::string_view name : WEIGHTS)
                        if (!m_weight && plainName(m_fields[i]) == name) m_weight = Column{i, {}};
            }
        } else {
            readPending();
        }
        m_line = line;
        split(rawLine(), wanted());
    }

    void readPending() {
        const std::string pending = std::move(m_pending);
        m_line = std::exchange(m_pendingLine, 0);
        split(pending, wanted());
        if (m_readWeights && m_data.empty() && m_weight && m_weight->place < m_fields.size() &&
            !m_fields[m_weight->place].empty() && !isWeightNumber(m_fields[m_weight->place])) {
            const std::string weight(m_fields[m_weight->place]);
            splitNames(pending);
            throw fault(
                "the weight", weight,
                "a number is expected; if the line has names of columns, tell which ones to "
                "read (--columns A,B[,W]): " +
                    listOf({m_fields.begin(), m_fields.end()}));
        }
        readLink();
        if (m_told) return;
        m_firstLine = m_line;
        m_firstEnds.emplace(m_fields[m_src.place], m_fields[m_dst.place]);
    }

    std::string_view fieldOf(const Column& column, const char* what) const {
        if (column.place >= m_fields.size())
            throw fault("the line has " + counted(m_fields.size(), "field") + ", a " + what +
                        " is expected in column " + std::to_string(column.place + 1) + ", behind " +
                        separatorName());
        if (m_fields[column.place].empty())
            throw fault(std::string("the ") + what, "", "a name is expected");
        return m_fields[column.place];
    }

    void readLink() {
        const std::string_view src = fieldOf(m_src, "source");
        const std::string_view dst = fieldOf(m_dst, "destination");
        if (m_firstEnds)
            for (const std::string_view end : {src, dst})
                if (m_firstEnds && (end == m_firstEnds->first || end == m_firstEnds->second))
                    m_firstEnds.reset();
        LinkWeight weight = 1;
        if (m_readWeights) {
            std::string_view token;
            if (m_weight && m_weight->place < m_fields.size()) token = m_fields[m_weight->place];
            if (!m_data.empty()) token = weightOfData();
            if (!token.empty()) weight = takeWeight(m_data.empty() ? withPoint(token) : token);
        }
        if (!m_named && !m_told && m_fields.size() > WIDE && m_facts.wideLines++ == 0)
            m_facts.firstWideLine = m_line;
        addNamedLink(src, dst, weight, m_kind ? isArc() : m_arcs);
    }

    /// Whether the column of kinds tells of an arc, as `Directed`.
    bool isArc() {
        if (m_options.directed || *m_kind >= m_fields.size()) return m_arcs;
        const std::string kind = lowered(m_fields[*m_kind]);
        const bool isDirected = kind == "directed";
        const bool isUndirected = kind == "undirected";
        m_kindsTold = m_kindsTold || isDirected || isUndirected;
        return isDirected || (!isUndirected && m_arcs);
    }

    bool mayHaveDecimalCommas() const { return m_separator == ';' || m_separator == '\t'; }

    bool isWeightNumber(std::string_view token) const {
        std::string text(token);
        if (mayHaveDecimalCommas()) std::replace(text.begin(), text.end(), ',', '.');
        return isNumber(text);
    }

    /// A weight with the decimal point of the formats. Where all of them have a comma, a point
    /// would part thousands, and the other way round.
    std::string_view withPoint(std::string_view token) {
        if (!mayHaveDecimalCommas()) return token;
        const std::size_t mark = token.find_first_of(".,");
        if (mark == std::string_view::npos) return token;
        if (m_decimal == '\0') m_decimal = token[mark];
        if (token[mark] != m_decimal)
            throw fault("the weight", token,
                        std::string("a decimal ") + (m_decimal == ',' ? "comma" : "point") +
                            " is expected, as before");
        if (m_decimal == '.') return token;
        if (!std::exchange(m_hasCommas, true) && mayBeThousands(token)) m_thousands = token;
        if (!mayBeThousands(token)) m_thousands.clear();
        m_number = token;
        m_number[mark] = '.';
        // What has a second mark is no number, and is told as it stands there.
        return isNumber(m_number) ? std::string_view(m_number) : token;
    }

    /// The number behind the name of the weight among attributes; empty if it isn't there.
    std::string_view weightOfData() const {
        const std::string_view name =
            m_options.weightName.empty() ? "weight" : std::string_view(m_options.weightName);
        for (std::size_t from = 1;;) {
            const std::size_t found = m_data.find(name, from);
            if (found == std::string_view::npos) return {};
            from = found + name.size();
            const char quote = m_data[found - 1];
            if ((quote != '\'' && quote != '"') || from >= m_data.size() || m_data[from] != quote)
                continue;
            std::string_view rest = trimFront(m_data.substr(from + 1));
            if (!rest.starts_with(':')) continue;
            rest = trimFront(rest.substr(1));
            return trimmed(rest.substr(0, std::min(rest.find_first_of(",}"), rest.size())));
        }
    }

    void tellDialect() {
        m_facts.dialect = m_separator == BLANKS ? "fields parted by blanks"
                          : m_separator == ','  ? "fields parted by commas"
                          : m_separator == ';'  ? "fields parted by semicolons"
                                                : "fields parted by tabs";
        m_facts.dialect += ", columns " + std::to_string(m_src.place + 1) + " and " +
                           std::to_string(m_dst.place + 1);
        if (m_weight && m_facts.statesWeights && m_data.empty())
            m_facts.dialect += " with the weight in " + std::to_string(m_weight->place + 1) +
                               (m_decimal == ',' ? " (decimal commas)" : "");
        if (m_kindsTold) m_facts.dialect += ", the kind of link in " + std::to_string(*m_kind + 1);
        if (m_firstEnds && m_facts.links() > 1)
            m_facts.dialect += ", line " + std::to_string(m_firstLine) + " perhaps their names";
        if (m_named) m_facts.dialect += ", their names in line " + std::to_string(m_namesLine);
    }

    static constexpr std::size_t WIDE = 3;  // fields that are told where there are more

    bool m_arcs;
    char m_separator = BLANKS;
    bool m_told = false;     // the columns are those asked for
    bool m_started = false;  // a line that isn't a comment has come
    bool m_named = false;
    std::size_t m_namesLine = 0;
    Column m_src{0, {}};
    Column m_dst{1, {}};
    std::optional<Column> m_weight = Column{2, {}};
    std::optional<std::size_t> m_kind;  // the place of what tells edges from arcs
    bool m_kindsTold = false;
    bool m_hasCommas = false;  // some weight has a decimal comma
    std::string m_thousands;   // the first of these while all might be thousands
    char m_decimal = '\0';     // what parts whole numbers from fractions in weights
    std::string m_number;      // the last weight with a decimal comma
    std::vector<std::string_view> m_fields;
    std::size_t m_most = 0;              // fields to be kept of a line
    std::deque<std::string> m_unquoted;  // what fields with doubled quotes hold
    std::string_view m_data;
    std::string m_pending;  // the first line, while it may have names
    std::size_t m_pendingLine = 0;
    /// The ends of a first link that may be names of columns, until one of them comes again.
    std::optional<std::pair<std::string, std::string>> m_firstEnds;
    std::size_t m_firstLine = 0;
};

}  // namespace

std::unique_ptr<NetworkReader> edgeListReader(Lines& lines, const ScanOptions& options,
                                              NodeNames& nodes, const LinkVisitor& visit) {
    return std::make_unique<EdgeListReader>(lines, options, nodes, visit);
}

}  // namespace vorl::detail
