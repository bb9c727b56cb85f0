#include "text_file.hpp"

#include "errors.hpp"
#include "unpack.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace vorl::app {

TextFile::TextFile(const std::string& name) {
    const auto fail = [&name](int err) { return InputError(name + ": " + std::strerror(err)); };
    const int file =
        name == STANDARD_INPUT ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) throw fail(errno);
    struct stat info {};
    int err = fstat(file, &info) != 0 ? errno : S_ISDIR(info.st_mode) ? EISDIR : 0;
    if (err == 0 && S_ISREG(info.st_mode) && info.st_size > 0 && name != STANDARD_INPUT) {
        void* data =
            mmap(nullptr, static_cast<std::size_t>(info.st_size), PROT_READ, MAP_PRIVATE, file, 0);
        if (data != MAP_FAILED) {
            m_data = static_cast<const char*>(data);
            m_size = static_cast<std::size_t>(info.st_size);
            m_mapped = true;
        }
    }
    if (err == 0 && !m_mapped) {
        char block[1 << 16];
        ssize_t count;
        while ((count = read(file, block, sizeof block)) > 0)
            m_buffer.append(block, static_cast<std::size_t>(count));
        if (count < 0) err = errno;
        m_data = m_buffer.data();
        m_size = m_buffer.size();
    }
    close(file);
    if (err != 0) throw fail(err);

    const Packing packing = packingOf(text());
    if (packing == Packing::NONE) return;
    std::string unpacked;
    try {
        unpacked = unpack(text(), packing, name);
    } catch (...) {
        unmap();
        throw;
    }
    unmap();
    m_buffer = std::move(unpacked);
    m_data = m_buffer.data();
    m_size = m_buffer.size();
}

TextFile::~TextFile() { unmap(); }

void TextFile::unmap() {
    if (m_mapped) munmap(const_cast<char*>(m_data), m_size);
    m_mapped = false;
}

}  // namespace vorl::app
