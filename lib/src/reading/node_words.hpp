// The words for nodes in files of clusters.
#pragma once

#include <vorl/reading/tokens.hpp>
#include <vorl/types/labels.hpp>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace vorl::detail {

/// Cuts a text between double quotes, in which quotes are doubled, off the front.
/// @param[out] kept takes the text
/// @return false if the quotes aren't closed
inline bool takeQuoted(std::string_view& text, std::string& kept) {
    kept.clear();
    for (std::size_t from = 1;;) {
        const std::size_t end = text.find('"', from);
        if (end == std::string_view::npos) return false;
        kept.append(text.substr(from, end - from));
        if (end + 1 == text.size() || text[end + 1] != '"') {
            text.remove_prefix(end + 1);
            return true;
        }
        kept += '"';
        from = end + 2;
    }
}

/// Nodes by the words of a file: ids, names between quotes, and where names are at home or known
/// from a network also words without quotes.
class NodeWords {
public:
    /// @param known names of a network, which others join; may be null
    explicit NodeWords(std::shared_ptr<Labels> known)
        : m_labels(std::move(known)), m_free(m_labels && m_labels->size() != 0) {}

    /// Takes all words for names.
    void allowNames() { m_free = true; }

    /// @param fault makes the error of what is wrong, what was found and what is expected
    template <class FaultT>
    Id node(std::string_view word, bool quoted, FaultT fault) {
        if (!quoted && !m_free) return number(word, fault);
        const Id known = m_labels ? m_labels->find(word) : ID_NONE;
        if (known != ID_NONE) return known;
        const bool digits = !word.empty() && word.find_first_not_of("0123456789") == word.npos;
        Id id = 0;
        if (quoted ? Labels::isId(word, id) : digits && word.size() < 10)
            return number(word, fault);
        if (word.empty()) throw fault("the node", "\"\"", "a name is expected");
        if (m_large)
            throw fault("the node", vorl::quoted(word),
                        "no name is expected in a file with ids from 2147483648 on");
        if (!m_labels) m_labels = std::make_shared<Labels>();
        return m_labels->add(word);
    }

    /// Null if there are no names.
    std::shared_ptr<Labels> labels() const {
        return m_labels && m_labels->size() != 0 ? m_labels : nullptr;
    }

private:
    template <class FaultT>
    Id number(std::string_view word, FaultT fault) {
        const Id id = toId(word, "node", fault);
        if (id < Labels::FIRST) return id;
        if (m_labels && m_labels->size() != 0) return m_labels->add(word);
        m_large = true;
        return id;
    }

    std::shared_ptr<Labels> m_labels;
    bool m_free;
    bool m_large = false;  // there are ids that names may take
};

}  // namespace vorl::detail
