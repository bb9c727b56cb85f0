#include <vorl/reading/network_text.hpp>

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/tokens.hpp>
#include <vorl/reading/wording.hpp>
#include <vorl/types/progress.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace vorl {

namespace {

/// Bytes between reports.
constexpr std::size_t BLOCK = 1 << 18;

/// The walk over the lines, and the check of numbers.
class LineChecker {
public:
    LineChecker(const std::string& file, bool readWeights, const LinkVisitor& visit,
                ZeroWeights zeros, const NetworkBounds& bounds)
        : m_file(file),
          m_readWeights(readWeights),
          m_visit(visit),
          m_zeros(zeros),
          m_bounds(bounds) {}
    virtual ~LineChecker() = default;

    NetworkFacts check(std::string_view text) {
        if (text.empty()) throw InputError(m_file + ": the file is empty, links are expected");
        if (text.starts_with(BYTE_ORDER_MARK)) {
            m_facts.plain = false;
            text.remove_prefix(BYTE_ORDER_MARK.size());
        }
        const ProgressReporter report;
        report.begin("checking", text.size());
        std::size_t reported = text.size();
        const bool binary = text.find('\0') != std::string_view::npos;
        while (!text.empty()) {
            ++m_line;
            if (reported - text.size() >= BLOCK) {
                report.advance(reported - text.size());
                reported = text.size();
            }
            std::string_view line = takeLine(text);
            if (line.ends_with('\r')) {
                m_facts.plain = false;
                line.remove_suffix(1);
            }
            if (binary && std::memchr(line.data(), '\0', line.size()))
                throw fault("a NUL byte: the file is binary, lines of text are expected");
            line = trimFront(line);
            if (!line.empty()) checkLine(line);
        }
        if (m_facts.links() == 0 && m_facts.zeroWeights != 0)
            throw InputError::at(m_file, m_facts.firstZeroWeight,
                                 "the weight is 0, as that of all links, and none is left");
        if (m_facts.links() == 0)
            throw InputError::at(m_file, std::max<std::size_t>(m_line, 1),
                                 "the file ends without a link");
        m_facts.weighted = m_readWeights;
        checkTotals();
        // Weights are compared at 32 bits, both directions counted.
        if (2 * m_facts.weight > std::numeric_limits<float>::max())
            throw InputError(m_file + ": the weights add up to more than 1.7e38");
        return m_facts;
    }

protected:
    virtual void checkLine(std::string_view line) = 0;
    virtual void checkTotals() = 0;

    InputError fault(const std::string& what) const { return InputError::at(m_file, m_line, what); }
    InputError headerFault(const std::string& what) const {
        return InputError::at(m_file, m_facts.headerLine, what);
    }

    /// With those that are left out.
    Size linksOfFile() const {
        return m_facts.links() + (m_zeros == ZeroWeights::DROP ? m_facts.zeroWeights : 0);
    }

    /// The first line that isn't a comment has come.
    bool inBody() const { return m_body; }
    void startBody() { m_body = true; }

    Size checkCount(std::string_view token, const std::string& what) const {
        Size count = 0;
        const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), count);
        if (token.empty() || err != std::errc() || last != token.data() + token.size())
            throw fault("the header's number of " + what + " is " + quoted(token) +
                        ", a whole number is expected");
        return count;
    }

    Size checkNodes(std::string_view token) const {
        const Size nodes = checkCount(token, "nodes");
        if (nodes >= ID_MAX)
            throw fault("the header's number of nodes is " + std::to_string(nodes) +
                        ", at most 4294967294 are possible");
        return nodes;
    }

    bool checkFlag(std::string_view token, const char* what) const {
        Size value = 0;
        const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), value);
        if (token.empty() || err != std::errc() || last != token.data() + token.size() ||
            value > std::numeric_limits<unsigned>::max())
            throw fault(std::string("the header's \"") + what + "\" is " + quoted(token) +
                        ", 0 or 1 is expected");
        return value != 0;
    }

    Id checkId(std::string_view token, const char* what) const {
        return vorl::toId(token, what, [this](const std::string& told) { return fault(told); });
    }

    /// The weight of a link by the one that is given.
    LinkWeight takeWeight(std::string_view token) {
        const LinkWeight weight = checkWeight(token);
        if (!m_readWeights) return 1;
        m_facts.statesWeights = true;
        m_zero = weight == 0;
        return m_zero ? 1 : weight;
    }

    LinkWeight checkWeight(std::string_view token) const {
        double weight = 0;
        const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), weight);
        const bool whole = last == token.data() + token.size();
        if (err == std::errc::invalid_argument || !whole || std::isnan(weight))
            throw fault("the weight is " + quoted(token) + ", a number is expected");
        if (token.front() == '-')
            throw fault("the weight is " + quoted(token) + ", it must not be negative");
        // The library holds 32-bit weights, and refuses those that these can't tell from 0.
        if (err != std::errc() || weight > std::numeric_limits<float>::max() ||
            (weight != 0 && weight < std::numeric_limits<float>::min()))
            throw fault("the weight is " + quoted(token) +
                        ", 0 or a number from 1.2e-38 to 3.4e38 is expected");
        // Not narrowed from 64 bits, which would round twice.
        float narrow = 0;
        std::from_chars(token.data(), token.data() + token.size(), narrow);
        return narrow;
    }

    void requireRoom(Size nodes) const {
        if (nodes > m_bounds.nodes) refuse("the header tells of " + counted(nodes, "node"));
    }

    void addLink(const RawLink& ln) {
        if (std::exchange(m_zero, false)) {
            if (m_facts.zeroWeights++ == 0) m_facts.firstZeroWeight = m_line;
            if (m_zeros == ZeroWeights::DROP) return;
        }
        m_facts.selfEdges += !ln.arc && ln.src == ln.dst;
        ++(ln.arc ? m_facts.arcs : m_facts.edges);
        m_facts.weight += static_cast<AccWeight>(ln.weight);
        if (m_facts.links() > m_bounds.links)
            refuse("there are more than " + counted(m_bounds.links, "link"));
        if (m_visit) m_visit(ln);
    }

    const std::string& m_file;
    bool m_readWeights;
    std::size_t m_line = 0;
    NetworkFacts m_facts;

private:
    [[noreturn]] void refuse(const std::string& what) const {
        throw MemoryLimitError(
            fault(what + ", which may need more than " + bytes(m_bounds.memory) + " of memory")
                .what());
    }

    const LinkVisitor& m_visit;
    const ZeroWeights m_zeros;
    const NetworkBounds& m_bounds;
    bool m_zero = false;  ///< the weight of the next link is 0
    bool m_body = false;
};

/// Lines of `src dst [weight]`, behind a comment that may tell counts.
class NslChecker : public LineChecker {
public:
    NslChecker(const std::string& file, bool arcs, bool readWeights, const LinkVisitor& visit,
               ZeroWeights zeros, const NetworkBounds& bounds)
        : LineChecker(file, readWeights, visit, zeros, bounds), m_arcs(arcs) {
        m_facts.toldDirected = arcs;
    }

protected:
    void checkLine(std::string_view line) override {
        if (line.front() != '#') {
            startBody();
            checkLink(line);
        } else if (!inBody() && m_facts.headerLine == 0) {
            checkHeader(trimFront(line.substr(1)));
        }
    }

    void checkTotals() override {
        if (m_links && *m_links != linksOfFile())
            throw headerFault("the header tells of " + std::to_string(*m_links) +
                              " links, the file has " + std::to_string(linksOfFile()));
    }

private:
    void checkHeader(std::string_view text) {
        if (!takeKey(text, "nodes:")) return;
        m_facts.headerLine = m_line;
        if (!text.empty()) m_facts.nodes = checkNodes(takeValue(text));
        const bool edges = takeKey(text, "edges:");
        const bool arcs = !edges && takeKey(text, "arcs:");
        if ((edges || arcs) && !text.empty()) {
            m_links = checkCount(takeValue(text), "links");
            m_facts.toldDirected = m_arcs = arcs;
        }
        if (takeKey(text, "weighted:") && !text.empty() && !checkFlag(takeValue(text), "Weighted:"))
            m_readWeights = false;
    }

    void checkLink(std::string_view line) {
        RawLink ln{checkId(nextToken(line), "source"), 0, 1, m_arcs};
        const std::string_view dest = nextToken(line);
        if (dest.empty()) throw fault("a single id, a source and a destination are expected");
        ln.dst = checkId(dest, "destination");
        const std::string_view token = m_readWeights ? nextToken(line) : std::string_view();
        if (!token.empty()) {
            ln.weight = takeWeight(token);
            if (!trimFront(line).empty() && m_facts.wideLines++ == 0)
                m_facts.firstWideLine = m_line;
        }
        addLink(ln);
    }

    bool m_arcs;
    std::optional<Size> m_links;
};

/// Sections of lines `src> dst[:weight] ...`.
class RcgChecker : public LineChecker {
public:
    RcgChecker(const std::string& file, bool readWeights, Size size, const LinkVisitor& visit,
               ZeroWeights zeros, const NetworkBounds& bounds)
        : LineChecker(file, readWeights, visit, zeros, bounds), m_size(size) {}

protected:
    void checkLine(std::string_view line) override {
        if (line.front() == '#') return;
        if (line.front() == '/')
            checkSection(line);
        else if (m_section == EDGES || m_section == ARCS)
            checkLinks(line);
        else
            throw fault(quoted(line) +
                        " stands before the first section of links, /Edges or /Arcs "
                        "is expected");
    }

    void checkTotals() override {}

private:
    enum Section { NONE, GRAPH, NODES, EDGES, ARCS };

    void checkSection(std::string_view line) {
        if (takeKey(line, "/graph")) {
            if (m_section != NONE) throw fault("the section /Graph must be the first one");
            m_section = GRAPH;
            if (takeGraphKey(line, "weighted:")) {
                m_fileWeighted = checkFlag(nextToken(line), "weighted:");
                m_readWeights = m_readWeights && m_fileWeighted;
            }
            if (takeGraphKey(line, "validated:")) checkFlag(nextToken(line), "validated:");
        } else if (takeKey(line, "/nodes")) {
            if (m_section > GRAPH)
                throw fault("the section /Nodes must be the first one, or the one behind /Graph");
            m_section = NODES;
            if (!line.empty()) checkNodesSection(line);
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

    void checkNodesSection(std::string_view line) {
        m_facts.headerLine = m_line;
        m_facts.nodes = checkNodes(nextToken(line));
        const std::string_view first = nextToken(line);
        if (first.empty()) return;
        m_facts.firstId = checkId(first, "first id of the nodes");
        if (*m_facts.nodes == 0) throw fault("the header tells of 0 nodes, at least 1 is expected");
        if (*m_facts.nodes > ID_MAX - *m_facts.firstId)
            throw fault("the ids of " + std::to_string(*m_facts.nodes) + " nodes from " +
                        std::to_string(*m_facts.firstId) +
                        " on go beyond the largest one, 4294967294");
        // Announced nodes take memory, whether they have links or not.
        constexpr Size always = 1'000'000;
        if (*m_facts.nodes > std::max(always, m_size))
            throw fault("the header tells of " + std::to_string(*m_facts.nodes) +
                        " nodes, more than the file has bytes");
        requireRoom(*m_facts.nodes);
    }

    Id checkNode(std::string_view token, const char* what) const {
        const Id id = checkId(token, what);
        if (m_facts.firstId && (id < *m_facts.firstId || id - *m_facts.firstId >= *m_facts.nodes))
            throw fault(std::string("the ") + what + " is " + std::to_string(id) +
                        ", which is none of the nodes " + std::to_string(*m_facts.firstId) +
                        " to " + std::to_string(*m_facts.firstId + (*m_facts.nodes - 1)) +
                        " that the file announces");
        return id;
    }

    void checkLinks(std::string_view line) {
        const std::size_t mark = line.find('>');
        if (mark == std::string_view::npos)
            throw fault(quoted(line) + " has no \">\" behind the source");
        RawLink ln{checkNode(line.substr(0, mark), "source"), 0, 1, m_section == ARCS};
        line = trimFront(line.substr(mark + 1));
        if (line.empty()) ++m_facts.linkless;
        for (std::string_view token = nextToken(line); !token.empty(); token = nextToken(line)) {
            const std::size_t colon = token.find(':');
            ln.dst = checkNode(token.substr(0, colon), "destination");
            ln.weight = 1;
            if (colon != std::string_view::npos) {
                if (!m_fileWeighted)
                    throw fault(quoted(token) +
                                " has a weight, the section /Graph tells of unweighted links");
                ln.weight = takeWeight(token.substr(colon + 1));
            }
            addLink(ln);
        }
    }

    const Size m_size;
    Section m_section = NONE;
    bool m_fileWeighted = true;
};

}  // namespace

NetworkBounds NetworkBounds::ofMemory(std::size_t memory, std::size_t text) {
    // Of networks of distinct links, their nodes and the hierarchy.
    constexpr std::size_t ofLink = 128;
    constexpr std::size_t ofNode = 512;
    const std::size_t left = memory > 2 * text ? memory - 2 * text : 0;
    return {left / ofLink, left / ofNode, memory};
}

NetworkFacts scanNetwork(std::string_view text, const std::string& name, FileFormat format,
                         bool readWeights, const LinkVisitor& visit, ZeroWeights zeros,
                         const NetworkBounds& bounds) {
    if (format == FileFormat::RCG)
        return RcgChecker(name, readWeights, text.size(), visit, zeros, bounds).check(text);
    return NslChecker(name, format == FileFormat::NSA, readWeights, visit, zeros, bounds)
        .check(text);
}

NetworkWriter::NetworkWriter(FileFormat format, const NetworkFacts& facts)
    : m_format(format), m_weighted(facts.weighted) {
    const std::string weighted = m_weighted ? "1" : "0";
    if (format == FileFormat::RCG) {
        m_text = "/Graph weighted:" + weighted + "\n";
        if (facts.nodes) m_text += "/Nodes " + std::to_string(*facts.nodes);
        if (facts.firstId) m_text += " " + std::to_string(*facts.firstId);
        if (facts.nodes) m_text += "\n";
        return;
    }
    if (!facts.nodes) return;
    m_text = "# Nodes: " + std::to_string(*facts.nodes);
    // Edges among arcs are written as two arcs, and their number isn't told then.
    if (format == FileFormat::NSE) m_text += ", Edges: " + std::to_string(facts.edges);
    if (format == FileFormat::NSA && facts.edges == 0)
        m_text += ", Arcs: " + std::to_string(facts.arcs);
    m_text += ", Weighted: " + weighted + "\n";
}

void NetworkWriter::startSection(bool arcs) {
    if (m_src) m_text += '\n';
    m_src.reset();
    m_text += arcs ? "/Arcs\n" : "/Edges\n";
    m_arcs = arcs;
}

void NetworkWriter::add(const RawLink& ln) {
    char digits[32];
    const auto append = [&](auto value) {
        m_text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    };
    if (m_format != FileFormat::RCG) {
        append(ln.src);
        m_text += ' ';
        append(ln.dst);
        if (m_weighted) {
            m_text += ' ';
            append(ln.weight);
        }
        m_text += '\n';
        if (m_format == FileFormat::NSA && !ln.arc && ln.src != ln.dst)
            add({ln.dst, ln.src, ln.weight, true});
        return;
    }
    if (m_arcs != ln.arc) startSection(ln.arc);
    if (m_src != ln.src) {
        if (m_src) m_text += '\n';
        append(ln.src);
        m_text += '>';
        m_src = ln.src;
    }
    m_text += ' ';
    append(ln.dst);
    if (m_weighted) {
        m_text += ':';
        append(ln.weight);
    }
}

std::string NetworkWriter::take() {
    if (m_src) m_text += '\n';
    return std::move(m_text);
}

std::string normalised(std::string_view text) {
    if (text.starts_with(BYTE_ORDER_MARK)) text.remove_prefix(BYTE_ORDER_MARK.size());
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || (i + 1 < text.size() && text[i + 1] != '\n')) result += text[i];
    return result;
}

}  // namespace vorl
