// A file in memory with a name that the library's parsers can open.
#pragma once

#include "errors.hpp"

#include <string>
#include <string_view>

namespace vorl::app {

/// The system has no memory for such a file, or a limit of file sizes forbids it.
class MemoryFileError : public InputError {
public:
    using InputError::InputError;
};

class MemoryFile {
public:
    /// @throws MemoryFileError
    explicit MemoryFile(std::string_view text);
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile();

    std::string name() const { return "/proc/self/fd/" + std::to_string(m_file); }

private:
    int m_file;
};

}  // namespace vorl::app
