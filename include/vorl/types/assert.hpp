/// @file
/// The assertion of the engine's invariants, active in every build.
#pragma once

#include <vorl/types/export.hpp>

namespace vorl {

/// Gets the text, file and line of an assertion that failed, and may end the process in its own
/// way.
using AssertionHandler = void (*)(const char* text, const char* file, int line) noexcept;

/// Sets what a failed assertion calls before it stops the process; null for nothing, as at first.
VORL_API void setAssertionHandler(AssertionHandler handler) noexcept;

/// Calls the handler if there is one; else, or if that returns, prints the text, file and line to
/// the standard error stream and stops the process.
[[noreturn]] VORL_API void assertionFailed(const char* condition, const char* text,
                                           const char* file, int line) noexcept;

}  // namespace vorl

// The name of the file without the folders of the machine that built it.
#ifdef __FILE_NAME__
#define VORL_FILE __FILE_NAME__
#else
#define VORL_FILE __FILE__
#endif
#define VORL_ASSERT(condition, text) \
    ((condition) ? void() : ::vorl::assertionFailed(#condition, text, VORL_FILE, __LINE__))
