#include <vorl/shared/operations.hpp>

#include "../fileio/clusters_loading.hpp"

#include <vorl/processing/gamma.hpp>
#include <vorl/processing/weights.hpp>

#include <stdexcept>

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
void measure(Intrinsics& intr, const Clusters<LinksT>& clusters, AccWeight weight,
             AccWeight gamma) {
    AccWeight inner = 0;
    AccWeight ww = 0;
    AccWeight modularity = 0;
    AccWeight cuts = 0;
    for (const Cluster<LinksT>& cl : clusters) {
        const AccWeight s = cl.weight();
        const AccWeight w = s + linksWeight<NONSYMMETRIC>(cl);
        inner += s;
        modularity += s - (w / weight * w) * gamma;
        if (!less(AccWeight{0}, w)) continue;
        ww += w * w;
        cuts += detail::cutShare(w, s, weight);
    }
    const bool separate = equal(inner, weight);
    const AccWeight expected = ww / weight;
    const AccWeight estimate = inner == 0 || separate ? 1 : newmanGamma(inner, expected, weight);
    intr.mod = static_cast<float>(modularity / weight);
    intr.gamma = static_cast<float>(estimate);
    intr.sgmod = static_cast<float>((inner - estimate * expected) / weight);
    if (clusters.size() == 1)
        intr.cdn = 1;
    else
        intr.cdn =
            separate ? 0 : static_cast<float>(cuts / static_cast<AccWeight>(clusters.size()));
}

}  // namespace

template <class GraphT>
Size evaluateClusters(Intrinsics& intr, GraphT& graph, const std::string& filename, AccWeight gamma,
                      Validation validation) {
    if (gamma < 0) throw std::invalid_argument("evaluateClusters(), gamma must not be negative\n");
    const bool directed = graph.directed();
    Clusters<typename GraphT::LinksT> clusters;
    const AccWeight weight = detail::loadClusters<CnlParser>(clusters, graph, filename, validation,
                                                             detail::FarShares::STATED);
    if (clusters.empty())
        throw std::invalid_argument("evaluateClusters(), there are no clusters\n");
    if (!(weight > 0))
        throw std::invalid_argument("evaluateClusters(), the network has no weight\n");
    settleSelfLinks(clusters);
    intr.flags = IntrinsicsFlags::ALL;
    if (directed)
        measure<true>(intr, clusters, weight, gamma);
    else
        measure<false>(intr, clusters, weight, gamma);
    return clusters.size();
}

template VORL_API Size evaluateClusters(Intrinsics&, Graph<false>&, const std::string&, AccWeight,
                                        Validation);
template VORL_API Size evaluateClusters(Intrinsics&, Graph<true>&, const std::string&, AccWeight,
                                        Validation);

}  // namespace vorl
