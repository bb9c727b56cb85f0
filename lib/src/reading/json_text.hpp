// JSON as the readers of links and of tables find it.
#pragma once

#include <vorl/reading/lines.hpp>

#include <cstdint>
#include <string>
#include <string_view>

namespace vorl::detail {

/// Goes through the values of a text in JSON, which may go over several lines.
///
/// Everything throws an InputError with the line of what isn't JSON.
class JsonText {
public:
    /// @param[out] line  the number of the line at hand, as long as the object is in use
    /// @param rest       what is left of the line that came last
    JsonText(Lines& lines, std::size_t& line, std::string_view rest = {})
        : m_lines(lines), m_line(line), m_rest(rest) {}

    /// The next character that isn't blank; NUL at the end.
    char peek();
    /// What stands there, in words.
    std::string shown();
    void expect(char character);
    bool takeIf(char character) {
        if (peek() != character) return false;
        m_rest.remove_prefix(1);
        return true;
    }

    /// A string without its quotes. Names that are too long are cut, but not to one that isn't.
    std::string readString();
    /// The same, or the word of a number, true, false or null.
    std::string readScalar();
    /// Passes over a value of any kind.
    void skip();

    /// @param member reads the value of a key
    template <class MemberT>
    void readObject(MemberT member) {
        expect('{');
        if (takeIf('}')) return;
        do {
            const std::string key = readString();
            expect(':');
            member(key);
        } while (takeIf(','));
        expect('}');
    }

    /// @param element reads one
    template <class ElementT>
    void readArray(ElementT element) {
        expect('[');
        if (takeIf(']')) return;
        do element();
        while (takeIf(','));
        expect(']');
    }

private:
    InputError fault(const std::string& what) const { return m_lines.fault(what); }
    void readEscape(std::string& text);
    std::uint32_t readCode();

    Lines& m_lines;
    std::size_t& m_line;
    std::string_view m_rest;  // of the line
    bool m_ended = false;
};

}  // namespace vorl::detail
