/// @file
/// A whole file in memory.
#pragma once

#include <vorl/types/export.hpp>

#include <cstddef>
#include <string>
#include <string_view>

namespace vorl {

/// The name that stands for the standard input.
inline constexpr const char* STANDARD_INPUT = "-";

/// The memory of the machine, or of the control group of the process, but for an eighth; in bytes.
VORL_API std::size_t memoryLimit();
/// What a text may have of a limit of memory: half of it, since it may be held twice. A device may
/// go on forever, and a few packed kilobytes may unpack to any size.
VORL_API std::size_t textLimit(std::size_t limit = memoryLimit());

/// Contents of a file, unpacked where it is compressed by gzip or zstd, which its first bytes tell.
/// They are read and not mapped, lest a file that shrinks meanwhile stop the process.
class VORL_API TextFile {
public:
    /// @param name of the file, "-" for the standard input
    /// @param most bytes of the file and of what it unpacks to
    /// @throws InputError if the file can't be read or unpacked, MemoryLimitError if it is larger
    explicit TextFile(const std::string& name, std::size_t most = textLimit());

    std::string_view text() const { return m_text; }
    /// Whether the library can read the same text under the file's name.
    bool plain() const { return m_plain; }

private:
    /// Reads at most one byte more than asked for.
    int readAll(int file, std::size_t most);

    std::string m_text;
    bool m_regular = false;
    bool m_plain = false;
};

}  // namespace vorl
