/// @file
/// The trace of the library as a text.
#pragma once

#include <vorl/types/trace.hpp>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace vorl::test {

/// Collects the trace while it lives.
class Trace {
public:
    Trace() : m_stream(open_memstream(&m_text, &m_size)), m_former(ftrace) { ftrace = m_stream; }
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;
    ~Trace() {
        ftrace = m_former;
        std::fclose(m_stream);
        std::free(m_text);
    }

    /// What was traced since the last call.
    std::string take() {
        std::fflush(m_stream);
        const std::string text(m_text + m_taken, m_size - m_taken);
        m_taken = m_size;
        return text;
    }

private:
    char* m_text = nullptr;
    std::size_t m_size = 0;
    std::size_t m_taken = 0;
    std::FILE* m_stream;
    std::FILE* m_former;
};

/// The text of the exception that the action throws, empty if it throws none of that type.
template <class ErrorT, class ActionT>
std::string errorOf(ActionT&& action) {
    try {
        action();
    } catch (const ErrorT& err) {
        return err.what();
    }
    return {};
}

/// What is said of a text that isn't the wanted number, but for the reason.
inline std::string numberFault(const std::string& text, const std::string& value) {
    return "Invalid format of val or out of range conversion of '" + text +
           "' with the value = " + value;
}

}  // namespace vorl::test
