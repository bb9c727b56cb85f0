/// @file
/// The characters of texts in UTF-8.
#pragma once

#include <vorl/types/export.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vorl {

/// Number of bytes of the character that a text begins with, 0 if it begins with none.
VORL_API std::size_t characterSize(std::string_view text);

/// Whether the bytes are characters in UTF-8.
VORL_API bool isUtf8(std::string_view text);

/// The text between quotes as JSON has it; what isn't UTF-8 becomes U+FFFD.
VORL_API std::string jsonQuoted(std::string_view text);

/// Appends a character by its number, which is below 0x110000.
VORL_API void appendCharacter(std::string& text, std::uint32_t code);

}  // namespace vorl
