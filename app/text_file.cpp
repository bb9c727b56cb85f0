#include "text_file.hpp"

#include "errors.hpp"
#include "unpack.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace vorl::app {

void requireOneStandardInput(const std::string& first, const std::string& second) {
    if (first == STANDARD_INPUT && second == STANDARD_INPUT)
        throw UsageError("only one of the files can be the standard input");
}

TextFile::TextFile(const std::string& name) {
    const auto fail = [&name](int err) { return InputError(name + ": " + std::strerror(err)); };
    const int file =
        name == STANDARD_INPUT ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) throw fail(errno);
    int err = readAll(file);
    if (close(file) != 0 && err == 0) err = errno;
    if (err != 0) throw fail(err);
    const Packing packing = packingOf(m_text);
    m_plain = packing == Packing::NONE && name != STANDARD_INPUT && m_regular;
    if (packing != Packing::NONE) m_text = unpack(m_text, packing, name);
}

int TextFile::readAll(int file) {
    struct stat info {};
    if (fstat(file, &info) != 0) return errno;
    if (S_ISDIR(info.st_mode)) return EISDIR;
    m_regular = S_ISREG(info.st_mode);
    constexpr std::size_t block = 1 << 16;
    std::size_t size = 0;
    m_text.resize(m_regular ? static_cast<std::size_t>(info.st_size) + 1 : block);
    ssize_t count = 0;
    while ((count = read(file, m_text.data() + size, m_text.size() - size)) != 0) {
        if (count < 0 && errno != EINTR) return errno;
        if (count > 0) size += static_cast<std::size_t>(count);
        if (size == m_text.size()) m_text.resize(2 * size);
    }
    m_text.resize(size);
    return 0;
}

}  // namespace vorl::app
