// Pieces of what the program prints, for a person or as JSON.
#pragma once

#include <vorl/reading/wording.hpp>

#include <cstdio>
#include <string>

namespace vorl::app {

/// As `snprintf`, for results of less than 256 bytes.
template <class... ArgsT>
std::string format(const char* pattern, ArgsT... args) {
    char text[256];
    std::snprintf(text, sizeof text, pattern, args...);
    return text;
}

/// In place of a conductance, where there is none.
inline constexpr const char* NO_CONDUCTANCE = "none (it takes weight on both sides of a cut)";

/// A number for JSON, of 9 significant digits, null for infinities and NaN.
std::string jsonNumber(double value, int digits = 9);
/// The text as a JSON string; bytes that are no UTF-8, as names of files may have, are replaced.
std::string jsonQuoted(const std::string& text);

/// Writes to the standard output.
/// @throws InputError if that fails
void print(const std::string& text);

}  // namespace vorl::app
