#include "info_command.hpp"

#include "network_input.hpp"
#include "output_text.hpp"
#include "progress_line.hpp"

#include <vorl/estimate.hpp>
#include <vorl/reading/network_scan.hpp>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <vector>

namespace vorl::app {

namespace {

/// Sets of nodes that are joined link by link.
class Components {
public:
    void resize(std::size_t count) {
        const std::size_t former = m_parents.size();
        m_parents.resize(count);
        std::iota(m_parents.begin() + static_cast<std::ptrdiff_t>(former), m_parents.end(),
                  static_cast<Id>(former));
    }

    Id find(Id node) {
        while (m_parents[node] != node) node = m_parents[node] = m_parents[m_parents[node]];
        return node;
    }

    // The lower number leads, so that nothing depends on the order of the links.
    void join(Id a, Id b) {
        a = find(a);
        b = find(b);
        m_parents[std::max(a, b)] = std::min(a, b);
    }

private:
    std::vector<Id> m_parents;
};

/// What the links of a file amount to.
struct NetworkInfo {
    NetworkFacts facts;
    Size nodes = 0;
    Size isolated = 0;  ///< nodes without a link to another one
    Size selfLinks = 0;
    Size repeated = 0;  ///< links that stand in the file again
    LinkWeight weightMin = 0;
    LinkWeight weightMax = 0;
    Size degreeMin = 0;
    Size degreeMax = 0;
    double degreeMean = 0;
    double degreeMedian = 0;
    Size components = 0;
    Size largest = 0;  ///< nodes of the largest component
    std::optional<ClusterEstimate> estimate;
};

/// Gathers the links; degrees count the links to other nodes in the file, repeats left out.
class Survey {
public:
    void add(const RawLink& ln) {
        const auto [src, dst, weight, arc] = ln;
        m_min = m_links.empty() && m_selfLinks == 0 ? weight : std::min(m_min, weight);
        m_max = std::max(m_max, weight);
        if (src == dst) {
            ++m_selfLinks;
            m_selves.push_back(src);
            return;
        }
        const bool swap = !arc && dst < src;
        // Repeats are dropped now and then, lest they take memory.
        if (m_links.size() >= m_crowded) {
            m_repeated += dropRepeats(m_links);
            m_crowded = std::max(m_crowded, 2 * m_links.size());
        }
        m_links.push_back(swap ? Size{dst} << 32 | src : Size{src} << 32 | dst);
    }

    /// @param nodes that the file names
    NetworkInfo result(const NetworkFacts& facts, Size nodes) {
        NetworkInfo info;
        m_nodes = nodes;
        info.facts = facts;
        info.weightMin = m_min;
        info.weightMax = m_max;
        info.selfLinks = m_selfLinks;
        info.repeated = m_repeated + dropRepeats(m_links) + dropRepeats(m_selves);
        info.nodes = nodes;
        if (facts.nodes) info.nodes = std::max<Size>(info.nodes, *facts.nodes);
        measureDegrees(info);
        measureComponents(info);
        return info;
    }

private:
    template <class VecT>
    static Size dropRepeats(VecT& values) {
        std::sort(values.begin(), values.end());
        const auto last = std::unique(values.begin(), values.end());
        const Size dropped = static_cast<Size>(values.end() - last);
        values.erase(last, values.end());
        return dropped;
    }

    static Id source(Size link) { return static_cast<Id>(link >> 32); }
    static Id target(Size link) { return static_cast<Id>(link); }

    void measureDegrees(NetworkInfo& info) const {
        std::vector<Size> degrees(m_nodes);
        for (const Size link : m_links) {
            ++degrees[source(link)];
            ++degrees[target(link)];
        }
        const Size linkless = info.nodes - m_nodes;
        info.isolated =
            linkless + static_cast<Size>(std::count(degrees.begin(), degrees.end(), Size{0}));
        std::sort(degrees.begin(), degrees.end());
        // Nodes that are only announced come before all others.
        const auto at = [&](Size place) {
            return place < linkless ? Size{0} : degrees[place - linkless];
        };
        info.degreeMin = at(0);
        info.degreeMax = at(info.nodes - 1);
        info.degreeMean = 2 * static_cast<double>(m_links.size()) / static_cast<double>(info.nodes);
        info.degreeMedian = static_cast<double>(at((info.nodes - 1) / 2) + at(info.nodes / 2)) / 2;
    }

    void measureComponents(NetworkInfo& info) const {
        Components components;
        components.resize(m_nodes);
        for (const Size link : m_links) components.join(source(link), target(link));
        std::vector<Size> sizes(m_nodes);
        for (Id node = 0; node < m_nodes; ++node) ++sizes[components.find(node)];
        info.components =
            info.nodes - m_nodes +
            static_cast<Size>(std::count_if(sizes.begin(), sizes.end(), [](Size s) { return s; }));
        info.largest = *std::max_element(sizes.begin(), sizes.end());
    }

    Size m_nodes = 0;
    std::vector<Size> m_links;
    std::vector<Id> m_selves;
    std::size_t m_crowded = std::size_t{1} << 20;
    Size m_repeated = 0;
    Size m_selfLinks = 0;
    LinkWeight m_min = 0;
    LinkWeight m_max = 0;
};

/// The links as they come, for an estimate of what clustering takes.
class Pairs {
public:
    void add(const RawLink& ln) {
        m_sources.push_back(ln.src);
        m_destinations.push_back(ln.dst);
        m_weights.push_back(ln.weight);
    }

    ClusterEstimate estimate(const NetworkInfo& info) const {
        std::vector<Id> nodes(info.nodes);
        std::iota(nodes.begin(), nodes.end(), Id{0});
        return estimateClustering(FlatNetwork::ofPairs(m_sources, m_destinations, m_weights, nodes),
                                  info.facts.directed(), info.facts.statesWeights);
    }

private:
    std::vector<Id> m_sources;
    std::vector<Id> m_destinations;
    std::vector<LinkWeight> m_weights;
};

std::string linksOf(const NetworkFacts& facts) {
    if (!facts.directed()) return counted(facts.edges, "edge");
    if (facts.edges == 0) return counted(facts.arcs, "arc");
    return counted(facts.edges, "edge") + " and " + counted(facts.arcs, "arc");
}

/// A time to one digit, of which more would be made up.
std::string roughly(double seconds) {
    if (seconds < 0.1) return "less than 0.1 s";
    const double unit = std::pow(10, std::floor(std::log10(seconds)));
    return readable(std::round(seconds / unit) * unit) + " s";
}

/// What tells the format, where it isn't that of the name.
std::string recognition(const InfoCommand& command, const NetworkFacts& facts) {
    const char* const by = command.read.format != NetworkFormat::UNKNOWN ? "as asked for"
                           : formatByName(command.read.file) != NetworkFormat::UNKNOWN
                               ? "by the name"
                               : "by the first lines";
    return std::string(nameOf(facts.format)) + ", " + by +
           (facts.dialect.empty() ? "" : "; " + facts.dialect);
}

std::string asText(const InfoCommand& command, const NetworkInfo& info) {
    const std::string& file = command.read.file;
    const ZeroWeights zeros = command.read.zeros;
    const NetworkFacts& facts = info.facts;
    const auto row = [](const char* name, const std::string& value) {
        return format("%-15s ", name) + value + "\n";
    };
    const bool told =
        facts.format < NetworkFormat::LIST && (command.read.format != NetworkFormat::UNKNOWN ||
                                               formatByName(file) != NetworkFormat::UNKNOWN);
    const std::string recognised = told ? "" : row("format", recognition(command, facts));
    const std::string links = linksOf(facts);
    return file + "\n\n" + recognised +
           row("nodes", grouped(info.nodes) + ", " + grouped(info.isolated) +
                            " of them without a link to another one") +
           row("links", links) +
           row("", grouped(info.selfLinks) + " of them to the node itself, " +
                       grouped(info.repeated) + " repeated") +
           row("weights", facts.statesWeights
                              ? readable(static_cast<double>(info.weightMin)) + " to " +
                                    readable(static_cast<double>(info.weightMax)) + ", in all " +
                                    readable(facts.weight) + ", each link counted once"
                              : "none") +
           (facts.zeroWeights == 0
                ? ""
                : row("", counted(facts.zeroWeights, "link") + " of weight 0 " +
                              (zeros == ZeroWeights::DROP ? "left out" : "counted as 1") +
                              ", the first in line " + std::to_string(facts.firstZeroWeight))) +
           row("degrees", format("%llu to %llu, mean %.3f, median %g",
                                 static_cast<unsigned long long>(info.degreeMin),
                                 static_cast<unsigned long long>(info.degreeMax), info.degreeMean,
                                 info.degreeMedian)) +
           row("components",
               grouped(info.components) + ", the largest has " + counted(info.largest, "node")) +
           (info.estimate ? row("cluster", "takes some " + bytes(info.estimate->memory) + " and " +
                                               roughly(info.estimate->seconds))
                          : "");
}

std::string asJson(const std::string& file, const NetworkInfo& info) {
    const NetworkFacts& facts = info.facts;
    const auto flag = [](bool value) { return value ? "true" : "false"; };
    const std::string estimate =
        info.estimate
            ? ", \"estimate\": {\"memory_bytes\": " + std::to_string(info.estimate->memory) +
                  ", \"seconds\": " + jsonNumber(info.estimate->seconds, 1) + "}"
            : "";
    return "{\"file\": " + jsonQuoted(file) + ", \"nodes\": " + std::to_string(info.nodes) +
           ", \"edges\": " + std::to_string(facts.edges) +
           ", \"arcs\": " + std::to_string(facts.arcs) +
           ", \"directed\": " + flag(facts.directed()) +
           ", \"weighted\": " + flag(facts.statesWeights) +
           ", \"link_weight\": {\"sum\": " + jsonNumber(facts.weight) +
           ", \"min\": " + jsonNumber(static_cast<double>(info.weightMin)) +
           ", \"max\": " + jsonNumber(static_cast<double>(info.weightMax)) +
           "}, \"degree\": {\"min\": " + std::to_string(info.degreeMin) +
           ", \"max\": " + std::to_string(info.degreeMax) +
           ", \"mean\": " + jsonNumber(info.degreeMean) +
           ", \"median\": " + jsonNumber(info.degreeMedian) +
           "}, \"components\": " + std::to_string(info.components) +
           ", \"largest_component\": " + std::to_string(info.largest) +
           ", \"isolated_nodes\": " + std::to_string(info.isolated) +
           ", \"self_links\": " + std::to_string(info.selfLinks) +
           ", \"repeated_links\": " + std::to_string(info.repeated) +
           ", \"zero_weight_links\": " + std::to_string(facts.zeroWeights) + estimate + "}\n";
}

}  // namespace

void run(const InfoCommand& command) {
    const ProgressLine line;
    ScanOptions options = scanOptions(command.read);
    // An estimate clusters a part.
    options.mayLackLinks = !command.estimate;
    const auto source = openInput(command.read);
    Survey survey;
    NodeNames nodes(command.read.labels);
    Pairs pairs;
    const NetworkFacts facts =
        scanNetwork(*source, command.read.file, options, nodes, [&](const RawLink& ln) {
            survey.add(ln);
            if (command.estimate) pairs.add(ln);
        });
    NetworkInfo info = survey.result(facts, nodes.size());
    try {
        if (command.estimate) info.estimate = pairs.estimate(info);
    } catch (const std::overflow_error& err) {
        throw beyondEngine(command.read.file, err);
    }
    print(command.json ? asJson(command.read.file, info) : asText(command, info));
}

}  // namespace vorl::app
