// The readers of networks in the formats of others on any text behind a byte of options. The links
// that they hand out must be between their nodes, and the network must come back from its text in
// each format that can hold it.
#include "../support/accepted_network.hpp"

#include <vorl/reading/network_text.hpp>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace {

using namespace vorl;

/// What is read of a text.
struct Scan {
    NodeNames nodes;
    NetworkTable table;

    Scan(std::string_view text, const ScanOptions& options) {
        TextSource source(text);
        const NetworkFacts facts =
            scanNetwork(source, "fuzz", options, nodes,
                        [this](const RawLink& ln) { table.links.push_back(ln); });
        table.facts = facts;
        std::vector<bool> linked(nodes.size());
        for (RawLink& ln : table.links) {
            for (Id* const end : {&ln.src, &ln.dst}) {
                test::require(*end < nodes.size(), "an end is no node");
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

/// The network comes back from its text in a format.
void requireReturn(const Scan& scan, NetworkFormat format) {
    if (!obstacle(format, scan.table).empty()) return;
    // Edges come back as arcs.
    if (format == NetworkFormat::NSA && !scan.table.facts.directed()) return;
    ScanOptions options{.format = format};
    const bool list = format == NetworkFormat::LIST;
    if (list) options.directed = scan.table.facts.directed();
    const Scan again(networkText(format, scan.table), options);
    const bool mixed = format == NetworkFormat::RCG || format == NetworkFormat::PAJEK ||
                       format == NetworkFormat::GRAPHML;
    const bool ordered = format > NetworkFormat::METIS;
    test::require(scan.named(mixed) == again.named(mixed), "the written text has other links");
    test::require(scan.names(ordered) == again.names(ordered), "the written text has other nodes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const auto formats = networkFormats();
    ScanOptions options;
    options.format = formats[data[0] % formats.size()].second;
    if (data[0] & 64) options.format = NetworkFormat::UNKNOWN;
    options.weights = !(data[0] & 128);
    try {
        const Scan scan({reinterpret_cast<const char*>(data) + 1, size - 1}, options);
        try {
            for (const auto& format : formats) requireReturn(scan, format.second);
        } catch (const InputError& err) {
            test::require(false, err.what());
        }
    } catch (const InputError&) {
    }
    return 0;
}
