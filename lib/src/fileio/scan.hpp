// What the readers of the text formats have in common.
#pragma once

#include <vorl/fileio/parse_number.hpp>
#include <vorl/types/numbers.hpp>
#include <vorl/types/plain_text.hpp>
#include <vorl/types/progress.hpp>
#include <vorl/types/trace.hpp>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorl::detail {

/// What a parser traces before the links that it skips.
inline constexpr const char* REPEATS_MESSAGE =
    "WARNING build(), the duplicated links are skipped: ";

inline bool isBlank(char c) { return c == ' ' || c == '\t'; }
inline bool isBlankOrEnd(char c) { return isBlank(c) || c == '\0'; }

inline const char* skipBlanks(const char* pos) {
    while (isBlank(*pos)) ++pos;
    return pos;
}

/// Behind the key if it stands at the position and ends there, else null.
inline const char* matchKey(const char* pos, const char* key) {
    const std::size_t length = std::strlen(key);
    return startsWithKey(pos, key, length) && isBlankOrEnd(pos[length]) ? pos + length : nullptr;
}

/// What the system tells of an error.
inline std::string systemText(int err) {
    const PlainLocale plain;
    return std::strerror(err);
}

/// A whole number at the position.
struct Number {
    unsigned long long value;
    const char* end;  ///< behind the last digit
    int err;          ///< of the system's conversion, 0 where it succeeded
    bool found;       ///< whether there are digits
};

inline Number scanNumber(const char* pos) {
    // Plain digits that can't overflow go without a call.
    unsigned long long value = 0;
    const char* digit = pos;
    while (*digit >= '0' && *digit <= '9' && digit - pos < 10)
        value = 10 * value + static_cast<unsigned long long>(*digit++ - '0');
    if (digit != pos && !(*digit >= '0' && *digit <= '9')) return {value, digit, 0, true};
    const PlainLocale plain;
    char* end;
    errno = 0;
    value = std::strtoull(pos, &end, 10);
    return {value, end, errno, end != pos};
}

/// A decimal float at the position.
struct Decimal {
    float value;
    const char* end;
    int err;     ///< of the system's conversion, 0 where it succeeded
    bool found;  ///< whether there is a number
};

/// @param last the end of the text
inline Decimal scanFloat(const char* pos, const char* last) {
    float value = 0;
    if (*pos >= '0' && *pos <= '9') {
        const auto [end, err] = std::from_chars(pos, last, value);
        if (err == std::errc() && isBlankOrEnd(*end) && std::isnormal(value))
            return {value, end, 0, true};
    }
    const PlainLocale plain;
    char* end;
    errno = 0;
    value = std::strtof(pos, &end);
    return {value, end, errno, end != pos};
}

/// The value of a key in a header.
/// @param[in,out] pos moves behind the value
/// @throws std::invalid_argument if it is malformed or doesn't fit
template <class DestT>
DestT headerValue(const char*& pos, bool commas) {
    const PlainLocale plain;
    char* end;
    errno = 0;
    const unsigned long long value = std::strtoull(pos, &end, 10);
    const bool bad = errno != 0 || !(isBlankOrEnd(*end) || (commas && *end == ','));
    validateVal<DestT>(value, pos, bad,
                       errno != 0 ? std::strerror(errno) : "Terminating symbol is invalid");
    pos = end;
    return static_cast<DestT>(value);
}

/// The value of a key in a header of a comment line. A bad one is traced and left out.
/// @param[in,out] pos moves behind the value and its comma, or stays at a bad value
/// @param what the name of the value in the warning
/// @return whether the value is good
template <class DestT>
bool takeHeaderValue(const char*& pos, DestT& value, const char* what) {
    try {
        value = headerValue<DestT>(pos, true);
    } catch (const std::invalid_argument& err) {
        VORL_TRACE("WARNING header(), the %s is invalid, omitted: %s", what, err.what());
        return false;
    }
    pos = skipBlanks(*pos == ',' ? pos + 1 : pos);
    return true;
}

/// Reads the comments ahead of the body, up to the first that is the header.
/// @param[out] line the first one of the body, or a comment or blank one; empty at the end
/// @param isHeader takes the header if a comment, given behind its sign, is one
template <class IsHeaderT>
void readComments(std::ifstream& file, std::string& line, IsHeaderT isHeader) {
    while (std::getline(file, line)) {
        const char* pos = skipBlanks(line.c_str());
        if (*pos == '\0') continue;
        if (*pos != '#') return;
        if (!isHeader(skipBlanks(pos + 1))) continue;
        if (!std::getline(file, line)) line.clear();
        return;
    }
    line.clear();
}

/// The lines of the rest of a file, read in large blocks, which is reported as progress.
class LineReader {
public:
    /// @param size of the file in bytes, all bits set while unknown
    LineReader(std::istream& file, Size size) : m_file(file), m_buffer(BLOCK + 1) {
        m_report.begin("reading", size == ~Size{0} ? 0 : size);
    }

    /// Goes to the next line.
    /// @return false at the end of the file
    bool next();

    /// The line, with a NUL behind it.
    const char* begin() const { return m_buffer.data() + m_begin; }
    const char* end() const { return m_buffer.data() + m_end; }

private:
    static constexpr std::size_t BLOCK = std::size_t{1} << 18;

    bool read();

    std::istream& m_file;
    std::vector<char> m_buffer;  // with room for a NUL
    std::size_t m_begin = 0;     // of the line
    std::size_t m_end = 0;
    std::size_t m_next = 0;  // behind the line and its end
    std::size_t m_filled = 0;
    ProgressReporter m_report;
};

/// The number of tokens that a text of this size may hold, if its ids are numbered through.
Size estimateTokens(Size size);

/// Opens a file for a parser of the given name. Faults of reading are thrown from then on.
/// @throws std::ios_base::failure if it can't be opened, which is also reported through perror
void openText(std::ifstream& file, const std::string& filename, const char* parser);

/// Size of a file in bytes; all bits set, and a warning on the trace, where it can't be told.
Size textSize(const std::string& filename);

}  // namespace vorl::detail
