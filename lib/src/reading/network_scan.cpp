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
    Lines lines(source, name);
    ScanOptions told = options;
    told.size = source.size();
    if (told.format == NetworkFormat::UNKNOWN) told.format = formatByLines(lines);
    const auto reader = [&]() -> std::unique_ptr<detail::NetworkReader> {
        switch (told.format) {
            case NetworkFormat::NSE:
            case NetworkFormat::NSA: return detail::linkListReader(lines, told, nodes, visit);
            case NetworkFormat::RCG: return detail::sectionsReader(lines, told, nodes, visit);
            case NetworkFormat::LIST: return detail::edgeListReader(lines, told, nodes, visit);
            case NetworkFormat::MATRIX_MARKET:
                return detail::matrixMarketReader(lines, told, nodes, visit);
            case NetworkFormat::METIS: return detail::metisReader(lines, told, nodes, visit);
            case NetworkFormat::PAJEK: return detail::pajekReader(lines, told, nodes, visit);
            case NetworkFormat::GML: return detail::gmlReader(lines, told, nodes, visit);
            case NetworkFormat::GRAPHML: return detail::graphmlReader(lines, told, nodes, visit);
            case NetworkFormat::JSON: return detail::jsonReader(lines, told, nodes, visit);
            case NetworkFormat::UNKNOWN: break;
        }
        if (lines.bytes() == 0) throw detail::emptyFile(name);
        throw UnknownFormat(
            name +
            ": the format can't be told from the name or the first lines; it "
            "is nse (edges), nsa (arcs), rcg (sections), list, mtx, metis, pajek, gml, graphml or "
            "json");
    }();
    NetworkFacts facts = reader->read();
    facts.format = told.format;
    return facts;
}

}  // namespace vorl
