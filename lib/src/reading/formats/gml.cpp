// The reader of the format GML: lists of keys and values, with nodes and edges among them.
#include "keyed_nodes.hpp"
#include "references.hpp"

namespace vorl::detail {

namespace {

class GmlReader : public NetworkReader {
public:
    GmlReader(Lines& lines, const ScanOptions& options, NodeNames& nodes, const LinkVisitor& visit)
        : NetworkReader(lines, options, nodes, visit), m_keyed(nodes) {}

protected:
    void readAll() override {
        m_facts.toldDirected = m_arcs;
        while (nextToken()) {
            if (m_kind == CLOSE) {
                if (m_open.empty()) throw fault("a \"]\" that no \"[\" belongs to");
                close();
                continue;
            }
            if (m_kind != WORD) throw fault("found " + quoted(m_token) + ", a key is expected");
            const std::string key = lowered(m_token);
            if (!nextToken()) throw fault("the file ends behind the key " + quoted(key));
            if (m_kind == OPEN)
                open(key);
            else if (m_kind == CLOSE)
                throw fault("found \"]\" behind the key " + quoted(key) + ", a value is expected");
            else
                take(key);
        }
        if (!m_open.empty())
            throw fault("the file ends within " + quoted(m_open.back()) + ", \"]\" is expected");
        if (m_lines.bytes() != 0 && !m_graph) throw fault("the file has no \"graph [\"");
    }

private:
    enum Kind { WORD, TEXT, OPEN, CLOSE };

    bool nextLine() {
        do {
            if (!m_lines.next()) return false;
            m_line = m_lines.number();
            m_rest = trimFront(m_lines.line());
        } while (m_rest.empty() || m_rest.front() == '#');
        return true;
    }

    bool nextToken() {
        m_rest = trimFront(m_rest);
        if (m_rest.empty() && !nextLine()) return false;
        if (m_rest.front() == '"') {
            readText();
            return true;
        }
        if (m_rest.front() == '[' || m_rest.front() == ']') {
            m_kind = m_rest.front() == '[' ? OPEN : CLOSE;
            m_token = m_rest.substr(0, 1);
            m_rest.remove_prefix(1);
            return true;
        }
        std::size_t end = 0;
        while (end < m_rest.size() && !isBlank(m_rest[end]) && m_rest[end] != '[' &&
               m_rest[end] != ']' && m_rest[end] != '"')
            ++end;
        m_kind = WORD;
        m_token.clear();
        appendBounded(m_token, m_rest.substr(0, end));
        m_rest.remove_prefix(end);
        return true;
    }

    /// A text between quotes, which may go over several lines.
    void readText() {
        const std::size_t begin = m_line;
        m_kind = TEXT;
        m_token.clear();
        m_rest.remove_prefix(1);
        for (std::size_t end; (end = m_rest.find('"')) == std::string_view::npos;) {
            appendBounded(m_token, m_rest);
            appendBounded(m_token, " ");
            if (!m_lines.next()) {
                m_line = begin;
                throw fault("the quotes that begin with " + quoted("\"" + m_token) +
                            " aren't closed");
            }
            m_line = m_lines.number();
            m_rest = m_lines.line();
        }
        const std::size_t end = m_rest.find('"');
        appendBounded(m_token, m_rest.substr(0, end));
        m_rest.remove_prefix(end + 1);
        if (m_token.size() <= LONGEST_NAME) m_token = withoutReferences(m_token, true);
    }

    bool isIn(const char* list) const { return m_open.size() == 2 && m_open.back() == list; }

    void open(const std::string& key) {
        constexpr std::size_t most = 1000;
        if (m_open.size() >= most) throw fault("more than 1,000 lists lie inside each other");
        if (m_open.empty() && key == "graph" && std::exchange(m_graph, true))
            throw fault("a second graph begins, a file of one is expected");
        m_open.push_back(m_open.empty() || m_open[0] == "graph" ? key : "");
        if (isIn("node") || isIn("edge")) {
            m_begin = m_line;
            m_values = {};
        }
    }

    void close() {
        if (isIn("node")) addNode();
        if (isIn("edge")) addEdge();
        m_open.pop_back();
    }

    void take(const std::string& key) {
        if (m_open.size() == 1 && m_open[0] == "graph" && key == "directed") {
            if (m_token != "0" && m_token != "1")
                throw fault("directed", m_token, "0 or 1 is expected");
            if (m_facts.links() != 0 && !m_options.directed && (m_token == "1") != m_arcs)
                throw fault("\"directed\" stands behind the edges, it is expected before them");
            m_arcs = m_options.directed.value_or(m_token == "1");
            m_facts.toldDirected = m_arcs;
        } else if (isIn("node")) {
            if (key == "id") m_values.id = m_token;
            if (key == "label" || (key == "name" && !m_values.name)) m_values.name = m_token;
        } else if (isIn("edge")) {
            if (key == "source") m_values.id = m_token;
            if (key == "target") m_values.name = m_token;
            if (isWeight(key, m_values.weight.has_value())) m_values.weight = m_token;
        }
    }

    auto faults() const {
        return [this](const std::string& what) { return InputError::at(m_file, m_begin, what); };
    }

    void addNode() {
        if (!m_values.id) throw faults()("the node has no id");
        const std::string& name = m_values.name ? *m_values.name : *m_values.id;
        m_keyed.add(*m_values.id, name.empty() ? *m_values.id : name, faults());
    }

    void addEdge() {
        if (!m_values.id) throw faults()("the edge has no source");
        if (!m_values.name) throw faults()("the edge has no target");
        const Id src = m_keyed.find(*m_values.id, "source", faults());
        const Id dst = m_keyed.find(*m_values.name, "target", faults());
        const LinkWeight weight =
            m_values.weight && m_readWeights ? takeWeight(*m_values.weight) : LinkWeight{1};
        addLink(src, dst, weight, m_arcs);
    }

    /// What is told of a node or an edge.
    struct Values {
        std::optional<std::string> id;    // of an edge: source
        std::optional<std::string> name;  // of an edge: target
        std::optional<std::string> weight;
    };

    KeyedNodes m_keyed;
    std::string_view m_rest;  // of the line
    Kind m_kind = WORD;
    std::string m_token;
    std::vector<std::string> m_open;  // the keys of the lists that are open
    bool m_graph = false;
    bool m_arcs = m_options.directed.value_or(false);
    Values m_values;
    std::size_t m_begin = 0;  // line of the node or edge
};

}  // namespace

std::unique_ptr<NetworkReader> gmlReader(Lines& lines, const ScanOptions& options, NodeNames& nodes,
                                         const LinkVisitor& visit) {
    return std::make_unique<GmlReader>(lines, options, nodes, visit);
}

}  // namespace vorl::detail
