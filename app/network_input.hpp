// Reading of a network for the program, with every fault told by file and line.
#pragma once

#include <vorl/graph.hpp>
#include <vorl/types/options.hpp>

#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace vorl::app {

struct ReadOptions {
    std::string file;
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

/// @throws InputError with the file and line of the first fault
Network readNetwork(const ReadOptions& options);

}  // namespace vorl::app
