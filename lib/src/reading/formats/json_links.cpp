// The reader of JSON documents with lists of nodes and links.
#include "keyed_nodes.hpp"

#include <vorl/types/characters.hpp>

#include <vector>

namespace vorl::detail {

namespace {

class JsonReader : public NetworkReader {
public:
    JsonReader(Lines& lines, const ScanOptions& options, NodeNames& nodes, const LinkVisitor& visit)
        : NetworkReader(lines, options, nodes, visit),
          m_keyed(nodes),
          m_arcs(options.directed.value_or(false)) {}

protected:
    void readAll() override {
        if (peek() == '\0' && m_lines.bytes() == 0) return;
        if (peek() != '{') throw fault("found " + shown() + ", \"{\" is expected");
        readObject([this](const std::string& key) { readTop(key); });
        if (peek() != '\0') throw fault("found " + shown() + " behind the document");
        m_facts.toldDirected = m_arcs;
    }

private:
    /// The next character that isn't blank; NUL at the end.
    char peek() {
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

    std::string shown() {
        return peek() == '\0' ? std::string("the end of the file") : quoted(m_rest);
    }

    void expect(char character) {
        if (peek() != character)
            throw fault("found " + shown() + ", \"" + std::string(1, character) + "\" is expected");
        m_rest.remove_prefix(1);
    }

    bool takeIf(char character) {
        if (peek() != character) return false;
        m_rest.remove_prefix(1);
        return true;
    }

    std::string readString() {
        expect('"');
        std::string text;
        while (true) {
            if (m_rest.empty())
                throw fault("the quotes of " + quoted("\"" + text) +
                            " aren't closed in their line");
            const char c = m_rest.front();
            m_rest.remove_prefix(1);
            if (c == '"') return text;
            if (static_cast<unsigned char>(c) < 0x20)
                throw fault("a control character stands in " + quoted(text));
            if (c == '\\')
                readEscape(text);
            else
                text += c;
        }
    }

    void readEscape(std::string& text) {
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
    std::uint32_t readCode() {
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

    /// A string without its quotes, or the word of a number, true, false or null.
    std::string readScalar() {
        if (peek() == '"') return readString();
        std::size_t end = 0;
        while (end < m_rest.size() && !isBlank(m_rest[end]) && m_rest[end] != ',' &&
               m_rest[end] != ']' && m_rest[end] != '}' && m_rest[end] != ':')
            ++end;
        const std::string word(m_rest.substr(0, end));
        const bool number = !word.empty() && (word[0] == '-' || (word[0] >= '0' && word[0] <= '9'));
        if (!number && word != "true" && word != "false" && word != "null")
            throw fault("found " + shown() + ", a value is expected");
        m_rest.remove_prefix(end);
        return word;
    }

    /// Passes over a value of any kind.
    void skip() {
        std::string open;
        do {
            const char c = peek();
            if (c == '{' || c == '[') {
                if (open.size() == 1000)
                    throw fault("more than 1,000 values lie inside each other");
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

    template <class ElementT>
    void readArray(ElementT element) {
        expect('[');
        if (takeIf(']')) return;
        do element();
        while (takeIf(','));
        expect(']');
    }

    void readTop(const std::string& key) {
        if (key == "directed") {
            const std::string word = readScalar();
            if (word != "true" && word != "false")
                throw fault("directed", word, "true or false is expected");
            if (m_links && !m_options.directed && word == "true")
                throw fault("\"directed\" stands behind the links, it is expected before them");
            m_arcs = m_options.directed.value_or(word == "true");
        } else if (key == "nodes") {
            if (m_links) throw fault("the nodes stand behind the links, they are expected before");
            m_listed = true;
            readArray([this] { readNode(); });
        } else if (key == "links" || key == "edges") {
            m_links = true;
            readArray([this] { readLink(); });
        } else {
            skip();
        }
    }

    void readNode() {
        const std::string place = std::to_string(m_count++);
        std::optional<std::string> id;
        std::optional<std::string> name;
        if (peek() == '{')
            readObject([&](const std::string& key) {
                const bool named = key == "name" || key == "label";
                if (peek() == '{' || peek() == '[' || !(key == "id" || named)) return skip();
                (named ? name : id) = readScalar();
            });
        else
            id = readScalar();
        const auto faults = [this](const std::string& what) { return fault(what); };
        // Nodes without ids are called by their places.
        m_byPlace = m_byPlace || (!id && m_count == 1);
        if (m_byPlace == id.has_value())
            throw fault("some nodes have an id, and others don't, all or none are expected");
        const std::string& own = id ? *id : name ? *name : place;
        m_keyed.add(m_byPlace ? place : *id, own, faults);
    }

    void readLink() {
        std::optional<std::string> src;
        std::optional<std::string> dst;
        std::optional<std::string> weight;
        const std::size_t begin = m_line;
        readObject([&](const std::string& key) {
            std::optional<std::string>* const value = key == "source"   ? &src
                                                      : key == "target" ? &dst
                                                      : isWeight(lowered(key), weight.has_value())
                                                          ? &weight
                                                          : nullptr;
            if (!value || peek() == '[') return skip();
            if (peek() == '{' && value != &weight) return readEnd(*value);
            *value = readScalar();
        });
        if (!src || !dst) {
            m_line = begin;
            throw fault(std::string("the link has no ") + (src ? "target" : "source"));
        }
        const auto faults = [this](const std::string& what) { return fault(what); };
        const LinkWeight value =
            weight && *weight != "null" && m_readWeights ? takeWeight(*weight) : LinkWeight{1};
        if (!m_listed) return addNamedLink(*src, *dst, value, m_arcs);
        const Id source = m_keyed.find(*src, "source", faults);
        addLink(source, m_keyed.find(*dst, "target", faults), value, m_arcs);
    }

    /// An end of a link that is told as the whole node.
    void readEnd(std::optional<std::string>& end) {
        readObject([&](const std::string& key) {
            if (key == "id" && peek() != '{' && peek() != '[')
                end = readScalar();
            else
                skip();
        });
    }

    KeyedNodes m_keyed;
    std::string_view m_rest;  // of the line
    bool m_ended = false;
    bool m_arcs;
    bool m_listed = false;   // there is a list of nodes
    bool m_links = false;    // the links have begun
    bool m_byPlace = false;  // links call nodes by their places
    Size m_count = 0;        // of the nodes
};

}  // namespace

std::unique_ptr<NetworkReader> jsonReader(Lines& lines, const ScanOptions& options,
                                          NodeNames& nodes, const LinkVisitor& visit) {
    return std::make_unique<JsonReader>(lines, options, nodes, visit);
}

}  // namespace vorl::detail
