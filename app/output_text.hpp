// Pieces of what the program prints, for a person or as JSON.
#pragma once

#include <vorl/reading/wording.hpp>
#include <vorl/types/characters.hpp>
#include <vorl/types/plain_text.hpp>

#include <string>
#include <vector>

namespace vorl::app {

/// In place of a conductance, where there is none.
inline constexpr const char* NO_CONDUCTANCE = "none (it takes weight on both sides of a cut)";

/// A number for JSON, of 9 significant digits, null for infinities and NaN.
std::string jsonNumber(double value, int digits = 9);

/// The text with a question mark for each control character, as names of files may have, but for
/// ends of lines and tabs.
std::string printable(const std::string& text);

/// Writes to the standard output.
/// @throws InputError if that fails, ClosedPipe where nobody reads it any more
void print(const std::string& text);
/// Prints what a run tells in the end; a failure tells that the files are written all the same.
void printAfter(const std::vector<std::string>& files, const std::string& text);
/// Writes a line, behind the name of the program, to the standard error stream.
void tell(const std::string& message);

}  // namespace vorl::app
