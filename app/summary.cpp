#include "summary.hpp"

#include <algorithm>
#include <cstdio>
#include <functional>

namespace vorl::app {

namespace {

template <class... ArgsT>
std::string format(const char* pattern, ArgsT... args) {
    char text[256];
    std::snprintf(text, sizeof text, pattern, args...);
    return text;
}

/// 9 significant digits, which read back as the same 32-bit number.
std::string number(double value) { return format("%.9g", value); }

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\')
            result += std::string("\\") + c;
        else if (static_cast<unsigned char>(c) < 0x20)
            result += format("\\u%04x", static_cast<unsigned>(c));
        else
            result += c;
    }
    return result + '"';
}

/// 1234567 as 1,234,567.
std::string grouped(Size value) {
    std::string digits = std::to_string(value);
    for (std::size_t place = digits.size(); place > 3;) digits.insert(place -= 3, 1, ',');
    return digits;
}

std::string counted(Size count, const char* thing) {
    return grouped(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string bytes(Size size) {
    const char* const units[] = {"B", "KiB", "MiB", "GiB", "TiB"};
    double value = static_cast<double>(size);
    std::size_t unit = 0;
    while (value >= 1024 && unit + 1 < std::size(units)) {
        value /= 1024;
        ++unit;
    }
    return format(unit ? "%.1f %s" : "%.0f %s", value, units[unit]);
}

std::string levelRow(const Summary& summary, std::size_t index) {
    const auto& [clusters, fullsize] = summary.levels[index];
    return format("  %7zu  %12s  %12s\n", index, grouped(clusters).c_str(),
                  grouped(fullsize).c_str());
}

}  // namespace

std::string asJson(const Summary& summary) {
    std::string text = "{\"network\": {\"file\": " + quoted(summary.file) +
                       ", \"nodes\": " + std::to_string(summary.nodes) +
                       ", \"links\": " + std::to_string(summary.links) +
                       ", \"directed\": " + (summary.directed ? "true" : "false") +
                       ", \"weighted\": " + (summary.weighted ? "true" : "false") +
                       ", \"weight\": " + number(summary.weight) + "}, \"levels\": [";
    for (std::size_t i = 0; i < summary.levels.size(); ++i)
        text += std::string(i ? ", " : "") +
                "{\"clusters\": " + std::to_string(summary.levels[i].first) +
                ", \"fullsize\": " + std::to_string(summary.levels[i].second) + "}";
    const HierScore& score = summary.score;
    text += "], \"root\": " + std::to_string(summary.rootSizes.size()) +
            ", \"clusters\": " + std::to_string(score.clusters) +
            ", \"score\": {\"modularity\": " + number(score.modularity) +
            ", \"gamma\": " + number(score.gamma) + ", \"egamma\": " + number(score.egamma) +
            ", \"conductance\": " + number(score.conductance) + "}, \"files\": [";
    for (std::size_t i = 0; i < summary.files.size(); ++i)
        text += (i ? ", " : "") + quoted(summary.files[i]);
    text += "], \"seconds\": {\"read\": " + number(summary.readSeconds) +
            ", \"build\": " + number(summary.buildSeconds) +
            ", \"write\": " + number(summary.writeSeconds) +
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
    if (levels != 0)
        text += format(
            "conductance   %.6f\nbest gamma    %.6f (at which the root would be the best "
            "partition)\n",
            static_cast<double>(score.conductance), static_cast<double>(score.egamma));
    for (const std::string& file : summary.files) text += "written       " + file + "\n";
    text += format("time          %.3g s reading, %.3g s clustering", summary.readSeconds,
                   summary.buildSeconds);
    if (!summary.files.empty()) text += format(", %.3g s writing", summary.writeSeconds);
    return text + "; peak memory " + bytes(summary.peakMemory) + "\n";
}

}  // namespace vorl::app
