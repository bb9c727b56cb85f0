/// @file
/// What a file holds, where that can be told with certainty.
#pragma once

#include <vorl/reading/lines.hpp>
#include <vorl/types/export.hpp>

#include <string>

namespace vorl {

enum class FileKind {
    ANY,       ///< nothing tells
    NETWORK,   ///< links, in one of the formats that hold nothing else
    CLUSTERS,  ///< clusters, as `CnlPrinter` writes them
    HIERARCHY  ///< a hierarchy, as `RhbPrinter` writes it
};

/// What the name of the file tells, or else its first lines. They are held, so that `rewind` lets
/// them come again.
/// @param name empty where it isn't to tell anything
VORL_API FileKind fileKind(const std::string& name, Lines& lines);

/// In words, such as "clusters".
VORL_API const char* nameOf(FileKind kind);

}  // namespace vorl
