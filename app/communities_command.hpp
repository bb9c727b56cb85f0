// The command `vorl communities`.
#pragma once

#include "network_input.hpp"

#include <vorl/communities.hpp>

#include <string>

namespace vorl::app {

struct CommunitiesCommand {
    ReadOptions read;
    CommunitiesOptions options;
    std::string output;     ///< file of the clusters, none if empty
    std::string table;      ///< file of the table, none if empty
    std::string hierarchy;  ///< file of the hierarchy around the communities, none if empty
    bool parents = false;
    bool json = false;
    bool quiet = false;
};

/// Finds the communities of a network, prints a summary and writes what is asked for.
/// @throws InputError, UsageError
void run(const CommunitiesCommand& command);

}  // namespace vorl::app
