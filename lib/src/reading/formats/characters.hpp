// Characters by their numbers.
#pragma once

#include <cstdint>
#include <string>

namespace vorl::detail {

/// Appends a character by its number, as UTF-8.
inline void appendCharacter(std::string& text, std::uint32_t code) {
    const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (code < 0x80) return put(code);
    if (code < 0x800) {
        put(0xC0 | code >> 6);
    } else {
        if (code < 0x10000) {
            put(0xE0 | code >> 12);
        } else {
            put(0xF0 | code >> 18);
            put(0x80 | (code >> 12 & 0x3F));
        }
        put(0x80 | (code >> 6 & 0x3F));
    }
    put(0x80 | (code & 0x3F));
}

}  // namespace vorl::detail
