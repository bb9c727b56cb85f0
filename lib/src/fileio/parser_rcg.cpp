#include <vorl/fileio/parser_rcg.hpp>

#include "../graph/loader.hpp"
#include "../graph/placing.hpp"
#include "scan.hpp"

#include <vorl/types/assert.hpp>
#include <vorl/types/id_numbers.hpp>
#include <vorl/types/text.hpp>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace vorl {

const char* const RcgParser::m_spaces = " \t";

using namespace detail;

namespace {

/// Behind the key and the blanks that may follow it, else null.
const char* matchValueKey(const char* pos, const char* key) {
    const std::size_t length = std::strlen(key);
    if (!startsWithKey(pos, key, length)) return nullptr;
    pos = skipBlanks(pos + length);
    return *pos == '\0' ? nullptr : pos;
}

/// Reads a line of links.
/// @return whether there are any
template <bool WEIGHTED>
bool readLinks(const char* line, Id& id, InpLinks<WEIGHTED>& links) {
    const Number source = scanNumber(line);
    validateVal<Id>(
        source.value, line,
        !source.found || source.err != 0 || source.value == ID_NONE || *source.end != '>',
        "Node id is invalid");
    const char* pos = skipBlanks(source.end + 1);
    if (*pos == '\0') {
        VORL_TRACE("WARNING parseLinks(), no links specified:  %s\n", pos);
        return false;
    }

    const char* const last = pos + std::strlen(pos);
    id = static_cast<Id>(source.value);
    links.clear();
    while (*pos != '\0') {
        const Number dest = scanNumber(pos);
        const bool ended = isBlankOrEnd(*dest.end) || (WEIGHTED && *dest.end == ':');
        validateVal<Id>(dest.value, pos,
                        !dest.found || dest.err != 0 || dest.value >= ID_NONE || !ended,
                        "Parsed dst id is invalid (or equals to ID_NONE)");
        pos = dest.end;
        LinkWeight weight = 0;
        if (*pos == ':') {
            const Decimal number = scanFloat(++pos, last);
            validateVal<float>(
                number.value, pos,
                !number.found || number.err != 0 || number.value < 0 || !isBlankOrEnd(*number.end),
                "Parsed weight is invalid (should be a non-negative float)");
            weight = number.value;
            pos = number.end;
        }
        if (weight == 0)
            links.emplace_back(static_cast<Id>(dest.value));
        else
            links.emplace_back(static_cast<Id>(dest.value), weight);
        pos = skipBlanks(pos);
    }
    return true;
}

/// Nodes that come with their links, or are announced.
class NodeNumbers {
public:
    /// @param expected  how many may come
    NodeNumbers(Size expected, bool announced) : m_numbers(expected), m_announced(announced) {}

    void announce(Id id, StructNodeErrors& errors) {
        if (m_numbers.find(id) == ID_NONE)
            m_numbers.number(id, ids);
        else
            errors.add(id);
    }

    /// The number of a node.
    /// @throws std::out_of_range if nodes are announced, but not this one
    Id number(Id id) {
        if (!m_announced) return m_numbers.number(id, ids);
        const Id number = m_numbers.find(id);
        if (number == ID_NONE) {
            try {
                IdNodes<UnweightedLinks>().at(id);
            } catch (const std::out_of_range& err) {
                refuseLink(id, err.what());
            }
        }
        return number;
    }

    std::vector<Id> ids;  ///< by number

private:
    IdNumbers m_numbers;
    bool m_announced;
};

}  // namespace

RcgParser::RcgParser(const InpOptions& opts) : m_shuffle(opts.shuffle), m_sumdups(opts.sumdups) {
    if (opts.format != FileFormat::RCG)
        throw std::invalid_argument("RcgParser(), RCG format is expected instead of " +
                                    to_string(opts.format) + "\n");
    openText(m_file, opts.filename, "RcgParser");
    std::error_code unknown;  // all bits are set then
    m_size = std::filesystem::file_size(opts.filename, unknown);
    header();
}

void RcgParser::header() {
    while (std::getline(m_file, m_line)) {
        const char* pos = skipBlanks(m_line.c_str());
        if (*pos != '/') continue;
        if (const char* graph = matchKey(pos, "/graph")) {
            if (m_bodysect != NONE)
                throw std::domain_error(
                    "header(), unexpected section - 'Graph' should be an initial section\n");
            m_bodysect = GRAPH;
            graphValues(skipBlanks(graph));
        } else if (const char* nodes = matchKey(pos, "/nodes")) {
            if (m_bodysect > GRAPH)
                throw std::domain_error(
                    "header(), unexpected section - 'Nodes' should be either initial or following "
                    "the 'Graph' section\n");
            m_bodysect = NODES;
            nodesValues(skipBlanks(nodes));
        } else if (matchKey(pos, "/edges")) {
            m_bodysect = EDGES;
            return;
        } else if (matchKey(pos, "/arcs")) {
            m_bodysect = ARCS;
            m_directed = true;
            return;
        } else {
            throw std::domain_error("ERROR header(), unknown section: " + m_line + "\n");
        }
    }
}

void RcgParser::graphValues(const char* pos) {
    if (const char* value = matchValueKey(pos, "weighted:")) {
        m_weighted = headerValue<unsigned>(value, false) != 0;
        pos = skipBlanks(value);
    }
    if (const char* value = matchValueKey(pos, "validated:"))
        m_validated = headerValue<unsigned>(value, false) != 0;
}

void RcgParser::nodesValues(const char* pos) {
    if (*pos == '\0') return;
    m_ndsnum = headerValue<Id>(pos, false);
    pos = skipBlanks(pos);
    if (*pos != '\0') m_startid = headerValue<Id>(pos, false);
}

template <class GraphT>
std::shared_ptr<GraphT> RcgParser::build() {
    // A number that lies must not make the table of ids larger than the file can fill it.
    const Size expected = m_startid == ID_NONE ? std::min<Size>(m_ndsnum, m_size) : m_ndsnum;
    NodeNumbers nodes(expected, m_startid != ID_NONE);
    if (m_startid != ID_NONE) {
        VORL_ASSERT(m_ndsnum != 0,
                    "addNodes(), the number of nodes to instantiate must be positive");
        StructNodeErrors errors("WARNING build(), the duplicated nodes are skipped: ");
        for (Id id = m_startid; id < static_cast<Id>(m_startid + m_ndsnum); ++id)
            nodes.announce(id, errors);
        errors.show();
    }
    LinkGatherer gathered;
    StructLinkErrors errors(REPEATS_MESSAGE);
    Id id = ID_NONE;
    typename GraphT::InpLinksT links;
    for (LineReader lines(m_file, m_size); lines.next();) {
        const char* pos = skipBlanks(lines.begin());
        if (*pos == '\0' || *pos == '#') continue;
        if (*pos == '/') {
            if (matchKey(pos, "/edges")) {
                m_bodysect = EDGES;
            } else if (matchKey(pos, "/arcs")) {
                m_bodysect = ARCS;
                m_directed = true;
            } else {
                throw std::domain_error("Unknown section is used: " + std::string(pos) + "\n");
            }
        } else if (m_bodysect == EDGES || m_bodysect == ARCS) {
            if (!readLinks(pos, id, links)) continue;
            const Id src = nodes.number(id);
            for (const auto& ln : links) {
                LinkWeight weight = 1;
                if constexpr (GraphT::IS_WEIGHTED) weight = ln.weight;
                gathered.add(src, nodes.number(ln.id), weight, m_bodysect == ARCS);
            }
        }
    }
    if (m_seed || m_shuffle) gathered.shuffle(m_seed ? *m_seed : drawSeed(), nodes.ids);
    const auto graph = GraphLoader<GraphT::IS_WEIGHTED>(gathered, nodes.ids, m_shuffle, m_sumdups,
                                                        static_cast<Id>(expected))
                           .graph(&errors);
    errors.show();
    return graph;
}

template <class GraphT>
void RcgParser::parseLinks(GraphT& graph, const char* line, bool directed,
                           StructLinkErrors* errors) {
    Id id = ID_NONE;
    typename GraphT::InpLinksT links;
    if (!readLinks(line, id, links)) return;
    const auto add = [&]<bool DIRECTED>() {
        if (m_startid == ID_NONE)
            graph.template addNodeAndLinks<DIRECTED>(id, links, errors);
        else
            graph.template addNodeLinks<DIRECTED>(id, links, errors);
    };
    if (directed)
        add.template operator()<true>();
    else
        add.template operator()<false>();
}

#define VORL_INSTANTIATE(WEIGHTED)                                                    \
    template VORL_API std::shared_ptr<Graph<WEIGHTED>> RcgParser::build();            \
    template VORL_API void RcgParser::parseLinks(Graph<WEIGHTED>&, const char*, bool, \
                                                 StructLinkErrors*);

VORL_INSTANTIATE(false)
VORL_INSTANTIATE(true)

#undef VORL_INSTANTIATE

}  // namespace vorl
