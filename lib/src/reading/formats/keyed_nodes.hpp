// Nodes that a file lists with keys of its own, to which its links refer.
#pragma once

#include "network_reader.hpp"

#include <string>
#include <string_view>
#include <unordered_map>

namespace vorl::detail {

/// Nodes by their keys, each with a name of its own.
class KeyedNodes {
public:
    explicit KeyedNodes(NodeNames& nodes) : m_nodes(nodes) {}

    /// Adds a node.
    /// @param fault makes the error of a message
    template <class FaultT>
    void add(std::string_view key, std::string_view name, FaultT fault) {
        const Size before = m_nodes.size();
        const Id number = m_nodes.numberOf(name);
        if (m_nodes.size() == before)
            throw fault("the name " + quoted(name) +
                        " is that of another node already, each node with its own is expected");
        if (!m_numbers.emplace(key, number).second)
            throw fault("the node " + quoted(key) + " stands twice");
    }

    /// The number of a node.
    template <class FaultT>
    Id find(std::string_view key, const char* what, FaultT fault) const {
        const auto found = m_numbers.find(std::string(key));
        if (found == m_numbers.end())
            throw fault(std::string("the ") + what + " is " + quoted(key) +
                        ", which is none of the nodes in front of the link");
        return found->second;
    }

private:
    NodeNames& m_nodes;
    std::unordered_map<std::string, Id> m_numbers;
};

}  // namespace vorl::detail
