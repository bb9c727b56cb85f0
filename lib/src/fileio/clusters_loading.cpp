#include "clusters_loading.hpp"

#include <vorl/processing/validation.hpp>
#include <vorl/processing/weights.hpp>
#include <vorl/types/plain_text.hpp>

#include <cmath>
#include <stdexcept>

namespace vorl {

namespace {

/// Prepares the links of a network and gives its weight.
template <bool NONSYMMETRIC, class NodesT>
AccWeight networkWeight(NodesT& nodes, Validation validation) {
    StructLinkErrors created(BACKLINKS_MESSAGE);
    if constexpr (NONSYMMETRIC)
        if (validation != Validation::NONE) detail::createBackLinks(nodes, created);
    AccWeight weight = 0;
    Size links = 0;
    for (const auto& node : nodes) {
        links += node.links.size();
        weight += linksWeight<NONSYMMETRIC>(node) + node.weight();
    }
    if (validation != Validation::NONE)
        detail::validate<NONSYMMETRIC>(nodes, weight, links, validation == Validation::SEVERE,
                                       &created);
    return weight;
}

template <class NodeT>
AccWeight pairWeight(const NodeT& node, const typename NodeT::LinkT& ln, bool directed) {
    return directed ? linkWeight<true>(&node, ln) : linkWeight<false>(&node, ln);
}

template <class LinksT>
class SharesReader {
public:
    explicit SharesReader(const NodesShares<LinksT>& shares) : m_shares(shares) {}

    /// The stated shares of a node, null if there are none.
    const auto* stated(const Node<LinksT>& node) const {
        const auto it = m_shares.find(&node);
        return it == m_shares.end() ? nullptr : &it->second;
    }

    template <class SharesT>
    static Share shareIn(const SharesT& shares, const Cluster<LinksT>* cluster) {
        const auto it = findDest(shares.begin(), shares.end(), cluster);
        VORL_ASSERT(it != shares.end() && it->dest == cluster,
                    "nodeShare(), node share should exist");
        return it->share;
    }

    static Share evenShare(const Node<LinksT>& node) {
        return 1 / static_cast<Share>(node.owners.size());
    }

private:
    const NodesShares<LinksT>& m_shares;
};

[[noreturn]] void refuseShares(Id node, AccWeight sum) {
    throw format("Accumulated value of the node share should be equal to 1, failed for #%u: '%f\n",
                 node, sum);
}

/// Scales stated shares that add up to 1 but for their rounding to six digits.
template <class LinksT>
void settleShares(const Nodes<LinksT>& nodes, NodesShares<LinksT>& shares) {
    for (const Node<LinksT>& node : nodes) {
        const auto found = shares.find(&node);
        if (found == shares.end()) continue;
        if (found->second.size() != node.owners.size())
            throw std::invalid_argument(format(
                "evaluateClusters(), node #%u states its share in some of its clusters only\n",
                node.id));
        AccWeight sum = 0;
        for (const auto& entry : found->second) sum += static_cast<AccWeight>(entry.share);
        const auto count = static_cast<AccWeight>(node.owners.size());
        if (equal(sum, 1, node.owners.size())) continue;
        if (!(std::fabs(sum - 1) <= 5e-7 * count + detail::WEIGHT_EPS)) refuseShares(node.id, sum);
        for (auto& entry : found->second)
            entry.share = detail::narrow(static_cast<AccWeight>(entry.share) / sum);
    }
}

}  // namespace

template <class ParserT, class GraphT>
AccWeight detail::loadClusters(Clusters<typename GraphT::LinksT>& clusters, GraphT& graph,
                               const std::string& filename, Validation validation,
                               FarShares farShares,
                               OutsideWeights<typename GraphT::LinksT>* outside) {
    using LinksT = typename GraphT::LinksT;
    using ClusterT = Cluster<LinksT>;
    bool directed = false;
    typename GraphT::IdNodesT idnodes;
    const auto nodes = graph.release(&idnodes, &directed);
    const auto membership = ParserT(filename).template build<LinksT>(idnodes);
    const AccWeight weight = directed ? networkWeight<true>(*nodes, validation)
                                      : networkWeight<false>(*nodes, validation);

    const bool settled = farShares == FarShares::STATED;
    if (settled) settleShares(*nodes, membership->ndshares);
    StructNodeErrors errors("WARNING loadClusters(), the node does not belong to any cluster: ");
    const SharesReader<LinksT> reader(membership->ndshares);
    for (const Node<LinksT>& node : *nodes) {
        if (node.owners.empty()) {
            errors.add(node.id);
            continue;
        }
        const auto* const nearShares = reader.stated(node);
        Share sum = 0;
        for (const auto& owner : node.owners) {
            ClusterT& cluster = *owner.dest;
            const Share share =
                nearShares ? reader.shareIn(*nearShares, &cluster) : reader.evenShare(node);
            sum += share;
            for (const auto& ln : node.links) {
                const Node<LinksT>& far = *ln.dest;
                if (outside && far.owners.empty())
                    (*outside)[&cluster] +=
                        pairWeight(node, ln, directed) / 2 * static_cast<AccWeight>(share);
                const auto* const stated =
                    nearShares || farShares == FarShares::STATED ? reader.stated(far) : nullptr;
                auto place = cluster.links.begin();
                for (const auto& farOwner : far.owners) {
                    Share part =
                        stated ? reader.shareIn(*stated, farOwner.dest) : reader.evenShare(far);
                    part *= share;
                    if constexpr (GraphT::IS_WEIGHTED) part *= ln.weight;
                    place = addLink(cluster.links, place, farOwner.dest, AccWeight{part});
                }
            }
            cluster.addWeight(node.weight() * static_cast<AccWeight>(share));
        }
        // Even shares are those of the whole, however they add up at 32 bits.
        if (!settled && !equal(sum, Share{1}, node.owners.size()))
            refuseShares(node.id, static_cast<AccWeight>(sum));
    }
    errors.show();
    clusters = std::move(membership->clusters);
    return weight;
}

template <class ParserT, class GraphT>
AccWeight loadClusters(Clusters<typename GraphT::LinksT>& clusters, GraphT& graph,
                       const std::string& filename, Validation validation) {
    return detail::loadClusters<ParserT>(clusters, graph, filename, validation,
                                         detail::FarShares::AS_LOADED);
}

#define VORL_INSTANTIATE(GraphT, LinksT)                                               \
    template AccWeight detail::loadClusters<CnlParser>(                                \
        Clusters<LinksT>&, GraphT&, const std::string&, Validation, detail::FarShares, \
        detail::OutsideWeights<LinksT>*);                                              \
    template VORL_API AccWeight loadClusters<CnlParser>(Clusters<LinksT>&, GraphT&,    \
                                                        const std::string&, Validation);

VORL_INSTANTIATE(Graph<false>, UnweightedLinks)
VORL_INSTANTIATE(Graph<true>, WeightedLinks)

#undef VORL_INSTANTIATE

}  // namespace vorl
