#include "extract_command.hpp"

#include "clusters_input.hpp"
#include "errors.hpp"
#include "output_text.hpp"
#include "text_output.hpp"

#include <vorl/reading/quotient.hpp>
#include <vorl/types/id_numbers.hpp>

#include <algorithm>
#include <utility>

namespace vorl::app {

namespace {

/// The format that the output is written in: told, by its name, or that of the network.
NetworkFormat formatOf(const ExtractCommand& command) {
    if (command.output != STANDARD_OUTPUT || command.format != NetworkFormat::UNKNOWN)
        return outputFormat(command.output, command.format);
    const NetworkFormat own = command.read.format == NetworkFormat::UNKNOWN
                                  ? formatByName(command.read.file)
                                  : command.read.format;
    // Rows of a matrix can't be left out.
    return own == NetworkFormat::UNKNOWN || own == NetworkFormat::MATRIX_MARKET ||
                   own == NetworkFormat::METIS
               ? NetworkFormat::LIST
               : own;
}

void remark(const ExtractCommand& command, const std::string& file, const std::string& text) {
    if (!command.quiet) tell(file + ": " + text);
}

std::string inducedText(const ExtractCommand& command, NetworkFormat format) {
    const ClusterLevels clusters =
        readClusters(command.clusters,
                     {.format = command.clustersFormat, .levels = true, .quiet = command.quiet});
    const std::vector<Id> members = clusters.membersOf(*command.cluster);
    ReadOptions read = command.read;
    read.labels = clusters.labels();
    NetworkTable table = readTable(read, [&members](Id node) {
        return std::binary_search(members.begin(), members.end(), node);
    });
    const Size unknown = members.size() - table.nodes.size();
    const Size linkless = holdsSingleNodes(format) ? 0 : dropLinkless(table);
    if (table.nodes.empty())
        throw InputError(
            command.clusters + ": cluster " + std::to_string(*command.cluster) +
            (linkless != 0 ? std::string(" has no link inside, and the format ") + nameOf(format) +
                                 " tells of nodes by their links; gml, graphml, json and pajek "
                                 "hold single nodes"
                           : " has no node of the network"));
    NetworkFacts own;
    for (const RawLink& ln : table.links) ++(ln.arc ? own.arcs : own.edges);
    own.weighted = table.facts.weighted;
    own.statesWeights = table.facts.statesWeights;
    own.toldDirected = table.facts.toldDirected;
    own.nodes = table.nodes.size();
    table.facts = own;
    requireHolds(format, table, command.read.file);
    if (linkless != 0)
        remark(command, command.clusters,
               counted(linkless, "node") + " without a link inside the cluster left out");
    if (unknown != 0)
        remark(command, command.clusters,
               counted(unknown, "node") + " of the cluster not in the network");
    return networkText(format, table, separatorOf(command.output));
}

std::string quotientText(const ExtractCommand& command, NetworkFormat format) {
    const ClusterLevels levels =
        readClusters(command.clusters, {.format = command.clustersFormat,
                                        .levels = command.level.has_value(),
                                        .quiet = command.quiet});
    if (command.level && *command.level >= levels.levels())
        throw InputError(command.clusters + ": there is no level " +
                         std::to_string(*command.level) + ", but " +
                         counted(levels.levels(), "level"));
    const ClustersFile clusters = command.level ? levels.level(*command.level) : levels.flat();
    ReadOptions read = command.read;
    read.labels = clusters.labels;
    const Network network = readNetwork(read);
    if (!command.quiet) showWarnings(network, command.read);
    Quotient quotient = quotientOf(network, clusters);
    const auto leftOut = [&](Size count, const char* thing, const char* why) {
        if (count != 0) remark(command, command.clusters, counted(count, thing) + why);
    };
    leftOut(quotient.uncovered, "node", " of the network in no cluster, left out with all links");
    leftOut(quotient.linkless, "cluster", " without any link left out");
    if (quotient.links.empty())
        throw InputError(command.clusters +
                         ": the clusters have no links, neither inside nor "
                         "between them");
    NetworkTable table;
    (network.directed ? table.facts.arcs : table.facts.edges) = quotient.links.size();
    table.facts.toldDirected = network.directed;
    table.facts.statesWeights = true;
    table.links = std::move(quotient.links);
    IdNumbers numbers;
    for (const RawLink& ln : table.links)
        for (const Id id : {ln.src, ln.dst}) numbers.number(id, table.nodes);
    table.linked = table.nodes.size();
    table.facts.nodes = table.linked;
    requireHolds(format, table, command.read.file);
    return networkText(format, table, separatorOf(command.output));
}

}  // namespace

void run(const ExtractCommand& command) {
    if (!command.cluster && !command.quotient)
        throw UsageError("extract needs a cluster, --cluster ID, or --quotient");
    requireOneStandardInput(command.read.file, command.clusters);
    requireOther(command.output, command.read.file);
    requireOther(command.output, command.clusters);
    const NetworkFormat format = formatOf(command);
    OutputTree files(command.output, false, command.parents);
    files.protect(command.read.file);
    files.protect(command.clusters);
    writeText(command.quotient ? quotientText(command, format) : inducedText(command, format),
              files, command.output);
}

}  // namespace vorl::app
