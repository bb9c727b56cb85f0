#include <vorl/reading/network_scan.hpp>

#include "formats/network_reader.hpp"

namespace vorl {

NetworkBounds NetworkBounds::ofMemory(std::size_t memory) {
    // Of networks of distinct links, their nodes and the hierarchy.
    constexpr std::size_t ofLink = 128;
    constexpr std::size_t ofNode = 512;
    return {memory / ofLink, memory / ofNode, memory};
}

NetworkFacts scanNetwork(Source& source, const std::string& name, const ScanOptions& options,
                         NodeNames& nodes, const LinkVisitor& visit) {
    const auto reader = options.format == FileFormat::RCG
                            ? detail::sectionsReader(source, name, options, nodes, visit)
                            : detail::linkListReader(source, name, options, nodes, visit);
    return reader->read();
}

}  // namespace vorl
