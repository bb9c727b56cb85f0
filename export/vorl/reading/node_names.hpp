/// @file
/// The nodes of a network that is read, by the names that its file has for them.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/id_numbers.hpp>
#include <vorl/types/labels.hpp>
#include <vorl/types/numbers.hpp>

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace vorl {

/// Numbers the nodes of a network through in the order in which they come.
class VORL_API NodeNames {
public:
    /// @param labels takes names that aren't ids; a table of its own if null
    explicit NodeNames(std::shared_ptr<Labels> labels = nullptr)
        : m_labels(labels ? std::move(labels) : std::make_shared<Labels>()) {}

    /// Numbers the ids first to first + count - 1 beforehand. There must be no node yet, and no
    /// other may come.
    void announce(Id first, Id count) {
        m_first = first;
        m_announced = count;
    }

    /// The number of the node of an id other than ID_NONE, the next one if it is new.
    Id number(Id id) { return m_announced != 0 ? id - m_first : m_numbers.number(id, m_ids); }
    /// The number of the node of a name, which may be an id.
    Id numberOf(std::string_view name) {
        Id id = 0;
        return Labels::isId(name, id) ? number(id) : numberOfLabel(name);
    }

    Size size() const { return m_announced != 0 ? m_announced : m_ids.size(); }
    Id id(Id number) const { return m_announced != 0 ? m_first + number : m_ids[number]; }
    /// The ids of all nodes, by number.
    std::vector<Id> ids() const;
    /// The names of those that have some.
    const std::shared_ptr<Labels>& labels() const { return m_labels; }

    /// Orders the names, which changes the ids that stand for them.
    void sortLabels();

private:
    Id numberOfLabel(std::string_view name);

    IdNumbers m_numbers;
    std::vector<Id> m_ids;
    std::shared_ptr<Labels> m_labels;
    std::vector<Id> m_labelled;  // numbers by the places of names from the top
    Id m_first = 0;
    Id m_announced = 0;
};

}  // namespace vorl
