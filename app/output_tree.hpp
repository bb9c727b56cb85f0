// Files that appear under their names only when all of them are complete.
#pragma once

#include "end_signals.hpp"
#include "hidden_folder.hpp"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace vorl::app {

/// The name that stands for the standard output.
inline constexpr const char* STANDARD_OUTPUT = "-";

/// A hidden folder beside the asked file in which it and the files of its family are written, to be
/// moved to their names in the end. A run that fails, or that a signal ends, leaves nothing; what a
/// killed run left is removed by the next one that writes to the same folder.
/// One at a time.
class OutputTree {
public:
    /// @param name of the asked file, "-" for the standard output
    /// @param folder  the files go into a folder of the name without its extension, and none has
    /// the name itself
    /// @param parents  missing folders on its way are created
    /// @throws InputError if nothing can be written there, UsageError for the name of a compressed
    /// file
    explicit OutputTree(const std::string& name, bool folder = false, bool parents = false);
    OutputTree(const OutputTree&) = delete;
    OutputTree& operator=(const OutputTree&) = delete;
    ~OutputTree();

    /// Where to write the asked file.
    const std::string& path() const { return m_path; }
    /// The asked file is a device, a pipe or a standard stream, which takes no other files.
    bool isDevice() const { return m_device; }
    /// What is asked for goes where the program's results go.
    bool isStandardOutput() const;
    /// Keeps `commit` from replacing a file.
    void protect(const std::string& input);
    /// Moves all files to their names.
    /// @return the names, that of the asked file first
    /// @throws InputError if there are none, or one can't be moved; UsageError if one is protected
    std::vector<std::string> commit();

    /// Removes what there is of the one at work, if there is one, before the process ends at once.
    static void discardCurrent();

private:
    void create(const std::string& parent);
    void remove() noexcept;
    std::vector<std::filesystem::path> written() const;
    std::vector<std::string> copyToDevice();

    std::string m_name;
    bool m_inFolder;
    bool m_device = false;
    int m_stream = -1;  ///< the standard stream that the asked file is
    HiddenFolder m_folder;
    std::string m_path;
    /// Folders that were missing on the way, the lowest first.
    std::vector<std::string> m_created;
    std::vector<std::string> m_inputs;
    std::unique_ptr<EndSignals> m_signals;
};

/// @throws UsageError if writing the one file would replace the other one
void requireOther(const std::string& output, const std::string& input);

}  // namespace vorl::app
