#include <vorl/reading/network_text.hpp>

#include "formats/network_texts.hpp"

#include <vorl/reading/tokens.hpp>
#include <vorl/reading/wording.hpp>
#include <vorl/types/characters.hpp>

#include <algorithm>
#include <cmath>

namespace vorl {

namespace {

/// What XML can't hold, not even as a number.
bool hasControls(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) {
                           return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\r';
                       }) ||
           text.find("\xEF\xBF\xBE") != text.npos || text.find("\xEF\xBF\xBF") != text.npos;
}

/// A node that isn't one of the numbers from 1 to that of the nodes; ID_NONE if there is none.
Id oddNode(const NetworkTable& network) {
    const auto odd = std::find_if(network.nodes.begin(), network.nodes.end(),
                                  [&](Id id) { return id == 0 || id > network.nodes.size(); });
    return odd == network.nodes.end() ? ID_NONE : *odd;
}

/// What stands in the way of the places of rows, which are all that tells the nodes.
std::string placesObstacle(const std::string& name, const NetworkTable& network) {
    const Id odd = oddNode(network);
    if (odd == ID_NONE) return {};
    return "there is a node " + std::to_string(odd) + " among " +
           counted(network.nodes.size(), "node") + ", which the format " + name +
           " can't hold, as it numbers nodes from 1 on; gml, graphml, json and pajek can";
}

std::string metisObstacle(const NetworkTable& network) {
    for (const auto& [src, dst, weight, arc] : network.links) {
        const std::string link = std::to_string(src) + " to " + std::to_string(dst);
        if (arc) return "the network has arcs, which the format metis can't hold; mtx can";
        if (src == dst)
            return "the node " + std::to_string(src) +
                   " has a link to itself, which the format metis can't hold; mtx can";
        if (network.hasWeights() && weight != std::floor(weight))
            return "the link from " + link + " weighs " + number(double{weight}) +
                   ", the format metis has whole numbers; mtx can hold it";
    }
    return {};
}

/// What stands in the way of a document with names of nodes.
std::string namesObstacle(NetworkFormat format, const NetworkTable& network) {
    if (!network.labels) return {};
    for (const Id node : network.nodes) {
        if (!network.labels->has(node)) continue;
        const std::string_view name = network.labels->text(node);
        if (!isUtf8(name))
            return "the name " + quoted(name) + " isn't in UTF-8, which the format " +
                   nameOf(format) + " needs; list can hold it";
        if (format == NetworkFormat::GRAPHML && hasControls(name))
            return "the name " + quoted(name) +
                   " has a control character, which the format graphml can't hold; json can";
    }
    return {};
}

}  // namespace

std::string obstacle(NetworkFormat format, const NetworkTable& network) {
    const std::string name = nameOf(format);
    const Size alone = network.nodes.size() - network.linked;
    const bool numbered = format == NetworkFormat::NSE || format == NetworkFormat::NSA ||
                          format == NetworkFormat::RCG || format == NetworkFormat::MATRIX_MARKET ||
                          format == NetworkFormat::METIS;
    if (network.labels && numbered)
        return "nodes have names, which the format " + name + " can't hold; list can";
    switch (format) {
        case NetworkFormat::NSE:
        case NetworkFormat::NSA:
            if (format == NetworkFormat::NSE && network.facts.directed())
                return "the network has arcs, which the format nse can't hold; nsa or rcg can";
            if (alone == 0) return {};
            return counted(alone, "node") +
                   " without a link can't be told in the formats nse and nsa";
        case NetworkFormat::RCG:
            if (alone == 0 || detail::firstOfSequence(network)) return {};
            return counted(alone, "node") +
                   " without a link can't be told in the format rcg, whose nodes have ids that "
                   "follow each other";
        case NetworkFormat::LIST:
            return alone == 0 ? ""
                              : counted(alone, "node") + " without a link can't be told in a list";
        case NetworkFormat::MATRIX_MARKET: return placesObstacle(name, network);
        case NetworkFormat::METIS: {
            const std::string odd = placesObstacle(name, network);
            return odd.empty() ? metisObstacle(network) : odd;
        }
        case NetworkFormat::GML:
        case NetworkFormat::GRAPHML:
        case NetworkFormat::JSON: return namesObstacle(format, network);
        case NetworkFormat::PAJEK:
        case NetworkFormat::UNKNOWN: break;
    }
    return {};
}

bool holdsSingleNodes(NetworkFormat format) { return format > NetworkFormat::LIST; }

std::string networkText(NetworkFormat format, const NetworkTable& network, char separator) {
    switch (format) {
        case NetworkFormat::NSE:
        case NetworkFormat::NSA: return detail::linkListText(network, format);
        case NetworkFormat::RCG: return detail::sectionsText(network);
        case NetworkFormat::LIST: return detail::edgeListText(network, separator);
        case NetworkFormat::MATRIX_MARKET: return detail::matrixMarketText(network);
        case NetworkFormat::METIS: return detail::metisText(network);
        case NetworkFormat::PAJEK: return detail::pajekText(network);
        case NetworkFormat::GML: return detail::gmlText(network);
        case NetworkFormat::GRAPHML: return detail::graphmlText(network);
        case NetworkFormat::JSON: return detail::jsonText(network);
        case NetworkFormat::UNKNOWN: break;
    }
    return {};
}

}  // namespace vorl
