// The readers of networks in the formats of others on any text behind a byte of options. The links
// that they hand out must be between their nodes, and names must come back from the list that is
// written of them.
#include "../support/accepted_network.hpp"

#include <vorl/reading/network_writer.hpp>

#include <cstddef>
#include <string_view>
#include <vector>

namespace {

using namespace vorl;

struct Scan {
    NodeNames nodes;
    std::vector<RawLink> links;
    NetworkFacts facts;

    Scan(std::string_view text, const ScanOptions& options) {
        TextSource source(text);
        facts = scanNetwork(source, "fuzz", options, nodes,
                            [this](const RawLink& ln) { links.push_back(ln); });
        for (const RawLink& ln : links)
            test::require(ln.src < nodes.size() && ln.dst < nodes.size(), "an end is no node");
    }

    std::string name(Id node) const { return naming::plain(nodes.id(node), nodes.labels().get()); }
};

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
        NetworkWriter writer(NetworkFormat::LIST, scan.facts, scan.nodes.labels().get());
        for (const RawLink& ln : scan.links)
            writer.add({scan.nodes.id(ln.src), scan.nodes.id(ln.dst), ln.weight, true});
        const Scan again(writer.take(), {.format = NetworkFormat::LIST});
        test::require(again.links.size() == scan.links.size(), "the written text has other links");
        for (std::size_t i = 0; i < scan.links.size(); ++i)
            test::require(scan.name(scan.links[i].src) == again.name(again.links[i].src) &&
                              scan.name(scan.links[i].dst) == again.name(again.links[i].dst) &&
                              scan.links[i].weight == again.links[i].weight,
                          "a link differs in the written text");
    } catch (const InputError&) {
    }
    return 0;
}
