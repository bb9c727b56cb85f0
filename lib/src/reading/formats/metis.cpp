// The reader of the format METIS: behind a line of counts, a line with the neighbours of each node.
#include "network_reader.hpp"

#include <bit>

namespace vorl::detail {

namespace {

/// What the two tellings of an edge have in common.
std::uint64_t mixed(Id low, Id high, LinkWeight weight) {
    std::uint64_t hash = (std::uint64_t{low} << 32 | high) * 0x9E3779B97F4A7C15;
    hash ^= hash >> 29;
    hash = (hash ^ std::bit_cast<std::uint32_t>(weight)) * 0xBF58476D1CE4E5B9;
    return hash ^ hash >> 32;
}

class MetisReader : public NetworkReader {
public:
    using NetworkReader::NetworkReader;

protected:
    void readAll() override {
        while (m_lines.next()) {
            m_line = m_lines.number();
            std::string_view line = trimFront(m_lines.line());
            if (line.starts_with('%')) continue;
            if (m_facts.headerLine == 0) {
                if (!line.empty()) readHeader(line);
            } else if (m_node < *m_facts.nodes) {
                ++m_node;
                readNeighbours(line);
            } else if (!line.empty()) {
                throw fault("the header tells of " + counted(*m_facts.nodes, "node") +
                            ", this is the line of a further one");
            }
        }
        if (m_lines.bytes() == 0) return;
        if (m_facts.headerLine == 0) throw fault("the file ends without the line of counts");
        if (m_node != *m_facts.nodes)
            throw headerFault("the header tells of " + counted(*m_facts.nodes, "node") +
                              ", the file has lines for " + grouped(m_node));
        if (m_ends != 2 * m_told)
            throw headerFault("the header tells of " + counted(m_told, "edge") + ", which are " +
                              grouped(2 * m_told) + " neighbours, the file has " + grouped(m_ends));
        if (m_balance != 0)
            throw headerFault("edges aren't told alike from both of their ends, which is expected");
        addPlaces();
    }

private:
    void readHeader(std::string_view line) {
        tellPlaces(toNodes(nextToken(line)));
        const std::string_view edges = nextToken(line);
        m_told = toCount(edges, "edges");
        if (m_told > ~Size{0} / 2)
            throw fault("the header's number of edges", edges,
                        "one below 9223372036854775808 is expected");
        const std::string_view format = nextToken(line);
        if (format.size() > 3 || format.find_first_not_of("01") != std::string_view::npos)
            throw fault("the header's format", format, "up to three digits 0 or 1 are expected");
        const auto flag = [format](std::size_t fromEnd) {
            return format.size() > fromEnd && format[format.size() - 1 - fromEnd] == '1';
        };
        m_weights = flag(0);
        m_skipped = flag(2);
        const std::string_view count = nextToken(line);
        if (flag(1)) m_skipped += count.empty() ? 1 : toCount(count, "weights of a node");
        if (m_skipped > 1000) throw fault("the header's number of weights of a node is above 999");
        if (!trimFront(line).empty()) throw fault("found " + quoted(line) + " behind the counts");
        if (m_options.directed.value_or(false))
            throw fault("the format metis holds edges, and no arcs");
    }

    void readNeighbours(std::string_view line) {
        for (Size i = 0; i < m_skipped; ++i)
            if (nextToken(line).empty())
                throw fault("the line ends within the sizes and weights of the node");
        for (std::string_view token = nextToken(line); !token.empty(); token = nextToken(line)) {
            const Id other = toPlace(token, "neighbour");
            LinkWeight weight = 1;
            if (m_weights) {
                const std::string_view value = nextToken(line);
                if (value.empty())
                    throw fault("the neighbour " + std::to_string(other) + " has no weight");
                // Each edge comes twice, and counts once.
                weight = m_node < other ? takeWeight(value) : toWeight(value);
                if (!m_readWeights || weight == 0) weight = 1;
            }
            if (other == m_node) throw fault("the node is its own neighbour");
            if (++m_ends > 2 * m_told)
                throw fault("the header tells of " + counted(m_told, "edge") + ", which are " +
                            grouped(2 * m_told) + " neighbours, this is a further one");
            const std::uint64_t hash =
                mixed(std::min(m_node, other), std::max(m_node, other), weight);
            m_balance += m_node < other ? hash : -hash;
            if (m_node < other) addLinkOf(m_node, other, weight, false);
        }
    }

    Size m_told = 0;     // edges
    Size m_ends = 0;     // neighbours that came
    Size m_skipped = 0;  // numbers in front of the neighbours
    bool m_weights = false;
    Id m_node = 0;
    std::uint64_t m_balance = 0;  // 0 if all edges came both ways
};

}  // namespace

std::unique_ptr<NetworkReader> metisReader(Lines& lines, const ScanOptions& options,
                                           NodeNames& nodes, const LinkVisitor& visit) {
    return std::make_unique<MetisReader>(lines, options, nodes, visit);
}

}  // namespace vorl::detail
