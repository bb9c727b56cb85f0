#include <vorl/fileio/parser_nsl.hpp>

#include "../graph/loader.hpp"
#include "../graph/placing.hpp"
#include "scan.hpp"

#include <vorl/types/id_numbers.hpp>
#include <vorl/types/text.hpp>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vorl {

const char* const NslParser::m_spaces = " \t";

using namespace detail;

namespace {

/// An id of the body.
/// @param[in,out] pos moves behind the id
/// @throws std::invalid_argument if it is malformed or not below ID_NONE
Id parseId(const char*& pos) {
    const Number number = scanNumber(pos);
    if (number.err != 0 || number.value >= ID_NONE || !isBlankOrEnd(*number.end))
        validateVal<Id>(number.value, pos, true,
                        number.err != 0 ? systemText(number.err).c_str()
                                        : "id == ID_NONE or the terminating symbol is invalid");
    pos = number.end;
    return static_cast<Id>(number.value);
}

/// The weight of a link; 0 reads as the default weight.
LinkWeight parseWeight(const char* pos, const char* end) {
    const Decimal number = scanFloat(pos, end);
    if (number.err != 0)
        validateVal<float>(number.value, pos, true, systemText(number.err).c_str());
    return number.value == 0 ? 1 : number.value;
}

}  // namespace

NslParser::NslParser(const InpOptions& opts)
    : m_shuffle(opts.shuffle), m_sumdups(opts.sumdups), m_directed(opts.format == FileFormat::NSA) {
    if (opts.format != FileFormat::NSE && opts.format != FileFormat::NSA)
        throw std::invalid_argument("NslParser(), NSL format is expected instead of " +
                                    to_string(opts.format) + "\n");
    openText(m_file, opts.filename, "NslParser");
    m_size = textSize(opts.filename);
    header();
}

void NslParser::header() {
    readComments(m_file, m_line, [this](const char* comment) { return parseHeader(comment); });
}

/// @return whether the comment is the header
bool NslParser::parseHeader(const char* pos) {
    pos = matchKey(pos, "nodes:");
    if (!pos) return false;
    pos = skipBlanks(pos);
    if (!takeHeaderValue(pos, m_ndsnum, "nodes number")) return false;

    const char* edges = matchKey(pos, "edges:");
    const char* arcs = edges ? nullptr : matchKey(pos, "arcs:");
    if (edges || arcs) {
        pos = skipBlanks(edges ? edges : arcs);
        if (*pos == '\0') return true;
        if (edges && m_directed)
            VORL_TRACE(
                "WARNING header(), specified file format (ARCS) does not match the actual file "
                "format (EDGES). The actual one is used.\n");
        else if (arcs && !m_directed)
            VORL_TRACE(
                "WARNING header(), specified file format (EDGES) does not match the actual file "
                "format (ARCS). The actual one is used.\n");
        m_directed = arcs != nullptr;
        takeHeaderValue(pos, m_lnsnum, "links number value");
    }
    const char* key = matchKey(pos, "weighted:");
    if (!key) return true;
    key = skipBlanks(key);
    unsigned weighted = 0;
    if (*key != '\0' && takeHeaderValue(key, weighted, "weighted value"))
        m_weighted = weighted != 0;
    return true;
}

/// The number of nodes that a file of this size may hold; it only sizes the table of ids.
Id NslParser::estimateNodes() const {
    if (m_size == 0 || m_size == ~Size{0}) return 0;
    Size tokens = estimateTokens(m_size);
    if (m_directed) tokens /= 2;
    const double nodes = std::pow(static_cast<double>(tokens), static_cast<double>(0.78f));
    return static_cast<Id>(std::min(nodes, static_cast<double>(ID_MAX)));
}

template <class GraphT>
std::shared_ptr<GraphT> NslParser::build(bool weights) {
    weights = weights && GraphT::IS_WEIGHTED;
    // A header that lies must not make the table of ids larger than the file can fill it.
    const Size expected = m_ndsnum != 0 ? std::min<Size>(m_ndsnum, m_size) : estimateNodes();
    IdNumbers numbers(expected);
    std::vector<Id> ids;
    LinkGatherer links;
    const auto readLink = [&](const char* line, const char* end) {
        const char* pos = skipBlanks(line);
        if (*pos == '\0' || *pos == '#') return;
        const Id src = parseId(pos);
        pos = skipBlanks(pos);
        if (*pos == '\0')
            throw std::domain_error(
                "ERROR build(), The dest id is expected: " + std::string(line, end) + "\n");
        const Id dst = parseId(pos);
        pos = skipBlanks(pos);
        const LinkWeight weight = weights && *pos != '\0' ? parseWeight(pos, end) : 1;
        const Id place = numbers.number(src, ids);
        links.add(place, numbers.number(dst, ids), weight, m_directed);
    };
    readLink(m_line.c_str(), m_line.c_str() + m_line.size());
    for (LineReader lines(m_file, m_size); lines.next();) readLink(lines.begin(), lines.end());
    const Size count = links.size();
    if (m_seed || m_shuffle) links.shuffle(m_seed ? *m_seed : drawSeed(), ids);
    StructLinkErrors errors(REPEATS_MESSAGE);
    const auto graph = GraphLoader<GraphT::IS_WEIGHTED>(links, ids, m_shuffle, m_sumdups,
                                                        static_cast<Id>(expected))
                           .graph(&errors);
    errors.show();
    if (m_lnsnum != 0 && m_lnsnum != count)
        VORL_TRACE(
            "The number of links specified in the header (%lu) does not correspond to the actual "
            "number of links(%lu)\n",
            m_lnsnum, count);
    return graph;
}

template VORL_API std::shared_ptr<Graph<false>> NslParser::build(bool);
template VORL_API std::shared_ptr<Graph<true>> NslParser::build(bool);

}  // namespace vorl
