#include "compare_command.hpp"

#include "errors.hpp"
#include "network_input.hpp"
#include "output_text.hpp"

#include <vorl/reading/text_file.hpp>

#include <algorithm>
#include <cstdio>
#include <iterator>

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

ClustersFile read(const std::string& file, const CompareCommand& command) {
    ClustersFile clusters = parseClusters(TextFile(file).text(), file);
    if (command.strict) clusters.requireStrict();
    if (clusters.clusters.empty())
        throw InputError(file + ": there are no clusters, at least one is expected");
    const std::string deviations = clusters.deviationsText(false);
    if (!command.quiet && !deviations.empty())
        std::fprintf(stderr, "vorl: %s: %s\n", file.c_str(), deviations.c_str());
    return clusters;
}

Comparison compare(const CompareCommand& command) {
    const ClustersFile first = read(command.first, command);
    const ClustersFile second = read(command.second, command);
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
           "}\n";
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
    const Comparison comparison = compare(command);
    print(command.json ? asJson(comparison) : asText(comparison));
}

}  // namespace vorl::app
