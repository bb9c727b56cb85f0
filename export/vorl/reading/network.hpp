/// @file
/// Reading of a network, with every fault told by file and line.
#pragma once

#include <vorl/flat_network.hpp>
#include <vorl/graph.hpp>
#include <vorl/reading/input_error.hpp>
#include <vorl/reading/network_scan.hpp>
#include <vorl/reading/source.hpp>
#include <vorl/types/export.hpp>
#include <vorl/types/labels.hpp>

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vorl {

struct ReadOptions {
    std::string file;  ///< "-" for the standard input; a name for messages where a source is given
    NetworkFormat format = NetworkFormat::UNKNOWN;  ///< told by name or first lines where unknown
    bool unweighted = false;
    ZeroWeights zeros = ZeroWeights::ONE;
    bool sumDuplicates = false;
    bool shuffle = false;
    std::size_t memoryLimit = 0;  ///< bytes that may be needed in all; 0 for `vorl::memoryLimit`
    /// Nodes are created in an order drawn with it, in place of the random one of a shuffle.
    std::optional<std::uint64_t> seed = {};
    std::optional<bool> directed = {};  ///< for formats that don't tell
    std::string columns = {};           ///< as `ScanOptions`
    std::string weightName = {};        ///< as `ScanOptions`
    /// Takes the names of nodes that have no ids, beside those that it has; null for a table of the
    /// network's own, in which they are in order.
    std::shared_ptr<Labels> labels = {};
};

/// What a file holds of a network.
struct NetworkReport {
    bool directed = false;
    bool weighted = false;
    Size nodes = 0;
    /// Links of the file that aren't left out for their weight of 0.
    Size edges = 0;
    Size arcs = 0;
    /// Links that an earlier one stands for. In a network of edges and arcs they are counted as
    /// arcs, of which an edge has two.
    Size repeated = 0;
    Size zeroWeights = 0;               ///< links of weight 0 in the file
    bool statesWeights = false;         ///< whether links have weights of their own
    std::vector<std::string> warnings;  ///< what the user should know of the file
    NetworkFormat format = NetworkFormat::UNKNOWN;
    /// The names that ids of nodes stand for; null if all ids are those of the file.
    std::shared_ptr<Labels> labels = {};
};

/// A network ready to be clustered. Arcs are always held in the weighted form, in which they keep
/// their direction.
struct Network : NetworkReport {
    std::variant<std::shared_ptr<Graph<false>>, std::shared_ptr<Graph<true>>> graph;
};

/// A network whose directions are added up.
struct UndirectedNetwork : NetworkReport {
    FlatNetwork links;
};

/// How a network is scanned by the options.
VORL_API ScanOptions scanOptions(const ReadOptions& options);

/// Reads a file in one of `NetworkFormat`, also one that is compressed by gzip or zstd, in one
/// pass.
/// @throws UnknownFormat if nothing tells the format, InputError with the file and line of the
/// first fault, MemoryLimitError with the line from which on a clustering of the network would need
/// more memory than it may
VORL_API Network readNetwork(const ReadOptions& options);
/// The same of bytes from elsewhere.
VORL_API Network readNetwork(Source& source, const ReadOptions& options);

/// Reads likewise what `FlatNetwork` makes of the graph of the file, in less time and memory. The
/// options of the order of nodes have no effect.
VORL_API UndirectedNetwork readUndirected(const ReadOptions& options);
VORL_API UndirectedNetwork readUndirected(Source& source, const ReadOptions& options);

}  // namespace vorl
