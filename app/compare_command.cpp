#include "compare_command.hpp"

#include "clusters_input.hpp"
#include "errors.hpp"
#include "network_input.hpp"
#include "output_text.hpp"
#include "progress_line.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace vorl::app {

namespace {

/// One of the files, as it is compared.
struct Compared {
    std::string file;
    Cover cover;
    Size nodes;  ///< that are in a cluster
    Size only;   ///< that are in no cluster of the other one
};

struct Comparison {
    Compared first;
    Compared second;
    Agreement agreement;
};

/// @param known names of the other file
ClusterLevels read(const std::string& file, const CompareCommand& command,
                   std::shared_ptr<Labels> known = nullptr) {
    return readClusters(file, {.format = command.format,
                               .strict = command.strict,
                               .levels = command.levels,
                               .shares = false,
                               .quiet = command.quiet,
                               .known = std::move(known)});
}

Comparison compare(const CompareCommand& command) {
    const ClustersFile first = read(command.first, command).flat();
    const ClustersFile second = read(command.second, command, first.labels).flat();
    const std::vector<Id> nodes = chosenNodes(first, second, command.nodes);
    const auto compared = [&](const ClustersFile& file) {
        Compared result{file.name, coverOf(file, nodes, command.count), 0, 0};
        result.nodes = result.cover.coveredNodes();
        return result;
    };
    Comparison result{compared(first), compared(second), {}};
    for (Id node = 0; node < nodes.size(); ++node) {
        const bool inFirst = !result.first.cover.clustersOf(node).empty();
        const bool inSecond = !result.second.cover.clustersOf(node).empty();
        result.first.only += inFirst && !inSecond;
        result.second.only += inSecond && !inFirst;
    }
    result.agreement = agreement(result.first.cover, result.second.cover, command.omega);
    return result;
}

std::string asJson(const Comparison& comparison) {
    // 12 digits, before those that may differ between systems by their logarithm.
    const auto measure = [](double value) { return jsonNumber(value, 12); };
    const auto optional = [&](const std::optional<double>& value) {
        return value ? measure(*value) : std::string("null");
    };
    const auto side = [](const Compared& compared) {
        return "{\"file\": " + jsonQuoted(compared.file) +
               ", \"clusters\": " + std::to_string(compared.cover.clusters()) +
               ", \"covered_nodes\": " + std::to_string(compared.nodes) +
               ", \"shared_nodes\": " + std::to_string(compared.cover.sharedNodes()) +
               ", \"nodes_only_here\": " + std::to_string(compared.only) + "}";
    };
    const Agreement& agreement = comparison.agreement;
    return "{\"first\": " + side(comparison.first) + ", \"second\": " + side(comparison.second) +
           ", \"compared_nodes\": " + std::to_string(comparison.first.cover.nodes()) +
           ", \"nmi_max\": " + measure(agreement.nmiMax) +
           ", \"nmi_lfk\": " + measure(agreement.nmiLfk) + ", \"f1\": " + measure(agreement.f1) +
           ", \"omega\": " + measure(agreement.omega) +
           ", \"omega_samples\": " + std::to_string(agreement.omegaSamples) +
           ", \"ari\": " + optional(agreement.ari) + ", \"nmi\": " + optional(agreement.nmi) +
           ", \"vi\": " + optional(agreement.vi) + "}\n";
}

/// The measures of two levels.
struct ComparedLevels {
    LevelNum first;
    LevelNum second;
    Size firstClusters;
    Size secondClusters;
    Agreement agreement;
};

/// A measure of a table of levels, and how its best value is told.
struct Column {
    const char* name;
    const char* key;
    double (*value)(const Agreement&);  ///< NaN if there is none
    bool least;                         ///< the least value is the best one
};

constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
constexpr Column COLUMNS[] = {
    {"NMI max", "nmi_max", [](const Agreement& a) { return a.nmiMax; }, false},
    {"NMI LFK", "nmi_lfk", [](const Agreement& a) { return a.nmiLfk; }, false},
    {"F1", "f1", [](const Agreement& a) { return a.f1; }, false},
    {"omega", "omega", [](const Agreement& a) { return a.omega; }, false},
    {"ARI", "ari", [](const Agreement& a) { return a.ari.value_or(NONE); }, false},
    {"NMI", "nmi", [](const Agreement& a) { return a.nmi.value_or(NONE); }, false},
    {"VI", "vi", [](const Agreement& a) { return a.vi.value_or(NONE); }, true},
};

/// The row with the best value of a column, the first of several; none if no row has a value.
std::optional<std::size_t> bestRow(const std::vector<ComparedLevels>& rows, const Column& column) {
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const double value = column.value(rows[i].agreement);
        if (std::isnan(value)) continue;
        const double former = best ? column.value(rows[*best].agreement) : 0;
        if (!best || (column.least ? value < former : value > former)) best = i;
    }
    return best;
}

std::vector<ComparedLevels> compareLevels(const ClusterLevels& first, const ClusterLevels& second,
                                          const CompareCommand& command) {
    // The same nodes for all levels, though the lower ones may not have all of them.
    const std::vector<Id> nodes = chosenNodes(first.flat(), second.flat(), command.nodes);
    const auto covers = [&](const ClusterLevels& clusters) {
        std::vector<Cover> result;
        for (LevelNum level = 0; level < clusters.levels(); ++level)
            result.push_back(coverOf(clusters.level(level), nodes, command.count));
        return result;
    };
    const std::vector<Cover> x = covers(first);
    const std::vector<Cover> y = covers(second);
    std::vector<ComparedLevels> rows;
    for (LevelNum i = 0; i < x.size(); ++i)
        for (LevelNum j = 0; j < y.size(); ++j)
            rows.push_back(
                {i, j, x[i].clusters(), y[j].clusters(), agreement(x[i], y[j], command.omega)});
    return rows;
}

std::string levelsAsJson(const std::vector<ComparedLevels>& rows, const CompareCommand& command) {
    std::string text = "{\"first\": " + jsonQuoted(command.first) +
                       ", \"second\": " + jsonQuoted(command.second) + ", \"levels\": [";
    for (const ComparedLevels& row : rows) {
        text += (&row == rows.data() ? "{" : ", {") +
                ("\"first_level\": " + std::to_string(row.first)) +
                ", \"second_level\": " + std::to_string(row.second) +
                ", \"first_clusters\": " + std::to_string(row.firstClusters) +
                ", \"second_clusters\": " + std::to_string(row.secondClusters);
        for (const Column& column : COLUMNS) {
            const double value = column.value(row.agreement);
            text += std::string(", \"") + column.key +
                    "\": " + (std::isnan(value) ? "null" : number(value, 12));
        }
        text += "}";
    }
    text += "], \"best\": {";
    for (const Column& column : COLUMNS) {
        const auto best = bestRow(rows, column);
        text += (&column == COLUMNS ? "\"" : ", \"") + std::string(column.key) +
                "\": " + (best ? std::to_string(*best) : "null");
    }
    return text + "}}\n";
}

std::string levelsAsText(const std::vector<ComparedLevels>& rows, const CompareCommand& command,
                         bool ofFirst, bool ofSecond) {
    std::string text = command.first + " and " + command.second + "\n\n";
    const auto head = [&text](bool shown, const char* level, const char* clusters) {
        if (shown) text += format("%6s", level);
        if (shown) text += format("%10s", clusters);
    };
    head(ofFirst, "level", "clusters");
    head(ofSecond, ofFirst ? "2nd" : "level", "clusters");
    for (const Column& column : COLUMNS) text += format("%10s ", column.name);
    text.back() = '\n';
    for (const ComparedLevels& row : rows) {
        if (ofFirst) text += format("%6u%10s", row.first, grouped(row.firstClusters).c_str());
        if (ofSecond) text += format("%6u%10s", row.second, grouped(row.secondClusters).c_str());
        for (const Column& column : COLUMNS) {
            const double value = column.value(row.agreement);
            const bool best = bestRow(rows, column) == static_cast<std::size_t>(&row - rows.data());
            text += (std::isnan(value) ? format("%10s", "-") : format("%10.4f", value)) +
                    (best ? '*' : ' ');
        }
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    }
    return text + "* the best of its column\n";
}

std::string asText(const Comparison& comparison) {
    std::string text;
    for (const Compared* side : {&comparison.first, &comparison.second})
        text += side->file + ": " + counted(side->cover.clusters(), "cluster") + " of " +
                counted(side->nodes, "node") + ", " + grouped(side->cover.sharedNodes()) +
                " of them in several\n";
    const Cover& cover = comparison.first.cover;
    text += "Compared on " + counted(cover.nodes(), "node");
    const Size neither = cover.nodes() - comparison.first.nodes - comparison.second.only;
    std::string apart;
    const auto add = [&apart](Size count, const std::string& where) {
        if (count != 0) apart += (apart.empty() ? ": " : ", ") + grouped(count) + " " + where;
    };
    add(comparison.first.only, "in the first file only");
    add(comparison.second.only, "in the second file only");
    add(neither, "in neither");
    text += apart;
    text += apart.empty() ? "\n\n" : ";\nwhere a node is missing it counts as in no cluster\n\n";

    const Agreement& agreement = comparison.agreement;
    const auto row = [&text](const char* name, double value, const std::string& note) {
        text += format("%-13s  %9.6f", name, value) + "  " + note + "\n";
    };
    row("overlap NMI", agreement.nmiMax, "over the larger entropy (McDaid et al.)");
    row("overlap NMI", agreement.nmiLfk, "form of Lancichinetti et al.");
    row("mean F1", agreement.f1, "of the best matches, both ways");
    row("omega index", agreement.omega,
        agreement.omegaSamples == 0
            ? "exact"
            : "estimated from " + grouped(agreement.omegaSamples) + " pairs drawn of each file");
    if (agreement.ari) row("adjusted Rand", *agreement.ari, "of partitions");
    if (agreement.nmi) row("NMI", *agreement.nmi, "of partitions, over the mean entropy");
    if (agreement.vi) row("variation", *agreement.vi, "of information, of partitions, in nats");
    if (!agreement.ari) text += "No adjusted Rand index and NMI: these aren't two partitions.\n";
    return text;
}

}  // namespace

std::vector<Id> chosenNodes(const ClustersFile& first, const ClustersFile& second, NodeSet set) {
    std::vector<Id> nodes;
    switch (set) {
        case NodeSet::UNION:
            std::set_union(first.nodes.begin(), first.nodes.end(), second.nodes.begin(),
                           second.nodes.end(), std::back_inserter(nodes));
            break;
        case NodeSet::COMMON:
            std::set_intersection(first.nodes.begin(), first.nodes.end(), second.nodes.begin(),
                                  second.nodes.end(), std::back_inserter(nodes));
            break;
        case NodeSet::FIRST: nodes = first.nodes; break;
        case NodeSet::SECOND: nodes = second.nodes; break;
    }
    return nodes;
}

Cover coverOf(const ClustersFile& file, const std::vector<Id>& nodes, Size count) {
    if (count != 0 && count < nodes.size())
        throw InputError("--count tells of " + counted(count, "node") + ", but there are " +
                         grouped(nodes.size()) + " to compare");
    std::vector<std::size_t> ends;
    std::vector<Id> members;
    ends.reserve(file.clusters.size());
    members.reserve(file.members.size());
    for (const auto& cluster : file.clusters) {
        for (Id id : file.membersOf(cluster)) {
            const auto place = std::lower_bound(nodes.begin(), nodes.end(), id);
            if (place != nodes.end() && *place == id)
                members.push_back(static_cast<Id>(place - nodes.begin()));
        }
        ends.push_back(members.size());
    }
    if (members.empty())
        throw InputError(file.name + ": none of the nodes to compare is in a cluster");
    return Cover(std::max<Size>(nodes.size(), count), ends, members);
}

void run(const CompareCommand& command) {
    requireOneStandardInput(command.first, command.second);
    const ProgressLine line;
    if (command.levels) {
        const ClusterLevels first = read(command.first, command);
        const ClusterLevels second = read(command.second, command, first.labels());
        const std::vector<ComparedLevels> rows = compareLevels(first, second, command);
        const bool ofSecond = second.levels() > 1;
        print(command.json
                  ? levelsAsJson(rows, command)
                  : levelsAsText(rows, command, first.levels() > 1 || !ofSecond, ofSecond));
        return;
    }
    const Comparison comparison = compare(command);
    print(command.json ? asJson(comparison) : asText(comparison));
}

}  // namespace vorl::app
