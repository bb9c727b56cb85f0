/// @file
/// Names of nodes that aren't ids.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/numbers.hpp>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorl {

/// A table of names, each of which stands for an id.
///
/// A node that is called by a number below `FIRST` has it for its id. All other names, and larger
/// numbers, get ids from the largest one downwards, so that ids of both kinds lie in one network.
/// Beside the text a name takes some 16 bytes.
class VORL_API Labels {
public:
    /// The ids from here on stand for names.
    static constexpr Id FIRST = Id{1} << 31;

    /// Whether the word is a number that is its own id: decimal digits, no zero in front.
    /// @param[out] id takes it
    static bool isId(std::string_view word, Id& id) {
        if (word.empty() || word.size() > 10 || (word[0] == '0' && word.size() > 1)) return false;
        std::uint64_t value = 0;
        for (const char c : word) {
            if (c < '0' || c > '9') return false;
            value = 10 * value + static_cast<std::uint64_t>(c - '0');
        }
        id = static_cast<Id>(value);
        return value < FIRST;
    }

    /// The id of a name, which gets one if it has none.
    /// @throws std::length_error if there are too many names
    Id add(std::string_view name);
    /// The id of a name, a number or text; ID_NONE if it has none.
    Id find(std::string_view name) const;

    /// Whether the id stands for a name of the table.
    bool has(Id id) const { return ID_MAX - 1 - id < m_offsets.size() && id >= FIRST; }
    /// The text of such an id.
    std::string_view text(Id id) const { return textAt(ID_MAX - 1 - id); }
    /// Number of names.
    Size size() const { return m_offsets.size(); }

    /// Gives the names new ids, in ascending order of the names: numbers by their values, then
    /// texts by their bytes.
    /// @return the new id of each name, by the place that its former id has from the top
    std::vector<Id> sort();

private:
    static constexpr Id FREE = ID_NONE;
    static constexpr std::size_t UNIT = 4;  // texts begin at multiples of it

    std::string_view textAt(Id place) const;
    std::size_t slotOf(std::string_view name) const;
    void rehash(std::size_t slots);

    std::vector<char> m_text;              // ended by zeros
    std::vector<std::uint32_t> m_offsets;  // of the texts, in units
    std::vector<Id> m_slots;               // places by hash
};

/// The words of a node where names have to be told from other things.
namespace naming {

/// The id, or the name as it is.
/// @param labels null for no names
VORL_API std::string plain(Id node, const Labels* labels);
/// The id, or the name between quotes, in which quotes are doubled.
VORL_API void appendQuoted(std::string& text, Id node, const Labels* labels);
/// The id or the name, between quotes only where it would be misread in a table.
VORL_API void appendCell(std::string& text, Id node, const Labels* labels, char separator);

}  // namespace naming

}  // namespace vorl
