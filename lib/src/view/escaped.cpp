#include "scene.hpp"

namespace vorl::view {

namespace {

constexpr const char* REPLACEMENT = "\xEF\xBF\xBD";

/// Length of the character in UTF-8 at the beginning; 0 if there is none, or one that XML forbids.
std::size_t characterLength(std::string_view text) {
    const auto at = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
    };
    const unsigned first = at(0);
    if (first < 0x80)
        return first >= 0x20 ? 1u : first == '\t' || first == '\n' || first == '\r' ? 1u : 0u;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
    if (length == 0 || first > 0xF4) return 0;
    unsigned code = first & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0) != 0x80) return 0;
        code = code << 6 | (at(i) & 0x3F);
    }
    const unsigned least = length == 4 ? 0x10000 : length == 3 ? 0x800 : 0x80;
    const bool forbidden = code < least || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000) ||
                           code == 0xFFFE || code == 0xFFFF;
    return forbidden ? 0 : length;
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const char c = text.front();
        if (length == 0)
            result += REPLACEMENT;
        else if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '"')
            result += "&quot;";
        else
            result += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

}  // namespace vorl::view
