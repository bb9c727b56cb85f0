#include <vorl/types/characters.hpp>

namespace vorl {

std::size_t characterSize(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if (text.empty()) return 0;
    const unsigned lead = byte(0);
    const std::size_t size = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                                           : 4;
    if (size == 0 || lead > 0xF4 || size > text.size()) return 0;
    for (std::size_t i = 1; i < size; ++i)
        if ((byte(i) & 0xC0) != 0x80) return 0;
    // Longer than need be, half of a pair, or beyond the last character.
    if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) ||
        (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F))
        return 0;
    return size;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t size = characterSize(text);
        if (size == 0) return false;
        text.remove_prefix(size);
    }
    return true;
}

std::string jsonQuoted(std::string_view text) {
    constexpr char HEX[] = "0123456789abcdef";
    std::string result = "\"";
    while (!text.empty()) {
        const std::size_t size = characterSize(text);
        const char c = text.front();
        if (size == 0) {
            result += "\\ufffd";
        } else if (static_cast<unsigned char>(c) < 0x20) {
            ((result += "\\u00") += HEX[c >> 4]) += HEX[c & 15];
        } else {
            if (c == '"' || c == '\\') result += '\\';
            result += text.substr(0, size);
        }
        text.remove_prefix(size == 0 ? 1 : size);
    }
    return result + '"';
}

void appendCharacter(std::string& text, std::uint32_t code) {
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

}  // namespace vorl
