#include <vorl/reading/tokens.hpp>

#include <vorl/types/plain_text.hpp>

#include <algorithm>

namespace vorl {

std::string quoted(std::string_view text) {
    constexpr std::size_t most = 32;
    std::string shown = "\"";
    for (char c : text.substr(0, most))
        shown += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    return shown + (text.size() > most ? "...\"" : "\"");
}

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

bool takeKey(std::string_view& text, std::string_view key) {
    const std::size_t length = key.size();
    if (text.size() < length || !detail::startsWithKey(text.data(), key.data(), length) ||
        (text.size() > length && text[length] != ' ' && text[length] != '\t'))
        return false;
    text = trimFront(text.substr(length));
    return true;
}

std::string_view takeValue(std::string_view& text) {
    const std::size_t end = std::min(text.find_first_of(", \t"), text.size());
    const std::string_view token = text.substr(0, end);
    text.remove_prefix(end);
    if (text.starts_with(',')) text.remove_prefix(1);
    text = trimFront(text);
    return token;
}

}  // namespace vorl
