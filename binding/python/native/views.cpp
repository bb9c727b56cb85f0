#include "views.hpp"

#include "work.hpp"

#include <vorl/reading/nested_hierarchy.hpp>
#include <vorl/view.hpp>

#include <stdexcept>
#include <utility>

namespace vorl::python {

std::string pictureOf(UndirectedNetwork network, const HierarchyFile& hierarchy,
                      const std::vector<std::string>& names, const PictureRequest& request) {
    if (!network.labels) network.labels = labelsOf(names);
    if (namesOf(network.labels.get()) != names)
        throw std::invalid_argument("G: its nodes aren't those of the result");
    const ViewOptions options{.title = request.title,
                              .directed = network.directed,
                              .weighted = network.weighted,
                              .level = request.level,
                              .allLevels = request.allLevels,
                              .labels = network.labels};
    return request.map ? viewSvg(network.links, hierarchy, options)
                       : viewPage(network.links, hierarchy, options);
}

void takeNames(ClustersFile& clusters, const std::shared_ptr<Labels>& labels,
               const std::string& network) {
    if (!labels || !clusters.labels) return;
    for (Id& member : clusters.members)
        if (clusters.labels->has(member)) {
            const Id id = labels->find(clusters.labels->text(member));
            if (id == ID_NONE)
                throw std::invalid_argument(
                    "clustering: " + (network.empty() ? "the network" : network) + " has no node " +
                    clusters.nodeName(member));
            member = id;
        }
    clusters.labels = labels;
}

namespace {

nb::str viewClusters(const Input& input, const In<Size>& ends, const In<Id>& members,
                     const In<Share>& shares, const std::vector<std::string>& names,
                     const std::string& title, bool map, nb::handle tell) {
    std::string text;
    watched(tell, [&] {
        UndirectedNetwork network = input.undirected();
        ClustersFile clusters = clustersOf(spanOf(ends), spanOf(members), spanOf(shares));
        clusters.labels = labelsOf(names);
        if (!network.labels) network.labels = clusters.labels;
        takeNames(clusters, network.labels, input.name());
        clusters.requireNodes(network.links.ids, input.name(), network.labels);
        const std::vector<std::string> told = namesOf(clusters.labels.get());
        text = pictureOf(std::move(network), nestedHierarchy(clusters), told,
                         {.title = title, .level = {}, .allLevels = false, .map = map});
    });
    return nb::str(text.data(), text.size());
}

}  // namespace

void defineViews(nb::module_& module) {
    module.def("view_clusters", &viewClusters, nb::arg("network"), nb::arg("ends"),
               nb::arg("members"), nb::arg("shares"), nb::arg("names"), nb::arg("title"),
               nb::arg("map"), nb::arg("tell").none());
}

}  // namespace vorl::python
