/// @file
/// Compressed input.
#pragma once

#include <vorl/reading/source.hpp>
#include <vorl/types/export.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace vorl {

enum class Packing { NONE, GZIP, ZSTD };

/// The number of bytes that tell how an input is compressed.
inline constexpr std::size_t PACKING_HEAD = 4;

/// How an input is compressed, told by its first bytes.
VORL_API Packing packingOf(std::string_view head);

/// Unpacks while it is read; what follows the packed data must be packed in the same way.
/// @param file name for messages
/// @param most bytes that the window of a zstd frame may have
/// @throws InputError as does each reading, if the data is damaged, ends early, or asks for a
///     larger window
VORL_API std::unique_ptr<Source> unpacked(std::unique_ptr<Source> packed, Packing packing,
                                          const std::string& file, std::size_t most);

}  // namespace vorl
