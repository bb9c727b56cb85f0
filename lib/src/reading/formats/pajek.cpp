// The reader of the format Pajek: sections of vertices with labels, of edges and arcs.
#include "../node_words.hpp"
#include "network_reader.hpp"
#include "references.hpp"

#include <algorithm>

namespace vorl::detail {

namespace {

class PajekReader : public LineNetworkReader {
public:
    using LineNetworkReader::LineNetworkReader;

protected:
    void readLine(std::string_view line) override {
        if (line.front() == '%') return;
        if (line.front() == '*')
            readSection(line);
        else if (m_section == VERTICES)
            readVertex(line);
        else if (m_section == EDGES || m_section == ARCS)
            readLink(line);
        else if (m_section == EDGES_LIST || m_section == ARCS_LIST)
            readList(line);
        else if (m_section == NONE)
            throw fault("found " + quoted(line) + ", \"*Vertices\" is expected");
    }

    void atEnd() override {
        if (m_facts.headerLine == 0) throw fault("the file ends, \"*Vertices\" is expected");
        requireLikelyNodes(*m_facts.nodes);
        for (Id place = 1; place <= *m_facts.nodes; ++place) node(place);
    }

private:
    enum Section { NONE, VERTICES, EDGES, ARCS, EDGES_LIST, ARCS_LIST, NETWORK };

    void readSection(std::string_view line) {
        const std::string word = lowered(nextToken(line).substr(0, LONGEST_NAME));
        if (word == "*vertices") {
            if (m_facts.headerLine != 0) throw fault("the section *Vertices stands twice");
            m_section = VERTICES;
            tellPlaces(toNodes(nextToken(line)));
            return;
        }
        if (word == "*network") {
            if (m_facts.headerLine != 0)
                throw fault("a second network begins, a file of one is expected");
            m_section = NETWORK;
            return;
        }
        if (m_facts.headerLine == 0)
            throw fault("the section " + quoted(word) +
                        " stands before \"*Vertices\", which is expected first");
        if (word == "*edges")
            m_section = EDGES;
        else if (word == "*arcs")
            m_section = ARCS;
        else if (word == "*edgeslist")
            m_section = EDGES_LIST;
        else if (word == "*arcslist")
            m_section = ARCS_LIST;
        else
            throw fault("the section " + quoted(word) +
                        " is unknown, *Vertices, *Edges, *Arcs, *Edgeslist or *Arcslist is "
                        "expected");
    }

    void readVertex(std::string_view line) {
        const std::string_view token = nextToken(line);
        const Id place = toPlace(token, "vertex");
        line = trimFront(line);
        if (line.size() > LONGEST_NAME)
            throw fault("the line of the vertex has more than " + bytes(LONGEST_NAME) +
                        ", which is too much");
        std::string label(token);
        if (line.starts_with('"')) {
            if (!takeQuoted(line, label)) throw fault("the quotes of the label aren't closed");
        } else if (!line.empty()) {
            label = nextToken(line);
        }
        label = label.empty() ? std::string(token) : withoutReferences(label, false);
        if (place < m_numbers.size() && m_numbers[place] != ID_NONE)
            throw fault("the vertex " + std::to_string(place) + " stands twice");
        addVertex(place, label);
    }

    void addVertex(Id place, std::string_view label) {
        const Size before = m_nodes.size();
        const Id number = numberOf(label);
        if (m_nodes.size() == before)
            throw fault("the label " + quoted(label) +
                        " is that of another vertex already, each vertex with its own is expected");
        if (place >= m_numbers.size())
            m_numbers.resize(std::max<std::size_t>(place + std::size_t{1}, 2 * m_numbers.size()),
                             ID_NONE);
        m_numbers[place] = number;
    }

    /// The number of a vertex, whose label is its place if it has none.
    Id node(Id place) {
        if (place >= m_numbers.size() || m_numbers[place] == ID_NONE)
            addVertex(place, std::to_string(place));
        return m_numbers[place];
    }

    void readLink(std::string_view line) {
        const Id src = toPlace(nextToken(line), "source");
        const std::string_view dest = nextToken(line);
        if (dest.empty()) throw fault("a single vertex, a source and a destination are expected");
        const Id dst = toPlace(dest, "destination");
        const std::string_view value = m_readWeights ? nextToken(line) : std::string_view();
        const LinkWeight weight = value.empty() ? LinkWeight{1} : takeWeight(value);
        addNumbered(src, dst, weight, m_section == ARCS);
    }

    void readList(std::string_view line) {
        const Id src = toPlace(nextToken(line), "source");
        for (std::string_view token = nextToken(line); !token.empty(); token = nextToken(line))
            addNumbered(src, toPlace(token, "destination"), 1, m_section == ARCS_LIST);
    }

    void addNumbered(Id src, Id dst, LinkWeight weight, bool arc) {
        const Id number = node(src);
        addLink(number, node(dst), weight, m_options.directed.value_or(arc));
    }

    Section m_section = NONE;
    std::vector<Id> m_numbers;  // of the nodes, by place
};

}  // namespace

std::unique_ptr<NetworkReader> pajekReader(Lines& lines, const ScanOptions& options,
                                           NodeNames& nodes, const LinkVisitor& visit) {
    return std::make_unique<PajekReader>(lines, options, nodes, visit);
}

}  // namespace vorl::detail
