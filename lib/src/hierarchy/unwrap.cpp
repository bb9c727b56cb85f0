// The unfolding of a cluster into its nodes with their shares.
#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/types/assert.hpp>

#include <algorithm>
#include <cmath>

namespace vorl {

namespace {

/// The owner entry of an item for a cluster.
template <class ItemT, class ClusterT>
const auto& ownerOf(const ItemT& item, const ClusterT* cluster) {
    const auto& owners = item.owners;
    const auto it = findDest(owners.begin(), owners.end(), cluster);
    VORL_ASSERT(it != owners.end() && it->dest == cluster,
                "unwrap(), des must have current cluster as an owner");
    return *it;
}

/// Whether no other owner of the item holds a larger share.
template <class OwnersT, class OwnerT>
bool isLargest(const OwnersT& owners, const OwnerT& owner) {
    bool largest = true;
    for (std::size_t i = 0; i < owners.size(); ++i) {
        VORL_ASSERT(i == 0 || cmpBase(owners[i - 1].dest, owners[i].dest),
                    "unwrap(), the owners should be unique");
        largest = largest && owners[i].numac <= owner.numac;
    }
    return largest;
}

}  // namespace

template <class LinksT>
ClusterNodes<LinksT> Hierarchy<LinksT>::unwrap(const ClusterT& cl, bool maxshare) const {
    using ItemT = const NodeI<LinksT>;
    ClusterNodes<LinksT> result;
    const double nodes = static_cast<double>(m_nodes.size());
    if (weight() > 0 && !(cl.weight() < 0)) {
        const double expected = (2 * cl.weight() + 1) * (nodes + std::sqrt(nodes)) / weight();
        result.reserve(static_cast<std::size_t>(std::min(expected, nodes)));
    }

    ItemMap<ItemT, AccWeight> frontier;
    ItemMap<ItemT, AccWeight> next;
    frontier[&cl] = 1;
    for (; !frontier.empty(); frontier.swap(next)) {
        next.clear();
        for (const auto& [item, share] : frontier) {
            const auto* const des = item->descs();
            if (!des) {
                result[static_cast<const NodeT*>(item)] += static_cast<Share>(share);
                continue;
            }
            const auto* const cluster = static_cast<const ClusterT*>(item);
            for (const NodeI<LinksT>* desc : *des) {
                const auto& owner = ownerOf(*desc, cluster);
                if (maxshare && !isLargest(desc->owners, owner)) continue;
                // The only owner has the item whole, whatever its numbers say.
                const bool whole =
                    desc->owners.size() == 1 && (owner.numac != desc->totac || desc->totac == 0);
                next[desc] += whole ? share : owner.numac * share / desc->totac;
            }
        }
    }
    return result;
}

#define VORL_INSTANTIATE(LinksT) \
    template ClusterNodes<LinksT> Hierarchy<LinksT>::unwrap(const Cluster<LinksT>&, bool) const;

VORL_INSTANTIATE(UnweightedLinks)
VORL_INSTANTIATE(WeightedLinks)

}  // namespace vorl
