// The readers of networks in the formats of others on any text behind a byte of options. The links
// that they hand out must be between their nodes, and the network must come back from its text in
// each format that can hold it.
#include "../support/accepted_network.hpp"
#include "../support/scanned_network.hpp"

#include <vorl/reading/network_text.hpp>

#include <cstdint>

namespace {

using namespace vorl;
using test::ScannedNetwork;

/// The network comes back from its text in a format.
void requireReturn(const ScannedNetwork& scan, NetworkFormat format) {
    if (!obstacle(format, scan.table).empty()) return;
    // Edges come back as arcs.
    if (format == NetworkFormat::NSA && !scan.table.facts.directed()) return;
    ScanOptions options{.format = format};
    const bool list = format == NetworkFormat::LIST;
    if (list) options.directed = scan.table.facts.directed();
    const ScannedNetwork again(networkText(format, scan.table), options);
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
        const ScannedNetwork scan({reinterpret_cast<const char*>(data) + 1, size - 1}, options);
        try {
            for (const auto& format : formats) requireReturn(scan, format.second);
        } catch (const InputError& err) {
            test::require(false, err.what());
        }
    } catch (const InputError&) {
    }
    return 0;
}
