// The unfolding of a cluster into its nodes with their shares.
#include "unwrap.hpp"

#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/types/assert.hpp>

#include <algorithm>
#include <bit>
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

namespace detail {

template <class LinksT>
auto Unwrapper<LinksT>::unwrap(const ClusterT& cl) -> const Members& {
    if (m_rowsMax == 0) {
        unfold(cl, nullptr);
        return m_members;
    }
    Row row;
    if (!compose(cl, row))
        unfold(cl, &row);
    else if (!settle(row))
        unfold(cl, nullptr);
    keep(cl, std::move(row));
    for (const ItemT* desc : cl.des) release(*desc);
    return m_members;
}

/// @param row gets the members as well, unless it is null
template <class LinksT>
void Unwrapper<LinksT>::unfold(const ClusterT& cl, Row* row) {
    m_members.clear();
    m_memberPlaces.clear();
    m_frontier.assign(1, {&cl, 1, true});
    for (bool top = true; !m_frontier.empty(); top = false, m_frontier.swap(m_next)) {
        m_next.clear();
        m_nextPlaces.clear();
        AccWeight roundings = 0;
        for (const Entry& entry : m_frontier) {
            if (row && !top) roundings = std::max(roundings, roundingsAt(*entry.item));
            if (entry.item->descs()) {
                addDescendants(entry);
                continue;
            }
            addNode(entry);
            if (row)
                row->entries.push_back(
                    {static_cast<const NodeT*>(entry.item), entry.share,
                     entry.sole ? 0 : static_cast<std::uint32_t>(row->roundings + roundings),
                     INEXACT});
        }
        if (!row || top) continue;
        row->roundings += roundings;
        row->ends.push_back(row->entries.size());
    }
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

/// How often the share of an item is rounded at most: in the product and the quotient for each of
/// its owners and in their sum.
template <class LinksT>
AccWeight Unwrapper<LinksT>::roundingsAt(const ItemT& item) {
    return static_cast<AccWeight>(item.owners.size()) + 1;
}

/// Composes the row of a cluster of those of its descendants.
/// @return false if one of these isn't there
template <class LinksT>
bool Unwrapper<LinksT>::compose(const ClusterT& cl, Row& row) {
    for (const ItemT* desc : cl.des)
        if (!provide(*desc)) return false;
    collectParts(cl, row);
    for (std::size_t distance = 1, far = 1; far != 0; ++distance) {
        far = 0;
        m_memberPlaces.clear();
        for (const Part& part : m_parts) {
            if (part.row) {
                addPart(row, part, distance - 1);
                far += part.row->ends.size() >= distance;
            } else if (distance == 1) {
                addEntry(row, part, {static_cast<const NodeT*>(part.item), 1, 0, 0});
            }
        }
        row.ends.push_back(row.entries.size());
    }
    return true;
}

template <class LinksT>
void Unwrapper<LinksT>::collectParts(const ClusterT& cl, Row& row) {
    m_parts.clear();
    std::size_t entries = 0;
    for (const ItemT* desc : cl.des) {
        const auto& owner = ownerOf(*desc, &cl);
        const bool alone = desc->owners.size() == 1;
        if (m_maxshare && !alone && !isLargest(desc->owners, owner)) continue;
        Part part{desc, desc->descs() ? &m_rows.find(desc)->second : nullptr, 1, 1, 0, alone};
        if (!alone) {
            part.numac = owner.numac;
            part.totac = desc->totac;
        }
        // A quotient by a power of two is exact, and so is what an only owner has whole.
        if (!alone || owner.numac == desc->totac) {
            if (!std::has_single_bit(desc->totac))
                part.exponent = INEXACT;
            else if (!alone)
                part.exponent = static_cast<std::uint32_t>(std::countr_zero(desc->totac));
        }
        m_parts.push_back(part);
        row.roundings =
            std::max(row.roundings, (part.row ? part.row->roundings : 0) + roundingsAt(*desc));
        entries += part.row ? part.row->entries.size() : 1;
    }
    row.entries.reserve(entries);
}

/// Adds what a part has at a distance from itself.
template <class LinksT>
void Unwrapper<LinksT>::addPart(Row& row, const Part& part, std::size_t distance) {
    const auto& ends = part.row->ends;
    if (distance == 0 || distance > ends.size()) return;
    for (std::size_t i = distance == 1 ? 0 : ends[distance - 2]; i < ends[distance - 1]; ++i)
        addEntry(row, part, part.row->entries[i]);
}

/// Adds a node of a part.
template <class LinksT>
void Unwrapper<LinksT>::addEntry(Row& row, const Part& part, RowEntry entry) {
    if (!part.alone) {
        entry.share = part.numac * entry.share / part.totac;
        entry.roundings += 2;
    }
    entry.exponent = std::min(entry.exponent + part.exponent, INEXACT);
    if (entry.roundings != 0) {
        const auto place = static_cast<std::uint32_t>(row.entries.size());
        const auto [known, isNew] = m_memberPlaces.insert(entry.node, place);
        if (!isNew) {
            RowEntry& sum = row.entries[known];
            sum.share += entry.share;
            sum.roundings = std::max(sum.roundings, entry.roundings) + 1;
            sum.exponent = std::max(sum.exponent, entry.exponent);
            return;
        }
    }
    row.entries.push_back(entry);
}

/// The least and the largest share of a node that unfolding may give.
template <class LinksT>
std::pair<Share, Share> Unwrapper<LinksT>::bounds(const Row& row, const RowEntry& entry) {
    constexpr AccWeight unit = 0x1p-52;  // twice the error of a rounding
    const auto share = static_cast<Share>(entry.share);
    // Where no path leads to a finer multiple, no sum or product on the way needs more than the 53
    // bits of a double.
    if (entry.roundings == 0 || entry.share == 0 ||
        (entry.exponent < INEXACT &&
         std::ldexp(entry.share, static_cast<int>(entry.exponent)) <= 0x1p52))
        return {share, share};
    // Smaller products may have lost digits, and what isn't finite follows no bound.
    if (!(entry.share > 1e-280 && entry.share < 1e30)) return {0, INFINITY};
    const AccWeight margin = (entry.roundings + row.roundings + 8) * unit;
    return {static_cast<Share>(entry.share * (1 - margin)),
            static_cast<Share>(entry.share * (1 + margin))};
}

/// Makes members of a row.
/// @return false if a share isn't sure
template <class LinksT>
bool Unwrapper<LinksT>::settle(const Row& row) {
    m_members.clear();
    m_memberPlaces.clear();
    m_members.reserve(row.entries.size());
    m_largest.clear();
    const bool unique = row.ends.front() == row.entries.size() ||
                        (row.ends.size() > 1 && row.ends[row.ends.size() - 2] == 0);
    for (const RowEntry& entry : row.entries) {
        const auto [least, largest] = bounds(row, entry);
        if (!unique && entry.roundings != 0) {
            const auto place = static_cast<std::uint32_t>(m_members.size());
            const auto [known, isNew] = m_memberPlaces.insert(entry.node, place);
            if (!isNew) {
                m_members[known].second += least;
                m_largest[known] += largest;
                continue;
            }
        }
        m_members.emplace_back(entry.node, least);
        m_largest.push_back(largest);
    }
    for (std::size_t i = 0; i < m_members.size(); ++i) {
        const auto [node, least] = m_members[i];
        const Share largest = m_largest[i];
        if (least == largest) continue;
        const Share middle = std::nextafter(least, largest);
        const bool close = std::nextafter(middle, largest) == largest;
        if (!close || !m_alike(*node, least, middle) || !m_alike(*node, middle, largest))
            return false;
    }
    return true;
}

/// Makes sure that the row of a descendant is there, if it is one of nodes.
template <class LinksT>
bool Unwrapper<LinksT>::provide(const ItemT& item) {
    const auto* const descs = item.descs();
    if (!descs || m_rows.contains(&item)) return true;
    if (descs->empty() || descs->front()->descs()) return false;
    const auto& cl = static_cast<const ClusterT&>(item);
    Row row;
    compose(cl, row);
    keep(cl, std::move(row));
    return m_rows.contains(&item);
}

template <class LinksT>
void Unwrapper<LinksT>::keep(const ClusterT& cl, Row&& row) {
    if (cl.owners.empty() || m_rowsSize + row.entries.size() > m_rowsMax) return;
    row.uses = cl.owners.size();
    if (row.entries.capacity() > row.entries.size() * 5 / 4 + 4) row.entries.shrink_to_fit();
    const auto [it, isNew] = m_rows.try_emplace(&cl, std::move(row));
    if (isNew) m_rowsSize += it->second.entries.size();
}

/// Frees the row of a descendant behind its last use.
template <class LinksT>
void Unwrapper<LinksT>::release(const ItemT& item) {
    const auto it = m_rows.find(&item);
    if (it == m_rows.end() || --it->second.uses != 0) return;
    m_rowsSize -= it->second.entries.size();
    m_rows.erase(it);
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

#undef VORL_INSTANTIATE

}  // namespace vorl
