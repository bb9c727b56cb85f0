/// @file
/// The check of parsed numbers.
#pragma once

#include <vorl/types/export.hpp>

namespace vorl {

/// Accepts a parsed value that fits DestT.
/// @param value the parsed value
/// @param text where it was parsed; null leaves the text and the value out of the message
/// @param bad whether parsing failed
/// @param message what is wrong, may be null
/// @throws std::invalid_argument "Invalid format of val or out of range conversion of '…"
template <class DestT, class SrcT>
VORL_API void validateVal(SrcT value, const char* text, bool bad, const char* message);

}  // namespace vorl
