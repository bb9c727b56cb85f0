#include "output_target.hpp"

#include "errors.hpp"
#include "network_input.hpp"

#include <vorl/reading/cluster_levels.hpp>
#include <vorl/reading/pack.hpp>

#include <utility>

namespace vorl::app {

void requireClustersName(const std::string& file) {
    const bool hierarchy = plainName(file).ends_with(".rhb");
    if (hierarchy || isTableName(file))
        throw UsageError("a list of clusters can't be " + file + ", which is the name of a " +
                         (hierarchy ? "hierarchy" : "table") +
                         "; take another extension, such as .cnl");
}

OutputTarget::OutputTarget(std::string file, const std::string& input, bool parents)
    : m_file(std::move(file)), m_input(input), m_parents(parents) {
    if (m_file.empty()) return;
    requireOther(m_file, input);
    m_toOutput = OutputTree(m_file, false, parents).isStandardOutput();
}

}  // namespace vorl::app
