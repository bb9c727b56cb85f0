// A folder for files that aren't complete yet.
#pragma once

#include <string>

namespace vorl::app {

/// A folder `.vorl-XXXXXX` that goes with the object.
///
/// Its maker holds a lock on it, which ends with the process: what a killed process left is told by
/// that, and removed when the next folder is made beside it.
class HiddenFolder {
public:
    HiddenFolder() = default;
    HiddenFolder(const HiddenFolder&) = delete;
    HiddenFolder& operator=(const HiddenFolder&) = delete;
    ~HiddenFolder() { remove(); }

    /// @param parent the folder in which to make it
    /// @throws InputError
    void make(const std::string& parent);
    /// With all that is in it. Takes no memory and may be called by a signal handler.
    void remove() noexcept;

    const std::string& path() const { return m_path; }

private:
    /// Descriptors kept for `remove`: one for each depth of folders inside.
    static constexpr int SPARES = 2;

    bool open();
    void close() noexcept;

    std::string m_path;
    int m_folder = -1;
    int m_spares[SPARES] = {-1, -1};
};

}  // namespace vorl::app
