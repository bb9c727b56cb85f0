// Faults that the program reports, and its exit codes.
#pragma once

#include <vorl/reading/input_error.hpp>

#include <stdexcept>
#include <string>

namespace vorl::app {

/// Exit codes; numbers are never reused for something else.
enum ExitCode { DONE = 0, INPUT_FAULT = 1, WRONG_USAGE = 2 };

/// Nobody reads the standard output any more.
class ClosedPipe : public InputError {
public:
    using InputError::InputError;
};

/// The command line is at fault.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace vorl::app
