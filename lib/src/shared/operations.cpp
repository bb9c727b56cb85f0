#include <vorl/shared/operations.hpp>

#include "../fileio/clusters_loading.hpp"

#include <vorl/processing/gamma.hpp>
#include <vorl/processing/validation.hpp>
#include <vorl/processing/weights.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <unordered_map>

namespace vorl {

namespace {

/// Moves the self link of each cluster, which holds both directions of the inner links, into its
/// self weight.
template <class LinksT>
void settleSelfLinks(Clusters<LinksT>& clusters) {
    for (Cluster<LinksT>& cl : clusters) {
        const auto self = findDest(cl.links.begin(), cl.links.end(), &cl);
        if (self == cl.links.end() || self->dest != &cl) continue;
        cl.addWeight(self->weight);
        cl.links.erase(self);
    }
}

template <bool NONSYMMETRIC, class LinksT>
void measure(Intrinsics& intr, const Clusters<LinksT>& clusters,
             const detail::OutsideWeights<LinksT>& outside, AccWeight weight, AccWeight gamma) {
    AccWeight inner = 0;
    AccWeight ww = 0;
    AccWeight modularity = 0;
    AccWeight cuts = 0;
    bool uncut = clusters.size() == 1;
    for (const Cluster<LinksT>& cl : clusters) {
        const AccWeight s = cl.weight();
        const auto left = outside.find(&cl);
        const AccWeight w = s + linksWeight<NONSYMMETRIC>(cl) +
                            (left == outside.end() ? AccWeight{0} : left->second);
        inner += s;
        modularity += s - (w / weight * w) * gamma;
        uncut = uncut && !(less(AccWeight{0}, w) && less(w, weight));
        if (!less(AccWeight{0}, w)) continue;
        ww += w * w;
        cuts += detail::cutShare(w, s, weight);
    }
    const AccWeight expected = ww / weight;
    const bool separate = equal(inner, weight);
    const AccWeight estimate = inner == 0 || separate ? 1 : newmanGamma(inner, expected, weight);
    intr.mod = static_cast<float>(modularity / weight);
    intr.gamma = static_cast<float>(estimate);
    intr.sgmod = static_cast<float>((inner - estimate * expected) / weight);
    if (uncut)
        intr.cdn = std::numeric_limits<float>::quiet_NaN();
    else
        intr.cdn =
            separate ? 0 : static_cast<float>(cuts / static_cast<AccWeight>(clusters.size()));
}

template <class LinksT>
Nodes<LinksT> copied(const Nodes<LinksT>& nodes) {
    Nodes<LinksT> copies;
    std::unordered_map<const Node<LinksT>*, Node<LinksT>*> copyOf;
    copyOf.reserve(nodes.size());
    for (const Node<LinksT>& node : nodes) {
        Node<LinksT>& copy = copies.emplace_back(node.id, node.links.size());
        copy.m_sweight = node.m_sweight;
        copyOf.emplace(&node, &copy);
    }
    auto copy = copies.begin();
    for (const Node<LinksT>& node : nodes) {
        for (const auto& ln : node.links) copy->links.emplace_back(copyOf.at(ln.dest), ln.weight);
        ++copy;
    }
    return copies;
}

}  // namespace

template <class GraphT>
Size evaluateClusters(Intrinsics& intr, GraphT& graph, const std::string& filename, AccWeight gamma,
                      Validation validation) {
    if (!(gamma >= 0) || std::isinf(gamma))
        throw std::invalid_argument("evaluateClusters(), gamma must be a number, not negative\n");
    const bool directed = graph.directed();
    Clusters<typename GraphT::LinksT> clusters;
    detail::OutsideWeights<typename GraphT::LinksT> outside;
    const AccWeight weight = detail::loadClusters<CnlParser>(clusters, graph, filename, validation,
                                                             detail::FarShares::STATED, &outside);
    if (clusters.empty())
        throw std::invalid_argument("evaluateClusters(), there are no clusters\n");
    if (!(weight > 0))
        throw std::invalid_argument("evaluateClusters(), the network has no weight\n");
    settleSelfLinks(clusters);
    intr.flags = IntrinsicsFlags::ALL;
    if (directed)
        measure<true>(intr, clusters, outside, weight, gamma);
    else
        measure<false>(intr, clusters, outside, weight, gamma);
    return clusters.size();
}

template <bool WEIGHTED>
const char* clusteringFault(Graph<WEIGHTED>& graph) {
    AccWeight total = 0;
    for (const auto& node : graph.nodes()) {
        if (!(node.m_sweight >= 0)) return "a self link has a weight that isn't a positive number";
        total += node.m_sweight;
        for (const auto& ln : node.links) {
            if (!(ln.weight >= 0)) return "a link has a weight that isn't a positive number";
            total += ln.weight;
        }
    }
    if (total == 0) return "the network has no links, or they weigh nothing";
    if (total > std::numeric_limits<float>::max()) return "the weights add up to more than 3.4e38";
    return nullptr;
}

template <bool WEIGHTED>
std::shared_ptr<typename Graph<WEIGHTED>::HierarchyT> clusterCopy(Graph<WEIGHTED>& graph,
                                                                  const ClusterOptions& options) {
    using LinksT = typename Graph<WEIGHTED>::LinksT;
    auto nodes = copied<LinksT>(graph.nodes());
    // The engine needs the back links of arcs, which it leaves to the validation.
    if (graph.directed() && options.validation == Validation::NONE) {
        AccWeight weight = 0;
        Size links = 0;
        validate<true>(nodes, weight, links);
    }
    return cluster<LinksT>(nodes, !graph.directed(), options);
}

template <class LinksT>
AccWeight rootModularity(const Hierarchy<LinksT>& hier, AccWeight gamma) {
    AccWeight sum = 0;
    const auto add = [&](const auto& item) {
        const AccWeight w = item.ctxWeight(false);
        sum += item.weight() - (w / hier.weight() * w) * gamma;
    };
    if (hier.levels().empty())
        for (const auto& node : hier.nodes()) add(node);
    else
        for (const auto* cl : hier.root()) add(*cl);
    return sum / hier.weight();
}

template VORL_API Size evaluateClusters(Intrinsics&, Graph<false>&, const std::string&, AccWeight,
                                        Validation);
template VORL_API Size evaluateClusters(Intrinsics&, Graph<true>&, const std::string&, AccWeight,
                                        Validation);

template <class LinksT>
std::vector<LevelMeasures> levelMeasures(const Hierarchy<LinksT>& hier, AccWeight gamma) {
    const auto& levels = hier.levels();
    const AccWeight weight = hier.weight();
    // A cluster comes at its level and goes where its owners come.
    std::vector<LevelMeasures> come(levels.size() + 1);
    std::vector<LevelMeasures> gone(levels.size() + 1);
    for (std::size_t level = 0; level < levels.size(); ++level)
        for (const auto& cl : levels[level].clusters) {
            const AccWeight w = cl.ctxWeight(false);
            const AccWeight s = cl.weight();
            const AccWeight modularity = s - (w / weight * w) * gamma;
            const AccWeight conductance = w > 0 ? detail::cutShare(w, s, weight) : 0;
            const auto add = [&](LevelMeasures& to) {
                ++to.clusters;
                to.modularity += modularity;
                to.conductance += conductance;
            };
            add(come[level]);
            add(gone[cl.owners.empty() ? levels.size() : cl.owners.front().dest->levnum]);
        }
    std::vector<LevelMeasures> result(levels.size());
    LevelMeasures sum;
    for (std::size_t level = 0; level < levels.size(); ++level) {
        sum.clusters += come[level].clusters - gone[level].clusters;
        sum.modularity += come[level].modularity - gone[level].modularity;
        sum.conductance += come[level].conductance - gone[level].conductance;
        result[level] = {sum.clusters, sum.modularity / weight,
                         sum.clusters < 2 ? std::numeric_limits<AccWeight>::quiet_NaN()
                                          : std::max(sum.conductance, AccWeight{0}) /
                                                static_cast<AccWeight>(sum.clusters)};
    }
    return result;
}

template VORL_API const char* clusteringFault(Graph<false>&);
template VORL_API const char* clusteringFault(Graph<true>&);
template VORL_API std::shared_ptr<Graph<false>::HierarchyT> clusterCopy(Graph<false>&,
                                                                        const ClusterOptions&);
template VORL_API std::shared_ptr<Graph<true>::HierarchyT> clusterCopy(Graph<true>&,
                                                                       const ClusterOptions&);
template VORL_API AccWeight rootModularity(const Hierarchy<UnweightedLinks>&, AccWeight);
template VORL_API std::vector<LevelMeasures> levelMeasures(const Hierarchy<UnweightedLinks>&,
                                                           AccWeight);
template VORL_API std::vector<LevelMeasures> levelMeasures(const Hierarchy<WeightedLinks>&,
                                                           AccWeight);
template VORL_API AccWeight rootModularity(const Hierarchy<WeightedLinks>&, AccWeight);

}  // namespace vorl
