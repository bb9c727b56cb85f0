// The texts of networks in the formats that have a link a line, or the links of a node.
#include "network_texts.hpp"

#include <algorithm>
#include <optional>

namespace vorl::detail {

namespace {

/// The number of nodes that a header tells.
Size toldNodes(const NetworkTable& network) {
    return std::max<Size>(network.facts.nodes.value_or(0), network.linked);
}

}  // namespace

std::optional<Id> firstOfSequence(const NetworkTable& network) {
    // Those that links tell of needn't be announced, and keep their order then.
    if (network.facts.firstId || network.linked == network.nodes.size())
        return network.facts.firstId;
    const auto [least, most] = std::minmax_element(network.nodes.begin(), network.nodes.end());
    if (*most - *least + Size{1} != network.nodes.size()) return std::nullopt;
    return *least;
}

std::string linkListText(const NetworkTable& network, NetworkFormat format) {
    const NetworkFacts& facts = network.facts;
    std::string text = "# Nodes: " + std::to_string(toldNodes(network));
    // An edge is written as two arcs where there are any.
    const auto isTwo = [format](const RawLink& ln) {
        return format == NetworkFormat::NSA && !ln.arc && ln.src != ln.dst;
    };
    const Size lines =
        network.links.size() +
        static_cast<Size>(std::count_if(network.links.begin(), network.links.end(), isTwo));
    text += (format == NetworkFormat::NSE ? ", Edges: " : ", Arcs: ") + std::to_string(lines);
    text += facts.weighted ? ", Weighted: 1\n" : ", Weighted: 0\n";
    const auto add = [&](Id src, Id dst, LinkWeight weight) {
        appendNumber(text, src);
        text += ' ';
        appendNumber(text, dst);
        if (facts.weighted) {
            text += ' ';
            appendNumber(text, weight);
        }
        text += '\n';
    };
    for (const RawLink& ln : network.links) {
        add(ln.src, ln.dst, ln.weight);
        if (isTwo(ln)) add(ln.dst, ln.src, ln.weight);
    }
    return text;
}

std::string sectionsText(const NetworkTable& network) {
    const NetworkFacts& facts = network.facts;
    std::string text = facts.weighted ? "/Graph weighted:1\n" : "/Graph weighted:0\n";
    const std::optional<Id> first = firstOfSequence(network);
    text += "/Nodes " +
            std::to_string(std::max<Size>(toldNodes(network), first ? network.nodes.size() : 0));
    if (first) text += " " + std::to_string(*first);
    text += "\n";
    std::optional<bool> arcs;  // the open section is one of arcs
    std::optional<Id> source;  // of the open line
    for (const auto& [src, dst, weight, arc] : network.links) {
        if (arcs != arc || source != src) {
            if (source) text += '\n';
            if (arcs != arc) text += arc ? "/Arcs\n" : "/Edges\n";
            appendNumber(text, src);
            text += '>';
            arcs = arc;
            source = src;
        }
        text += ' ';
        appendNumber(text, dst);
        if (facts.weighted) {
            text += ':';
            appendNumber(text, weight);
        }
    }
    if (source) text += '\n';
    return text;
}

std::string edgeListText(const NetworkTable& network, char separator) {
    // Without a word links of a list are edges.
    const bool arcs = network.facts.directed();
    std::string text = "source,target";
    if (network.facts.weighted) text += ",weight";
    text += arcs ? ",type\n" : "\n";
    std::replace(text.begin(), text.end(), ',', separator);
    eachOfOneKind(network, [&](Id src, Id dst, LinkWeight weight) {
        naming::appendCell(text, src, network.labels.get(), separator);
        text += separator;
        naming::appendCell(text, dst, network.labels.get(), separator);
        if (network.facts.weighted) {
            text += separator;
            appendNumber(text, weight);
        }
        if (arcs) (text += separator) += "Directed";
        text += '\n';
    });
    return text;
}

std::string matrixMarketText(const NetworkTable& network) {
    const NetworkFacts& facts = network.facts;
    const bool weighted = network.hasWeights();
    std::string text = "%%MatrixMarket matrix coordinate ";
    text += weighted ? "real " : "pattern ";
    text += facts.directed() ? "general\n" : "symmetric\n";
    Size entries = 0;
    eachOfOneKind(network, [&](Id, Id, LinkWeight) { ++entries; });
    for (const Size count : {network.nodes.size(), network.nodes.size(), entries})
        text += std::to_string(count) + ' ';
    text.back() = '\n';
    eachOfOneKind(network, [&](Id src, Id dst, LinkWeight weight) {
        // Of a symmetric matrix the lower half stands there.
        if (!facts.directed() && src < dst) std::swap(src, dst);
        appendNumber(text, src);
        text += ' ';
        appendNumber(text, dst);
        if (weighted) {
            text += ' ';
            appendNumber(text, weight);
        }
        text += '\n';
    });
    return text;
}

std::string metisText(const NetworkTable& network) {
    const bool weighted = network.hasWeights();
    // The ends of the links, ordered by node.
    std::vector<Size> ends(network.nodes.size() + 2);
    for (const RawLink& ln : network.links) {
        ++ends[ln.src + std::size_t{1}];
        ++ends[ln.dst + std::size_t{1}];
    }
    for (std::size_t i = 1; i < ends.size(); ++i) ends[i] += ends[i - 1];
    std::vector<std::pair<Id, LinkWeight>> neighbours(2 * network.links.size());
    for (const auto& [src, dst, weight, arc] : network.links) {
        neighbours[ends[src]++] = {dst, weight};
        neighbours[ends[dst]++] = {src, weight};
    }
    std::string text = std::to_string(network.nodes.size()) + ' ' +
                       std::to_string(network.links.size()) + (weighted ? " 001\n" : "\n");
    Size place = 0;
    for (Id node = 1; node <= network.nodes.size(); ++node) {
        const Size first = place;
        for (; place < ends[node]; ++place) {
            if (place != first) text += ' ';
            appendNumber(text, neighbours[place].first);
            if (weighted) {
                text += ' ';
                char digits[64];
                text.append(digits,
                            std::to_chars(digits, digits + sizeof digits, neighbours[place].second,
                                          std::chars_format::fixed)
                                .ptr);
            }
        }
        text += '\n';
    }
    return text;
}

}  // namespace vorl::detail
