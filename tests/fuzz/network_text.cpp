// The reader of networks on any text behind a byte of options. What it accepts must be
// read by the library and be fit for clustering, and must come back from the text that is
// written of it.
#include "../support/accepted_network.hpp"

#include <vorl/reading/network.hpp>
#include <vorl/reading/network_text.hpp>
#include <vorl/types/trace.hpp>

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace {

using namespace vorl;

struct Scan {
    std::vector<RawLink> links;  // between nodes by id, before the facts, whose scan fills them
    NetworkFacts facts;

    Scan(std::string_view text, NetworkFormat format, bool weights) {
        TextSource source(text);
        NodeNames nodes;
        facts = scanNetwork(
            source, "fuzz", {.format = format, .weights = weights}, nodes, [&](const RawLink& ln) {
                links.push_back({nodes.id(ln.src), nodes.id(ln.dst), ln.weight, ln.arc});
            });
    }
};

/// The network comes back from its text in the given format.
void requireReturn(const Scan& scan, NetworkFormat format) {
    std::unordered_set<Id> linked;
    for (const RawLink& ln : scan.links) linked.insert({ln.src, ln.dst});
    NetworkTable table{scan.facts, scan.links, {linked.begin(), linked.end()}, linked.size(), {}};
    table.facts.nodes = std::max<Size>(scan.facts.nodes.value_or(0), linked.size());
    const NetworkFacts& facts = table.facts;
    const Scan again(networkText(format, table), format, facts.weighted);
    test::require(again.facts.nodes == facts.nodes && again.facts.weighted == facts.weighted,
                  "the written text tells of another network");
    test::require(again.links.size() == scan.links.size(), "the written text has other links");
    for (std::size_t i = 0; i < scan.links.size(); ++i) {
        const RawLink& a = scan.links[i];
        const RawLink& b = again.links[i];
        test::require(a.src == b.src && a.dst == b.dst && a.arc == b.arc && a.weight == b.weight,
                      "a link differs in the written text");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ftrace = nullptr;
    if (size == 0) return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    constexpr NetworkFormat formats[] = {NetworkFormat::NSE, NetworkFormat::NSA, NetworkFormat::RCG,
                                         NetworkFormat::RCG};
    ReadOptions options;
    options.format = formats[data[0] & 3];
    options.unweighted = data[0] & 4;
    options.sumDuplicates = data[0] & 8;
    try {
        const Scan scan(text, options.format, !options.unweighted);
        if (scan.facts.firstId && *scan.facts.nodes > 4096) return 0;
        requireReturn(scan, NetworkFormat::RCG);
        if (scan.facts.edges == 0) requireReturn(scan, NetworkFormat::NSA);
        if (scan.facts.arcs == 0) requireReturn(scan, NetworkFormat::NSE);
    } catch (const InputError&) {
        return 0;
    }
    TextSource source(text);
    options.file = "fuzz";
    Network network;
    try {
        network = readNetwork(source, options);
    } catch (const InputError&) {
        return 0;
    }
    std::visit(
        [](auto& graph) {
            test::requireOrder(*graph);
            test::require(test::isClusterable(*graph), "the network isn't fit for clustering");
            test::requireHierarchy(*graph);
        },
        network.graph);
    return 0;
}
