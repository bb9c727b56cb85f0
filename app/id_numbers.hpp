// Numbers for the ids of a network.
#pragma once

#include <vorl/types/numbers.hpp>

#include <cstdint>
#include <utility>
#include <vector>

namespace vorl::app {

/// Numbers ids through in the order in which they come.
class IdNumbers {
public:
    /// The number of an id other than ID_NONE; a new one gets the next number.
    Id number(Id id) {
        Slot* slot = find(id);
        if (slot->first == id) return slot->second;
        if (2 * m_size >= m_slots.size()) {
            grow();
            slot = find(id);
        }
        *slot = {id, static_cast<Id>(m_size)};
        return static_cast<Id>(m_size++);
    }

    Size size() const { return m_size; }

private:
    using Slot = std::pair<Id, Id>;

    /// The slot of the id, or the free one where it belongs.
    Slot* find(Id id) {
        std::size_t place = (id * std::uint64_t{0x9E3779B97F4A7C15}) >> m_shift;
        while (m_slots[place].first != id && m_slots[place].first != ID_NONE)
            place = (place + 1) & (m_slots.size() - 1);
        return &m_slots[place];
    }

    void grow() {
        std::vector<Slot> former(2 * m_slots.size(), Slot{ID_NONE, 0});
        former.swap(m_slots);
        --m_shift;
        for (const Slot& slot : former)
            if (slot.first != ID_NONE) *find(slot.first) = slot;
    }

    unsigned m_shift = 54;
    std::vector<Slot> m_slots = std::vector<Slot>(std::size_t{1} << 10, Slot{ID_NONE, 0});
    Size m_size = 0;
};

}  // namespace vorl::app
