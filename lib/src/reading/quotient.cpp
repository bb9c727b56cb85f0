#include <vorl/reading/quotient.hpp>

#include <vorl/types/id_numbers.hpp>

#include <algorithm>
#include <map>

namespace vorl {

namespace {

template <class LinksT>
LinkWeight weightOf(const typename LinksT::value_type& ln) {
    if constexpr (requires { ln.weight + LinkWeight{}; })
        return ln.weight;
    else
        return 1;
}

struct Membership {
    Id cluster;
    Share share;
};

/// The ids that the clusters bear as nodes.
std::vector<Id> idsOf(const ClustersFile& file) {
    std::vector<Id> ids;
    IdNumbers seen;
    for (const auto& cluster : file.clusters) {
        ids.push_back(file.numbered ? cluster.id : static_cast<Id>(ids.size() + 1));
        if (seen.find(ids.back()) != ID_NONE)
            throw InputError::at(file.name, cluster.line,
                                 "the cluster's id " + std::to_string(ids.back()) +
                                     " stands twice, each once is expected");
        seen.append(ids.back());
    }
    return ids;
}

template <class GraphT>
Quotient quotientOfGraph(GraphT& graph, bool directed, const ClustersFile& file) {
    using LinksT = typename GraphT::LinksT;
    using NodeT = typename GraphT::NodeT;
    const std::vector<Id> ids = idsOf(file);
    const std::vector<Share> shares = file.completeShares();
    std::map<Id, const NodeT*> nodes;
    for (const NodeT& node : graph.nodes()) nodes.emplace(node.id, &node);
    // By the node's place in the file's list; the last one is that of all others.
    std::vector<std::vector<Membership>> memberships(file.nodes.size());
    const auto placeOf = [&file](Id node) {
        const auto place = std::lower_bound(file.nodes.begin(), file.nodes.end(), node);
        return place != file.nodes.end() && *place == node
                   ? static_cast<std::size_t>(place - file.nodes.begin())
                   : file.nodes.size();
    };
    for (Id cluster = 0; cluster < file.clusters.size(); ++cluster)
        for (std::size_t i = file.clusters[cluster].begin; i < file.clusters[cluster].end; ++i)
            memberships[placeOf(file.members[i])].push_back({cluster, shares[i]});

    Quotient result;
    result.uncovered = nodes.size() - std::min(nodes.size(), file.nodes.size());
    std::vector<AccWeight> sums(file.clusters.size());
    std::vector<Id> touched;
    std::vector<bool> linked(file.clusters.size());
    const auto add = [&](Id cluster, AccWeight weight) {
        if (sums[cluster] == 0) touched.push_back(cluster);
        sums[cluster] += weight;
    };
    for (Id src = 0; src < file.clusters.size(); ++src) {
        for (std::size_t i = file.clusters[src].begin; i < file.clusters[src].end; ++i) {
            const auto found = nodes.find(file.members[i]);
            if (found == nodes.end())
                throw InputError::at(
                    file.name, file.lineOf(file.clusters[src], i),
                    "the node " + file.nodeName(file.members[i]) + " isn't in the network");
            const NodeT& node = *found->second;
            const AccWeight share = shares[i];
            if (node.weight() > 0) add(src, node.weight() * share);
            for (const auto& ln : node.links) {
                const std::size_t place = placeOf(ln.dest->id);
                if (place == memberships.size()) continue;
                for (const Membership& other : memberships[place])
                    add(other.cluster, weightOf<LinksT>(ln) * share * other.share);
            }
        }
        std::sort(touched.begin(), touched.end());
        for (const Id dst : touched) {
            // A self link counts twice.
            const AccWeight sum = std::exchange(sums[dst], 0) / (dst == src ? 2 : 1);
            const auto weight = static_cast<LinkWeight>(sum);
            if (weight == 0) continue;
            linked[src] = linked[dst] = true;
            if (directed || src <= dst)
                result.links.push_back({ids[src], ids[dst], weight, directed});
        }
        touched.clear();
    }
    result.linkless = static_cast<Size>(std::count(linked.begin(), linked.end(), false));
    return result;
}

}  // namespace

Quotient quotientOf(const Network& network, const ClustersFile& clusters) {
    return std::visit(
        [&](const auto& graph) { return quotientOfGraph(*graph, network.directed, clusters); },
        network.graph);
}

}  // namespace vorl
