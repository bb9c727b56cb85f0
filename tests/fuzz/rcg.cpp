// The reader of the format RCG on any text behind a byte of options. A network that it accepts is
// clustered.
#include "../support/accepted_network.hpp"

#include <vorl/fileio/parser_rcg.hpp>
#include <vorl/types/trace.hpp>

#include <strings.h>
#include <cstddef>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

using namespace vorl;

/// Whether the text announces nodes that the reader would create in a number that it mustn't be
/// given, 0, or that would take long.
bool announcesBadly(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t start = line.find_first_not_of(" \t");
        if (start == std::string::npos) continue;
        const char* const pos = line.c_str() + start;
        if (strncasecmp(pos, "/nodes", 6) != 0) continue;
        char* end;
        const unsigned long long number = std::strtoull(pos + 6, &end, 10);
        if (number == 0 || number > 4096) return true;
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ftrace = nullptr;
    if (size == 0) return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (!announcesBadly(text)) test::requireReading<RcgParser>(data[0], text, FileFormat::RCG);
    return 0;
}
