#include <vorl/types/labels.hpp>

#include <algorithm>
#include <charconv>
#include <functional>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace vorl {

namespace {

/// Whether the text is a whole number that 64 bits hold.
bool isNumber(std::string_view text, std::uint64_t& value) {
    const auto [last, err] = std::from_chars(text.data(), text.data() + text.size(), value);
    return err == std::errc() && last == text.data() + text.size() &&
           (text[0] != '0' || text.size() == 1);
}

bool before(std::string_view a, std::string_view b) {
    std::uint64_t x = 0;
    std::uint64_t y = 0;
    const bool number = isNumber(a, x);
    if (number != isNumber(b, y)) return number;
    return number ? x < y : a < b;
}

/// The same on every machine, unlike that of the standard library.
std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0x9E3779B97F4A7C15 ^ text.size();
    const auto mix = [&hash](std::uint64_t value) {
        hash = (hash ^ value) * 0xFF51AFD7ED558CCD;
        hash ^= hash >> 32;
    };
    for (; text.size() >= 8; text.remove_prefix(8)) {
        std::uint64_t value = 0;
        text.copy(reinterpret_cast<char*>(&value), 8);
        mix(value);
    }
    std::uint64_t rest = 0;
    text.copy(reinterpret_cast<char*>(&rest), text.size());
    mix(rest);
    return hash;
}

/// What stands in a slot in front of the place: the bits that no place needs have some of the hash,
/// which tell most other names from this one without a look at their texts.
Id markOf(std::uint64_t hash, std::size_t slots) { return static_cast<Id>((hash >> 32) * slots); }

void appendBetweenQuotes(std::string& text, std::string_view name) {
    text += '"';
    for (const char c : name) text.append(c == '"' ? 2 : 1, c);
    text += '"';
}

void appendId(std::string& text, Id id) {
    char digits[16];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, id).ptr);
}

}  // namespace

std::string_view Labels::textAt(Id place) const {
    const std::size_t begin = m_offsets[place] * UNIT;
    std::size_t end =
        place + std::size_t{1} < m_offsets.size() ? m_offsets[place + 1] * UNIT : m_text.size();
    while (end > begin && m_text[end - 1] == '\0') --end;
    return {m_text.data() + begin, end - begin};
}

/// The slot of the name, or the free one where it belongs.
std::size_t Labels::slotOf(std::string_view name) const {
    const std::size_t mask = m_slots.size() - 1;
    const std::uint64_t hash = hashOf(name);
    const Id mark = markOf(hash, m_slots.size());
    for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
        const Id held = m_slots[slot];
        if (held == FREE) return slot;
        if ((held & ~mask) == mark && textAt(static_cast<Id>(held & mask)) == name) return slot;
    }
}

void Labels::rehash(std::size_t slots) {
    m_slots.assign(slots, FREE);
    for (Id place = 0; place < m_offsets.size(); ++place) {
        const std::uint64_t hash = hashOf(textAt(place));
        std::size_t slot = hash & (slots - 1);
        while (m_slots[slot] != FREE) slot = (slot + 1) & (slots - 1);
        m_slots[slot] = place | markOf(hash, slots);
    }
}

Id Labels::add(std::string_view name) {
    // Four of five slots may be taken.
    if (m_slots.size() * 4 <= m_offsets.size() * 5)
        rehash(std::max<std::size_t>(1 << 10, 2 * m_slots.size()));
    const std::size_t slot = slotOf(name);
    if (m_slots[slot] == FREE) {
        const std::size_t offset = m_text.size() / UNIT;
        if (m_offsets.size() >= ID_MAX - 1 - FIRST ||
            offset > std::numeric_limits<std::uint32_t>::max())
            throw std::length_error("there are too many names\n");
        m_slots[slot] = static_cast<Id>(m_offsets.size()) | markOf(hashOf(name), m_slots.size());
        m_offsets.push_back(static_cast<std::uint32_t>(offset));
        m_text.insert(m_text.end(), name.begin(), name.end());
        m_text.resize((m_text.size() + UNIT - 1) / UNIT * UNIT);
    }
    return ID_MAX - 1 - static_cast<Id>(m_slots[slot] & (m_slots.size() - 1));
}

Id Labels::find(std::string_view name) const {
    Id id = 0;
    if (isId(name, id)) return id;
    if (m_slots.empty()) return ID_NONE;
    const Id held = m_slots[slotOf(name)];
    return held == FREE ? ID_NONE : ID_MAX - 1 - static_cast<Id>(held & (m_slots.size() - 1));
}

std::vector<Id> Labels::sort() {
    std::vector<Id> order(m_offsets.size());
    std::iota(order.begin(), order.end(), Id{0});
    // The last name gets the largest id, which is that of the first place.
    std::sort(order.begin(), order.end(),
              [this](Id a, Id b) { return before(textAt(b), textAt(a)); });
    Labels sorted;
    sorted.m_text.reserve(m_text.size());
    sorted.m_offsets.reserve(m_offsets.size());
    std::vector<Id> ids(order.size());
    for (Id place = 0; place < order.size(); ++place) {
        const std::string_view name = textAt(order[place]);
        sorted.m_offsets.push_back(static_cast<std::uint32_t>(sorted.m_text.size() / UNIT));
        sorted.m_text.insert(sorted.m_text.end(), name.begin(), name.end());
        sorted.m_text.resize((sorted.m_text.size() + UNIT - 1) / UNIT * UNIT);
        ids[order[place]] = ID_MAX - 1 - place;
    }
    sorted.rehash(m_slots.size());
    *this = std::move(sorted);
    return ids;
}

std::string naming::plain(Id node, const Labels* labels) {
    return labels && labels->has(node) ? std::string(labels->text(node)) : std::to_string(node);
}

void naming::appendQuoted(std::string& text, Id node, const Labels* labels) {
    if (labels && labels->has(node))
        appendBetweenQuotes(text, labels->text(node));
    else
        appendId(text, node);
}

void naming::appendCell(std::string& text, Id node, const Labels* labels, char separator) {
    if (!labels || !labels->has(node)) {
        appendId(text, node);
        return;
    }
    const std::string_view name = labels->text(node);
    const bool plain =
        !name.empty() &&
        std::none_of(name.begin(), name.end(),
                     [separator](char c) {
                         return c == separator || c == '"' || c == '\'' || c == ' ' || c == '\t' ||
                                c == '\r' || c == ',' || c == ';';
                     }) &&
        name.back() != '}' && name[0] != '#' && name[0] != '%' && name[0] != '*' &&
        name[0] != '/' && name.find_first_not_of("0123456789") != std::string_view::npos;
    if (plain)
        text += name;
    else
        appendBetweenQuotes(text, name);
}

}  // namespace vorl
