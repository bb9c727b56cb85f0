#include "output_text.hpp"

#include "errors.hpp"
#include "progress_line.hpp"

#include <cerrno>
#include <cmath>
#include <cstring>

namespace vorl::app {

std::string jsonNumber(double value, int digits) {
    return std::isfinite(value) ? number(value, digits) : std::string("null");
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
