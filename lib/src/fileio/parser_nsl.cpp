#include <vorl/fileio/parser_nsl.hpp>

#include <vorl/fileio/parse_number.hpp>
#include <vorl/types/text.hpp>
#include <vorl/types/trace.hpp>

#include <strings.h>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <stdexcept>

namespace vorl {

const char* const NslParser::m_spaces = " \t";

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isBlankOrEnd(char c) { return isBlank(c) || c == '\0'; }

const char* skipBlanks(const char* pos) {
    while (isBlank(*pos)) ++pos;
    return pos;
}

/// Behind the key if it stands at the position and ends there, else null.
const char* matchKey(const char* pos, const char* key) {
    const std::size_t length = std::strlen(key);
    return strncasecmp(pos, key, length) == 0 && isBlankOrEnd(pos[length]) ? pos + length : nullptr;
}

/// A value of the header.
/// @param[in,out] pos moves behind the value
/// @throws std::invalid_argument if it is malformed or doesn't fit
template <class DestT>
DestT headerValue(const char*& pos) {
    char* end;
    errno = 0;
    const unsigned long long value = std::strtoull(pos, &end, 10);
    const bool bad = errno != 0 || !(isBlankOrEnd(*end) || *end == ',');
    validateVal<DestT>(value, pos, bad,
                       errno != 0 ? std::strerror(errno) : "Terminating symbol is invalid");
    pos = end;
    return static_cast<DestT>(value);
}

const char* skipSeparator(const char* pos) { return skipBlanks(*pos == ',' ? pos + 1 : pos); }

/// An id of the body.
/// @param[in,out] pos moves behind the id
/// @throws std::invalid_argument if it is malformed or not below ID_NONE
Id parseId(const char*& pos) {
    // Plain digits, which can't overflow, without a call.
    unsigned long value = 0;
    const char* digit = pos;
    while (*digit >= '0' && *digit <= '9' && digit - pos < 10)
        value = 10 * value + static_cast<unsigned long>(*digit++ - '0');
    errno = 0;
    if (digit == pos || !isBlankOrEnd(*digit)) {
        char* end;
        value = std::strtoul(pos, &end, 10);
        digit = end;
    }
    const bool bad = errno != 0 || value >= ID_NONE || !isBlankOrEnd(*digit);
    if (bad)
        validateVal<Id>(value, pos, true,
                        errno != 0 ? std::strerror(errno)
                                   : "id == ID_NONE or the terminating symbol is invalid");
    pos = digit;
    return static_cast<Id>(value);
}

/// The weight of a link; 0 reads as the default weight.
LinkWeight parseWeight(const char* pos, const char* end) {
    LinkWeight weight = 0;
    bool plain = *pos >= '0' && *pos <= '9';
    if (plain) {
        const auto [last, err] = std::from_chars(pos, end, weight);
        plain = err == std::errc() && isBlankOrEnd(*last) && std::isnormal(weight);
    }
    if (!plain) {
        errno = 0;
        weight = std::strtof(pos, nullptr);
        validateVal<float>(weight, pos, errno != 0, errno != 0 ? std::strerror(errno) : nullptr);
    }
    return weight == 0 ? 1 : weight;
}

}  // namespace

NslParser::NslParser(const InpOptions& opts)
    : m_shuffle(opts.shuffle), m_sumdups(opts.sumdups), m_directed(opts.format == FileFormat::NSA) {
    if (opts.format != FileFormat::NSE && opts.format != FileFormat::NSA)
        throw std::invalid_argument("NslParser(), NSL format is expected instead of " +
                                    to_string(opts.format) + "\n");
    m_file.clear();
    m_file.open(opts.filename);
    if (!m_file.is_open()) {
        const int err = errno;
        std::perror(("NslParser(), error opening the file " + opts.filename).c_str());
        throw std::ios_base::failure(std::string(std::strerror(err)) + "\n");
    }
    std::error_code err;
    const std::uintmax_t size = std::filesystem::file_size(opts.filename, err);
    if (err)
        VORL_TRACE("WARNING filesize(), file size evaluation failed: %s\n", err.message().c_str());
    else
        m_size = size;
    header();
}

void NslParser::header() {
    while (std::getline(m_file, m_line)) {
        const char* pos = skipBlanks(m_line.c_str());
        if (*pos == '\0') continue;
        if (*pos != '#') return;
        if (!parseHeader(skipBlanks(pos + 1))) continue;
        if (!std::getline(m_file, m_line)) m_line.clear();
        return;
    }
    m_line.clear();
}

/// @return whether the comment is the header
bool NslParser::parseHeader(const char* pos) {
    pos = matchKey(pos, "nodes:");
    if (!pos) return false;
    pos = skipBlanks(pos);
    try {
        m_ndsnum = headerValue<Id>(pos);
    } catch (const std::invalid_argument& err) {
        VORL_TRACE("WARNING header(), the nodes number is invalid, omitted: %s", err.what());
        return false;
    }
    pos = skipSeparator(pos);

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
        try {
            m_lnsnum = headerValue<unsigned long>(pos);
            pos = skipSeparator(pos);
        } catch (const std::invalid_argument& err) {
            VORL_TRACE("WARNING header(), the links number value is invalid, omitted: %s",
                       err.what());
        }
    }
    const char* weighted = matchKey(pos, "weighted:");
    if (!weighted) return true;
    weighted = skipBlanks(weighted);
    if (*weighted == '\0') return true;
    try {
        m_weighted = headerValue<unsigned>(weighted) != 0;
    } catch (const std::invalid_argument& err) {
        VORL_TRACE("WARNING header(), the weighted value is invalid, omitted: %s", err.what());
    }
    return true;
}

/// The number of nodes that a file of this size may hold; it only sizes the map of ids.
Id NslParser::estimateNodes() const {
    if (m_size == 0 || m_size == ~Size{0}) return 0;
    Size rest = m_size % 10;
    Size tokens = rest / 2;
    if (m_size > 9) {
        Size power = 10;
        Size width = 2;
        do {
            ++width;
            power *= 10;
            tokens += (m_size - rest) % power / width;
            rest = m_size % power;
        } while (m_size >= power && power <= std::numeric_limits<Size>::max() / 10);
    }
    if (m_directed) tokens /= 2;
    const double nodes = std::pow(static_cast<double>(tokens), static_cast<double>(0.78f));
    return static_cast<Id>(std::min(nodes, static_cast<double>(ID_MAX)));
}

template <class GraphT>
std::shared_ptr<GraphT> NslParser::build(bool weights) {
    weights = weights && GraphT::IS_WEIGHTED;
    // A header that lies must not make the map of ids larger than the file can fill it.
    GraphT graph(static_cast<Id>(std::min<Size>(m_ndsnum, m_size)), m_shuffle, m_sumdups);
    if (m_ndsnum == 0) {
        const Id estimate = estimateNodes();
        if (estimate != 0) graph.reset(estimate, m_shuffle, m_sumdups, Reduction::NONE);
    }

    StructLinkErrors errors("WARNING build(), the duplicated links are skipped: ");
    typename GraphT::InpLinksT links;
    Size count = 0;
    Id prev = ID_NONE;
    const auto flush = [&] {
        if (links.empty()) return;
        if (m_directed)
            graph.template addNodeAndLinks<true>(prev, links, &errors);
        else
            graph.template addNodeAndLinks<false>(prev, links, &errors);
        links.clear();
    };
    do {
        const char* pos = skipBlanks(m_line.c_str());
        if (*pos == '\0' || *pos == '#') continue;
        const Id src = parseId(pos);
        pos = skipBlanks(pos);
        if (*pos == '\0')
            throw std::domain_error("ERROR build(), The dest id is expected: " + m_line + "\n");
        const Id dst = parseId(pos);
        if (src != prev) flush();
        pos = skipBlanks(pos);
        if (weights && *pos != '\0')
            links.emplace_back(dst, parseWeight(pos, m_line.c_str() + m_line.size()));
        else
            links.emplace_back(dst);
        ++count;
        prev = src;
    } while (std::getline(m_file, m_line));
    flush();
    errors.show();
    if (m_lnsnum != 0 && m_lnsnum != count)
        VORL_TRACE(
            "The number of links specified in the header (%lu) does not correspond to the actual "
            "number of links(%lu)\n",
            m_lnsnum, count);
    return graph.toSharedPtr();
}

template VORL_API std::shared_ptr<Graph<false>> NslParser::build(bool);
template VORL_API std::shared_ptr<Graph<true>> NslParser::build(bool);

}  // namespace vorl
