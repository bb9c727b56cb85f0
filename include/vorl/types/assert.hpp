/// @file
/// The assertion of the engine's invariants, active in every build.
#pragma once

#include <vorl/types/export.hpp>

namespace vorl {

/// Prints the text, file and line to the standard error stream and stops the process.
[[noreturn]] VORL_API void assertionFailed(const char* condition, const char* text,
                                           const char* file, int line) noexcept;

}  // namespace vorl

#define VORL_ASSERT(condition, text) \
    ((condition) ? void() : ::vorl::assertionFailed(#condition, text, __FILE__, __LINE__))
