#include <vorl/reading/text_file.hpp>

#include "space.hpp"
#include "system_memory.hpp"

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/unpack.hpp>
#include <vorl/reading/wording.hpp>
#include <vorl/types/progress.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vorl {

std::size_t memoryLimit() { return systemMemory() / 8 * 7; }

std::size_t textLimit(std::size_t limit) { return limit / 2; }

TextFile::TextFile(const std::string& name, std::size_t most) {
    const auto fail = [&name](int err) { return InputError(name + ": " + std::strerror(err)); };
    const int file =
        name == STANDARD_INPUT ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) throw fail(errno);
    int err = 0;
    try {
        err = readAll(file, most);
    } catch (...) {
        close(file);
        throw;
    }
    if (close(file) != 0 && err == 0) err = errno;
    if (err != 0) throw fail(err);
    if (m_text.size() > most)
        throw MemoryLimitError(name + ": there are more than " + bytes(most) +
                               ", which is too much here");
    const Packing packing = packingOf(m_text);
    m_plain = packing == Packing::NONE && name != STANDARD_INPUT && m_regular;
    if (packing != Packing::NONE) m_text = unpack(m_text, packing, name, most);
}

int TextFile::readAll(int file, std::size_t most) {
    struct stat info {};
    if (fstat(file, &info) != 0) return errno;
    if (S_ISDIR(info.st_mode)) return EISDIR;
    m_regular = S_ISREG(info.st_mode);
    constexpr std::size_t block = 1 << 16;
    std::size_t size = 0;
    if (m_regular && static_cast<std::size_t>(info.st_size) > most) {
        m_text.resize(most + 1);
        return 0;
    }
    if (!m_regular) reserveSpace(m_text, most + 1);
    m_text.resize(m_regular ? static_cast<std::size_t>(info.st_size) + 1
                            : std::min(block, most + 1));
    const ProgressReporter report;
    report.begin("reading", m_regular ? static_cast<Size>(info.st_size) : 0);
    constexpr std::size_t piece = 1 << 24;
    ssize_t count = 0;
    while (size <= most &&
           (count = read(file, m_text.data() + size, std::min(piece, m_text.size() - size))) != 0) {
        if (count < 0 && errno != EINTR) return errno;
        report.advance(count > 0 ? static_cast<Size>(count) : 0);
        if (count > 0) size += static_cast<std::size_t>(count);
        if (size == m_text.size() && size <= most)
            m_text.resize(std::min(size + std::max(block, size / 4), most + 1));
    }
    m_text.resize(size);
    return 0;
}

}  // namespace vorl
