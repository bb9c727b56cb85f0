/// @file
/// A network as its text tells it, ready to be written again.
#pragma once

#include <vorl/reading/network_text.hpp>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace vorl::test {

/// What is read of a text.
struct ScannedNetwork {
    NodeNames nodes;
    NetworkTable table;

    ScannedNetwork(std::string_view text, const ScanOptions& options) {
        TextSource source(text);
        const NetworkFacts facts = scanNetwork(
            source, "f", options, nodes, [this](const RawLink& ln) { table.links.push_back(ln); });
        table.facts = facts;
        std::vector<bool> linked(nodes.size());
        for (RawLink& ln : table.links) {
            for (Id* const end : {&ln.src, &ln.dst}) {
                if (*end >= nodes.size()) throw std::logic_error("an end is no node");
                table.linked += !linked[*end];
                linked[*end] = true;
                *end = nodes.id(*end);
            }
        }
        table.nodes = nodes.ids();
        if (nodes.labels()->size() != 0) table.labels = nodes.labels();
    }

    std::string name(Id node) const { return naming::plain(node, table.labels.get()); }

    using Link = std::tuple<std::string, std::string, LinkWeight, bool>;

    /// The links by the names of their nodes, in order.
    /// @param mixed  whether edges may stand among arcs
    std::vector<Link> named(bool mixed) const {
        std::vector<Link> links;
        for (const RawLink& ln : table.links) {
            const bool arc = ln.arc || (!mixed && table.facts.directed());
            Link link{name(ln.src), name(ln.dst), ln.weight, arc};
            if (!arc && std::get<0>(link) > std::get<1>(link))
                std::swap(std::get<0>(link), std::get<1>(link));
            links.push_back(link);
            if (arc && !ln.arc && ln.src != ln.dst) {
                std::swap(std::get<0>(link), std::get<1>(link));
                links.push_back(link);
            }
        }
        std::sort(links.begin(), links.end());
        return links;
    }

    std::vector<std::string> names(bool ordered) const {
        std::vector<std::string> names;
        for (const Id node : table.nodes) names.push_back(name(node));
        if (!ordered) std::sort(names.begin(), names.end());
        return names;
    }
};

}  // namespace vorl::test
