// The command `vorl compare`.
#pragma once

#include <vorl/agreement/agreement.hpp>
#include <vorl/reading/cluster_levels.hpp>

#include <string>
#include <vector>

namespace vorl::app {

/// The nodes that two clusterings are compared on. What is in no cluster of one of them counts
/// there as such.
enum class NodeSet { UNION, COMMON, FIRST, SECOND };

struct CompareCommand {
    std::string first;
    std::string second;
    NodeSet nodes = NodeSet::UNION;
    Id count = 0;  ///< number of nodes of the network, counted if it is the larger number
    OmegaLimits omega;
    ClustersFormat format = ClustersFormat::UNKNOWN;
    bool levels = false;  ///< each level by itself
    bool strict = false;
    bool json = false;
    bool quiet = false;
};

/// The chosen nodes of two files, ascending.
std::vector<Id> chosenNodes(const ClustersFile& first, const ClustersFile& second, NodeSet set);

/// The clusters of a file without all other nodes; a node bears the number of its place in the
/// list.
/// @param count  number of nodes of the cover, if it is larger than that of the list
/// @throws InputError if none of the nodes is in a cluster
Cover coverOf(const ClustersFile& file, const std::vector<Id>& nodes, Size count = 0);

/// Reads, compares and reports.
/// @throws InputError
void run(const CompareCommand& command);

}  // namespace vorl::app
