#include "references.hpp"

#include <vorl/types/characters.hpp>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <utility>

namespace vorl::detail {

namespace {

/// Appends the character of a reference that the text begins with.
/// @return bytes of the reference, 0 if there is none
std::size_t appendReferred(std::string& result, std::string_view text, bool named) {
    constexpr std::pair<std::string_view, char> NAMED[] = {
        {"&quot;", '"'}, {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&apos;", '\''}};
    if (!text.starts_with("&#")) {
        for (const auto& [name, character] : NAMED)
            if (named && text.starts_with(name)) {
                result += character;
                return name.size();
            }
        return 0;
    }
    const char* const end = text.data() + text.size();
    std::uint32_t code = 0;
    const auto [last, err] = std::from_chars(text.data() + 2, end, code);
    if (err != std::errc() || last == end || *last != ';' || (code < 0x20 && code != '\t') ||
        code >= 0x110000 || (code >= 0xD800 && code <= 0xDFFF))
        return 0;
    appendCharacter(result, code);
    return static_cast<std::size_t>(last + 1 - text.data());
}

}  // namespace

std::string withoutReferences(std::string_view text, bool named) {
    std::string result;
    while (!text.empty()) {
        const std::size_t begin = std::min(text.find('&'), text.size());
        result += text.substr(0, begin);
        text.remove_prefix(begin);
        if (text.empty()) break;
        std::size_t used = appendReferred(result, text, named);
        if (used == 0) result += text[used++];
        text.remove_prefix(used);
    }
    return result;
}

}  // namespace vorl::detail
