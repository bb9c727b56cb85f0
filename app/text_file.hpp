// A whole file in memory.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vorl::app {

/// The name that stands for the standard input.
inline constexpr const char* STANDARD_INPUT = "-";

/// Contents of a file, mapped where it is a regular one, and unpacked where it is compressed by
/// gzip or zstd, which its first bytes tell.
class TextFile {
public:
    /// @param name of the file, "-" for the standard input
    /// @throws InputError if the file can't be read or unpacked
    explicit TextFile(const std::string& name);
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;
    ~TextFile();

    std::string_view text() const { return {m_data, m_size}; }
    /// Whether the library can read the same text under the file's name.
    bool plain() const { return m_mapped; }

private:
    void unmap();

    const char* m_data = nullptr;
    std::size_t m_size = 0;
    bool m_mapped = false;
    std::string m_buffer;
};

}  // namespace vorl::app
