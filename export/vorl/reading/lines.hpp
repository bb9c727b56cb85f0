/// @file
/// The lines of an input.
#pragma once

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/source.hpp>
#include <vorl/types/export.hpp>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace vorl {

/// Goes through the lines of an input, of which it holds a block at a time.
///
/// Carriage returns at line ends and a byte order mark aren't seen. A NUL byte is a fault of its
/// line, since the input is none of text then.
class VORL_API Lines {
public:
    /// @param name     of the file, for messages
    /// @param longest  bytes that a line may have
    Lines(Source& source, std::string name, std::size_t longest = memoryLimit() / 2);

    /// Goes to the next line.
    /// @return false at the end of the input
    /// @throws InputError for a NUL byte, MemoryLimitError if the line is too long, and as the
    ///     source
    bool next() {
        m_begin = m_next;
        const void* const end = std::memchr(m_data.get() + m_begin, '\n', m_filled - m_begin);
        if (!end && !fill()) return false;
        if (end) {
            m_end = static_cast<std::size_t>(static_cast<const char*>(end) - m_data.get());
            m_next = m_end + 1;
        }
        ++m_number;
        if (m_end != m_begin && m_data.get()[m_end - 1] == '\r') --m_end;
        if (m_binary) requireText();
        return true;
    }

    /// Goes on to the next piece of the text, wherever that ends, in place of a line.
    /// @return the piece; empty at the end of the input
    /// @throws as `next`
    std::string_view nextPiece();

    std::string_view line() const { return {m_data.get() + m_begin, m_end - m_begin}; }
    /// The number of the line, from 1 on; 0 before the first one.
    std::size_t number() const { return m_number; }
    /// Bytes that came so far from the source.
    std::size_t bytes() const { return m_bytes; }

    /// Keeps what is read from now on, for `rewind`; to be called before the first line.
    void hold() { m_held = true; }
    /// Lets the lines from the first one on come again.
    /// @param hold whether they may once more, else nothing is kept any more
    void rewind(bool hold);

    const std::string& name() const { return m_name; }
    /// A fault of the line.
    InputError fault(const std::string& what) const {
        return InputError::at(m_name, m_number, what);
    }

private:
    static constexpr std::size_t BLOCK = std::size_t{1} << 18;

    struct Free {
        void operator()(char* data) const { std::free(data); }
    };

    bool fill();
    bool read();
    void requireText() const;
    std::size_t lineEnds(std::size_t end) const;

    Source& m_source;
    std::string m_name;
    std::size_t m_longest;
    std::unique_ptr<char, Free> m_data;
    std::size_t m_room = 0;
    std::size_t m_begin = 0;  // of the line
    std::size_t m_end = 0;
    std::size_t m_next = 0;  // behind the line and its end
    std::size_t m_filled = 0;
    std::size_t m_number = 0;
    std::size_t m_bytes = 0;
    std::size_t m_start = 0;  // of the text, behind the mark
    bool m_held = false;      // all that was read is there
    bool m_binary = false;    // there are NUL bytes somewhere in what was read
    bool m_wide = false;      // the text begins as one in UTF-16
};

}  // namespace vorl
