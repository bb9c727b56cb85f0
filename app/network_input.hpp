// Reading of a network for the program, with every fault told by file and line.
#pragma once

#include "network_text.hpp"

#include <vorl/graph.hpp>
#include <vorl/types/options.hpp>

#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace vorl::app {

struct ReadOptions {
    std::string file;                         ///< "-" for the standard input
    FileFormat format = FileFormat::UNKNOWN;  ///< told from the name where unknown
    bool unweighted = false;
    bool sumDuplicates = false;
    bool shuffle = false;
};

/// A network ready to be clustered. Arcs are always held in the weighted form, in which they keep
/// their direction.
struct Network {
    std::variant<std::shared_ptr<Graph<false>>, std::shared_ptr<Graph<true>>> graph;
    bool directed = false;
    bool weighted = false;
    Size nodes = 0;
    Size links = 0;                     ///< edges or arcs in the file, each counted once
    std::vector<std::string> warnings;  ///< what the user should know of the file
};

/// The format of a network, by the options or by its name; ".gz" and ".zst" at its end don't count.
/// @param option that gives it, for the message
/// @throws UsageError if neither tells
FileFormat networkFormat(const ReadOptions& options, const char* option = "--format");

/// @throws InputError with the file and line of the first fault
Network readNetwork(const ReadOptions& options);

/// Prints what the user should know of the file to the standard error stream.
void showWarnings(const Network& network, const ReadOptions& options);

}  // namespace vorl::app
