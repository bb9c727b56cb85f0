#include <vorl/reading/file_kind.hpp>

#include <vorl/reading/network_format.hpp>
#include <vorl/reading/pack.hpp>
#include <vorl/reading/tokens.hpp>

namespace vorl {

namespace {

constexpr std::size_t MOST_LINES = 100;  // that a header may stand behind

FileKind kindByName(const std::string& file) {
    const std::string name = plainName(lowered(file));
    if (name.ends_with(".cnl")) return FileKind::CLUSTERS;
    if (name.ends_with(".rhb")) return FileKind::HIERARCHY;
    switch (formatByName(file)) {
        case NetworkFormat::UNKNOWN:
        case NetworkFormat::LIST:
        case NetworkFormat::JSON: return FileKind::ANY;
        default: return FileKind::NETWORK;
    }
}

/// Two keys of a header are no chance.
FileKind kindByLine(const std::string& line) {
    const auto has = [&line](const char* key) { return line.find(key) != std::string::npos; };
    if (line.starts_with("/hierarchy ") && has(" levels:")) return FileKind::HIERARCHY;
    if (!line.starts_with('#')) return FileKind::ANY;
    const std::string_view text = trimFront(std::string_view(line).substr(1));
    if (text.starts_with("clusters:") && (has(" nodes:") || has(" fuzzy:") || has(" numbered:")))
        return FileKind::CLUSTERS;
    if (text.starts_with("nodes:") && (has(" edges:") || has(" arcs:"))) return FileKind::NETWORK;
    return FileKind::ANY;
}

}  // namespace

FileKind fileKind(const std::string& name, Lines& lines) {
    if (const FileKind kind = kindByName(name); kind != FileKind::ANY) return kind;
    lines.hold();
    FileKind kind = FileKind::ANY;
    bool comment = true;
    while (kind == FileKind::ANY && comment && lines.number() < MOST_LINES && lines.next()) {
        const std::string_view line = trimFront(lines.line());
        kind = kindByLine(lowered(line.substr(0, 200)));
        comment = line.empty() || line.starts_with('#');
    }
    lines.rewind(true);
    return kind;
}

const char* nameOf(FileKind kind) {
    switch (kind) {
        case FileKind::NETWORK: return "the links of a network";
        case FileKind::CLUSTERS: return "clusters";
        case FileKind::HIERARCHY: return "a hierarchy";
        case FileKind::ANY: break;
    }
    return "anything";
}

}  // namespace vorl
