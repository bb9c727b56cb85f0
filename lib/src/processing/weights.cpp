#include <vorl/processing/weights.hpp>

#include <vorl/types/plain_text.hpp>

#include <cstdio>
#include <stdexcept>

namespace vorl::detail {

void throwOverflow(const char* fallback, std::size_t limit, const char* format, ...) {
    const PlainLocale plain;
    char text[160];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(text, std::min(limit + 1, sizeof text), format, args);
    va_end(args);
    throw std::overflow_error(length < 0 ? fallback : text);
}

}  // namespace vorl::detail
