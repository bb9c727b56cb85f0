#include <vorl/reading/wording.hpp>

#include <charconv>
#include <iterator>

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

std::string bytes(Size size) {
    const char* const units[] = {"B", "KiB", "MiB", "GiB", "TiB"};
    double value = static_cast<double>(size);
    std::size_t unit = 0;
    while (value >= 1024 && unit + 1 < std::size(units)) {
        value /= 1024;
        ++unit;
    }
    char text[64];
    const auto [end, err] =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, unit == 0 ? 0 : 1);
    return std::string(text, end) + " " + units[unit];
}

}  // namespace vorl
