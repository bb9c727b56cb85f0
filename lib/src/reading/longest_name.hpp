// Names of nodes have bounds, so that a file of other things is seen as such before it fills the
// memory.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace vorl::detail {

/// Bytes that the name of a node may have.
inline constexpr std::size_t LONGEST_NAME = std::size_t{1} << 20;

/// Appends to a text that may be a name or a number, no more than tells that it is too long.
inline void appendBounded(std::string& text, std::string_view more) {
    text += more.substr(0, LONGEST_NAME + 1 - std::min(text.size(), LONGEST_NAME + 1));
}

}  // namespace vorl::detail
