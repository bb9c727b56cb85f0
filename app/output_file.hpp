// A file that appears under its name only when it is complete.
#pragma once

#include <cstdio>
#include <string>

namespace vorl::app {

/// Writes beside the file and renames in the end; a failed or interrupted run leaves nothing.
/// One at a time.
class OutputFile {
public:
    /// @throws InputError if the file can't be created
    explicit OutputFile(const std::string& name);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    std::FILE* stream() const { return m_stream; }
    /// Closes the file and gives it its name.
    /// @throws InputError if writing fails
    void commit();

private:
    std::string m_name;
    std::string m_temporary;
    std::FILE* m_stream = nullptr;
};

}  // namespace vorl::app
