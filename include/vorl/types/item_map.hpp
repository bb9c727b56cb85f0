/// @file
/// A hash map of items that is walked in the order of insertion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vorl {

/// Maps items to values.
///
/// Its entries stand in the order in which they were inserted, so that nothing that is computed
/// from a walk depends on addresses.
template <class ItemT, class ValueT>
class ItemMap {
public:
    using value_type = std::pair<ItemT*, ValueT>;
    using const_iterator = typename std::vector<value_type>::const_iterator;

    const_iterator begin() const { return m_entries.begin(); }
    const_iterator end() const { return m_entries.end(); }
    std::size_t size() const { return m_entries.size(); }
    bool empty() const { return m_entries.empty(); }

    const_iterator find(const ItemT* item) const {
        if (m_entries.empty()) return end();
        const std::uint32_t place = m_places[probe(item)];
        return place == FREE ? end() : begin() + place;
    }

    /// Inserts an item unless it is there.
    /// @return the value that the map holds for it, until the next insertion, and whether that is
    ///     the given one
    std::pair<ValueT&, bool> insert(ItemT* item, ValueT value) {
        if (m_places.size() <= 2 * m_entries.size())
            rehash(m_places.empty() ? 16 : 2 * m_places.size());
        std::uint32_t& place = m_places[probe(item)];
        const bool isNew = place == FREE;
        if (isNew) {
            m_entries.emplace_back(item, std::move(value));
            place = static_cast<std::uint32_t>(m_entries.size() - 1);
        }
        return {m_entries[place].second, isNew};
    }

    /// The value of an item; a new one starts from its default.
    ValueT& operator[](ItemT* item) { return insert(item, ValueT()).first; }

    /// Makes room for a number of entries.
    void reserve(std::size_t count) {
        std::size_t places = 16;
        while (places < 2 * count) places *= 2;
        if (places > m_places.size()) rehash(places);
        m_entries.reserve(count);
    }

    void clear() {
        if (m_entries.empty()) return;
        if (m_places.size() > 64 * (m_entries.size() + 1)) m_places.clear();
        for (std::uint32_t& place : m_places) place = FREE;
        m_entries.clear();
    }

private:
    static constexpr std::uint32_t FREE = ~std::uint32_t{0};

    /// The place that holds the item, or the free one for it.
    std::size_t probe(const ItemT* item) const {
        // Fibonacci hashing: the high bits of the product depend on all bits of the address.
        const auto hash = reinterpret_cast<std::uintptr_t>(item) * 0x9E3779B97F4A7C15u;
        std::size_t index = hash >> m_shift;
        while (m_places[index] != FREE && m_entries[m_places[index]].first != item)
            index = (index + 1) & (m_places.size() - 1);
        return index;
    }

    void rehash(std::size_t places) {
        m_places.assign(places, FREE);
        m_shift = 64;
        for (std::size_t size = places; size > 1; size /= 2) --m_shift;
        for (std::size_t i = 0; i < m_entries.size(); ++i)
            m_places[probe(m_entries[i].first)] = static_cast<std::uint32_t>(i);
    }

    std::vector<value_type> m_entries;
    std::vector<std::uint32_t> m_places;  // a power of two of indices into the entries
    unsigned m_shift = 64;
};

}  // namespace vorl
