// What is made of clusters once all members are there, whatever their format.
#pragma once

#include <vorl/reading/clusters_file.hpp>

namespace vorl::detail {

/// Makes the errors of words in a line.
inline auto faultsAt(const std::string& file, std::size_t line) {
    return [&file, line](const std::string& wrong, const std::string& found,
                         const std::string& expected) {
        return InputError(InputError::Parts{file, line, wrong, found, expected});
    };
}

/// Fills in the nodes, and whether there are several levels.
/// @param toldClusters  number of clusters by the header, 0 if it doesn't tell
void settleNodes(ClustersFile& file, Size toldClusters = 0);
/// Looks for deviations of the shares, which levels have each for itself.
void settleShares(ClustersFile& file);

}  // namespace vorl::detail
