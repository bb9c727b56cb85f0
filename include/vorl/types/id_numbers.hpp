/// @file
/// Numbers for the ids of a network.
#pragma once

#include <vorl/types/numbers.hpp>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace vorl {

/// Numbers ids through in the order in which they come.
///
/// The numbers of small ids stand in a table by id, those of all others in a table by hash.
class IdNumbers {
public:
    /// @param expected how many ids may come; it decides which of them are small
    explicit IdNumbers(Size expected = 0) : m_expected(expected) {}

    /// The number of an id, ID_NONE if it has none.
    Id find(Id id) const {
        if (id < m_near.size() && m_near[id] != ID_NONE) return m_near[id];
        if (m_far.empty()) return ID_NONE;
        return m_far[place(id)].second;
    }

    /// The number of an id other than ID_NONE; a new one gets the next number.
    Id number(Id id) {
        const Id found = find(id);
        return found == ID_NONE ? append(id) : found;
    }

    /// The number of an id other than ID_NONE; a new one is put behind the ids of all others.
    Id number(Id id, std::vector<Id>& ids) {
        const Id found = find(id);
        if (found != ID_NONE) return found;
        ids.push_back(id);
        return append(id);
    }

    /// Gives the next number to an id that has none.
    Id append(Id id) {
        const auto next = static_cast<Id>(m_size++);
        if (id < limit()) {
            if (id >= m_near.size()) widen(id);
            return m_near[id] = next;
        }
        if (m_far.size() <= 2 * m_farSize++) grow();
        m_far[place(id)] = {id, next};
        return next;
    }

    /// Leaves the next number to something that has no id.
    void skip() { ++m_size; }

    Size size() const { return m_size; }

private:
    using Slot = std::pair<Id, Id>;

    /// The end of the small ids.
    Size limit() const { return std::max({Size{1} << 10, 8 * m_size, m_expected}); }

    void widen(Id id) {
        m_near.resize(std::min(limit(), std::max<Size>(id + Size{1}, 2 * m_near.size())), ID_NONE);
    }

    /// The slot of the id, or the free one where it belongs.
    std::size_t place(Id id) const {
        std::size_t slot = (id * std::uint64_t{0x9E3779B97F4A7C15}) >> m_shift;
        while (m_far[slot].first != id && m_far[slot].first != ID_NONE)
            slot = (slot + 1) & (m_far.size() - 1);
        return slot;
    }

    void grow() {
        std::vector<Slot> former(std::max(Size{1} << 10, 2 * m_far.size()), Slot{ID_NONE, ID_NONE});
        former.swap(m_far);
        m_shift = former.empty() ? 54 : m_shift - 1;
        for (const Slot& slot : former) {
            if (slot.first == ID_NONE) continue;
            // What was large among few ids may be small among many.
            if (slot.first < limit()) {
                if (slot.first >= m_near.size()) widen(slot.first);
                m_near[slot.first] = slot.second;
                --m_farSize;
            } else {
                m_far[place(slot.first)] = slot;
            }
        }
    }

    Size m_expected;
    Size m_size = 0;
    std::vector<Id> m_near;
    Size m_farSize = 0;
    std::vector<Slot> m_far;
    unsigned m_shift = 54;
};

}  // namespace vorl
