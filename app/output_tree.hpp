// Files that appear under their names only when all of them are complete.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace vorl::app {

/// A hidden folder beside the asked file in which it and the files of its family are written, to be
/// moved to their names in the end. A run that fails, or that a signal ends, leaves nothing.
/// One at a time.
class OutputTree {
public:
    /// @param name of the asked file; missing folders on its way are created
    /// @throws InputError if nothing can be written there
    explicit OutputTree(const std::string& name);
    OutputTree(const OutputTree&) = delete;
    OutputTree& operator=(const OutputTree&) = delete;
    ~OutputTree();

    /// Where to write the asked file.
    const std::string& path() const { return m_path; }
    /// Moves all files to their names.
    /// @return the names, that of the asked file first
    /// @throws InputError if a file can't be moved
    std::vector<std::string> commit();

private:
    class SignalWatch;

    std::vector<std::string> copyToDevice();

    std::string m_name;
    std::string m_folder;  ///< the hidden folder
    std::string m_path;
    bool m_device =
        false;  ///< the asked file is a device or a pipe, which takes the asked file only
    std::unique_ptr<SignalWatch> m_watch;
};

}  // namespace vorl::app
