#include <vorl/reading/network_scan.hpp>

#include "formats/network_reader.hpp"

#include <vorl/reading/file_kind.hpp>

namespace vorl {

namespace {

void requireNetwork(const std::string& name, Lines& lines, NetworkFormat told) {
    if (told != NetworkFormat::UNKNOWN) return;
    const FileKind kind = fileKind(name, lines);
    if (kind == FileKind::ANY || kind == FileKind::NETWORK) return lines.rewind(false);
    throw InputError(InputError::Parts{
        .file = name,
        .wrong = std::string("the file has ") + nameOf(kind) + ", a network is expected" +
                 (kind == FileKind::CLUSTERS ? "; --format list reads links all the same" : "")});
}

}  // namespace

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
    requireNetwork(name, lines, told.format);
    if (told.format == NetworkFormat::UNKNOWN) told.format = formatByLines(lines);
    if (!told.columns.empty() && told.format != NetworkFormat::LIST &&
        told.format != NetworkFormat::UNKNOWN)
        throw InputError(InputError::Parts{
            .file = name,
            .wrong = std::string("columns can be chosen of the format list alone, the file is ") +
                     nameOf(told.format)});
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
