/// @file
/// The trace stream of the library.
#pragma once

#include <vorl/types/export.hpp>

#include <cstdio>

namespace vorl {

/// Where the start message, the progress of the levels, warnings and the result line go.
///
/// It starts as the standard error stream. Null switches the trace off: nothing is printed or
/// formatted then. It is a plain global without a lock, to be set before any clustering starts.
VORL_API extern std::FILE* ftrace;

/// Points the trace at the standard output (true) or at the standard error stream (false).
VORL_API void traceBuffered(bool buffered);

/// Whether the trace goes anywhere but to the standard error stream.
VORL_API bool traceBuffered();

namespace detail {

/// Prints to `ftrace`, which there must be, whatever the locale.
VORL_API void trace(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

}  // namespace detail

/// Prints to `ftrace` if there is one.
#define VORL_TRACE(...) (::vorl::ftrace ? ::vorl::detail::trace(__VA_ARGS__) : void())

}  // namespace vorl
