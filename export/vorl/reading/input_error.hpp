/// @file
/// The fault of an input.
#pragma once

#include <vorl/types/export.hpp>

#include <stdexcept>
#include <string>

namespace vorl {

/// The input or the file system is at fault.
class VORL_API InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    /// A fault of one line: what is wrong, what was found, what is expected.
    static InputError at(const std::string& file, std::size_t line, const std::string& what) {
        return InputError(file + ":" + std::to_string(line) + ": " + what);
    }
};

/// More memory would be needed than a limit allows.
class VORL_API MemoryLimitError : public InputError {
public:
    using InputError::InputError;
};

}  // namespace vorl
