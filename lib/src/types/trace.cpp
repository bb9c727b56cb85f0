#include <vorl/types/trace.hpp>

#include <vorl/types/plain_text.hpp>

#include <cstdarg>

namespace vorl {

std::FILE* ftrace = stderr;

void traceBuffered(bool buffered) { ftrace = buffered ? stdout : stderr; }

bool traceBuffered() { return ftrace != stderr; }

void detail::trace(const char* pattern, ...) {
    const PlainLocale plain;
    va_list args;
    va_start(args, pattern);
    std::vfprintf(ftrace, pattern, args);
    va_end(args);
}

}  // namespace vorl
