// The reader of the formats NSE and NSA: lines of `src dst [weight]`, behind a comment that may
// tell counts.
#include "network_reader.hpp"

#include <optional>

namespace vorl::detail {

namespace {

class LinkListReader : public LineNetworkReader {
public:
    LinkListReader(Lines& lines, const ScanOptions& options, NodeNames& nodes,
                   const LinkVisitor& visit)
        : LineNetworkReader(lines, options, nodes, visit),
          m_arcs(options.format == NetworkFormat::NSA) {
        m_facts.toldDirected = m_arcs;
    }

protected:
    void readLine(std::string_view line) override {
        if (line.front() != '#') {
            m_body = true;
            readLink(line);
        } else if (!m_body && m_facts.headerLine == 0) {
            readHeader(trimFront(line.substr(1)));
        }
    }

    void checkTotals() override {
        if (m_links && *m_links != linksOfFile())
            throw headerFault("the header tells of " + std::to_string(*m_links) +
                              " links, the file has " + std::to_string(linksOfFile()));
    }

private:
    void readHeader(std::string_view text) {
        if (!takeKey(text, "nodes:")) return;
        m_facts.headerLine = m_line;
        if (!text.empty()) m_facts.nodes = toNodes(takeValue(text));
        const bool edges = takeKey(text, "edges:");
        const bool arcs = !edges && takeKey(text, "arcs:");
        if ((edges || arcs) && !text.empty()) {
            m_links = toCount(takeValue(text), "links");
            m_facts.otherKind = m_arcs != arcs;
            m_facts.toldDirected = m_arcs = arcs;
        }
        if (takeKey(text, "weighted:") && !text.empty() && !toFlag(takeValue(text), "Weighted:"))
            m_readWeights = false;
    }

    void readLink(std::string_view line) {
        const Id src = toId(nextToken(line), "source");
        const std::string_view dest = nextToken(line);
        if (dest.empty()) throw fault("a single id, a source and a destination are expected");
        const Id dst = toId(dest, "destination");
        LinkWeight weight = 1;
        if (m_readWeights && !line.empty()) {
            const std::string_view token = nextToken(line);
            if (!token.empty()) {
                weight = takeWeight(token);
                if (!trimFront(line).empty() && m_facts.wideLines++ == 0)
                    m_facts.firstWideLine = m_line;
            }
        }
        addLinkOf(src, dst, weight, m_arcs);
    }

    bool m_arcs;
    bool m_body = false;  // the first line that isn't a comment has come
    std::optional<Size> m_links;
};

}  // namespace

std::unique_ptr<NetworkReader> linkListReader(Lines& lines, const ScanOptions& options,
                                              NodeNames& nodes, const LinkVisitor& visit) {
    return std::make_unique<LinkListReader>(lines, options, nodes, visit);
}

}  // namespace vorl::detail
