#include <vorl/reading/wording.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
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

std::string readable(double value) {
    const double size = std::abs(value);
    if (!(size < 1e15)) return number(value, 6);
    const auto whole = static_cast<Size>(size);
    std::string text = grouped(whole);
    if (static_cast<double>(whole) != size) {
        if (size >= 1e5) {
            text = grouped(static_cast<Size>(size + 0.5));
        } else {
            text = number(size, 6);
            if (const std::size_t point = std::min(text.find('.'), text.size()); whole != 0)
                text = grouped(std::stoull(text.substr(0, point))) + text.substr(point);
        }
    }
    return (value < 0 ? "-" : "") + text;
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
