#include <vorl/reading/memory_file.hpp>

#include <sys/mman.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace vorl {

MemoryFile::MemoryFile(std::string_view text) : m_file(memfd_create("vorl", MFD_CLOEXEC)) {
    while (m_file >= 0 && !text.empty()) {
        const ssize_t count = write(m_file, text.data(), text.size());
        if (count < 0 && errno != EINTR) break;
        if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
    }
    if (m_file >= 0 && text.empty()) return;
    const int err = errno;
    if (m_file >= 0) close(m_file);
    throw MemoryFileError(std::string("memory file: ") + std::strerror(err));
}

MemoryFile::~MemoryFile() { close(m_file); }

}  // namespace vorl
