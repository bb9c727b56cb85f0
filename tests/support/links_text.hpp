/// @file
/// A text of the links of a network.
#pragma once

#include <vorl/types/item.hpp>
#include <vorl/types/plain_text.hpp>

#include <string>

namespace vorl::test {

/// A number in the shortest of its forms of six digits.
inline std::string digits(double number) { return format("%G", number); }

/// "dest:weight" of the links of a node, a self link left out.
template <class LinksT>
std::string linksText(const Node<LinksT>& node) {
    std::string result;
    for (const auto& ln : node.links)
        result += std::to_string(ln.dest->id) + ":" + digits(double{ln.weight}) + " ";
    return result;
}

/// "source>dest:weight" of all links, and the self weights.
template <class LinksT>
std::string linksText(const Nodes<LinksT>& nodes) {
    std::string result;
    for (const auto& node : nodes) {
        for (const auto& ln : node.links)
            result += std::to_string(node.id) + ">" + std::to_string(ln.dest->id) + ":" +
                      digits(double{ln.weight}) + " ";
        if (node.weight() != 0)
            result += std::to_string(node.id) + "=" + digits(node.weight()) + " ";
    }
    return result;
}

}  // namespace vorl::test
