#include "output_text.hpp"

#include "errors.hpp"
#include "progress_line.hpp"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <string_view>

namespace vorl::app {

std::string jsonNumber(double value, int digits) {
    return std::isfinite(value) ? number(value, digits) : std::string("null");
}

namespace {

/// Number of bytes of the UTF-8 character that the text begins with, 0 if it is none.
std::size_t characterSize(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    const std::size_t size = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                                           : 4;
    if (size == 0 || lead > 0xF4 || size > text.size()) return 0;
    for (std::size_t i = 1; i < size; ++i)
        if ((byte(i) & 0xC0) != 0x80) return 0;
    // Longer than need be, half of a pair, or beyond the last character.
    if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) ||
        (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F))
        return 0;
    return size;
}

}  // namespace

std::string jsonQuoted(const std::string& text) {
    std::string result = "\"";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const std::size_t size = characterSize(std::string_view(text).substr(i));
        if (size != 1) {
            result += size == 0 ? "\\ufffd" : text.substr(i, size);
            i += size == 0 ? 0 : size - 1;
            continue;
        }
        if (c == '"' || c == '\\')
            result += std::string("\\") + c;
        else if (static_cast<unsigned char>(c) < 0x20)
            result += format("\\u%04x", static_cast<unsigned>(c));
        else
            result += c;
    }
    return result + '"';
}

std::string printable(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = [&](std::size_t place) {
            return place < text.size() ? static_cast<unsigned char>(text[place]) : 0u;
        };
        // Of UTF-8, the controls above ASCII as well.
        const bool wide = byte(i) == 0xC2 && byte(i + 1) >= 0x80 && byte(i + 1) < 0xA0;
        const bool control =
            byte(i) == 0x7F || (byte(i) < 0x20 && byte(i) != '\n' && byte(i) != '\t');
        result += wide || control ? '?' : text[i];
        i += wide;
    }
    return result;
}

void print(const std::string& text) {
    ProgressLine::end();
    const std::string shown = printable(text);
    errno = 0;
    const bool whole = std::fwrite(shown.data(), 1, shown.size(), stdout) == shown.size();
    if (whole && std::fflush(stdout) == 0) return;
    if (errno == EPIPE) throw ClosedPipe("standard output: " + std::string(std::strerror(EPIPE)));
    throw InputError("standard output: writing failed");
}

void printAfter(const std::vector<std::string>& files, const std::string& text) {
    try {
        print(text);
    } catch (const ClosedPipe&) {
        throw;
    } catch (const InputError& err) {
        if (files.empty()) throw;
        throw InputError(std::string(err.what()) + "; " + files.front() +
                         (files.size() > 1
                              ? " and " + counted(files.size() - 1, "other file") + " are written"
                              : " is written"));
    }
}

void tell(const std::string& message) {
    ProgressLine::end();
    std::fprintf(stderr, "vorl: %s\n", printable(message).c_str());
}

}  // namespace vorl::app
