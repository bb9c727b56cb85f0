// Compressed input.
#pragma once

#include <string>
#include <string_view>

namespace vorl::app {

enum class Packing { NONE, GZIP, ZSTD };

/// How a text is compressed, told by its first bytes.
Packing packingOf(std::string_view data);

/// The unpacked text; what follows the packed data must be packed in the same way.
/// @param file name for messages
/// @throws InputError if the data is damaged or ends early
std::string unpack(std::string_view data, Packing packing, const std::string& file);

}  // namespace vorl::app
