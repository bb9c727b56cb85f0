// Characters that stand in a text by their numbers or names.
#pragma once

#include <string>
#include <string_view>

namespace vorl::detail {

/// The text with the characters that `&#228;` and its like stand for. What stands for none stays.
/// @param named whether `&amp;`, `&quot;`, `&lt;`, `&gt;` and `&apos;` are such, too
std::string withoutReferences(std::string_view text, bool named);

}  // namespace vorl::detail
