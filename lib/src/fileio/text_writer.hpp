// Text of ids and shares for the writers.
#pragma once

#include <vorl/fileio/iotypes.hpp>
#include <vorl/types/numbers.hpp>
#include <vorl/types/plain_text.hpp>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <ios>
#include <string>

namespace vorl::detail {

inline void appendId(std::string& text, Id id) {
    char digits[16];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, id).ptr);
}

/// Six significant digits in the manner of "%G", whatever the locale.
inline void appendShare(std::string& text, Share share) {
    char digits[32];
    char* const last = std::to_chars(digits, digits + sizeof digits, static_cast<double>(share),
                                     std::chars_format::general, 6)
                           .ptr;
    for (char* c = digits; c != last; ++c)
        if (*c == 'e') *c = 'E';
    text.append(digits, last);
}

/// @throws std::ios_base::failure if something that was written is lost
inline void checkWritten(const FileWrapper& fout, const char* writer) {
    const PlainLocale plain;
    errno = 0;
    if (std::fflush(fout.fdescr()) != 0 || std::ferror(fout.fdescr()))
        throw std::ios_base::failure(std::string(writer) + ", writing failed",
                                     std::error_code(errno ? errno : EIO, std::generic_category()));
}

}  // namespace vorl::detail
