#include <vorl/reading/network.hpp>

#include "../graph/flat_loader.hpp"
#include "../graph/placing.hpp"

#include <vorl/reading/wording.hpp>

#include <utility>

namespace vorl {

namespace {

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

void tellRepeats(NetworkReport& network, const ReadOptions& options) {
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

/// What the readers of the library warn of, where links are taken as they stand there.
void tellLines(NetworkReport& network, const NetworkFacts& facts, const ScanOptions& options,
               bool addUp) {
    if (addUp || (options.zeros == ZeroWeights::DROP && facts.zeroWeights != 0)) return;
    if (facts.otherKind) {
        const bool arcs = facts.toldDirected;
        network.warnings.push_back(std::string("WARNING header(), specified file format (") +
                                   (arcs ? "EDGES" : "ARCS") +
                                   ") does not match the actual file format (" +
                                   (arcs ? "ARCS" : "EDGES") + "). The actual one is used.");
    }
    if (facts.format == NetworkFormat::RCG && options.weights)
        network.warnings.insert(network.warnings.end(), facts.linkless,
                                "WARNING parseLinks(), no links specified:  ");
}

/// Checks what the header tells of the nodes, and warns of what is odd in the file.
void tellFacts(NetworkReport& network, const NetworkFacts& facts, const ReadOptions& options) {
    if (facts.zeroWeights != 0 && options.zeros == ZeroWeights::ONE)
        network.warnings.push_back(
            counted(facts.zeroWeights, "link") +
            (facts.zeroWeights == 1 ? " of weight 0 counts" : " of weight 0 count") +
            " as 1, the first in line " + std::to_string(facts.firstZeroWeight));
    if (!facts.doubt.empty()) network.warnings.push_back(facts.doubt);
    if (facts.nodes && *facts.nodes > network.nodes)
        network.warnings.push_back("the header tells of " + std::to_string(*facts.nodes) +
                                   " nodes, " + std::to_string(network.nodes) +
                                   " have a link; the others are left out");
    else if (facts.linkless != 0 && !facts.firstId)
        network.warnings.push_back(std::to_string(facts.linkless) +
                                   " lines tell of a node without a link");
    if (facts.wideLines != 0)
        network.warnings.push_back("line " + std::to_string(facts.firstWideLine) +
                                   (facts.wideLines == 1 ? " has" : " and others have") +
                                   " more than three columns; what follows the weight isn't read");
}

void requireToldNodes(const NetworkFacts& facts, Size nodes, const std::string& file) {
    if (!facts.nodes || *facts.nodes == nodes) return;
    if (*facts.nodes < nodes || *facts.nodes > facts.bytes)
        throw InputError::at(file, facts.headerLine,
                             "the header tells of " + std::to_string(*facts.nodes) +
                                 " nodes, the file has " + std::to_string(nodes));
}

/// The links of a file, and what it tells of them.
class Gathered {
public:
    Gathered(Source& source, const ReadOptions& options)
        : m_options(options), m_scan(scanOptions(options)) {
        m_scan.bounds =
            NetworkBounds::ofMemory(options.memoryLimit != 0 ? options.memoryLimit : memoryLimit());
        NodeNames nodes(options.labels);
        m_facts = scanNetwork(source, options.file, m_scan, nodes, [&](const RawLink& ln) {
            links.add(ln.src, ln.dst, ln.weight, ln.arc);
        });
        requireToldNodes(m_facts, nodes.size(), options.file);
        if (nodes.labels()->size() != 0) {
            if (!options.labels) nodes.sortLabels();
            m_labels = nodes.labels();
        }
        ids = nodes.ids();
        if (options.sumDuplicates) links.addUp(m_facts.directed());
    }

    /// Fills the report, but for the number of nodes.
    /// @param distinct number of links that no earlier one stands for
    void report(NetworkReport& report, Size distinct) const {
        report.directed = m_facts.directed();
        report.weighted = weighted();
        report.format = m_facts.format;
        report.labels = m_labels;
        report.edges = m_facts.edges;
        report.arcs = m_facts.arcs;
        report.zeroWeights = m_facts.zeroWeights;
        report.repeated = recordsOf(m_facts) - distinct;
        report.statesWeights =
            m_facts.statesWeights || (m_options.sumDuplicates && report.repeated != 0);
        tellLines(report, m_facts, m_scan, m_options.sumDuplicates);
        tellRepeats(report, m_options);
        tellFacts(report, m_facts, m_options);
    }

    bool directed() const { return m_facts.directed(); }
    bool weighted() const { return m_facts.weighted || m_options.sumDuplicates; }

    detail::LinkGatherer links;
    std::vector<Id> ids;  // of the nodes, by number

private:
    const ReadOptions& m_options;
    ScanOptions m_scan;
    NetworkFacts m_facts;
    std::shared_ptr<Labels> m_labels;  // null if there are no names
};

template <class ReadT>
auto readFile(const ReadOptions& options, ReadT read) {
    const auto source =
        openSource(options.file, options.memoryLimit != 0 ? options.memoryLimit : memoryLimit());
    return read(*source);
}

}  // namespace

ScanOptions scanOptions(const ReadOptions& options) {
    ScanOptions scan;
    scan.format =
        options.format == NetworkFormat::UNKNOWN ? formatByName(options.file) : options.format;
    scan.weights = !options.unweighted;
    scan.zeros = options.zeros;
    scan.directed = options.directed;
    scan.columns = options.columns;
    scan.weightName = options.weightName;
    return scan;
}

Network readNetwork(const ReadOptions& options) {
    return readFile(options, [&](Source& source) { return readNetwork(source, options); });
}

Network readNetwork(Source& source, const ReadOptions& options) {
    Gathered gathered(source, options);
    if (options.seed || options.shuffle)
        gathered.links.shuffle(options.seed ? *options.seed : detail::drawSeed(), gathered.ids);
    Network network;
    const auto load = [&]<bool WEIGHTED>() {
        const bool shuffle = options.shuffle && !options.seed;
        const auto graph =
            detail::GraphLoader<WEIGHTED>(gathered.links, gathered.ids, shuffle, false)
                .graph(nullptr);
        network.nodes = gathered.ids.size();
        gathered.report(network, recordsOf(*graph, gathered.directed()));
        network.graph = graph;
    };
    if (gathered.directed() || gathered.weighted())
        load.operator()<true>();
    else
        load.operator()<false>();
    return network;
}

UndirectedNetwork readUndirected(const ReadOptions& options) {
    return readFile(options, [&](Source& source) { return readUndirected(source, options); });
}

UndirectedNetwork readUndirected(Source& source, const ReadOptions& options) {
    Gathered gathered(source, options);
    UndirectedNetwork network;
    Size distinct = 0;
    network.nodes = gathered.ids.size();
    network.links =
        detail::loadFlat(gathered.links, std::move(gathered.ids), gathered.directed(), distinct);
    gathered.report(network, distinct);
    return network;
}

}  // namespace vorl
