#include "output_text.hpp"

#include "errors.hpp"

#include <iterator>

namespace vorl::app {

std::string number(double value) { return format("%.9g", value); }

std::string jsonQuoted(const std::string& text) {
    std::string result = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\')
            result += std::string("\\") + c;
        else if (static_cast<unsigned char>(c) < 0x20)
            result += format("\\u%04x", static_cast<unsigned>(c));
        else
            result += c;
    }
    return result + '"';
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
    return format(unit ? "%.1f %s" : "%.0f %s", value, units[unit]);
}

void print(const std::string& text) {
    const bool whole = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (!whole || std::fflush(stdout) != 0) throw InputError("standard output: writing failed");
}

}  // namespace vorl::app
