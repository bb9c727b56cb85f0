// The command `vorl compare`.
#pragma once

#include "agreement.hpp"

#include <string>

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
    bool strict = false;
    bool json = false;
    bool quiet = false;
};

/// Reads, compares and reports.
/// @throws InputError
void run(const CompareCommand& command);

}  // namespace vorl::app
