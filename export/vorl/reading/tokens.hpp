/// @file
/// The words of a line of input.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/numbers.hpp>

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

namespace vorl {

/// May stand at the begin of a text.
inline constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

/// A piece of the input in a message: short, and without control characters.
VORL_API std::string quoted(std::string_view text);

/// The text with small letters for those of the English alphabet.
VORL_API std::string lowered(std::string_view text);

inline bool isBlank(char c) { return c == ' ' || c == '\t'; }

/// The text without the blanks and tabs at its front.
inline std::string_view trimFront(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    return text;
}

/// Cuts the first word off the text; empty at its end.
inline std::string_view nextToken(std::string_view& text) {
    text = trimFront(text);
    // The standard library's search for one of several signs is far slower.
    std::size_t end = 0;
    while (end < text.size() && !isBlank(text[end])) ++end;
    const std::string_view token = text.substr(0, end);
    text.remove_prefix(end);
    return token;
}

/// Cuts a key of a header off the text, with the blanks behind it, if it stands there in any case
/// and a blank or the end follows.
VORL_API bool takeKey(std::string_view& text, std::string_view key);
/// Cuts the value behind a key off the text, with one comma and the blanks behind it.
VORL_API std::string_view takeValue(std::string_view& text);

/// The id that a word is.
/// @param what the name of the id in messages
/// @param fault makes the error of what is wrong, what was found and what is expected
template <class FaultT>
Id toId(std::string_view token, const char* what, FaultT fault) {
    Size id = 0;
    const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), id);
    if (err == std::errc::invalid_argument || last != token.data() + token.size())
        throw fault(std::string("the ") + what, quoted(token),
                    "an id of decimal digits is expected");
    if (err != std::errc() || id >= ID_NONE)
        throw fault(std::string("the ") + what, quoted(token),
                    "an id below 4294967295 is expected");
    return static_cast<Id>(id);
}

}  // namespace vorl
