#include <vorl/reading/input_error.hpp>

#include <utility>

namespace vorl {

namespace {

std::string messageOf(const InputError::Parts& parts) {
    std::string text = parts.file;
    if (parts.line != 0) text += ":" + std::to_string(parts.line);
    if (!text.empty()) text += ": ";
    text += parts.wrong;
    if (!parts.found.empty()) text += " is " + parts.found;
    if (!parts.expected.empty()) text += ", " + parts.expected;
    return text;
}

}  // namespace

InputError::InputError(const std::string& message) : InputError(Parts{.wrong = message}) {}

InputError::InputError(Parts parts)
    : std::runtime_error(messageOf(parts)),
      m_parts(std::make_shared<const Parts>(std::move(parts))) {}

InputError InputError::at(const std::string& file, std::size_t line, const std::string& what) {
    return InputError(Parts{.file = file, .line = line, .wrong = what});
}

}  // namespace vorl
