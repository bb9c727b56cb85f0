/// @file
/// Compressed input.
#pragma once

#include <vorl/types/export.hpp>

#include <string>
#include <string_view>

namespace vorl {

enum class Packing { NONE, GZIP, ZSTD };

/// How a text is compressed, told by its first bytes.
VORL_API Packing packingOf(std::string_view data);

/// The unpacked text; what follows the packed data must be packed in the same way.
/// @param file name for messages
/// @param most bytes that it may unpack to
/// @throws InputError if the data is damaged, ends early, or unpacks to more
VORL_API std::string unpack(std::string_view data, Packing packing, const std::string& file,
                            std::size_t most);

}  // namespace vorl
