#include "sections.hpp"

#include <bit>

namespace vorl::view {

namespace {

constexpr std::size_t UNIT = 8;

template <class NumberT>
void append(std::string& bytes, NumberT value) {
    for (std::size_t i = 0; i < sizeof value; ++i)
        bytes += static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
}

void fillUp(std::string& text, char by) { text.append((UNIT - text.size() % UNIT) % UNIT, by); }

}  // namespace

void Sections::addFloats(const char* name, const std::vector<float>& values) {
    std::string bytes;
    bytes.reserve(4 * values.size());
    for (const float value : values) append(bytes, std::bit_cast<std::uint32_t>(value));
    add(name, "float", bytes);
}

void Sections::addShorts(const char* name, const std::vector<std::uint16_t>& values) {
    std::string bytes;
    bytes.reserve(2 * values.size());
    for (const std::uint16_t value : values) {
        bytes += static_cast<char>(value & 255);
        bytes += static_cast<char>(value >> 8);
    }
    add(name, "short", bytes);
}

void Sections::addNumbers(const char* name, const std::vector<std::uint32_t>& values) {
    std::string bytes;
    std::int64_t former = 0;
    for (const std::uint32_t value : values) {
        const std::int64_t change = static_cast<std::int64_t>(value) - former;
        former = value;
        auto rest = static_cast<std::uint64_t>(change < 0 ? -2 * change - 1 : 2 * change);
        for (; rest >= 128; rest >>= 7) bytes += static_cast<char>((rest & 127) | 128);
        bytes += static_cast<char>(rest);
    }
    add(name, "number", bytes);
}

void Sections::add(const char* name, const char* kind, std::string_view bytes) {
    m_table += (m_table.empty() ? "" : ",") + ("[\"" + std::string(name)) + "\",\"" + kind + "\"," +
               std::to_string(m_bytes.size()) + "," + std::to_string(bytes.size()) + "]";
    m_bytes += bytes;
    fillUp(m_bytes, '\0');
}

std::string Sections::text(const std::string& facts) const {
    std::string text(4, '\0');
    text += "{" + facts + (facts.empty() ? "" : ",") + "\"sections\":[" + m_table + "]}";
    fillUp(text, ' ');
    std::string length;
    append(length, static_cast<std::uint32_t>(text.size() - 4));
    text.replace(0, 4, length);
    return text + m_bytes;
}

std::string base64(std::string_view bytes) {
    static constexpr char LETTERS[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 3; ++j)
            group =
                group << 8 | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0u);
        for (std::size_t j = 0; j < 4; ++j)
            text += i + j <= bytes.size() ? LETTERS[group >> (18 - 6 * j) & 63] : '=';
    }
    return text;
}

}  // namespace vorl::view
