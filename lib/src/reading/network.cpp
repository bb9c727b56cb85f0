#include <vorl/reading/network.hpp>

#include "../fileio/scan.hpp"

#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/fileio/parser_rcg.hpp>
#include <vorl/reading/memory_file.hpp>
#include <vorl/reading/network_text.hpp>
#include <vorl/reading/text_file.hpp>
#include <vorl/reading/wording.hpp>
#include <vorl/types/trace.hpp>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <unordered_map>
#include <utility>

namespace vorl {

namespace {

/// The network with the weights of repeated links added up, in the order of their first
/// appearance. The library leaves a repeat of the last link of a list out of the sum.
class LinkSums {
public:
    /// @param directed whether the sums are of arcs, an edge counting as both of its own
    explicit LinkSums(bool directed) : m_directed(directed) {}

    void add(const RawLink& ln) {
        addOne(ln);
        if (m_directed && !ln.arc && ln.src != ln.dst) addOne({ln.dst, ln.src, ln.weight, true});
    }

    std::string text(FileFormat format, NetworkFacts facts) const {
        facts.weighted = true;
        facts.arcs = m_directed ? m_sums.size() : 0;
        facts.edges = m_directed ? 0 : m_sums.size();
        NetworkWriter writer(format, facts);
        for (const auto& [ln, weight] : m_sums)
            writer.add({ln.src, ln.dst, static_cast<LinkWeight>(weight), m_directed});
        return writer.take();
    }

private:
    void addOne(const RawLink& ln) {
        const bool swap = !m_directed && ln.dst < ln.src;
        const Size key = swap ? Size{ln.dst} << 32 | ln.src : Size{ln.src} << 32 | ln.dst;
        const auto [place, added] = m_places.emplace(key, m_sums.size());
        if (added)
            m_sums.emplace_back(ln, ln.weight);
        else
            m_sums[place->second].second += static_cast<double>(ln.weight);
    }

    bool m_directed;
    std::vector<std::pair<RawLink, double>> m_sums;
    std::unordered_map<Size, std::size_t> m_places;
};

/// Runs the operation and gives the lines that it traced.
template <class OperationT>
std::vector<std::string> traced(OperationT operation) {
    char* data = nullptr;
    std::size_t size = 0;
    std::FILE* const former = std::exchange(ftrace, open_memstream(&data, &size));
    const auto restore = [&] {
        if (ftrace) std::fclose(ftrace);
        ftrace = former;
    };
    try {
        operation();
    } catch (...) {
        restore();
        std::free(data);
        throw;
    }
    restore();
    std::vector<std::string> lines;
    std::string_view text(data ? data : "", size);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    std::free(data);
    return lines;
}

/// The text that the library's parsers read, where it isn't that of the file.
std::optional<std::string> parserText(const TextFile& file, const ReadOptions& options,
                                      FileFormat& format, const NetworkFacts& facts) {
    const auto walk = [&](const auto& visit) {
        scanNetwork(file.text(), options.file, format, !options.unweighted, visit, options.zeros);
    };
    if (options.sumDuplicates) {
        LinkSums sums(facts.directed());
        walk([&](const RawLink& ln) { sums.add(ln); });
        if (format != FileFormat::RCG)
            format = facts.directed() ? FileFormat::NSA : FileFormat::NSE;
        return sums.text(format, facts);
    }
    const bool drops = options.zeros == ZeroWeights::DROP && facts.zeroWeights != 0;
    // A reader of sections takes weights wherever it may.
    if (drops || (format == FileFormat::RCG && options.unweighted)) {
        if (format != FileFormat::RCG)
            format = facts.directed() ? FileFormat::NSA : FileFormat::NSE;
        NetworkWriter writer(format, facts);
        walk([&](const RawLink& ln) { writer.add(ln); });
        return writer.take();
    }
    if (!facts.plain) return normalised(file.text());
    return std::nullopt;
}

/// Links of the file, those of a network of arcs counted as arcs, of which an edge has two.
Size recordsOf(const NetworkFacts& facts) {
    return facts.links() + (facts.directed() ? facts.edges - facts.selfEdges : 0);
}

template <class GraphT>
Size recordsOf(GraphT& graph, bool directed) {
    Size links = 0;
    Size selves = 0;
    for (const auto& node : graph.nodes()) {
        links += node.links.size();
        selves += node.m_sweight != 0;
    }
    return (directed ? links : links / 2) + selves;
}

/// In place of the library's own warnings, which list both directions of an edge.
void tellRepeats(Network& network, const ReadOptions& options) {
    std::erase_if(network.warnings, [](const std::string& warning) {
        return warning.starts_with(detail::REPEATS_MESSAGE);
    });
    if (network.repeated == 0) return;
    const char* const things = !network.directed    ? "edge"
                               : network.edges == 0 ? "arc"
                                                    : "direction";
    network.warnings.push_back(
        counted(network.repeated, things) +
        (network.repeated == 1 ? " repeats an earlier one, " : " repeat earlier ones, ") +
        (options.sumDuplicates   ? "with the weights added up"
         : network.repeated == 1 ? "and is left out"
                                 : "and are left out"));
}

/// Reads the graph and takes over what the library warned of.
template <class BuildT>
void parse(Network& network, bool weightedGraph, BuildT build) {
    network.warnings = traced([&] {
        const auto take = [&](const auto& graph) {
            network.nodes = graph->nodes().size();
            network.graph = graph;
        };
        if (weightedGraph)
            take(build.template operator()<Graph<true>>());
        else
            take(build.template operator()<Graph<false>>());
    });
}

}  // namespace

FileFormat networkFormat(const ReadOptions& options) {
    if (options.format != FileFormat::UNKNOWN) return options.format;
    std::string name = options.file;
    for (char& c : name)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    for (const char* packing : {".gz", ".zst"})
        if (name.ends_with(packing)) name.erase(name.rfind('.'));
    const FileFormat format = inpFileFmt(name.c_str());
    if (format == FileFormat::UNKNOWN)
        throw UnknownFormat(
            options.file +
            ": the format can't be told from the name; it is nse (edges), nsa (arcs) or rcg "
            "(sections)");
    return format;
}

Network readNetwork(const ReadOptions& options) {
    InpOptions input;
    input.format = networkFormat(options);
    input.filename = options.file;
    input.shuffle = options.shuffle && !options.seed;

    const std::size_t limit = options.memoryLimit != 0 ? options.memoryLimit : memoryLimit();
    const TextFile file(options.file, textLimit(limit));
    const NetworkFacts facts =
        scanNetwork(file.text(), options.file, input.format, !options.unweighted, {}, options.zeros,
                    NetworkBounds::ofMemory(limit, file.text().size()));
    Network network;
    network.directed = facts.directed();
    network.weighted = facts.weighted || options.sumDuplicates;
    network.edges = facts.edges;
    network.arcs = facts.arcs;
    network.zeroWeights = facts.zeroWeights;

    // Under the file's name there might be lines by now that weren't checked.
    const auto text = parserText(file, options, input.format, facts);
    std::optional<MemoryFile> memory;
    try {
        memory.emplace(text ? *text : file.text());
        input.filename = memory->name();
    } catch (const MemoryFileError&) {
        if (text || !file.plain()) throw;
    }
    const bool weightedGraph = network.directed || network.weighted;
    const auto seeded = [&](auto parser) {
        if (options.seed) parser.shuffleBy(*options.seed);
        return parser;
    };
    if (input.format == FileFormat::RCG)
        parse(network, weightedGraph,
              [&]<class GraphT>() { return seeded(RcgParser(input)).template build<GraphT>(); });
    else
        parse(network, weightedGraph, [&]<class GraphT>() {
            return seeded(NslParser(input)).template build<GraphT>(network.weighted);
        });

    network.repeated = std::visit(
        [&](const auto& graph) { return recordsOf(facts) - recordsOf(*graph, network.directed); },
        network.graph);
    network.statesWeights = facts.statesWeights || (options.sumDuplicates && network.repeated != 0);
    tellRepeats(network, options);
    if (facts.zeroWeights != 0 && options.zeros == ZeroWeights::ONE)
        network.warnings.push_back(
            counted(facts.zeroWeights, "link") +
            (facts.zeroWeights == 1 ? " of weight 0 counts" : " of weight 0 count") +
            " as 1, the first in line " + std::to_string(facts.firstZeroWeight));

    const auto tells = [&] {
        return "the header tells of " + std::to_string(*facts.nodes) + " nodes, ";
    };
    if (facts.nodes && (*facts.nodes < network.nodes || *facts.nodes > file.text().size()) &&
        *facts.nodes != network.nodes)
        throw InputError::at(options.file, facts.headerLine,
                             tells() + "the file has " + std::to_string(network.nodes));
    if (facts.nodes && *facts.nodes > network.nodes)
        network.warnings.push_back(tells() + std::to_string(network.nodes) +
                                   " have a link; the others are left out");
    else if (facts.linkless != 0 && !facts.firstId)
        network.warnings.push_back(std::to_string(facts.linkless) +
                                   " lines tell of a node without a link");
    if (facts.wideLines != 0)
        network.warnings.push_back("line " + std::to_string(facts.firstWideLine) +
                                   (facts.wideLines == 1 ? " has" : " and others have") +
                                   " more than three columns; what follows the weight isn't read");
    return network;
}

}  // namespace vorl
