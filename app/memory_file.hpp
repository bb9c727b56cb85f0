// A file in memory with a name that the library's parsers can open.
#pragma once

#include <string>
#include <string_view>

namespace vorl::app {

class MemoryFile {
public:
    /// @throws InputError if the system has no memory for it
    explicit MemoryFile(std::string_view text);
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile();

    std::string name() const { return "/proc/self/fd/" + std::to_string(m_file); }

private:
    int m_file;
};

}  // namespace vorl::app
