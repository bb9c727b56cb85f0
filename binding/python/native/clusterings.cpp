// Communities, and clusters of files.
#include "clusterings.hpp"

#include "networks.hpp"
#include "views.hpp"
#include "work.hpp"

#include <vorl/agreement/agreement.hpp>
#include <vorl/communities.hpp>
#include <vorl/communities_text.hpp>
#include <vorl/reading/cluster_levels.hpp>
#include <vorl/reading/evaluation.hpp>
#include <vorl/reading/pack.hpp>

#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace vorl::python {

namespace {

nb::dict scoreOf(const Communities& found) {
    const CommunitiesScore& score = found.score();
    nb::dict dict;
    dict["modularity"] = score.modularity;
    dict["conductance"] = score.conductance;
    dict["gamma"] = score.gamma;
    dict["saving"] = score.saving;
    dict["naming"] = score.naming;
    dict["start"] = score.start;
    dict["starts"] = score.starts;
    dict["rounds"] = score.rounds;
    return dict;
}

/// Communities of a network: ids of the nodes, where the members of each community end, their ids,
/// their shares, the number of isolated nodes, the score, warnings of the reader, and the names of
/// nodes that it read.
nb::tuple findCommunities(const Input& input, bool shares, unsigned starts, unsigned threads,
                          nb::handle tell) {
    std::vector<std::string> warnings;
    std::shared_ptr<Labels> labels;
    std::optional<Communities> found;
    std::vector<Size> ends;
    std::vector<Id> members;
    std::vector<Share> parts;
    watched(tell, [&] {
        UndirectedNetwork network = input.undirected();
        warnings = std::move(network.warnings);
        labels = network.labels;
        found =
            communities(network.links, {.threads = threads, .shares = shares, .starts = starts});
        for (Id community = 0; community < found->count(); ++community) {
            for (const auto& [place, share] : found->members(community)) {
                members.push_back(found->ids()[place]);
                parts.push_back(share);
            }
            ends.push_back(members.size());
        }
    });
    std::vector<Id> ids = found->ids();
    return nb::make_tuple(arrayOf(std::move(ids)), arrayOf(std::move(ends)),
                          arrayOf(std::move(members)), arrayOf(std::move(parts)), found->isolated(),
                          scoreOf(*found), warnings, namesOf(labels.get()));
}

/// Clusters of a file, see `clustersTuple`.
nb::tuple readClusters(const std::string& file, ClustersFormat format, nb::object level,
                       nb::handle tell) {
    ClustersFile clusters;
    const std::optional<LevelNum> wanted =
        level.is_none() ? std::nullopt : std::optional(nb::cast<LevelNum>(level));
    watched(tell, [&] {
        const ClusterLevels levels = readClusterLevels(file, format);
        if (wanted && !levels.isHierarchy() && !levels.severalLevels())
            throw std::invalid_argument("level: " + file + " has clusters without levels");
        if (wanted && *wanted >= levels.levels())
            throw std::invalid_argument("level: " + file + " has " +
                                        std::to_string(levels.levels()) +
                                        " levels, there is no level " + std::to_string(*wanted));
        clusters = wanted ? levels.level(*wanted) : levels.flat();
    });
    return clustersTuple(clusters);
}

/// What a file holds: a cluster a line where there is no separator, else a membership; packed if
/// its name asks for that.
nb::bytes textOf(const In<Size>& ends, const In<Id>& members, const In<Share>& shares, Size nodes,
                 const std::vector<std::string>& names, const std::string& separator,
                 const std::string& file) {
    const CommunityArrays arrays{
        .ends = spanOf(ends), .members = spanOf(members), .shares = spanOf(shares), .nodes = nodes};
    const auto labels = writtenLabels(names);
    const TableForm form = separator == "," ? TableForm::COMMAS : TableForm::TABS;
    const std::string text = packed(separator.empty() ? clustersText(arrays, labels.get())
                                                      : tableText(arrays, form, labels.get()),
                                    file);
    return nb::bytes(text.data(), text.size());
}

nb::dict compareClusters(Size nodes, const In<Size>& ends, const In<Id>& members,
                         const In<Size>& otherEnds, const In<Id>& otherMembers) {
    Agreement found;
    watched(nb::none(), [&] {
        const auto cover = [&](const In<Size>& theirEnds, const In<Id>& theirs) {
            const auto span = spanOf(theirEnds);
            const std::vector<std::size_t> all(span.begin(), span.end());
            return Cover(nodes, all, spanOf(theirs));
        };
        found = agreement(cover(ends, members), cover(otherEnds, otherMembers));
    });
    nb::dict dict;
    dict["nmi_max"] = found.nmiMax;
    dict["nmi_lfk"] = found.nmiLfk;
    dict["f1"] = found.f1;
    dict["omega"] = found.omega;
    dict["omega_samples"] = found.omegaSamples;
    const auto optional = [](const std::optional<double>& value) {
        return value ? nb::object(nb::float_(*value)) : nb::none();
    };
    dict["ari"] = optional(found.ari);
    dict["nmi"] = optional(found.nmi);
    dict["vi"] = optional(found.vi);
    return dict;
}

/// @param names of nodes of the clusters, which a file may have, too
nb::dict evaluate(const Input& input, const In<Size>& ends, const In<Id>& members,
                  const In<Share>& shares, const std::vector<std::string>& names, double gamma) {
    Intrinsics found;
    watched(nb::none(), [&] {
        Network network = input.graph();
        ClustersFile clusters = clustersOf(spanOf(ends), spanOf(members), spanOf(shares));
        clusters.labels = labelsOf(names);
        takeNames(clusters, network.labels, input.name());
        found = evaluateClusters(network, std::move(clusters), input.name(), gamma);
    });
    nb::dict dict;
    dict["conductance"] =
        std::isnan(found.cdn) ? nb::none() : nb::object(nb::float_(double{found.cdn}));
    dict["modularity"] = double{found.mod};
    dict["gamma"] = gamma;
    dict["estimated_gamma"] = double{found.gamma};
    dict["modularity_at_estimated_gamma"] = double{found.sgmod};
    return dict;
}

}  // namespace

void defineClusterings(nb::module_& module) {
    nb::enum_<ClustersFormat>(module, "ClustersFormat")
        .value("UNKNOWN", ClustersFormat::UNKNOWN)
        .value("CNL", ClustersFormat::CNL)
        .value("TABLE", ClustersFormat::TABLE)
        .value("RHB", ClustersFormat::RHB);
    module.def("communities", &findCommunities, nb::arg("network"), nb::arg("shares"),
               nb::arg("starts"), nb::arg("threads"), nb::arg("tell").none());
    module.def("read_clusters", &readClusters, nb::arg("file"), nb::arg("format"),
               nb::arg("level").none(), nb::arg("tell").none());
    module.def("clusters_text", &textOf, nb::arg("ends"), nb::arg("members"), nb::arg("shares"),
               nb::arg("nodes"), nb::arg("names"), nb::arg("separator"), nb::arg("file"));
    module.def("plain_name", &plainName, nb::arg("file"));
    module.def("compare", &compareClusters, nb::arg("nodes"), nb::arg("ends"), nb::arg("members"),
               nb::arg("other_ends"), nb::arg("other_members"));
    module.def("evaluate", &evaluate, nb::arg("network"), nb::arg("ends"), nb::arg("members"),
               nb::arg("shares"), nb::arg("names"), nb::arg("gamma"));
}

}  // namespace vorl::python
