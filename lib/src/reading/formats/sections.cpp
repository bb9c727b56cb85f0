// The reader of the format RCG: sections of lines `src> dst[:weight] ...`.
#include "network_reader.hpp"

#include <algorithm>

namespace vorl::detail {

namespace {

class SectionsReader : public LineNetworkReader {
public:
    using LineNetworkReader::LineNetworkReader;

protected:
    void readLine(std::string_view line) override {
        if (line.front() == '#') return;
        if (line.front() == '/')
            readSection(line);
        else if (m_section == EDGES || m_section == ARCS)
            readLinks(line);
        else
            throw fault(quoted(line) +
                        " stands before the first section of links, /Edges or /Arcs "
                        "is expected");
    }

    void checkTotals() override {
        // Where the source couldn't tell its size.
        if (m_facts.firstId) requireLikely(m_facts.bytes, m_facts.headerLine);
    }

private:
    enum Section { NONE, GRAPH, NODES, EDGES, ARCS };

    void readSection(std::string_view line) {
        if (takeKey(line, "/graph")) {
            if (m_section != NONE) throw fault("the section /Graph must be the first one");
            m_section = GRAPH;
            if (takeGraphKey(line, "weighted:")) {
                m_fileWeighted = toFlag(nextToken(line), "weighted:");
                m_readWeights = m_readWeights && m_fileWeighted;
            }
            if (takeGraphKey(line, "validated:")) toFlag(nextToken(line), "validated:");
        } else if (takeKey(line, "/nodes")) {
            if (m_section > GRAPH)
                throw fault("the section /Nodes must be the first one, or the one behind /Graph");
            m_section = NODES;
            if (!line.empty()) readNodesSection(line);
        } else if (takeKey(line, "/edges")) {
            m_section = EDGES;
        } else if (takeKey(line, "/arcs")) {
            m_section = ARCS;
        } else {
            throw fault("the section " + quoted(line) +
                        " is unknown, /Graph, /Nodes, /Edges or /Arcs is expected");
        }
    }

    /// Cuts a key off the line; a blank behind it isn't needed.
    static bool takeGraphKey(std::string_view& line, std::string_view key) {
        line = trimFront(line);
        std::string_view start = line.substr(0, key.size());
        if (!takeKey(start, key)) return false;
        const std::string_view rest = trimFront(line.substr(key.size()));
        if (rest.empty()) return false;
        line = rest;
        return true;
    }

    void readNodesSection(std::string_view line) {
        m_facts.headerLine = m_line;
        m_facts.nodes = toNodes(nextToken(line));
        const std::string_view first = nextToken(line);
        if (first.empty()) return;
        m_facts.firstId = toId(first, "first id of the nodes");
        if (*m_facts.nodes == 0) throw fault("the header tells of 0 nodes, at least 1 is expected");
        if (*m_facts.nodes > ID_MAX - *m_facts.firstId)
            throw fault("the ids of " + std::to_string(*m_facts.nodes) + " nodes from " +
                        std::to_string(*m_facts.firstId) +
                        " on go beyond the largest one, 4294967294");
        if (m_options.size) requireLikely(*m_options.size, m_line);
        requireRoom(*m_facts.nodes);
        m_nodes.announce(*m_facts.firstId, static_cast<Id>(*m_facts.nodes));
    }

    /// Announced nodes take memory, whether they have links or not.
    void requireLikely(std::size_t bytes, std::size_t line) const {
        constexpr Size always = 1'000'000;
        if (*m_facts.nodes > std::max(always, bytes))
            throw InputError::at(m_file, line,
                                 "the header tells of " + std::to_string(*m_facts.nodes) +
                                     " nodes, more than the file has bytes");
    }

    Id toNode(std::string_view token, const char* what) const {
        const Id id = toId(token, what);
        if (m_facts.firstId && (id < *m_facts.firstId || id - *m_facts.firstId >= *m_facts.nodes))
            throw fault(std::string("the ") + what + " is " + std::to_string(id) +
                        ", which is none of the nodes " + std::to_string(*m_facts.firstId) +
                        " to " + std::to_string(*m_facts.firstId + (*m_facts.nodes - 1)) +
                        " that the file announces");
        return id;
    }

    void readLinks(std::string_view line) {
        const std::size_t mark = line.find('>');
        if (mark == std::string_view::npos)
            throw fault(quoted(line) + " has no \">\" behind the source");
        const Id src = toNode(line.substr(0, mark), "source");
        line = trimFront(line.substr(mark + 1));
        if (line.empty()) ++m_facts.linkless;
        for (std::string_view token = nextToken(line); !token.empty(); token = nextToken(line)) {
            const std::size_t colon = token.find(':');
            const Id dst = toNode(token.substr(0, colon), "destination");
            LinkWeight weight = 1;
            if (colon != std::string_view::npos) {
                if (!m_fileWeighted)
                    throw fault(quoted(token) +
                                " has a weight, the section /Graph tells of unweighted links");
                weight = takeWeight(token.substr(colon + 1));
            }
            addLinkOf(src, dst, weight, m_section == ARCS);
        }
    }

    Section m_section = NONE;
    bool m_fileWeighted = true;
};

}  // namespace

std::unique_ptr<NetworkReader> sectionsReader(Lines& lines, const ScanOptions& options,
                                              NodeNames& nodes, const LinkVisitor& visit) {
    return std::make_unique<SectionsReader>(lines, options, nodes, visit);
}

}  // namespace vorl::detail
