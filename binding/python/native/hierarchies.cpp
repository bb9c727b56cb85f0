// The engine, and its hierarchies.
#include "clusterings.hpp"
#include "networks.hpp"
#include "state.hpp"
#include "views.hpp"
#include "work.hpp"

#include <vorl/communities_hierarchy.hpp>
#include <vorl/processing/validation.hpp>
#include <vorl/reading/described_hierarchy.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/cluster_ids.hpp>

#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/unique_ptr.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace vorl::python {

namespace {

using AnyHierarchy = std::variant<std::shared_ptr<Hierarchy<UnweightedLinks>>,
                                  std::shared_ptr<Hierarchy<WeightedLinks>>>;

/// A hierarchy, and a description of it that answers questions.
class Built {
public:
    template <class LinksT>
    explicit Built(std::shared_ptr<Hierarchy<LinksT>> hier)
        : m_hier(hier), m_file(describedHierarchy(*hier, "the hierarchy")) {}

    const HierarchyFile& file() const { return m_file; }

    nb::dict score() const {
        return std::visit(
            [](const auto& hier) {
                const HierScore& score = hier->score();
                nb::dict dict;
                dict["modularity"] = double{score.modularity};
                dict["gamma"] = double{score.gamma};
                dict["estimated_gamma"] = double{score.egamma};
                dict["conductance"] = double{score.conductance};
                dict["clusters"] = score.clusters;
                return dict;
            },
            m_hier);
    }

    /// (clusters formed, items at that height) of each level.
    std::vector<std::pair<Size, Size>> levels() const {
        std::vector<std::pair<Size, Size>> result;
        for (LevelNum level = 0; level < m_file.levels(); ++level)
            result.emplace_back(m_file.formedOn(level), m_file.heightOf(level));
        return result;
    }

    Out<Id> nodes() const {
        std::vector<Id> ids;
        for (HierarchyFile::Item node = 0; node < m_file.nodes(); ++node)
            ids.push_back(m_file.id(node));
        return arrayOf(std::move(ids));
    }

    Out<Id> sortedNodes() const {
        std::vector<Id> ids;
        for (HierarchyFile::Item node = 0; node < m_file.nodes(); ++node)
            ids.push_back(m_file.id(node));
        std::sort(ids.begin(), ids.end());
        return arrayOf(std::move(ids));
    }

    /// (level, id of the cluster, share) for each cluster that holds a node.
    nb::list memberships(Id node) const {
        nb::list list;
        for (const auto& [item, share] : m_file.ancestors(m_file.node(node)))
            list.append(nb::make_tuple(m_file.levelOf(item), m_file.id(item), share));
        return list;
    }

    nb::tuple cut(LevelNum level) const {
        ClustersFile clusters;
        {
            const nb::gil_scoped_release released;
            clusters = m_file.cut(level);
        }
        return clustersTuple(clusters);
    }

    LevelNum nearestLevel(Size clusters) const { return m_file.nearestLevel(clusters); }

    /// What owns what: ids of the clusters, level of each, and for each link the number of the item
    /// (nodes first, then clusters), that of the owner, and the share.
    nb::tuple owners() const {
        std::vector<Id> ids;
        std::vector<LevelNum> levels;
        std::vector<Id> items;
        std::vector<Id> above;
        std::vector<double> shares;
        for (HierarchyFile::Item item = 0; item < m_file.nodes() + m_file.clusters(); ++item) {
            if (!m_file.isNode(item)) {
                ids.push_back(m_file.id(item));
                levels.push_back(m_file.levelOf(item));
            }
            for (const auto& owner : m_file.owners(item)) {
                items.push_back(item);
                above.push_back(owner.item);
                shares.push_back(owner.share);
            }
        }
        return nb::make_tuple(arrayOf(std::move(ids)), arrayOf(std::move(levels)),
                              arrayOf(std::move(items)), arrayOf(std::move(above)),
                              arrayOf(std::move(shares)));
    }

    /// Writes the file of a choice of clusters, and the description beside it.
    /// @param names of nodes, for those that no file gave
    void write(const std::string& file, const std::vector<std::string>& names, bool root,
               bool maxShare, int shares) const {
        setNames(names);
        ClsOutFmtBase format = toMask(shares == 0   ? ClsOutFmt::SIMPLE
                                      : shares == 1 ? ClsOutFmt::SHARED
                                                    : ClsOutFmt::EXTENDED);
        if (maxShare) format |= ClsOutFmt::MAXSHARE;
        format |= root ? ClsOutFmt::ROOT : ClsOutFmt::ALLCLS;
        OutputOptions options;
        options.clsfile = file;
        options.clsfmt = format;
        watched(nb::none(),
                [&] { std::visit([&](const auto& hier) { hier->output(options); }, m_hier); });
    }

    void describe(const std::string& file, const std::vector<std::string>& names) const {
        setNames(names);
        watched(nb::none(), [&] {
            std::visit([&](const auto& hier) { writeDescription(*hier, file); }, m_hier);
        });
    }

    /// A picture of the hierarchy on its network, see `pictureOf`.
    nb::str view(const Input& input, const std::vector<std::string>& names,
                 const std::string& title, std::optional<LevelNum> level, bool allLevels, bool map,
                 nb::handle tell) const {
        std::string text;
        watched(tell, [&] {
            text = pictureOf(input.undirected(), m_file, names,
                             {.title = title, .level = level, .allLevels = allLevels, .map = map});
        });
        return nb::str(text.data(), text.size());
    }

    nb::dict state() const {
        return std::visit([](const auto& hier) { return stateOf(*hier); }, m_hier);
    }

    std::vector<std::string> names() const {
        return std::visit([](const auto& hier) { return namesOf(hier->labels()); }, m_hier);
    }

private:
    void setNames(const std::vector<std::string>& names) const {
        std::visit(
            [&](const auto& hier) {
                if (!hier->labels()) hier->setLabels(writtenLabels(names));
            },
            m_hier);
    }

    AnyHierarchy m_hier;
    HierarchyFile m_file;
};

template <class GraphT>
std::unique_ptr<Built> built(GraphT& graph, const ClusterOptions& options,
                             const std::shared_ptr<Labels>& labels) {
    if (const char* const text = clusteringFault(graph); text && !graph.nodes().empty())
        throw std::invalid_argument(std::string("G: ") + text);
    const ClusterIdsScope<typename GraphT::LinksT> ids;
    const auto hier = graph.buildHierarchy(options);
    hier->setLabels(labels);
    return std::make_unique<Built>(hier);
}

/// A hierarchy, and warnings of the reader.
nb::tuple cluster(const Input& input, float gamma, Coupling rootMax, std::uint8_t reduction,
                  nb::handle tell) {
    ClusterOptions options;
    options.gamma = gamma;
    options.rootMax = rootMax;
    options.reduction = toReduction(reduction);
    std::vector<std::string> warnings;
    std::unique_ptr<Built> result;
    watched(tell, [&] {
        Network network = input.graph();
        warnings = std::move(network.warnings);
        result =
            std::visit([&](const auto& graph) { return built(*graph, options, network.labels); },
                       network.graph);
    });
    return nb::make_tuple(std::move(result), warnings);
}

/// The hierarchy around the communities, the index of their level, and warnings of the reader.
nb::tuple clusterCommunities(const Input& input, unsigned starts, unsigned threads,
                             nb::handle tell) {
    std::vector<std::string> warnings;
    std::unique_ptr<Built> result;
    LevelNum level = 0;
    watched(tell, [&] {
        UndirectedNetwork network = input.undirected();
        warnings = std::move(network.warnings);
        const Communities found =
            communities(network.links, {.threads = threads, .starts = starts});
        const ClusterIdsScope<WeightedLinks> ids;
        const auto hier = communitiesHierarchy(network.links, found, ClusterOptions(), &level);
        hier->setLabels(network.labels);
        result = std::make_unique<Built>(hier);
    });
    return nb::make_tuple(std::move(result), level, warnings);
}

}  // namespace

void defineHierarchies(nb::module_& module) {
    nb::class_<Built>(module, "Built")
        .def("score", &Built::score)
        .def("levels", &Built::levels)
        .def("nodes", &Built::nodes)
        .def("memberships", &Built::memberships, nb::arg("node"))
        .def("cut", &Built::cut, nb::arg("level"))
        .def("nearest_level", &Built::nearestLevel, nb::arg("clusters"))
        .def("owners", &Built::owners)
        .def("write", &Built::write, nb::arg("file"), nb::arg("names"), nb::arg("root"),
             nb::arg("max_share"), nb::arg("shares"))
        .def("describe", &Built::describe, nb::arg("file"), nb::arg("names"))
        .def("view", &Built::view, nb::arg("network"), nb::arg("names"), nb::arg("title"),
             nb::arg("level").none(), nb::arg("all_levels"), nb::arg("map"), nb::arg("tell").none())
        .def("names", &Built::names)
        .def("state", &Built::state)
        .def("sorted_nodes", &Built::sortedNodes);
    module.def(
        "restored", [](const nb::dict& state) { return std::make_unique<Built>(restored(state)); },
        nb::arg("state"));
    module.def("cluster", &cluster, nb::arg("network"), nb::arg("gamma"), nb::arg("root_max"),
               nb::arg("reduction"), nb::arg("tell").none());
    module.def("communities_hierarchy", &clusterCommunities, nb::arg("network"), nb::arg("starts"),
               nb::arg("threads"), nb::arg("tell").none());
}

}  // namespace vorl::python
