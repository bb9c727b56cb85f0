#include <vorl/types/plain_text.hpp>

#include <cstdarg>
#include <cstdio>

namespace vorl {

namespace detail {

PlainLocale::PlainLocale() {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    m_former = uselocale(plain);
}

PlainLocale::~PlainLocale() { uselocale(m_former); }

}  // namespace detail

std::string format(const char* pattern, ...) {
    const detail::PlainLocale plain;
    char text[256];
    va_list args;
    va_start(args, pattern);
    const int length = std::vsnprintf(text, sizeof text, pattern, args);
    va_end(args);
    if (length < 0) return {};
    if (static_cast<std::size_t>(length) < sizeof text) return text;
    std::string whole(static_cast<std::size_t>(length), '\0');
    va_start(args, pattern);
    std::vsnprintf(whole.data(), whole.size() + 1, pattern, args);
    va_end(args);
    return whole;
}

}  // namespace vorl
