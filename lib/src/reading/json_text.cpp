#include "json_text.hpp"

#include "longest_name.hpp"

#include <vorl/reading/tokens.hpp>
#include <vorl/types/characters.hpp>

#include <utility>

namespace vorl::detail {

char JsonText::peek() {
    while (m_rest.empty() || isBlank(m_rest.front())) {
        if (m_rest.empty()) {
            if (m_ended || !m_lines.next()) {
                m_ended = true;
                return '\0';
            }
            m_line = m_lines.number();
            m_rest = m_lines.line();
        } else {
            m_rest.remove_prefix(1);
        }
    }
    return m_rest.front();
}

std::string JsonText::shown() {
    return peek() == '\0' ? std::string("the end of the file") : quoted(m_rest);
}

void JsonText::expect(char character) {
    if (peek() != character)
        throw fault("found " + shown() + ", \"" + std::string(1, character) + "\" is expected");
    m_rest.remove_prefix(1);
}

std::string JsonText::readString() {
    expect('"');
    std::string text;
    while (true) {
        if (m_rest.empty())
            throw fault("the quotes of " + quoted("\"" + text) + " aren't closed in their line");
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        if (c == '"') return text;
        if (static_cast<unsigned char>(c) < 0x20)
            throw fault("a control character stands in " + quoted(text));
        if (c == '\\')
            readEscape(text);
        else if (text.size() <= LONGEST_NAME)
            text += c;
    }
}

void JsonText::readEscape(std::string& text) {
    constexpr std::pair<char, char> ESCAPES[] = {{'"', '"'}, {'\\', '\\'}, {'/', '/'}};
    const char c = m_rest.empty() ? '\0' : m_rest.front();
    if (c == 'u') {
        std::uint32_t code = readCode();
        if (code >= 0xD800 && code < 0xDC00 && m_rest.starts_with("\\u")) {
            m_rest.remove_prefix(1);
            const std::uint32_t low = readCode();
            if (low < 0xDC00 || low > 0xDFFF) throw fault("half of a character is missing");
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        }
        if (code == 0 || code == '\n' || (code >= 0xD800 && code < 0xE000))
            throw fault("the text holds the character " + std::to_string(code) +
                        ", which no name may have");
        appendCharacter(text, code);
        return;
    }
    for (const auto& [escape, character] : ESCAPES)
        if (c == escape) {
            text += character;
            m_rest.remove_prefix(1);
            return;
        }
    if (c != 'b' && c != 'f' && c != 'n' && c != 'r' && c != 't')
        throw fault("\"\\" + std::string(c ? 1 : 0, c) + "\" stands for nothing");
    text += c == 't' ? '\t' : ' ';
    m_rest.remove_prefix(1);
}

/// The four digits behind a `u`.
std::uint32_t JsonText::readCode() {
    std::uint32_t code = 0;
    for (std::size_t i = 1; i < 5; ++i) {
        const char c = i < m_rest.size() ? m_rest[i] : 'x';
        const auto digit = c >= '0' && c <= '9'   ? c - '0'
                           : c >= 'a' && c <= 'f' ? c - 'a' + 10
                           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                  : 16;
        if (digit == 16) throw fault("four hexadecimal digits are expected behind \"\\u\"");
        code = 16 * code + static_cast<std::uint32_t>(digit);
    }
    m_rest.remove_prefix(5);
    return code;
}

std::string JsonText::readScalar() {
    if (peek() == '"') return readString();
    std::size_t end = 0;
    while (end < m_rest.size() && !isBlank(m_rest[end]) && m_rest[end] != ',' &&
           m_rest[end] != ']' && m_rest[end] != '}' && m_rest[end] != ':')
        ++end;
    std::string word;
    appendBounded(word, m_rest.substr(0, end));
    const bool number = !word.empty() && (word[0] == '-' || (word[0] >= '0' && word[0] <= '9'));
    if (number ? word.find_first_not_of("0123456789+-.eE") != word.npos
               : word != "true" && word != "false" && word != "null")
        throw fault("found " + shown() + ", a value is expected");
    m_rest.remove_prefix(end);
    return word;
}

void JsonText::skip() {
    std::string open;
    do {
        const char c = peek();
        if (c == '{' || c == '[') {
            if (open.size() == 1000) throw fault("more than 1,000 values lie inside each other");
            open += c == '{' ? '}' : ']';
            m_rest.remove_prefix(1);
        } else if (!open.empty() && c == open.back()) {
            open.pop_back();
            m_rest.remove_prefix(1);
        } else if (!open.empty() && (c == ',' || c == ':')) {
            m_rest.remove_prefix(1);
        } else {
            readScalar();
        }
    } while (!open.empty());
}

}  // namespace vorl::detail
