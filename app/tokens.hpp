// The words of a line of input.
#pragma once

#include <string>
#include <string_view>

namespace vorl::app {

/// A piece of the input in a message: short, and without control characters.
std::string quoted(std::string_view text);
/// The text without the blanks and tabs at its front.
std::string_view trimFront(std::string_view text);
/// Cuts the first word off the text; empty at its end.
std::string_view nextToken(std::string_view& text);

/// Cuts a key of a header off the text, with the blanks behind it, if it stands there in any case
/// and a blank or the end follows.
bool takeKey(std::string_view& text, std::string_view key);
/// Cuts the value behind a key off the text, with one comma and the blanks behind it.
std::string_view takeValue(std::string_view& text);

}  // namespace vorl::app
