#include "summary.hpp"

#include "output_text.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>

namespace vorl::app {

namespace {

/// The levels with the highest modularity and the lowest conductance, the first of several.
struct BestLevels {
    explicit BestLevels(const Summary& summary) {
        const auto& levels = summary.measures;
        for (std::size_t i = 0; i < levels.size(); ++i) {
            if (!modularity || levels[i].modularity > levels[*modularity].modularity)
                modularity = i;
            if (levels[i].clusters > 1 &&
                (!conductance || levels[i].conductance < levels[*conductance].conductance))
                conductance = i;
        }
    }

    std::optional<std::size_t> modularity;
    std::optional<std::size_t> conductance;
};

std::string levelRow(const Summary& summary, std::size_t index, const BestLevels& best) {
    const auto& [clusters, fullsize] = summary.levels[index];
    std::string text =
        format("  %7zu  %12s  %12s", index, grouped(clusters).c_str(), grouped(fullsize).c_str());
    if (!summary.measures.empty()) {
        const LevelMeasures& measures = summary.measures[index];
        text += format("%22.6f%c", measures.modularity, best.modularity == index ? '*' : ' ') +
                (std::isnan(measures.conductance) ? format("%12s", "-")
                                                  : format("%12.6f", measures.conductance)) +
                (best.conductance == index ? "*" : "");
    }
    return text + "\n";
}

/// Six digits behind the point, for measures, which are small but at extreme resolutions.
std::string fixed(double value) {
    if (std::abs(value) < 5e-7) value = 0;  // not -0.000000
    return format(std::abs(value) < 1e6 ? "%.6f" : "%.6g", value);
}

/// A root of one item holds the whole network, and nothing is cut from it.
bool hasConductance(const Summary& summary) { return summary.rootSizes.size() > 1; }

/// The fields of a run, without braces and times.
std::string runJson(const Summary& summary) {
    std::string text = "\"levels\": [";
    for (std::size_t i = 0; i < summary.levels.size(); ++i)
        text += std::string(i ? ", " : "") +
                "{\"clusters\": " + std::to_string(summary.levels[i].first) +
                ", \"fullsize\": " + std::to_string(summary.levels[i].second) +
                (summary.measures.empty()
                     ? ""
                     : ", \"standing_clusters\": " + std::to_string(summary.measures[i].clusters) +
                           ", \"modularity_at_1\": " + jsonNumber(summary.measures[i].modularity) +
                           ", \"conductance\": " + jsonNumber(summary.measures[i].conductance)) +
                "}";
    text += "]";
    if (!summary.measures.empty()) {
        const BestLevels best(summary);
        const auto place = [](const std::optional<std::size_t>& level) {
            return level ? std::to_string(*level) : std::string("null");
        };
        text += ", \"best\": {\"modularity_at_1\": " + place(best.modularity) +
                ", \"conductance\": " + place(best.conductance) + "}";
    }
    const HierScore& score = summary.score;
    text +=
        ", \"root\": " + std::to_string(summary.rootSizes.size()) +
        ", \"clusters\": " + std::to_string(score.clusters) +
        ", \"score\": {\"modularity\": " + jsonNumber(score.modularity) +
        ", \"gamma\": " + (summary.gamma < 0 ? "\"auto\"" : jsonNumber(summary.gamma)) +
        ", \"modularity_at_1\": " + jsonNumber(summary.modularityAtOne) +
        ", \"estimated_gamma\": " + (summary.levels.empty() ? "null" : jsonNumber(score.egamma)) +
        ", \"conductance\": " + (hasConductance(summary) ? jsonNumber(score.conductance) : "null") +
        "}, \"files\": [";
    for (std::size_t i = 0; i < summary.files.size(); ++i)
        text += (i ? ", " : "") + jsonQuoted(summary.files[i]);
    return text + "]";
}

/// "1 edge", or "1 edge (3 in the file, 2 of them repeated)".
std::string linksText(const NetworkSummary& network) {
    const std::string edges = counted(network.edges, "edge");
    const std::string arcs = counted(network.arcs, "arc");
    if (network.edges != 0 && network.arcs != 0)
        return edges + " and " + arcs +
               (network.repeated == 0
                    ? ""
                    : " (" + counted(network.repeated, "direction") + " repeated)");
    if (network.repeated == 0) return network.edges != 0 ? edges : arcs;
    const Size all = network.edges + network.arcs;
    return counted(all - network.repeated, network.edges != 0 ? "edge" : "arc") + " (" +
           grouped(all) + " in the file, " + grouped(network.repeated) + " of them repeated)";
}

std::string runText(const Summary& summary) {
    std::string text;
    // A tall hierarchy is shown by its ends and its best levels.
    constexpr std::size_t shown = 16;
    const std::size_t levels = summary.levels.size();
    if (levels != 0) {
        const BestLevels best(summary);
        text += std::string("    level      clusters  items at this height") +
                (summary.measures.empty() ? "" : "  modularity  conductance") + "\n";
        const std::size_t end = levels > shown ? levels - shown / 2 : 0;
        std::size_t hidden = 0;
        const auto tellHidden = [&] {
            if (hidden != 0) text += format("      ...  %zu levels\n", hidden);
            hidden = 0;
        };
        for (std::size_t i = 0; i < levels; ++i) {
            if (i >= shown / 2 && i < end && best.modularity != i && best.conductance != i) {
                ++hidden;
                continue;
            }
            tellHidden();
            text += levelRow(summary, i, best);
        }
        text += "     root" + format("  %12s\n", grouped(summary.rootSizes.size()).c_str()) +
                (summary.measures.empty() ? "\n"
                                          : "* the best of its column; modularity at gamma 1\n\n");
    } else {
        text += "No node finds a partner: there are no clusters.\n\n";
    }

    const HierScore& score = summary.score;
    text += counted(score.clusters, "cluster") + " on " + counted(levels, "level") + ", " +
            grouped(summary.rootSizes.size()) + " at the root\n";
    if (!summary.rootSizes.empty()) {
        constexpr std::size_t most = 10;
        std::vector<AccWeight> sizes = summary.rootSizes;
        const std::size_t count = std::min(most, sizes.size());
        std::partial_sort(sizes.begin(), sizes.begin() + static_cast<std::ptrdiff_t>(count),
                          sizes.end(), std::greater<>());
        text += "root sizes    ";
        for (std::size_t i = 0; i < count; ++i) text += (i ? ", " : "") + readable(sizes[i]);
        text += count < sizes.size() ? ", ... nodes\n" : " nodes\n";
    }
    text += "modularity    " + fixed(static_cast<double>(score.modularity)) + " at gamma " +
            gammaName(summary.gamma) + "\n";
    if (summary.gamma != 1)
        text += "              " + fixed(summary.modularityAtOne) + " at gamma 1\n";
    if (levels == 0) return text;
    return text + "conductance   " +
           (hasConductance(summary) ? fixed(static_cast<double>(score.conductance))
                                    : NO_CONDUCTANCE) +
           format("\ngamma         %.6f estimated from the root by the log-ratio rule\n",
                  static_cast<double>(score.egamma));
}

std::string tableText(const std::vector<Summary>& runs) {
    std::string text =
        "     gamma    clusters  levels        root  modularity  at gamma 1  conductance  "
        "estimated gamma\n";
    for (const Summary& run : runs) {
        const HierScore& score = run.score;
        const auto ifThere = [](bool there, float value) {
            return there ? fixed(static_cast<double>(value)) : std::string("none");
        };
        text += format("%10s  %10s  %6zu  %10s  %10s  %10s  %11s  %15s\n",
                       gammaName(run.gamma).c_str(), grouped(score.clusters).c_str(),
                       run.levels.size(), grouped(run.rootSizes.size()).c_str(),
                       fixed(static_cast<double>(score.modularity)).c_str(),
                       fixed(run.modularityAtOne).c_str(),
                       ifThere(hasConductance(run), score.conductance).c_str(),
                       ifThere(!run.levels.empty(), score.egamma).c_str());
    }
    return text + "\n";
}

}  // namespace

NetworkSummary summaryOf(const std::string& file, const NetworkReport& network) {
    NetworkSummary summary;
    summary.file = file;
    summary.nodes = network.nodes;
    summary.edges = network.edges;
    summary.arcs = network.arcs;
    summary.repeated = network.repeated;
    summary.zeroWeights = network.zeroWeights;
    summary.directed = network.directed;
    summary.weighted = network.statesWeights;
    return summary;
}

std::string networkJson(const NetworkSummary& network) {
    return "{\"file\": " + jsonQuoted(network.file) +
           ", \"nodes\": " + std::to_string(network.nodes) +
           ", \"edges\": " + std::to_string(network.edges) +
           ", \"arcs\": " + std::to_string(network.arcs) +
           ", \"repeated_links\": " + std::to_string(network.repeated) +
           ", \"zero_weight_links\": " + std::to_string(network.zeroWeights) +
           ", \"directed\": " + (network.directed ? "true" : "false") +
           ", \"weighted\": " + (network.weighted ? "true" : "false") +
           ", \"weight\": " + jsonNumber(network.weight) + "}";
}

std::string writtenText(const std::vector<std::string>& files) {
    constexpr std::size_t most = 6;
    std::string text;
    for (std::size_t i = 0; i < std::min(files.size(), most); ++i)
        text += "written       " + files[i] + "\n";
    if (files.size() > most)
        text += "              and " + counted(files.size() - most, "other") + "\n";
    return text;
}

std::string networkText(const NetworkSummary& network) {
    return network.file + ": " + counted(network.nodes, "node") + ", " + linksText(network) + ", " +
           (network.weighted ? "weighted" : "unweighted") + ", total weight " +
           readable(network.weight) + (network.edges != 0 ? " (both directions of an edge)" : "") +
           "\n\n";
}

std::string gammaName(float gamma) {
    return gamma < 0 ? "auto" : format("%.6g", static_cast<double>(gamma));
}

std::string asJson(const NetworkSummary& network, const std::vector<Summary>& runs,
                   Size peakMemory) {
    const auto seconds = [](const Summary& run) {
        return "\"build\": " + jsonNumber(run.buildSeconds) +
               ", \"write\": " + jsonNumber(run.writeSeconds) + "}";
    };
    const std::string read = ", \"seconds\": {\"read\": " + jsonNumber(network.seconds);
    std::string text = "{\"network\": " + networkJson(network) + ", ";
    if (runs.size() == 1) {
        text += runJson(runs[0]) + read + ", " + seconds(runs[0]);
    } else {
        text += "\"runs\": [";
        for (const Summary& run : runs)
            text += (&run == runs.data() ? "{" : ", {") + runJson(run) + ", \"seconds\": {" +
                    seconds(run) + "}";
        text += "]" + read + "}";
    }
    return text + ", \"peak_memory_bytes\": " + std::to_string(peakMemory) + "}\n";
}

std::string asText(const NetworkSummary& network, const std::vector<Summary>& runs,
                   Size peakMemory) {
    std::vector<std::string> files;
    double building = 0;
    double writing = 0;
    for (const Summary& run : runs) {
        files.insert(files.end(), run.files.begin(), run.files.end());
        building += run.buildSeconds;
        writing += run.writeSeconds;
    }
    std::string text =
        networkText(network) + (runs.size() == 1 ? runText(runs[0]) : tableText(runs)) +
        writtenText(files) +
        format("time          %.3g s reading, %.3g s clustering", network.seconds, building);
    if (!files.empty()) text += format(", %.3g s writing", writing);
    return text + "; peak memory " + bytes(peakMemory) + "\n";
}

}  // namespace vorl::app
