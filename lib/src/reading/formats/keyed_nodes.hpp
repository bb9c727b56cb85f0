// Nodes that a file lists with keys of its own, to which its links refer.
#pragma once

#include "network_reader.hpp"

#include <string>
#include <string_view>
#include <vector>

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
        requireName(key, fault);
        requireName(name, fault);
        const Id number = m_nodes.numberOf(name);
        if (m_nodes.size() == before)
            throw fault("the name " + quoted(name) +
                        " is that of another node already, each node with its own is expected");
        if (placeOf(key) != m_numbers.size())
            throw fault("the node " + quoted(key) + " stands twice");
        m_numbers.push_back(number);
    }

    /// The number of a node.
    template <class FaultT>
    Id find(std::string_view key, const char* what, FaultT fault) {
        const std::size_t place = placeOf(key);
        if (place == m_numbers.size())
            throw fault(std::string("the ") + what + " is " + quoted(key) +
                        ", which is none of the nodes in front of the link");
        return m_numbers[place];
    }

private:
    /// The place of a key among all, behind them if it is new.
    std::size_t placeOf(std::string_view key) { return ID_MAX - 1 - m_keys.add(key); }

    NodeNames& m_nodes;
    Labels m_keys;
    std::vector<Id> m_numbers;  // by the places of the keys
};

}  // namespace vorl::detail
