#include "hidden_folder.hpp"

#include "errors.hpp"
#include "folder_names.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace vorl::app {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view PREFIX = ".vorl-";
constexpr std::string_view PATTERN = "XXXXXX";
constexpr int FOLDER = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t ALL = 0700;

/// Removes what is in a folder, without the use of memory.
/// @param depth of the folders inside that are removed, too
void clear(int folder, int depth) noexcept {
    alignas(dirent64) char block[4096];
    // What is removed may shift what was not read yet.
    for (bool removed = true; removed;) {
        removed = false;
        lseek(folder, 0, SEEK_SET);
        for (ssize_t size; (size = getdents64(folder, block, sizeof block)) > 0;)
            for (ssize_t pos = 0; pos < size;) {
                const auto* const entry = reinterpret_cast<const dirent64*>(block + pos);
                pos += entry->d_reclen;
                const char* const name = entry->d_name;
                if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
                if (unlinkat(folder, name, 0) == 0) {
                    removed = true;
                    continue;
                }
                if (depth == 0) continue;
                fchmodat(folder, name, ALL, 0);
                const int inner = openat(folder, name, FOLDER);
                if (inner >= 0) {
                    clear(inner, depth - 1);
                    close(inner);
                }
                removed |= unlinkat(folder, name, AT_REMOVEDIR) == 0;
            }
    }
}

bool isHiddenName(std::string_view name) {
    if (!name.starts_with(PREFIX) || name.size() != PREFIX.size() + PATTERN.size()) return false;
    for (const char c : name.substr(PREFIX.size()))
        if (!std::isalnum(static_cast<unsigned char>(c))) return false;
    return true;
}

/// Removes a folder whose maker doesn't live any more.
void removeLeft(const fs::path& path, int depth) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != geteuid())
        return;
    chmod(path.c_str(), ALL);
    const int folder = open(path.c_str(), FOLDER);
    if (folder < 0) return;
    if (flock(folder, LOCK_EX | LOCK_NB) == 0) {
        clear(folder, depth);
        rmdir(path.c_str());
    }
    close(folder);
}

}  // namespace

void HiddenFolder::make(const std::string& parent) {
    try {
        for (const std::string& name : namesIn(parent))
            if (isHiddenName(name)) removeLeft(fs::path(parent) / name, SPARES);
    } catch (const std::system_error&) {
        // One may write to folders that one may not list.
    }
    do {
        m_path = (fs::path(parent) / PREFIX).string().append(PATTERN);
        if (!mkdtemp(m_path.data())) {
            const int failure = errno;
            m_path.clear();
            throw InputError(parent + ": " + std::strerror(failure));
        }
    } while (!open());
}

/// Takes the lock.
/// @return false if the folder was taken for one that is left, which it is until then
/// @throws InputError
bool HiddenFolder::open() {
    // As a mask of modes may have taken the right to read.
    chmod(m_path.c_str(), ALL);
    m_folder = ::open(m_path.c_str(), FOLDER);
    int failure = errno;
    for (int& spare : m_spares) {
        if (m_folder < 0) break;
        spare = fcntl(m_folder, F_DUPFD_CLOEXEC, 0);
        if (spare >= 0) continue;
        failure = errno;
        close();
    }
    if (m_folder < 0) {
        const bool gone = failure == ENOENT;
        rmdir(m_path.c_str());
        if (gone) return false;
        const std::string parent = fs::path(m_path).parent_path().string();
        m_path.clear();
        throw InputError(parent + ": " + std::strerror(failure));
    }
    // Not every file system has locks.
    flock(m_folder, LOCK_EX);
    struct stat info {};
    if (fstat(m_folder, &info) != 0 || info.st_nlink != 0) return true;
    close();
    return false;
}

void HiddenFolder::close() noexcept {
    for (int* const file : {&m_folder, &m_spares[0], &m_spares[1]}) {
        if (*file >= 0) ::close(*file);
        *file = -1;
    }
}

void HiddenFolder::remove() noexcept {
    if (m_folder < 0) return;
    for (int& spare : m_spares) {
        ::close(spare);
        spare = -1;
    }
    // The rest of the program may go on writing until it ends.
    for (int tries = 0; tries < 100; ++tries) {
        clear(m_folder, SPARES);
        if (rmdir(m_path.c_str()) == 0 || errno == ENOENT) break;
    }
    close();
}

}  // namespace vorl::app
