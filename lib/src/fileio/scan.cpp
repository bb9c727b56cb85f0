#include "scan.hpp"

#include <cstdio>
#include <filesystem>
#include <limits>

namespace vorl::detail {

Size estimateTokens(Size size) {
    Size rest = size % 10;
    Size tokens = rest / 2;
    if (size <= 9) return tokens;
    Size power = 10;
    Size width = 2;
    do {
        ++width;
        power *= 10;
        tokens += (size - rest) % power / width;
        rest = size % power;
    } while (size >= power && power <= std::numeric_limits<Size>::max() / 10);
    return tokens;
}

void openText(std::ifstream& file, const std::string& filename, const char* parser) {
    file.clear();
    file.open(filename);
    if (file.is_open()) return;
    const int err = errno;
    std::perror((std::string(parser) + "(), error opening the file " + filename).c_str());
    throw std::ios_base::failure(std::string(std::strerror(err)) + "\n");
}

Size textSize(const std::string& filename) {
    std::error_code err;
    const std::uintmax_t size = std::filesystem::file_size(filename, err);
    if (!err) return size;
    VORL_TRACE("WARNING filesize(), file size evaluation failed: %s\n", err.message().c_str());
    return ~Size{0};
}

}  // namespace vorl::detail
