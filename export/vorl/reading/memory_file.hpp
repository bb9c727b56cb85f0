/// @file
/// A file in memory with a name that the library's parsers can open.
#pragma once

#include <vorl/reading/input_error.hpp>

#include <string>
#include <string_view>

namespace vorl {

/// The system has no memory for such a file, or a limit of file sizes forbids it.
class VORL_API MemoryFileError : public InputError {
public:
    using InputError::InputError;
};

class VORL_API MemoryFile {
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

}  // namespace vorl
