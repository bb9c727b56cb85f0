#include "evaluate_command.hpp"

#include "clusters_input.hpp"
#include "errors.hpp"
#include "output_text.hpp"
#include "progress_line.hpp"

#include <vorl/reading/evaluation.hpp>
#include <vorl/reading/source.hpp>

#include <cmath>
#include <cstdio>
#include <optional>
#include <utility>
#include <vector>

namespace vorl::app {

namespace {

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

/// @param known names of the network
ClusterLevels read(const EvaluateCommand& command, std::shared_ptr<Labels> known) {
    return readClusters(command.clusters, {.format = command.format,
                                           .strict = command.strict,
                                           .levels = command.levels,
                                           .quiet = command.quiet,
                                           .known = std::move(known)});
}

/// Measures clusters on a network, which is spent.
Intrinsics measured(const EvaluateCommand& command, Network& network, ClustersFile clusters) {
    return evaluateClusters(network, std::move(clusters), command.read.file,
                            static_cast<AccWeight>(command.gamma));
}

/// The clusters of one level, and what is measured of them.
struct EvaluatedLevel {
    Size clusters;
    Size nodes;  ///< in a cluster
    Intrinsics measures;
};

std::vector<EvaluatedLevel> evaluateLevels(const EvaluateCommand& command) {
    if (command.read.file == STANDARD_INPUT)
        throw UsageError(
            "--levels reads the network anew for each level, which the standard "
            "input doesn't allow for");
    const ClusterLevels clusters = read(command, nullptr);
    ReadOptions options = command.read;
    options.labels = clusters.labels();
    std::vector<EvaluatedLevel> rows;
    for (LevelNum level = 0; level < clusters.levels(); ++level) {
        Network network = readNetwork(options);
        if (level == 0 && !command.quiet) showWarnings(network, command.read);
        ClustersFile file = clusters.level(level);
        rows.push_back({file.clusters.size(), file.nodes.size(), Intrinsics()});
        rows.back().measures = measured(command, network, std::move(file));
    }
    return rows;
}

/// The row with the highest modularity, or the lowest conductance; none if no row has one.
std::optional<std::size_t> bestRow(const std::vector<EvaluatedLevel>& rows,
                                   float Intrinsics::*measure, bool least) {
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const float value = rows[i].measures.*measure;
        if (std::isnan(value)) continue;
        const float former = best ? rows[*best].measures.*measure : 0;
        if (!best || (least ? value < former : value > former)) best = i;
    }
    return best;
}

std::string levelsAsText(const EvaluateCommand& command, const std::vector<EvaluatedLevel>& rows) {
    std::string text = command.clusters +
                       "\n\n level  clusters     nodes  conductance  modularity"
                       "  est. gamma  modularity there\n";
    const auto conductance = bestRow(rows, &Intrinsics::cdn, true);
    const auto modularity = bestRow(rows, &Intrinsics::mod, false);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const Intrinsics& measures = rows[i].measures;
        const auto value = [](float measure) {
            return std::isnan(measure) ? std::string("-")
                                       : format("%.6f", static_cast<double>(measure));
        };
        text += format("%6zu%10s%10s%13s%s%11s%s%11s%18s\n", i, grouped(rows[i].clusters).c_str(),
                       grouped(rows[i].nodes).c_str(), value(measures.cdn).c_str(),
                       conductance == i ? "*" : " ", value(measures.mod).c_str(),
                       modularity == i ? "*" : " ", value(measures.gamma).c_str(),
                       value(measures.sgmod).c_str());
    }
    return text + "* the best of its column; modularity at gamma " +
           format("%.6g", static_cast<double>(command.gamma)) + "\n";
}

std::string levelsAsJson(const EvaluateCommand& command, const std::vector<EvaluatedLevel>& rows) {
    const auto value = [](float measure) { return jsonNumber(static_cast<double>(measure)); };
    const auto place = [](const std::optional<std::size_t>& best) {
        return best ? std::to_string(*best) : std::string("null");
    };
    std::string text = "{\"file\": " + jsonQuoted(command.clusters) +
                       ", \"gamma\": " + value(command.gamma) + ", \"levels\": [";
    for (const EvaluatedLevel& row : rows)
        text += (&row == rows.data() ? "{" : ", {") +
                ("\"clusters\": " + std::to_string(row.clusters)) +
                ", \"covered_nodes\": " + std::to_string(row.nodes) +
                ", \"conductance\": " + value(row.measures.cdn) +
                ", \"modularity\": " + value(row.measures.mod) +
                ", \"estimated_gamma\": " + value(row.measures.gamma) +
                ", \"modularity_at_estimated_gamma\": " + value(row.measures.sgmod) + "}";
    return text + "], \"best\": {\"conductance\": " + place(bestRow(rows, &Intrinsics::cdn, true)) +
           ", \"modularity\": " + place(bestRow(rows, &Intrinsics::mod, false)) + "}}\n";
}

}  // namespace

void run(const EvaluateCommand& command) {
    requireOneStandardInput(command.read.file, command.clusters);
    std::optional<ProgressLine> line;
    if (!command.quiet) line.emplace();
    if (command.levels) {
        const std::vector<EvaluatedLevel> rows = evaluateLevels(command);
        print(command.json ? levelsAsJson(command, rows) : levelsAsText(command, rows));
        return;
    }
    Network network = readNetwork(command.read);
    if (!command.quiet) showWarnings(network, command.read);
    ClustersFile clusters = read(command, network.labels).flat();
    const auto remark = [&](const std::string& text) {
        if (!command.quiet) tell(command.clusters + ": " + text);
    };
    const Size covered = clusters.nodes.size();
    if (const Size left = network.nodes - covered; covered < network.nodes)
        remark(counted(left, "node") + " of the network " + (left == 1 ? "is" : "are") +
               " in no cluster; links to " + (left == 1 ? "it" : "them") + " lead out of clusters");

    const Size count = clusters.clusters.size();
    const Intrinsics measures = measured(command, network, std::move(clusters));
    print(command.json ? asJson(command, count, network.nodes, covered, measures)
                       : asText(command, count, network.nodes, measures));
}

}  // namespace vorl::app
