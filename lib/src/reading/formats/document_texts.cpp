// The texts of networks in the formats that list the nodes in front of the links.
#include "network_texts.hpp"

#include <vorl/types/characters.hpp>
#include <vorl/types/id_numbers.hpp>

#include <cstdint>
#include <string_view>

namespace vorl::detail {

namespace {

/// The places of nodes, from 0 on.
class Places {
public:
    explicit Places(const NetworkTable& network) : m_numbers(network.nodes.size()) {
        for (const Id id : network.nodes) m_numbers.number(id);
    }
    Id operator()(Id id) const { return m_numbers.find(id); }

private:
    IdNumbers m_numbers;
};

/// Visits the characters of a text in UTF-8: (number, bytes).
template <class VisitT>
void eachCharacter(std::string_view text, VisitT visit) {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = characterSize(text.substr(i));
        std::uint32_t code = length == 1 ? lead : lead & (0xFFU >> (length + 1));
        for (std::size_t k = 1; k < length; ++k)
            code = code << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3FU);
        visit(code, text.substr(i, length));
        i += length;
    }
}

bool isLabelled(const NetworkTable& network, Id node) {
    return network.labels && network.labels->has(node);
}

/// Appends the name of a node, with a function for the characters of those that aren't numbers.
template <class AppendT>
void appendName(std::string& text, const NetworkTable& network, Id node, AppendT append) {
    if (isLabelled(network, node))
        eachCharacter(network.labels->text(node), append);
    else
        appendNumber(text, node);
}

void appendReference(std::string& text, std::uint32_t code) {
    text += "&#";
    appendNumber(text, code);
    text += ';';
}

/// Others read quotes in labels by their number alone.
void appendPajekName(std::string& text, const NetworkTable& network, Id node) {
    const std::string name = naming::plain(node, network.labels.get());
    text += '"';
    for (std::size_t i = 0; i < name.size(); ++i)
        if (name[i] == '"' || (name[i] == '&' && name[i + 1] == '#'))
            appendReference(text, static_cast<std::uint32_t>(name[i]));
        else
            text += name[i];
    text += '"';
}

/// For GML, which is text in ASCII.
void appendGmlName(std::string& text, const NetworkTable& network, Id node) {
    text += '"';
    appendName(text, network, node, [&](std::uint32_t code, std::string_view bytes) {
        if (code == '"')
            text += "&quot;";
        else if (code == '&')
            text += "&amp;";
        else if (code >= 0x7F)
            appendReference(text, code);
        else
            text += bytes;
    });
    text += '"';
}

void appendXmlName(std::string& text, const NetworkTable& network, Id node) {
    appendName(text, network, node, [&](std::uint32_t code, std::string_view bytes) {
        if (code == '"')
            text += "&quot;";
        else if (code == '&')
            text += "&amp;";
        else if (code == '<')
            text += "&lt;";
        else if (code < 0x20)
            appendReference(text, code);
        else
            text += bytes;
    });
}

/// A number as such, a name between quotes.
void appendJsonName(std::string& text, const NetworkTable& network, Id node) {
    if (isLabelled(network, node))
        text += jsonQuoted(network.labels->text(node));
    else
        appendNumber(text, node);
}

}  // namespace

std::string pajekText(const NetworkTable& network) {
    const Places places(network);
    std::string text = "*Vertices " + std::to_string(network.nodes.size()) + "\n";
    Size place = 0;
    for (const Id node : network.nodes) {
        appendNumber(text, ++place);
        text += ' ';
        appendPajekName(text, network, node);
        text += '\n';
    }
    std::string_view section;
    for (const auto& [src, dst, weight, arc] : network.links) {
        const std::string_view wanted = arc ? "*Arcs\n" : "*Edges\n";
        if (section != wanted) text += section = wanted;
        appendNumber(text, places(src) + Size{1});
        text += ' ';
        appendNumber(text, places(dst) + Size{1});
        if (network.hasWeights()) {
            text += ' ';
            appendNumber(text, weight);
        }
        text += '\n';
    }
    return text;
}

std::string gmlText(const NetworkTable& network) {
    const Places places(network);
    std::string text = "graph [\n";
    if (network.facts.directed()) text += "  directed 1\n";
    Size place = 0;
    for (const Id node : network.nodes) {
        text += "  node [ id ";
        appendNumber(text, place++);
        text += " label ";
        appendGmlName(text, network, node);
        text += " ]\n";
    }
    eachOfOneKind(network, [&](Id src, Id dst, LinkWeight weight) {
        text += "  edge [ source ";
        appendNumber(text, places(src));
        text += " target ";
        appendNumber(text, places(dst));
        if (network.hasWeights()) {
            text += " weight ";
            appendNumber(text, weight);
        }
        text += " ]\n";
    });
    return text + "]\n";
}

std::string graphmlText(const NetworkTable& network) {
    const bool directed = network.facts.directed();
    const bool weighted = network.hasWeights();
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<graphml xmlns=\"http://graphml.graphdrawing.org/xmlns\">\n";
    if (weighted)
        text += "<key id=\"weight\" for=\"edge\" attr.name=\"weight\" attr.type=\"double\"/>\n";
    text +=
        directed ? "<graph edgedefault=\"directed\">\n" : "<graph edgedefault=\"undirected\">\n";
    for (const Id node : network.nodes) {
        text += "<node id=\"";
        appendXmlName(text, network, node);
        text += "\"/>\n";
    }
    for (const auto& [src, dst, weight, arc] : network.links) {
        text += "<edge source=\"";
        appendXmlName(text, network, src);
        text += "\" target=\"";
        appendXmlName(text, network, dst);
        text += directed && !arc ? "\" directed=\"false\"" : "\"";
        if (weighted) {
            text += "><data key=\"weight\">";
            appendNumber(text, weight);
            text += "</data></edge>\n";
        } else {
            text += "/>\n";
        }
    }
    return text + "</graph>\n</graphml>\n";
}

std::string jsonText(const NetworkTable& network) {
    std::string text = "{\"directed\": ";
    text += network.facts.directed() ? "true" : "false";
    text += ", \"multigraph\": false, \"graph\": {},\n\"nodes\": [";
    const char* between = "\n";
    for (const Id node : network.nodes) {
        text += between;
        text += "{\"id\": ";
        appendJsonName(text, network, node);
        text += '}';
        between = ",\n";
    }
    text += "],\n\"links\": [";
    between = "\n";
    eachOfOneKind(network, [&](Id src, Id dst, LinkWeight weight) {
        text += between;
        text += "{\"source\": ";
        appendJsonName(text, network, src);
        text += ", \"target\": ";
        appendJsonName(text, network, dst);
        if (network.hasWeights()) {
            text += ", \"weight\": ";
            appendNumber(text, weight);
        }
        text += '}';
        between = ",\n";
    });
    return text + "]}\n";
}

}  // namespace vorl::detail
