#include <vorl/reading/lines.hpp>

#include <vorl/reading/tokens.hpp>
#include <vorl/reading/wording.hpp>

#include <algorithm>
#include <new>
#include <utility>

namespace vorl {

Lines::Lines(Source& source, std::string name, std::size_t longest)
    : m_source(source), m_name(std::move(name)), m_longest(longest) {
    while (m_filled < BYTE_ORDER_MARK.size() && read()) {
    }
    const std::string_view head(m_data.get(), m_filled);
    m_wide = head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF");
    if (head.starts_with(BYTE_ORDER_MARK)) m_start = BYTE_ORDER_MARK.size();
    m_begin = m_end = m_next = m_start;
}

void Lines::rewind(bool hold) {
    m_begin = m_end = m_next = m_start;
    m_number = 0;
    m_held = hold;
}

/// Reads on until the line is whole.
/// @return false if there is none
bool Lines::fill() {
    for (std::size_t sought = m_filled - m_begin; read(); sought = m_filled - m_begin) {
        const std::size_t from = m_begin + sought;
        const void* const end = std::memchr(m_data.get() + from, '\n', m_filled - from);
        if (!end) {
            if (m_binary && std::memchr(m_data.get() + m_begin, '\0', m_filled - m_begin)) break;
            continue;
        }
        m_end = static_cast<std::size_t>(static_cast<const char*>(end) - m_data.get());
        m_next = m_end + 1;
        return true;
    }
    m_end = m_next = m_filled;
    return m_begin != m_filled;
}

std::string_view Lines::nextPiece() {
    m_begin = m_end = m_next;
    if (m_begin == m_filled && !read()) return {};
    m_end = m_next = m_filled;
    if (m_binary) {
        const std::size_t nul = line().find('\0');
        if (nul != std::string_view::npos) m_number += lineEnds(m_begin + nul) + 1;
        requireText();
    }
    m_number += lineEnds(m_end);
    return line();
}

/// Ends of lines from the begin of the piece on.
std::size_t Lines::lineEnds(std::size_t end) const {
    return static_cast<std::size_t>(std::count(m_data.get() + m_begin, m_data.get() + end, '\n'));
}

/// Reads on behind what there is of the line, which moves to the front unless all is held.
/// @return false at the end
bool Lines::read() {
    if (!m_held && m_begin != 0) {
        std::memmove(m_data.get(), m_data.get() + m_begin, m_filled - m_begin);
        m_filled -= std::exchange(m_begin, 0);
    }
    if (m_filled - m_begin > m_longest)
        throw MemoryLimitError(InputError::Parts{
            .file = m_name,
            .line = m_number + 1,
            .wrong =
                "the line has more than " + vorl::bytes(m_longest) + ", which is too much here"});
    if (m_room - m_filled < BLOCK / 2) {
        // Large blocks are moved by their pages, and those that nothing was written to take none.
        const std::size_t room = std::max(BLOCK, m_room + m_room / 2);
        char* const data = static_cast<char*>(std::realloc(m_data.get(), room));
        if (!data) throw std::bad_alloc();
        static_cast<void>(m_data.release());
        m_data.reset(data);
        m_room = room;
    }
    const std::size_t count =
        m_source.read(m_data.get() + m_filled, std::min(BLOCK, m_room - m_filled));
    m_binary = m_binary || std::memchr(m_data.get() + m_filled, '\0', count);
    m_filled += count;
    m_bytes += count;
    return count != 0;
}

void Lines::requireText() const {
    if (!std::memchr(m_data.get() + m_begin, '\0', m_end - m_begin)) return;
    throw fault(m_wide ? "a NUL byte: the file is in UTF-16, text in UTF-8 is expected"
                       : "a NUL byte: the file is binary, lines of text are expected");
}

}  // namespace vorl
