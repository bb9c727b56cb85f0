// Files that appear under their names only when all of them are complete.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vorl::app {

/// The name that stands for the standard output.
inline constexpr const char* STANDARD_OUTPUT = "-";

/// A hidden folder beside the asked file in which it and the files of its family are written, to be
/// moved to their names in the end. A run that fails, or that a signal ends, leaves nothing.
/// One at a time.
class OutputTree {
public:
    /// @param name of the asked file, "-" for the standard output; missing folders on its way are
    /// created
    /// @param folder  the files go into a folder of the name without its extension, and none has
    /// the name itself
    /// @throws InputError if nothing can be written there, UsageError for the name of a compressed
    /// file
    explicit OutputTree(const std::string& name, bool folder = false);
    OutputTree(const OutputTree&) = delete;
    OutputTree& operator=(const OutputTree&) = delete;
    ~OutputTree();

    /// Where to write the asked file.
    const std::string& path() const { return m_path; }
    /// The asked file is a device, a pipe or a standard stream, which takes no other files.
    bool isDevice() const { return m_device; }
    /// What is asked for goes where the program's results go.
    bool isStandardOutput() const;
    /// Moves all files to their names.
    /// @return the names, that of the asked file first
    /// @throws InputError if a file can't be moved
    std::vector<std::string> commit();

private:
    class SignalWatch;

    void create(const std::string& parent);
    void remove();
    std::vector<std::string> copyToDevice();

    std::string m_name;
    bool m_device = false;
    int m_stream = -1;     ///< the standard stream that the asked file is
    std::string m_folder;  ///< the hidden folder
    std::string m_path;
    /// Folders that were missing on the way, the lowest first.
    std::vector<std::string> m_created;
    /// Held while the hidden folder is made, and while files are moved to their names.
    std::mutex m_mutex;
    std::unique_ptr<SignalWatch> m_watch;
};

/// @throws UsageError if writing the one file would replace the other one
void requireOther(const std::string& output, const std::string& input);

}  // namespace vorl::app
