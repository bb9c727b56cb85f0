#include <vorl/reading/wording.hpp>

#include <charconv>

namespace vorl {

std::string number(double value, int digits) {
    char text[64];
    return {text,
            std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits).ptr};
}

std::string grouped(Size value) {
    std::string digits = std::to_string(value);
    for (std::size_t place = digits.size(); place > 3;) digits.insert(place -= 3, 1, ',');
    return digits;
}

std::string counted(Size count, const char* thing) {
    return grouped(count) + " " + thing + (count == 1 ? "" : "s");
}

}  // namespace vorl
