/// @file
/// The text of a network: its check, line by line, and its writing.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/flags.hpp>
#include <vorl/types/numbers.hpp>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vorl {

/// A link as a line tells it.
struct RawLink {
    Id src;
    Id dst;
    LinkWeight weight;
    bool arc;
};

/// What a text tells of its network beside the links.
struct NetworkFacts {
    bool plain = true;           ///< no byte order mark and no carriage returns
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
    Size linkless = 0;                ///< nodes that are named without any link
    bool toldDirected = false;        ///< the links are arcs even if there are none
    Size wideLines = 0;               ///< lines with something behind the weight
    std::size_t firstWideLine = 0;

    Size links() const { return edges + arcs; }
    bool directed() const { return toldDirected || arcs != 0; }
};

/// What is made of a link whose weight is given as 0.
enum class ZeroWeights : bool {
    ONE,  ///< it weighs 1, by the rule of the formats
    DROP  ///< it is left out, and with it a node that has no other link and isn't announced
};

using LinkVisitor = std::function<void(const RawLink&)>;

/// What a network may be.
struct VORL_API NetworkBounds {
    Size links = ~Size{0};
    Size nodes = ~Size{0};   ///< that the file announces
    std::size_t memory = 0;  ///< bytes in which they are held, for the message

    /// Those of a network that is clustered, beside two copies of its text.
    static NetworkBounds ofMemory(std::size_t memory, std::size_t text);
};

/// Checks the text of a network. What passes is taken by the library's parsers.
/// @param name of the file, for messages
/// @param format RCG, NSE or NSA
/// @param readWeights whether links may have weights, if the text allows for them
/// @param visit is given each link that isn't left out
/// @throws InputError with the file and line of the first fault, MemoryLimitError beyond a bound
VORL_API NetworkFacts scanNetwork(std::string_view text, const std::string& name, FileFormat format,
                                  bool readWeights, const LinkVisitor& visit = {},
                                  ZeroWeights zeros = ZeroWeights::ONE,
                                  const NetworkBounds& bounds = {});

/// Builds the text of a network, link by link.
///
/// Links of one source that follow each other share a line where the format allows for it, so that
/// the nodes appear in the same order in every format.
class VORL_API NetworkWriter {
public:
    /// @param format RCG, NSE or NSA
    /// @param facts of the network to be written
    NetworkWriter(FileFormat format, const NetworkFacts& facts);

    void add(const RawLink& ln);
    /// Ends the text and gives it away.
    std::string take();

private:
    void startSection(bool arcs);

    FileFormat m_format;
    bool m_weighted;
    std::string m_text;
    std::optional<bool> m_arcs;  ///< the open section is one of arcs
    std::optional<Id> m_src;     ///< source of the open line
};

/// The text without byte order mark and carriage returns at line ends.
VORL_API std::string normalised(std::string_view text);

}  // namespace vorl
