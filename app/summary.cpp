#include "summary.hpp"

#include "output_text.hpp"

#include <algorithm>
#include <functional>

namespace vorl::app {

namespace {

std::string levelRow(const Summary& summary, std::size_t index) {
    const auto& [clusters, fullsize] = summary.levels[index];
    return format("  %7zu  %12s  %12s\n", index, grouped(clusters).c_str(),
                  grouped(fullsize).c_str());
}

/// A root of one item holds the whole network, and nothing is cut from it.
bool hasConductance(const Summary& summary) { return summary.rootSizes.size() > 1; }

}  // namespace

std::string asJson(const Summary& summary) {
    std::string text = "{\"network\": {\"file\": " + jsonQuoted(summary.file) +
                       ", \"nodes\": " + std::to_string(summary.nodes) +
                       ", \"links\": " + std::to_string(summary.links) +
                       ", \"directed\": " + (summary.directed ? "true" : "false") +
                       ", \"weighted\": " + (summary.weighted ? "true" : "false") +
                       ", \"weight\": " + jsonNumber(summary.weight) + "}, \"levels\": [";
    for (std::size_t i = 0; i < summary.levels.size(); ++i)
        text += std::string(i ? ", " : "") +
                "{\"clusters\": " + std::to_string(summary.levels[i].first) +
                ", \"fullsize\": " + std::to_string(summary.levels[i].second) + "}";
    const HierScore& score = summary.score;
    text +=
        "], \"root\": " + std::to_string(summary.rootSizes.size()) +
        ", \"clusters\": " + std::to_string(score.clusters) +
        ", \"score\": {\"modularity\": " + jsonNumber(score.modularity) +
        ", \"gamma\": " + (score.gamma < 0 ? "\"auto\"" : jsonNumber(score.gamma)) +
        ", \"modularity_at_1\": " + jsonNumber(summary.modularityAtOne) +
        ", \"estimated_gamma\": " + (summary.levels.empty() ? "null" : jsonNumber(score.egamma)) +
        ", \"conductance\": " + (hasConductance(summary) ? jsonNumber(score.conductance) : "null") +
        "}, \"files\": [";
    for (std::size_t i = 0; i < summary.files.size(); ++i)
        text += (i ? ", " : "") + jsonQuoted(summary.files[i]);
    text += "], \"seconds\": {\"read\": " + jsonNumber(summary.readSeconds) +
            ", \"build\": " + jsonNumber(summary.buildSeconds) +
            ", \"write\": " + jsonNumber(summary.writeSeconds) +
            "}, \"peak_memory_bytes\": " + std::to_string(summary.peakMemory) + "}\n";
    return text;
}

std::string asText(const Summary& summary) {
    std::string text = summary.file + ": " + counted(summary.nodes, "node") + ", " +
                       counted(summary.links, summary.directed ? "arc" : "edge") + ", " +
                       (summary.weighted ? "weighted" : "unweighted") + ", total weight " +
                       format("%.6g", summary.weight) + "\n\n";

    // A tall hierarchy is shown by its ends.
    constexpr std::size_t shown = 16;
    const std::size_t levels = summary.levels.size();
    if (levels != 0) {
        text += "    level      clusters  items at this height\n";
        const std::size_t head = levels > shown ? shown / 2 : levels;
        for (std::size_t i = 0; i < head; ++i) text += levelRow(summary, i);
        if (head < levels) {
            text += format("      ...  %zu levels\n", levels - shown);
            for (std::size_t i = levels - shown / 2; i < levels; ++i) text += levelRow(summary, i);
        }
        text += "     root" + format("  %12s\n\n", grouped(summary.rootSizes.size()).c_str());
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
        for (std::size_t i = 0; i < count; ++i) text += format(i ? ", %.6g" : "%.6g", sizes[i]);
        text += count < sizes.size() ? ", ... nodes\n" : " nodes\n";
    }
    text +=
        format("modularity    %.6f at gamma %s\n", static_cast<double>(score.modularity),
               score.gamma < 0 ? "auto" : format("%.6g", static_cast<double>(score.gamma)).c_str());
    if (score.gamma != 1)
        text += format("              %.6f at gamma 1\n", summary.modularityAtOne);
    if (levels != 0) {
        text += "conductance   " +
                (hasConductance(summary) ? format("%.6f", static_cast<double>(score.conductance))
                                         : NO_CONDUCTANCE) +
                format("\ngamma         %.6f estimated from the root by the log-ratio rule\n",
                       static_cast<double>(score.egamma));
    }
    constexpr std::size_t mostFiles = 6;
    const std::size_t files = summary.files.size();
    for (std::size_t i = 0; i < std::min(files, mostFiles); ++i)
        text += "written       " + summary.files[i] + "\n";
    if (files > mostFiles)
        text += "              and " + counted(files - mostFiles, "other") + "\n";
    text += format("time          %.3g s reading, %.3g s clustering", summary.readSeconds,
                   summary.buildSeconds);
    if (!summary.files.empty()) text += format(", %.3g s writing", summary.writeSeconds);
    return text + "; peak memory " + bytes(summary.peakMemory) + "\n";
}

}  // namespace vorl::app
