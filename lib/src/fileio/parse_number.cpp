#include <vorl/fileio/parse_number.hpp>

#include <vorl/types/plain_text.hpp>

#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace vorl {

namespace {

constexpr std::size_t TEXT_MAX = 22;

template <class SrcT>
std::string number(SrcT value) {
    if constexpr (std::is_floating_point_v<SrcT>)
        return format("%f", static_cast<double>(value));
    else
        return std::to_string(value);
}

}  // namespace

template <class DestT, class SrcT>
void validateVal(SrcT value, const char* text, bool bad, const char* message) {
    if (!bad && (std::is_floating_point_v<SrcT> || value <= std::numeric_limits<DestT>::max()))
        return;
    std::string error = "Invalid format of val or out of range conversion of '";
    if (text)
        error += std::string(text).substr(0, TEXT_MAX) + "' with the value = " + number(value);
    if (message) error += std::string(": ") + message;
    throw std::invalid_argument(error + "\n");
}

template VORL_API void validateVal<unsigned>(unsigned long, const char*, bool, const char*);
template VORL_API void validateVal<unsigned>(unsigned long long, const char*, bool, const char*);
template VORL_API void validateVal<unsigned long>(unsigned long long, const char*, bool,
                                                  const char*);
template VORL_API void validateVal<float>(float, const char*, bool, const char*);

}  // namespace vorl
