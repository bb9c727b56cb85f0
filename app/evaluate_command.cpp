#include "evaluate_command.hpp"

#include "errors.hpp"
#include "output_text.hpp"

#include <vorl/reading/clusters_file.hpp>
#include <vorl/reading/memory_file.hpp>
#include <vorl/reading/text_file.hpp>
#include <vorl/shared/operations.hpp>

#include <cmath>
#include <cstdio>
#include <memory>
#include <variant>
#include <vector>

namespace vorl::app {

namespace {

template <class GraphT>
std::vector<Id> nodeIds(GraphT& graph) {
    std::vector<Id> ids;
    ids.reserve(graph.nodes().size());
    for (const auto& node : graph.nodes()) ids.push_back(node.id);
    return ids;
}

std::string asText(const EvaluateCommand& command, Size clusters, Size nodes,
                   const Intrinsics& measures) {
    const auto row = [](const char* name, float value, const std::string& note) {
        return format("%-13s %.6f", name, static_cast<double>(value)) + note + "\n";
    };
    return command.clusters + ": " + counted(clusters, "cluster") + " of " +
           counted(nodes, "node") + "\n\n" +
           (std::isnan(measures.cdn) ? format("%-13s %s\n", "conductance", NO_CONDUCTANCE)
                                     : row("conductance", measures.cdn, "")) +
           row("modularity", measures.mod,
               " at gamma " + format("%.6g", static_cast<double>(command.gamma))) +
           row("gamma", measures.gamma, " estimated from the clusters by the log-ratio rule") +
           row("modularity", measures.sgmod, " at the estimated gamma");
}

std::string asJson(const EvaluateCommand& command, Size clusters, Size nodes, Size covered,
                   const Intrinsics& measures) {
    const auto measure = [](float value) { return jsonNumber(static_cast<double>(value)); };
    return "{\"file\": " + jsonQuoted(command.clusters) +
           ", \"clusters\": " + std::to_string(clusters) + ", \"nodes\": " + std::to_string(nodes) +
           ", \"covered_nodes\": " + std::to_string(covered) +
           ", \"conductance\": " + measure(measures.cdn) +
           ", \"modularity\": " + measure(measures.mod) + ", \"gamma\": " + measure(command.gamma) +
           ", \"estimated_gamma\": " + measure(measures.gamma) +
           ", \"modularity_at_estimated_gamma\": " + measure(measures.sgmod) + "}\n";
}

}  // namespace

void run(const EvaluateCommand& command) {
    requireOneStandardInput(command.read.file, command.clusters);
    Network network = readNetwork(command.read);
    if (!command.quiet) showWarnings(network, command.read);
    auto clusters = std::make_unique<ClustersFile>(
        parseClusters(TextFile(command.clusters).text(), command.clusters));
    if (command.strict) clusters->requireStrict();
    clusters->requireClusters();
    const auto remark = [&](const std::string& text) {
        if (!command.quiet)
            std::fprintf(stderr, "vorl: %s: %s\n", command.clusters.c_str(), text.c_str());
    };
    if (const std::string deviations = clusters->deviationsText(); !deviations.empty())
        remark(deviations);
    const Size covered = clusters->nodes.size();
    if (const Size left = network.nodes - covered; covered < network.nodes)
        remark(counted(left, "node") + " of the network " + (left == 1 ? "is" : "are") +
               " in no cluster; links to " + (left == 1 ? "it" : "them") + " lead out of clusters");

    std::visit(
        [&](auto& graph) {
            clusters->requireNodes(nodeIds(*graph), command.read.file);
            const MemoryFile file(clusters->strictText());
            clusters.reset();
            Intrinsics measures;
            const Size count = evaluateClusters(measures, *graph, file.name(),
                                                static_cast<AccWeight>(command.gamma));
            print(command.json ? asJson(command, count, network.nodes, covered, measures)
                               : asText(command, count, network.nodes, measures));
        },
        network.graph);
}

}  // namespace vorl::app
