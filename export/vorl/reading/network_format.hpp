/// @file
/// The formats of networks, and how they are told.
#pragma once

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/lines.hpp>
#include <vorl/types/export.hpp>

#include <span>
#include <string>
#include <utility>

namespace vorl {

enum class NetworkFormat : std::uint8_t {
    UNKNOWN,
    NSE,            ///< a link a line, edges
    NSA,            ///< a link a line, arcs
    RCG,            ///< sections of nodes, edges and arcs
    LIST,           ///< a link a line in any of many dialects, between nodes with any names
    MATRIX_MARKET,  ///< entries of a sparse matrix
    METIS,          ///< the neighbours of each node
    PAJEK,          ///< sections of vertices, edges and arcs
    GML,            ///< keys and values between brackets
    GRAPHML,        ///< nodes and edges in XML
    JSON            ///< lists of nodes and links
};

/// Neither the options nor a file's name, nor its first lines, tell the format.
class VORL_API UnknownFormat : public InputError {
public:
    using InputError::InputError;
};

/// The words that stand for the formats, in the order of their values from the first known one on.
VORL_API std::span<const std::pair<const char*, NetworkFormat>> networkFormats();
VORL_API const char* nameOf(NetworkFormat format);

/// The format by the extension of a name, in any case; ".gz" and ".zst" at its end don't count.
/// UNKNOWN if it doesn't tell.
VORL_API NetworkFormat formatByName(const std::string& name);
/// The format that the first lines look like, which come again. UNKNOWN if they don't tell.
VORL_API NetworkFormat formatByLines(Lines& lines);

}  // namespace vorl
