// The texts of networks in all formats.
#pragma once

#include <vorl/reading/network_text.hpp>

#include <charconv>
#include <optional>
#include <string>
#include <vector>

namespace vorl::detail {

/// The first one of nodes that are numbered through, which all exist with or without links.
std::optional<Id> firstOfSequence(const NetworkTable& network);

std::string linkListText(const NetworkTable& network, NetworkFormat format);
std::string sectionsText(const NetworkTable& network);
std::string edgeListText(const NetworkTable& network, char separator);
std::string matrixMarketText(const NetworkTable& network);
std::string metisText(const NetworkTable& network);
std::string pajekText(const NetworkTable& network);
std::string gmlText(const NetworkTable& network);
std::string graphmlText(const NetworkTable& network);
std::string jsonText(const NetworkTable& network);

/// Appends the shortest digits that read back as the number.
template <class NumberT>
void appendNumber(std::string& text, NumberT value) {
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

/// Visits the links; edges among arcs as two arcs each.
template <class VisitT>
void eachOfOneKind(const NetworkTable& network, VisitT visit) {
    const bool doubled = network.facts.directed();
    for (const auto& [src, dst, weight, arc] : network.links) {
        visit(src, dst, weight);
        if (doubled && !arc && src != dst) visit(dst, src, weight);
    }
}

}  // namespace vorl::detail
