#include "output_target.hpp"

#include "network_input.hpp"

#include <utility>

namespace vorl::app {

OutputTarget::OutputTarget(std::string file, const std::string& input, bool parents)
    : m_file(std::move(file)), m_input(input), m_parents(parents) {
    if (m_file.empty()) return;
    requireOther(m_file, input);
    m_toOutput = OutputTree(m_file, false, parents).isStandardOutput();
}

}  // namespace vorl::app
