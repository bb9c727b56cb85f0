/// @file
/// The fault of an input.
#pragma once

#include <vorl/types/export.hpp>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

namespace vorl {

/// The input or the file system is at fault.
class VORL_API InputError : public std::runtime_error {
public:
    /// What a message is made of, as far as it is known apart.
    struct Parts {
        std::string file = {};
        std::size_t line = 0;       ///< from 1, 0 where the fault is of no line
        std::string wrong = {};     ///< what is wrong: all of the text, or what `found` stands for
        std::string found = {};     ///< such as "\"x\"", quoted and shortened
        std::string expected = {};  ///< such as "a number is expected"
    };

    explicit InputError(const std::string& message);
    explicit InputError(Parts parts);

    /// A fault of one line: what is wrong, what was found, what is expected.
    static InputError at(const std::string& file, std::size_t line, const std::string& what);

    const std::string& file() const { return m_parts->file; }
    std::size_t line() const { return m_parts->line; }
    const std::string& wrong() const { return m_parts->wrong; }
    const std::string& found() const { return m_parts->found; }
    const std::string& expected() const { return m_parts->expected; }
    const Parts& parts() const { return *m_parts; }

private:
    std::shared_ptr<const Parts> m_parts;
};

/// More memory would be needed than a limit allows.
class VORL_API MemoryLimitError : public InputError {
public:
    using InputError::InputError;
};

}  // namespace vorl
