// Faults that the program reports, and its exit codes.
#pragma once

#include <stdexcept>
#include <string>

namespace vorl::app {

/// Exit codes; numbers are never reused for something else.
enum ExitCode { DONE = 0, INPUT_FAULT = 1, WRONG_USAGE = 2 };

/// The input or the file system is at fault.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    /// A fault of one line: what is wrong, what was found, what is expected.
    static InputError at(const std::string& file, std::size_t line, const std::string& what) {
        return InputError(file + ":" + std::to_string(line) + ": " + what);
    }
};

/// The command line is at fault.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace vorl::app
