/// @file
/// Identification of file formats, and owners of file streams.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/flags.hpp>

#include <cstdio>
#include <string>
#include <vector>

namespace vorl {

/// Extensions of the formats, separated by blanks.
namespace extensions {
inline constexpr const char* RCG = "rcg hig";
inline constexpr const char* NSE = "nse nsl ncol ll";
inline constexpr const char* NSA = "nsa";
inline constexpr const char* CNL = "cnl";
inline constexpr const char* RHB = "rhb";
}  // namespace extensions

/// Tells the format of an input network from the extension of its name, case-sensitively.
///
/// The extension is sought as a part of the lists above, so that a part of an extension is enough.
VORL_API FileFormat inpFileFmt(const char* filename);

/// Owner of a file stream.
class VORL_API FileWrapper {
public:
    explicit FileWrapper(std::FILE* file = nullptr, bool closable = true)
        : m_file(file), m_closable(closable) {}
    FileWrapper(FileWrapper&& other) noexcept;
    FileWrapper& operator=(FileWrapper&& other) noexcept;
    ~FileWrapper();

    /// The stream, of which the wrapper stays the owner.
    std::FILE* fdescr() const { return m_file; }
    /// Closes the present stream if the wrapper is to close it, and takes another one.
    /// @return the result of the close, 0 if nothing was closed
    int reset(std::FILE* file = nullptr, bool closable = true);
    /// Gives the stream away.
    std::FILE* release();

private:
    std::FILE* m_file;
    bool m_closable;
};

using FileWrappers = std::vector<FileWrapper>;

/// Creates a directory with its parents; what is wrong with the path is traced.
VORL_API void ensureDir(const std::string& dir);

}  // namespace vorl
