#include "communities_command.hpp"

#include "errors.hpp"
#include "hierarchy_files.hpp"
#include "output_target.hpp"
#include "output_text.hpp"
#include "progress_line.hpp"
#include "run_figures.hpp"
#include "summary.hpp"
#include "text_output.hpp"

#include <vorl/communities_hierarchy.hpp>
#include <vorl/communities_text.hpp>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <optional>

namespace vorl::app {

namespace {

/// What a run took.
struct Took {
    double communities = 0;
    double write = 0;
};

/// Whether nothing was found, all nodes that have links being together.
bool undivided(const Communities& found) { return found.count() <= found.isolated() + 1; }

std::vector<double> sizes(const Communities& found) {
    std::vector<double> result;
    for (Id community = 0; community < found.count() - found.isolated(); ++community) {
        double nodes = 0;
        for (const auto& [place, share] : found.members(community))
            nodes += static_cast<double>(share);
        result.push_back(nodes);
    }
    std::sort(result.begin(), result.end(), std::greater<>());
    return result;
}

/// A number of nodes, shared ones in parts.
std::string nodesText(double nodes) {
    return nodes == std::floor(nodes) ? grouped(static_cast<Size>(nodes)) : format("%.1f", nodes);
}

std::string verdict(const Communities& found) {
    const CommunitiesScore& score = found.score();
    if (undivided(found))
        return "There are no communities: none describe the network better than chance does.\n";
    if (score.saving < 0)
        return "The communities may be chance: describing the network by them takes " +
               format("%.4g", -score.saving) + " bits more than without.\n";
    return "";
}

std::string asText(const NetworkSummary& network, const Communities& found, const Took& took,
                   const std::vector<std::string>& files) {
    const CommunitiesScore& score = found.score();
    const Id communities = found.count() - found.isolated();
    std::string text = networkText(network);
    text += communities == 1 ? std::string("1 community") : grouped(communities) + " communities";
    text += ", " + counted(found.shared(), "node") + " in several";
    if (found.isolated()) text += "; " + counted(found.isolated(), "isolated node");
    text += "\n" + verdict(found);
    if (communities) {
        constexpr std::size_t most = 10;
        const std::vector<double> nodes = sizes(found);
        text += "sizes         ";
        for (std::size_t i = 0; i < std::min(most, nodes.size()); ++i)
            text += (i ? ", " : "") + nodesText(nodes[i]);
        if (nodes.size() > most)
            text += ", ... " + nodesText(nodes.back()) + "; " + nodesText(nodes[nodes.size() / 2]) +
                    " in the median";
        text += "\n";
    }
    if (!undivided(found)) {
        text += format("modularity    %.6f at gamma 1\n", score.modularity);
        text += format("conductance   %.6f\n", score.conductance);
        text += format("gamma         %.6f estimated by the log-ratio rule\n", score.gamma);
        text += format("description   %.6g bits ", std::abs(score.saving)) +
                (score.saving < 0 ? "longer" : "shorter") +
                format(" than without communities (named by %.6g)\n", score.naming);
        text += "search        " + counted(score.starts, "start") + "; the best: " + score.start +
                ", " + counted(score.rounds, "round") + "\n";
    }
    text += writtenText(files);
    text += format("time          %.3g s reading, %.3g s", network.seconds, took.communities);
    const char* separator = " (";
    for (const auto& [step, seconds] : found.seconds()) {
        text += separator + step + format(" %.3g", seconds);
        separator = ", ";
    }
    text += found.seconds().empty() ? "" : ")";
    if (!files.empty()) text += format(", %.3g s writing", took.write);
    return text + "; peak memory " + bytes(peakMemory()) + "\n";
}

std::string asJson(const NetworkSummary& network, const Communities& found, const Took& took,
                   const std::vector<std::string>& files) {
    const CommunitiesScore& score = found.score();
    const bool divided = !undivided(found);
    std::string text = "{\"network\": " + networkJson(network) +
                       ", \"communities\": " + std::to_string(found.count() - found.isolated()) +
                       ", \"isolated_nodes\": " + std::to_string(found.isolated()) +
                       ", \"shared_nodes\": " + std::to_string(found.shared()) + ", \"sizes\": [";
    const std::vector<double> nodes = sizes(found);
    for (std::size_t i = 0; i < nodes.size(); ++i) text += (i ? ", " : "") + jsonNumber(nodes[i]);
    text += "], \"score\": {\"modularity\": " + jsonNumber(score.modularity) +
            ", \"estimated_gamma\": " + (divided ? jsonNumber(score.gamma) : "null") +
            ", \"conductance\": " + (divided ? jsonNumber(score.conductance) : "null") +
            ", \"saving_bits\": " + jsonNumber(score.saving) +
            ", \"naming_bits\": " + jsonNumber(score.naming) +
            "}, \"start\": " + jsonQuoted(score.start) +
            ", \"starts\": " + std::to_string(score.starts) +
            ", \"rounds\": " + std::to_string(score.rounds) + ", \"files\": [";
    for (std::size_t i = 0; i < files.size(); ++i) text += (i ? ", " : "") + jsonQuoted(files[i]);
    text += "], \"seconds\": {\"read\": " + jsonNumber(network.seconds) +
            ", \"communities\": " + jsonNumber(took.communities);
    for (const auto& [step, seconds] : found.seconds())
        text += ", " + jsonQuoted(step) + ": " + jsonNumber(seconds);
    return text + ", \"write\": " + jsonNumber(took.write) +
           "}, \"peak_memory_bytes\": " + std::to_string(peakMemory()) + "}\n";
}

}  // namespace

void run(const CommunitiesCommand& command) {
    std::optional<ProgressLine> line;
    if (!command.quiet) line.emplace();
    const OutputTarget clusters(command.output, command.read.file, command.parents);
    const OutputTarget table(command.table, command.read.file, command.parents);
    const OutputTarget hierarchy(command.hierarchy, command.read.file, command.parents);
    const std::string* const files[] = {&command.output, &command.table, &command.hierarchy};
    for (const auto* file : files)
        if (!file->empty() && std::count_if(std::begin(files), std::end(files),
                                            [&](auto* other) { return *other == *file; }) > 1)
            throw UsageError("two of clusters, table and hierarchy can't both be " + *file);
    requireClustersName(command.output);
    if (!command.hierarchy.empty() && !command.hierarchy.ends_with(".rhb"))
        throw UsageError("the name of a hierarchy ends in .rhb: " + command.hierarchy);
    if (clusters.toOutput() + table.toOutput() + command.json > 1)
        throw UsageError("clusters, table and JSON can't share the standard output");

    Stopwatch watch;
    const UndirectedNetwork network = readUndirected(command.read);
    NetworkSummary summary = summaryOf(command.read.file, network);
    summary.seconds = watch.lap();
    if (!command.quiet) showWarnings(network, command.read);

    Took took;
    const FlatNetwork& flat = network.links;
    const std::shared_ptr<Labels>& labels = network.labels;
    for (const LinkWeight weight : flat.weight) summary.weight += static_cast<AccWeight>(weight);
    // Each link stands at both of its ends.
    if (network.edges == 0) summary.weight /= 2;
    for (const AccWeight self : flat.self) summary.weight += self;
    const Communities found = communities(flat, command.options);
    took.communities = watch.lap();

    std::vector<std::string> written;
    clusters.write(written, [&](OutputTree& tree) {
        writeText(clustersText(found, labels.get()), tree, command.output);
    });
    table.write(written, [&](OutputTree& tree) {
        writeText(tableText(found, tableFormOf(command.table), labels.get()), tree, command.table);
    });
    hierarchy.write(written, [&](OutputTree& tree) {
        try {
            const auto around = communitiesHierarchy(flat, found);
            around->setLabels(labels);
            OutputRequest request;
            request.file = command.hierarchy;
            request.levels = Levels::HIERARCHY;
            writeHierarchy(*around, request, tree.path());
        } catch (const std::overflow_error& err) {
            throw beyondEngine(command.read.file, err);
        }
        tree.commit();
    });
    took.write = watch.lap();

    std::string text;
    if (command.json)
        text = asJson(summary, found, took, written);
    else if (!command.quiet && !clusters.toOutput() && !table.toOutput())
        text = asText(summary, found, took, written);
    printAfter(written, text);
}

}  // namespace vorl::app
