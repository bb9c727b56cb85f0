#include "scan.hpp"

#include <cstdio>
#include <filesystem>
#include <limits>
#include <utility>

namespace vorl::detail {

bool LineReader::next() {
    m_begin = m_next;
    for (std::size_t sought = m_begin;;) {
        const void* const found = std::memchr(m_buffer.data() + sought, '\n', m_filled - sought);
        if (found) {
            m_end = static_cast<std::size_t>(static_cast<const char*>(found) - m_buffer.data());
            m_next = m_end + 1;
            break;
        }
        sought = m_filled - m_begin;
        if (read()) continue;
        if (m_begin == m_filled) {
            m_next = m_filled;
            return false;
        }
        m_end = m_next = m_filled;
        break;
    }
    m_buffer[m_end] = '\0';
    return true;
}

/// Reads on behind what there is of the line, which moves to the front.
/// @return false at the end of the file
bool LineReader::read() {
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_filled - m_begin);
    m_filled -= std::exchange(m_begin, 0);
    if (m_buffer.size() - 1 - m_filled < BLOCK / 2) m_buffer.resize(2 * m_buffer.size());
    m_file.read(m_buffer.data() + m_filled,
                static_cast<std::streamsize>(m_buffer.size() - 1 - m_filled));
    const auto count = static_cast<std::size_t>(m_file.gcount());
    m_report.advance(count);
    m_filled += count;
    return count != 0;
}

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
    if (file.is_open()) {
        // What fails later is no end of the file.
        file.exceptions(std::ios_base::badbit);
        return;
    }
    const int err = errno;
    const PlainLocale plain;
    std::perror((std::string(parser) + "(), error opening the file " + filename).c_str());
    throw std::ios_base::failure(std::string(std::strerror(err)) + "\n");
}

Size textSize(const std::string& filename) {
    const PlainLocale plain;
    std::error_code err;
    const std::uintmax_t size = std::filesystem::file_size(filename, err);
    if (!err) return size;
    VORL_TRACE("WARNING filesize(), file size evaluation failed: %s\n", err.message().c_str());
    return ~Size{0};
}

}  // namespace vorl::detail
