#include "network_reader.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace vorl::detail {

InputError emptyFile(const std::string& file) {
    return InputError(
        InputError::Parts{.file = file, .wrong = "the file is empty, links are expected"});
}

NetworkFacts NetworkReader::read() {
    readAll();
    m_facts.bytes = m_lines.bytes();
    if (m_facts.bytes == 0) throw emptyFile(m_file);
    if (m_facts.links() == 0 && m_facts.zeroWeights != 0)
        throw InputError::at(m_file, m_facts.firstZeroWeight,
                             "the weight is 0, as that of all links, and none is left");
    if (m_facts.links() == 0 && !(m_options.mayLackLinks && m_nodes.size() != 0))
        throw InputError::at(m_file, std::max<std::size_t>(m_line, 1),
                             "the file ends without a link");
    if (m_readWeights && !m_facts.statesWeights && !m_options.weightName.empty())
        throw InputError(InputError::Parts{
            .file = m_file,
            .wrong = "no link has a weight called " + quoted(m_options.weightName)});
    m_facts.weighted = m_readWeights;
    requireDirections();
    checkTotals();
    // Weights are compared at 32 bits, both directions counted.
    if (2 * m_facts.weight > std::numeric_limits<float>::max())
        throw InputError(
            InputError::Parts{.file = m_file, .wrong = "the weights add up to more than 1.7e38"});
    return m_facts;
}

/// What NSE, NSA and RCG tell of directions, options don't change.
void NetworkReader::requireDirections() const {
    if (!m_options.directed || m_options.format == NetworkFormat::UNKNOWN ||
        m_options.format > NetworkFormat::RCG)
        return;
    if (*m_options.directed ? m_facts.edges != 0 : m_facts.arcs != 0)
        throw InputError(InputError::Parts{.file = m_file,
                                           .wrong = std::string("links are asked for as ") +
                                                    (*m_options.directed ? "arcs" : "edges") +
                                                    ", the file, " + nameOf(m_options.format) +
                                                    ", tells of " +
                                                    (*m_options.directed ? "edges" : "arcs")});
}

Size NetworkReader::toCount(std::string_view token, const std::string& what) const {
    Size count = 0;
    const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), count);
    if (token.empty() || err != std::errc() || last != token.data() + token.size())
        throw fault("the header's number of " + what, token, "a whole number is expected");
    return count;
}

Size NetworkReader::toNodes(std::string_view token) const {
    const Size nodes = toCount(token, "nodes");
    if (nodes >= ID_MAX)
        throw fault("the header's number of nodes is " + std::to_string(nodes) +
                    ", at most 4294967294 are possible");
    return nodes;
}

void NetworkReader::tellPlaces(Size nodes) {
    m_facts.headerLine = m_line;
    m_facts.nodes = nodes;
    // Larger numbers stand for names.
    if (nodes >= Labels::FIRST)
        throw fault("the header tells of " + grouped(nodes) +
                    " nodes, less than 2,147,483,648 are expected");
    requireRoom(nodes);
}

void NetworkReader::addPlaces() {
    if (*m_facts.nodes != 0) m_facts.firstId = 1;
    for (Id id = 1; id <= *m_facts.nodes; ++id) m_nodes.number(id);
}

Id NetworkReader::toPlace(std::string_view token, const char* what) const {
    const Id place = toId(token, what);
    if (place == 0 || place > *m_facts.nodes)
        throw fault(std::string("the ") + what, token,
                    "a number from 1 to " + std::to_string(*m_facts.nodes) + " is expected");
    return place;
}

bool NetworkReader::toFlag(std::string_view token, const char* what) const {
    Size value = 0;
    const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), value);
    if (token.empty() || err != std::errc() || last != token.data() + token.size() ||
        value > std::numeric_limits<unsigned>::max())
        throw fault(std::string("the header's \"") + what + "\"", token, "0 or 1 is expected");
    return value != 0;
}

Id NetworkReader::toWideId(std::string_view token, const char* what) const {
    return vorl::toId(
        token, what,
        [this](const std::string& wrong, const std::string& found, const std::string& expected) {
            return InputError(InputError::Parts{m_file, m_line, wrong, found, expected});
        });
}

LinkWeight NetworkReader::toWeight(std::string_view token) const {
    double weight = 0;
    const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), weight);
    const bool whole = last == token.data() + token.size();
    if (err == std::errc::invalid_argument || !whole || std::isnan(weight))
        throw fault("the weight", token, "a number is expected");
    if (token.front() == '-') throw fault("the weight", token, "it must not be negative");
    // The library holds 32-bit weights, and refuses those that these can't tell from 0.
    if (err != std::errc() || weight > std::numeric_limits<float>::max() ||
        (weight != 0 && weight < std::numeric_limits<float>::min()))
        throw fault("the weight", token, "0 or a number from 1.2e-38 to 3.4e38 is expected");
    // Not narrowed from 64 bits, which would round twice.
    float narrow = 0;
    std::from_chars(token.data(), token.data() + token.size(), narrow);
    return narrow;
}

void NetworkReader::refuse(const std::string& what) const {
    throw MemoryLimitError(InputError::Parts{
        .file = m_file,
        .line = m_line,
        .wrong =
            what + ", which may need more than " + bytes(m_options.bounds.memory) + " of memory"});
}

void LineNetworkReader::readAll() {
    while (m_lines.next()) {
        const std::string_view line = trimFront(m_lines.line());
        m_line = m_lines.number();
        if (!line.empty()) readLine(line);
    }
    if (m_lines.bytes() != 0) atEnd();
}

}  // namespace vorl::detail
