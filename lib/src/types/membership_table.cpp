#include <vorl/types/membership_table.hpp>

#include <vorl/types/characters.hpp>

#include <charconv>
#include <stdexcept>
#include <utility>

namespace vorl {

namespace {

template <class NumberT>
void append(std::string& text, NumberT number) {
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

}  // namespace

MembershipTable::MembershipTable(TableForm form, const char* cluster, bool levels,
                                 const Labels* labels)
    : m_form(form), m_cluster(cluster), m_levels(levels), m_labels(labels) {
    if (form == TableForm::JSON) return;
    const char separator = form == TableForm::COMMAS ? ',' : '\t';
    (m_text += "node") += separator;
    if (levels) (m_text += "level") += separator;
    ((m_text += cluster) += separator) += "share\n";
}

void MembershipTable::add(Id node, Id cluster, Share share, LevelNum level) {
    if (m_form == TableForm::JSON) {
        m_text += "{\"node\": ";
        if (m_labels && m_labels->has(node)) {
            const std::string_view name = m_labels->text(node);
            if (!isUtf8(name))
                throw std::invalid_argument("the name " + jsonQuoted(name) +
                                            " isn't in UTF-8, which a table in JSON needs; .tsv "
                                            "and .csv can hold it\n");
            m_text += jsonQuoted(name);
        } else {
            append(m_text, node);
        }
        if (m_levels) append(m_text += ", \"level\": ", level);
        append(((m_text += ", \"") += m_cluster) += "\": ", cluster);
        append(m_text += ", \"share\": ", share);
        m_text += "}\n";
        return;
    }
    const char separator = m_form == TableForm::COMMAS ? ',' : '\t';
    naming::appendCell(m_text, node, m_labels, separator);
    m_text += separator;
    if (m_levels) {
        append(m_text, level);
        m_text += separator;
    }
    append(m_text, cluster);
    m_text += separator;
    append(m_text, share);
    m_text += '\n';
}

std::string MembershipTable::take() { return std::exchange(m_text, {}); }

}  // namespace vorl
