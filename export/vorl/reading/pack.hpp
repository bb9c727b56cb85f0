/// @file
/// Compressed output.
#pragma once

#include <vorl/types/export.hpp>

#include <string>

namespace vorl {

/// Whether the name of a file asks for compression: .gz for gzip, .zst for zstd.
VORL_API bool asksForPacking(const std::string& file);

/// The name without what asks for compression.
VORL_API std::string plainName(const std::string& file);

/// The text as a file of that name holds it, the same bytes for the same text.
/// @throws InputError if the system hasn't got the library of the compression
VORL_API std::string packed(std::string text, const std::string& file);

}  // namespace vorl
