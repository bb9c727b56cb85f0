/// @file
/// The walk over a network as its file tells it, with the check of each line.
#pragma once

#include <vorl/reading/network_format.hpp>
#include <vorl/reading/node_names.hpp>
#include <vorl/reading/source.hpp>
#include <vorl/types/export.hpp>
#include <vorl/types/numbers.hpp>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vorl {

/// A link as it comes.
struct RawLink {
    Id src;
    Id dst;
    LinkWeight weight;
    bool arc;
};

/// What a file tells of its network beside the links.
struct NetworkFacts {
    NetworkFormat format = NetworkFormat::UNKNOWN;
    std::string dialect;         ///< of the format, in words; empty if it has none
    std::size_t bytes = 0;       ///< of the text
    bool weighted = true;        ///< whether links may have weights
    bool statesWeights = false;  ///< whether a link has one
    Size edges = 0;
    Size arcs = 0;
    Size selfEdges = 0;               ///< edges of a node to itself
    Size zeroWeights = 0;             ///< links of weight 0, whatever is made of them
    std::size_t firstZeroWeight = 0;  ///< line of the first one
    AccWeight weight = 0;             ///< sum of the links' weights
    std::size_t headerLine = 0;       ///< line that tells of the nodes, 0 if none does
    std::optional<Size> nodes;        ///< number of nodes that it tells
    std::optional<Id> firstId;        ///< the nodes are numbered through from it
    Size linkless = 0;                ///< lines that name a node without any link
    bool toldDirected = false;        ///< the links are arcs even if there are none
    bool otherKind = false;           ///< links are arcs or edges against the format's name
    Size wideLines = 0;               ///< lines with something behind the weight
    std::size_t firstWideLine = 0;
    std::string doubt;  ///< what may have been meant otherwise, in words; empty if nothing may

    Size links() const { return edges + arcs; }
    bool directed() const { return toldDirected || arcs != 0; }
};

/// What is made of a link whose weight is given as 0.
enum class ZeroWeights : bool {
    ONE,  ///< it weighs 1, by the rule of the formats
    DROP  ///< it is left out, and with it a node that has no other link and isn't announced
};

/// What a network may be.
struct VORL_API NetworkBounds {
    Size links = ~Size{0};
    Size nodes = ~Size{0};   ///< that the file announces
    std::size_t memory = 0;  ///< bytes in which they are held, for the message

    /// Those of a network that is clustered.
    static NetworkBounds ofMemory(std::size_t memory);
};

/// How a network is read.
struct ScanOptions {
    NetworkFormat format = NetworkFormat::UNKNOWN;  ///< told by the first lines where unknown
    bool weights = true;  ///< links may have some, if the file allows for them
    ZeroWeights zeros = ZeroWeights::ONE;
    NetworkBounds bounds = {};
    std::optional<bool> directed = {};  ///< for formats that don't tell
    /// Two or three columns of a list, by name or number, with commas: source, destination, weight.
    std::string columns = {};
    std::string weightName = {};           ///< what a file calls the weight
    bool mayLackLinks = false;             ///< nodes alone are a network, too
    std::optional<std::size_t> size = {};  ///< of the source, if it is known
};

/// Is given each link that isn't left out, between nodes by number.
using LinkVisitor = std::function<void(const RawLink&)>;

/// Reads a network, and hands its links on as they come.
/// @param name of the file, for messages
/// @param[out] nodes takes the nodes as they come; to be handed over empty
/// @throws InputError with the file and line of the first fault, MemoryLimitError beyond a bound
VORL_API NetworkFacts scanNetwork(Source& source, const std::string& name,
                                  const ScanOptions& options, NodeNames& nodes,
                                  const LinkVisitor& visit = {});

}  // namespace vorl
