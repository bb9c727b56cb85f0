// The unfolding of a cluster into its nodes with their shares.
#include "unwrap.hpp"

#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/types/assert.hpp>

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

namespace detail {

template <class LinksT>
auto Unwrapper<LinksT>::unwrap(const ClusterT& cl) -> const Members& {
    m_members.clear();
    m_memberPlaces.clear();
    m_frontier.assign(1, {&cl, 1, true});
    for (; !m_frontier.empty(); m_frontier.swap(m_next)) {
        m_next.clear();
        m_nextPlaces.clear();
        for (const Entry& entry : m_frontier) {
            if (entry.item->descs())
                addDescendants(entry);
            else
                addNode(entry);
        }
    }
    return m_members;
}

template <class LinksT>
void Unwrapper<LinksT>::addNode(const Entry& entry) {
    const auto* const node = static_cast<const NodeT*>(entry.item);
    const auto share = static_cast<Share>(entry.share);
    if (!entry.sole) {
        const auto place = static_cast<std::uint32_t>(m_members.size());
        const auto [known, isNew] = m_memberPlaces.insert(node, place);
        if (!isNew) {
            m_members[known].second += share;
            return;
        }
    }
    m_members.emplace_back(node, share);
}

template <class LinksT>
void Unwrapper<LinksT>::addDescendants(const Entry& entry) {
    const auto* const cluster = static_cast<const ClusterT*>(entry.item);
    for (const ItemT* desc : cluster->des) {
        const auto& owner = ownerOf(*desc, cluster);
        const bool alone = desc->owners.size() == 1;
        if (m_maxshare && !alone && !isLargest(desc->owners, owner)) continue;
        // The only owner has the item whole, whatever its numbers say.
        const bool whole = alone && (owner.numac != desc->totac || desc->totac == 0);
        const AccWeight share = whole ? entry.share : owner.numac * entry.share / desc->totac;
        const bool sole = entry.sole && alone;
        if (!sole) {
            const auto place = static_cast<std::uint32_t>(m_next.size());
            const auto [known, isNew] = m_nextPlaces.insert(desc, place);
            if (!isNew) {
                m_next[known].share += share;
                continue;
            }
        }
        m_next.push_back({desc, share, sole});
    }
}

template class Unwrapper<UnweightedLinks>;
template class Unwrapper<WeightedLinks>;

}  // namespace detail

template <class LinksT>
ClusterNodes<LinksT> Hierarchy<LinksT>::unwrap(const ClusterT& cl, bool maxshare) const {
    detail::Unwrapper<LinksT> unwrapper(maxshare);
    const auto& members = unwrapper.unwrap(cl);
    ClusterNodes<LinksT> result;
    result.reserve(members.size());
    for (const auto& [node, share] : members) result[node] = share;
    return result;
}

#define VORL_INSTANTIATE(LinksT) \
    template ClusterNodes<LinksT> Hierarchy<LinksT>::unwrap(const Cluster<LinksT>&, bool) const;

VORL_INSTANTIATE(UnweightedLinks)
VORL_INSTANTIATE(WeightedLinks)

}  // namespace vorl
