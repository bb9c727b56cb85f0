#include <vorl/reading/network_format.hpp>

#include <vorl/fileio/iotypes.hpp>
#include <vorl/reading/pack.hpp>
#include <vorl/reading/tokens.hpp>

#include <string_view>

namespace vorl {

namespace {

constexpr std::pair<const char*, NetworkFormat> FORMATS[] = {
    {"nse", NetworkFormat::NSE},           {"nsa", NetworkFormat::NSA},
    {"rcg", NetworkFormat::RCG},           {"list", NetworkFormat::LIST},
    {"mtx", NetworkFormat::MATRIX_MARKET}, {"metis", NetworkFormat::METIS},
    {"pajek", NetworkFormat::PAJEK},       {"gml", NetworkFormat::GML},
    {"graphml", NetworkFormat::GRAPHML},   {"json", NetworkFormat::JSON},
};

constexpr std::pair<std::string_view, NetworkFormat> EXTENSIONS[] = {
    {".txt", NetworkFormat::LIST},    {".edges", NetworkFormat::LIST},
    {".el", NetworkFormat::LIST},     {".mtx", NetworkFormat::MATRIX_MARKET},
    {".graph", NetworkFormat::METIS}, {".net", NetworkFormat::PAJEK},
    {".gml", NetworkFormat::GML},     {".graphml", NetworkFormat::GRAPHML},
    {".json", NetworkFormat::JSON},   {".tsv", NetworkFormat::LIST},
    {".csv", NetworkFormat::LIST},
};

/// What a line tells of the format of its file.
NetworkFormat formatOf(const std::string& line) {
    const auto begins = [&line](std::initializer_list<std::string_view> words) {
        for (const std::string_view word : words)
            if (line.starts_with(word)) return true;
        return false;
    };
    if (begins({"%%matrixmarket"})) return NetworkFormat::MATRIX_MARKET;
    if (begins({"*vertices", "*network"})) return NetworkFormat::PAJEK;
    if (begins({"graph [", "graph[", "creator \""}) || line == "graph") return NetworkFormat::GML;
    if (begins({"<?xml", "<graphml", "<!doctype graphml"})) return NetworkFormat::GRAPHML;
    if (line[0] == '{') return NetworkFormat::JSON;
    if (line[0] == '#') {
        if (line.find("nodes:") == std::string::npos) return NetworkFormat::UNKNOWN;
        if (line.find(" edges:") != std::string::npos &&
            line.find(" weighted:") != std::string::npos)
            return NetworkFormat::NSE;
        return line.find(" arcs:") == std::string::npos ? NetworkFormat::UNKNOWN
                                                        : NetworkFormat::NSA;
    }
    if (begins({"/graph", "/nodes", "/edges", "/arcs"})) return NetworkFormat::RCG;
    return NetworkFormat::UNKNOWN;
}

}  // namespace

std::span<const std::pair<const char*, NetworkFormat>> networkFormats() { return FORMATS; }

const char* nameOf(NetworkFormat format) {
    return format == NetworkFormat::UNKNOWN ? "unknown"
                                            : FORMATS[static_cast<std::size_t>(format) - 1].first;
}

NetworkFormat formatByName(const std::string& file) {
    const std::string name = plainName(lowered(file));
    switch (inpFileFmt(name.c_str())) {
        case FileFormat::NSE: return NetworkFormat::NSE;
        case FileFormat::NSA: return NetworkFormat::NSA;
        case FileFormat::RCG: return NetworkFormat::RCG;
        default: break;
    }
    for (const auto& [extension, format] : EXTENSIONS)
        if (name.ends_with(extension)) return format;
    return NetworkFormat::UNKNOWN;
}

NetworkFormat formatByLines(Lines& lines) {
    lines.hold();
    NetworkFormat format = NetworkFormat::UNKNOWN;
    while (format == NetworkFormat::UNKNOWN && lines.next()) {
        const std::string_view line = trimFront(lines.line());
        if (line.empty()) continue;
        format = formatOf(lowered(line.substr(0, 200)));
        if (format != NetworkFormat::UNKNOWN || line.front() == '#' || line.front() == '%' ||
            line.starts_with("//"))
            continue;
        // Two words may be a link.
        if (line.find_first_of(" \t,;") != std::string_view::npos) format = NetworkFormat::LIST;
        break;
    }
    lines.rewind(false);
    return format;
}

}  // namespace vorl
