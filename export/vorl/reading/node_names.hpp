/// @file
/// The nodes of a network that is read, by the names that its file has for them.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/id_numbers.hpp>
#include <vorl/types/numbers.hpp>

#include <vector>

namespace vorl {

/// Numbers the nodes of a network through in the order in which they come.
class VORL_API NodeNames {
public:
    /// Numbers the ids first to first + count - 1 beforehand. There must be no node yet, and no
    /// other may come.
    void announce(Id first, Id count) {
        m_first = first;
        m_announced = count;
    }

    /// The number of the node of an id other than ID_NONE, the next one if it is new.
    Id number(Id id) { return m_announced != 0 ? id - m_first : m_numbers.number(id, m_ids); }

    Size size() const { return m_announced != 0 ? m_announced : m_ids.size(); }
    Id id(Id number) const { return m_announced != 0 ? m_first + number : m_ids[number]; }
    /// The ids of all nodes, by number.
    std::vector<Id> ids() const {
        if (m_announced == 0) return m_ids;
        std::vector<Id> ids(m_announced);
        for (Id i = 0; i < m_announced; ++i) ids[i] = m_first + i;
        return ids;
    }

private:
    IdNumbers m_numbers;
    std::vector<Id> m_ids;
    Id m_first = 0;
    Id m_announced = 0;
};

}  // namespace vorl
