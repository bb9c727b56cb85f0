/// @file
/// Reduction of over-long link lists during a build.
#pragma once

#include <vorl/processing/links_margin.hpp>
#include <vorl/types/item.hpp>

#include <unordered_map>
#include <utility>
#include <vector>

namespace vorl {

/// A link as seen by reduction, ordered by the value of the criterion.
template <class ItemT>
struct RdsLink {
    ItemT* dest;
    LinkWeight weight;
};

/// For each item with too many links the destinations that it would like to drop, ascending by
/// address. Entries keep the order in which they were entered.
template <class ItemT>
class RdsCands {
public:
    using DropsT = std::vector<ItemT*>;
    using EntryT = std::pair<ItemT*, DropsT>;

    explicit RdsCands(std::size_t count) {
        m_entries.reserve(count);
        m_places.reserve(count);
    }

    /// Enters an item; an entry that is there already stays.
    void emplace(ItemT* item, DropsT&& drops) {
        if (m_places.emplace(item, m_entries.size()).second)
            m_entries.emplace_back(item, std::move(drops));
    }

    /// The drops of an item, null if it has no entry.
    const DropsT* find(const ItemT* item) const {
        const auto it = m_places.find(item);
        return it == m_places.end() ? nullptr : &m_entries[it->second].second;
    }

    auto begin() { return m_entries.begin(); }
    auto end() { return m_entries.end(); }
    std::size_t size() const { return m_entries.size(); }

private:
    std::vector<EntryT> m_entries;
    std::unordered_map<const ItemT*, std::size_t> m_places;
};

/// The destinations of those links of `rlinks` that are light enough to be dropped, ascending by
/// address. `rlinks` ends sorted by weight.
/// @return false if nothing qualifies at all
template <Item ItemT>
bool droppableLinks(std::vector<ItemT*>& drops, const ItemT& el,
                    std::vector<RdsLink<ItemT>>& rlinks, Id linksMarg, Reduction reduction);

/// Drops the links on which both ends agree and moves their weight into the self weights.
/// @param rcands the items with the links that they would drop
/// @param[in,out] erased counts the erased link records
/// @return the number of items that lost links
template <Item ItemT>
Id reduceLinks(RdsCands<ItemT>& rcands, Size& erased);

}  // namespace vorl
