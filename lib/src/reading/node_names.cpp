#include <vorl/reading/node_names.hpp>

namespace vorl {

std::vector<Id> NodeNames::ids() const {
    if (m_announced == 0) return m_ids;
    std::vector<Id> ids(m_announced);
    for (Id i = 0; i < m_announced; ++i) ids[i] = m_first + i;
    return ids;
}

Id NodeNames::numberOfLabel(std::string_view name) {
    const Id id = m_labels->add(name);
    const Id place = ID_MAX - 1 - id;
    if (place >= m_labelled.size()) m_labelled.resize(place + std::size_t{1}, ID_NONE);
    if (m_labelled[place] == ID_NONE) {
        m_labelled[place] = static_cast<Id>(m_ids.size());
        m_ids.push_back(id);
        m_numbers.skip();
    }
    return m_labelled[place];
}

void NodeNames::sortLabels() {
    const std::vector<Id> ids = m_labels->sort();
    std::vector<Id> labelled(m_labelled.size());
    for (std::size_t place = 0; place < m_labelled.size(); ++place) {
        const Id number = m_labelled[place];
        labelled[ID_MAX - 1 - ids[place]] = number;
        if (number != ID_NONE) m_ids[number] = ids[place];
    }
    m_labelled.swap(labelled);
}

}  // namespace vorl
