// What the readers of all formats of networks have in common.
#pragma once

#include "../longest_name.hpp"

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/lines.hpp>
#include <vorl/reading/network_scan.hpp>
#include <vorl/reading/tokens.hpp>
#include <vorl/reading/wording.hpp>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace vorl::detail {

/// Other formats, and files of clusters, can't tell a name without any characters.
/// @param fault makes the error of a message
template <class FaultT>
void requireName(std::string_view name, FaultT fault) {
    if (name.empty()) throw fault("the name of a node is \"\", a name is expected");
    if (name.size() > LONGEST_NAME)
        throw fault("the name " + quoted(name) + " has more than " + bytes(LONGEST_NAME) +
                    ", which is too much");
}

/// The fault of a file that has no bytes.
InputError emptyFile(const std::string& file);

/// Takes the links of a network in, and checks their numbers.
class NetworkReader {
public:
    /// @param visit may be empty
    NetworkReader(Lines& lines, const ScanOptions& options, NodeNames& nodes,
                  const LinkVisitor& visit)
        : m_lines(lines),
          m_file(lines.name()),
          m_options(options),
          m_readWeights(options.weights),
          m_nodes(nodes),
          m_visit(visit) {}
    NetworkReader(const NetworkReader&) = delete;
    NetworkReader& operator=(const NetworkReader&) = delete;
    virtual ~NetworkReader() = default;

    NetworkFacts read();

protected:
    /// Reads on to the end, with `m_line` as the line at hand.
    virtual void readAll() = 0;
    virtual void checkTotals() {}

    InputError fault(const std::string& what) const { return InputError::at(m_file, m_line, what); }
    /// A fault of something that has a value.
    InputError fault(const std::string& wrong, std::string_view found,
                     const std::string& expected) const {
        return InputError(InputError::Parts{m_file, m_line, wrong, quoted(found), expected});
    }
    InputError headerFault(const std::string& what) const {
        return InputError::at(m_file, m_facts.headerLine, what);
    }

    /// With those that are left out.
    Size linksOfFile() const {
        return m_facts.links() + (m_options.zeros == ZeroWeights::DROP ? m_facts.zeroWeights : 0);
    }

    Size toCount(std::string_view token, const std::string& what) const;
    /// A number of nodes.
    Size toNodes(std::string_view token) const;
    bool toFlag(std::string_view token, const char* what) const;
    /// Takes the number of nodes that the header tells, where these are numbered from 1 on.
    void tellPlaces(Size nodes);
    /// The number of such a node.
    Id toPlace(std::string_view token, const char* what) const;
    /// Adds those that no link told of, in order.
    void addPlaces();
    Id toId(std::string_view token, const char* what) const {
        // Plain digits that can't overflow.
        if (token.size() - 1 < 9) {
            Id id = 0;
            std::size_t i = 0;
            for (; i < token.size(); ++i) {
                const auto digit = static_cast<unsigned>(token[i] - '0');
                if (digit > 9) break;
                id = 10 * id + digit;
            }
            if (i == token.size()) return id;
        }
        return toWideId(token, what);
    }
    /// The weight of a link by the one that is given.
    LinkWeight takeWeight(std::string_view token) {
        const LinkWeight weight = toWeight(token);
        if (!m_readWeights) return 1;
        m_facts.statesWeights = true;
        m_zero = weight == 0;
        return m_zero ? 1 : weight;
    }
    LinkWeight toWeight(std::string_view token) const;
    /// Whether a key of a link is that of its weight.
    /// @param key   in small letters
    /// @param given whether one came already
    bool isWeight(std::string_view key, bool given) const {
        return m_options.weightName.empty() ? key == "weight" || (key == "value" && !given)
                                            : key == lowered(m_options.weightName);
    }

    /// The number of the node of a name, which may be an id.
    Id numberOf(std::string_view name) {
        requireName(name, [this](const std::string& what) { return fault(what); });
        return m_nodes.numberOf(name);
    }

    /// @throws MemoryLimitError if so many nodes can't be announced
    void requireRoom(Size nodes) const {
        if (nodes > m_options.bounds.nodes) refuse("the header tells of " + counted(nodes, "node"));
    }

    /// Nodes that the header tells of take memory, whether they have links or not.
    /// @throws InputError if there are far more than the file can hold
    void requireLikelyNodes(Size nodes) const {
        constexpr Size always = 1'000'000;
        if (nodes > always && nodes > m_lines.bytes())
            throw headerFault("the header tells of " + std::to_string(nodes) +
                              " nodes, more than the file has bytes");
    }

    /// @param src number of the node
    void addLink(Id src, Id dst, LinkWeight weight, bool arc) {
        if (m_zero) {
            m_zero = false;
            if (m_facts.zeroWeights++ == 0) m_facts.firstZeroWeight = m_line;
            if (m_options.zeros == ZeroWeights::DROP) return;
        }
        m_facts.selfEdges += !arc && src == dst;
        ++(arc ? m_facts.arcs : m_facts.edges);
        m_facts.weight += static_cast<AccWeight>(weight);
        if (m_facts.links() > m_options.bounds.links)
            refuse("there are more than " + counted(m_options.bounds.links, "link"));
        if (m_visit) m_visit({src, dst, weight, arc});
    }

    /// The same of a link between nodes by id; those of one that is left out aren't numbered.
    void addLinkOf(Id src, Id dst, LinkWeight weight, bool arc) {
        if (isDropped()) return addLink(0, 0, weight, arc);
        const Id number = m_nodes.number(src);
        addLink(number, m_nodes.number(dst), weight, arc);
    }
    /// The same of a link between nodes by any names.
    void addNamedLink(std::string_view src, std::string_view dst, LinkWeight weight, bool arc) {
        if (isDropped()) return addLink(0, 0, weight, arc);
        const Id number = numberOf(src);
        addLink(number, numberOf(dst), weight, arc);
    }

    Lines& m_lines;
    const std::string& m_file;
    const ScanOptions& m_options;
    bool m_readWeights;
    NodeNames& m_nodes;
    std::size_t m_line = 0;
    NetworkFacts m_facts;

private:
    bool isDropped() const { return m_zero && m_options.zeros == ZeroWeights::DROP; }
    Id toWideId(std::string_view token, const char* what) const;
    void requireDirections() const;
    [[noreturn]] void refuse(const std::string& what) const;

    const LinkVisitor& m_visit;
    bool m_zero = false;  // the weight of the next link is 0
};

/// Reads a network line by line.
class LineNetworkReader : public NetworkReader {
public:
    using NetworkReader::NetworkReader;

protected:
    void readAll() override;
    /// @param line  isn't empty, and begins with no blank
    virtual void readLine(std::string_view line) = 0;
    /// All lines have come.
    virtual void atEnd() {}

    /// The line as it stands there.
    std::string_view rawLine() const { return m_lines.line(); }
};

/// Makes the reader of a format.
using MakeReader = std::unique_ptr<NetworkReader>(Lines& lines, const ScanOptions& options,
                                                  NodeNames& nodes, const LinkVisitor& visit);

MakeReader linkListReader;
MakeReader sectionsReader;
MakeReader edgeListReader;
MakeReader matrixMarketReader;
MakeReader metisReader;
MakeReader pajekReader;
MakeReader gmlReader;
MakeReader graphmlReader;
MakeReader jsonReader;

}  // namespace vorl::detail
