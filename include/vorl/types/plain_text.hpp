/// @file
/// Numbers and words in texts, read and written alike in every locale.
#pragma once

#include <vorl/types/export.hpp>

#include <locale.h>
#include <cstddef>
#include <string>

namespace vorl {

/// As std::printf makes it in the "C" locale.
VORL_API std::string format(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

namespace detail {

/// While it lives, this thread is in the "C" locale: its numbers, and what is told of the system's
/// errors.
class VORL_API PlainLocale {
public:
    PlainLocale();
    PlainLocale(const PlainLocale&) = delete;
    PlainLocale& operator=(const PlainLocale&) = delete;
    ~PlainLocale();

private:
    locale_t m_former;
};

/// Whether a text begins with a key, small and capital letters of ASCII being the same.
inline bool startsWithKey(const char* text, const char* key, std::size_t length) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    std::size_t i = 0;
    while (i < length && lower(text[i]) == lower(key[i])) ++i;
    return i == length;
}

}  // namespace detail

}  // namespace vorl
