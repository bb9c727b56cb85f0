#include "values.hpp"

#include <vorl/types/numbers.hpp>

#include <algorithm>
#include <string_view>

namespace vorl::app {

namespace {

/// Number of edits that turn one word into the other.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i - 1] != b[j - 1]);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

}  // namespace

std::string suggestion(const std::string& word, const std::vector<std::string>& words) {
    const auto nearest = std::min_element(
        words.begin(), words.end(),
        [&](const auto& a, const auto& b) { return distance(word, a) < distance(word, b); });
    if (nearest == words.end() || distance(word, *nearest) > 1 + nearest->size() / 3) return "";
    return " (did you mean " + *nearest + "?)";
}

float toFloat(const std::string& option, const std::string& text, float low, float high) {
    float value = 0;
    if (!CLI::detail::lexical_cast(text, value) || !(value >= low && value <= high))
        throw CLI::ValidationError(
            option, "\"" + text + "\" isn't a number " +
                        (low < -1e30f   ? "of at most " + CLI::detail::to_string(high)
                         : high > 1e30f ? "from " + CLI::detail::to_string(low) + " on"
                                        : "from " + CLI::detail::to_string(low) + " to " +
                                              CLI::detail::to_string(high)));
    return value;
}

std::size_t toSize(const std::string& option, const std::string& text) {
    constexpr std::string_view units = "KMGT";
    Size number = 0;
    const char* const last = text.data() + text.size();
    const auto [end, err] = std::from_chars(text.data(), last, number);
    const std::size_t unit = end == last ? std::string_view::npos : units.find(*end);
    const std::size_t shift = unit == std::string_view::npos ? 0 : 10 * (unit + 1);
    if (err != std::errc() || number == 0 || last - end != (shift != 0) ||
        number > std::numeric_limits<Size>::max() >> shift)
        throw CLI::ValidationError(option, "\"" + text + "\" is no size, such as 800M or 4G");
    return number << shift;
}

std::string checkName(const std::string& name) {
    return name.empty() ? "the name of the file is empty" : "";
}

}  // namespace vorl::app
