// Options by the kind of their values: choices, numbers, sizes, names of files.
#pragma once

#include <CLI/CLI.hpp>

#include <charconv>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vorl::app {

/// " (did you mean X?)" for the nearest word, if there is one near enough.
std::string suggestion(const std::string& word, const std::vector<std::string>& words);

template <class ValueT>
using Choices = std::vector<std::pair<std::string, ValueT>>;

/// The names, in their order.
template <class ValueT>
std::string joined(const Choices<ValueT>& choices, const char* separator) {
    std::string names;
    for (const auto& choice : choices) names += (names.empty() ? "" : separator) + choice.first;
    return names;
}

/// The value of a name.
/// @throws CLI::ValidationError that tells the names, and the nearest one
template <class ValueT>
ValueT choose(const Choices<ValueT>& choices, const std::string& option, const std::string& name) {
    std::vector<std::string> names;
    for (const auto& choice : choices) {
        if (choice.first == name) return choice.second;
        names.push_back(choice.first);
    }
    throw CLI::ValidationError(
        option, "\"" + name + "\" is none of " + joined(choices, ", ") + suggestion(name, names));
}

/// An option that takes one of some names. They are its type, from which the help, the manual page
/// and the completions have them.
template <class ValueT, class StoreT>
CLI::Option* addChoice(CLI::App& app, const std::string& option, const Choices<ValueT>& choices,
                       StoreT store, const std::string& description) {
    return app
        .add_option_function<std::string>(
            option, [=](const std::string& name) { store(choose(choices, option, name)); },
            description)
        ->type_name(joined(choices, "|"));
}

/// @throws CLI::ValidationError unless the text is a number from `low` to `high`
float toFloat(const std::string& option, const std::string& text, float low, float high);

inline constexpr float UNBOUNDED = std::numeric_limits<float>::max();

/// A whole number from `low` to `high`, which is nothing but decimal digits.
template <class NumberT>
NumberT toNumber(const std::string& option, const std::string& text, NumberT low, NumberT high) {
    NumberT value = 0;
    const auto [last, err] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (err != std::errc() || last != text.data() + text.size() || value < low || value > high)
        throw CLI::ValidationError(option, "\"" + text + "\" isn't a whole number from " +
                                               std::to_string(low) + " to " + std::to_string(high));
    return value;
}

/// A number of bytes, as a whole number and one of K, M, G and T.
/// @throws CLI::ValidationError
std::size_t toSize(const std::string& option, const std::string& text);

/// Two flags that exclude each other: one sets the field, the other one clears it.
inline void addSwitch(CLI::App& app, const char* group, std::optional<bool>& field, const char* on,
                      const char* whenOn, const char* off, const char* whenOff) {
    CLI::Option* const set = app.add_flag_callback(
                                    on, [&field] { field = true; }, whenOn)
                                 ->group(group);
    app.add_flag_callback(
           off, [&field] { field = false; }, whenOff)
        ->excludes(set)
        ->group(group);
}

template <class NumberT, class FieldT>
CLI::Option* addNumber(CLI::App& app, const std::string& option, FieldT& field,
                       const std::string& description, NumberT low = 0,
                       NumberT high = std::numeric_limits<NumberT>::max()) {
    const auto read = [option, low, high, &field](const std::string& text) {
        field = toNumber<NumberT>(option, text, low, high);
    };
    return app.add_option_function<std::string>(option, read, description)->type_name("N");
}

template <class FieldT>
CLI::Option* addFloat(CLI::App& app, const std::string& option, FieldT& field, float low,
                      float high, const std::string& type, const std::string& description) {
    const auto read = [option, low, high, &field](const std::string& text) {
        field = toFloat(option, text, low, high);
    };
    return app.add_option_function<std::string>(option, read, description)->type_name(type);
}

/// Names of files; nothing is called "".
/// @return what is wrong, nothing if all is well
std::string checkName(const std::string& name);

}  // namespace vorl::app
