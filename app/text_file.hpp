// A whole file in memory.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vorl::app {

/// Contents of a file, mapped where it is a regular one.
class TextFile {
public:
    /// @throws InputError if the file can't be read
    explicit TextFile(const std::string& name);
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;
    ~TextFile();

    std::string_view text() const { return {m_data, m_size}; }

private:
    const char* m_data = nullptr;
    std::size_t m_size = 0;
    bool m_mapped = false;
    std::string m_buffer;
};

}  // namespace vorl::app
