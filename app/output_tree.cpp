#include "output_tree.hpp"

#include "errors.hpp"
#include "folder_names.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace vorl::app {

namespace fs = std::filesystem;

namespace {

/// Where the files are in the hidden folder.
constexpr const char* FILES = "files";

InputError failure(const std::string& name, int err) {
    return InputError(name + ": " + std::strerror(err));
}

bool isSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// The standard stream that a file is, such as the target of a redirection; -1 if it is none.
int standardStream(const struct stat& file) {
    struct stat own {};
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
        if (!S_ISCHR(file.st_mode) && fstat(stream, &own) == 0 && isSame(file, own)) return stream;
    return -1;
}

/// The one at work.
std::atomic<OutputTree*> current = nullptr;

void requireWritable(const fs::path& folder) {
    if (access(folder.c_str(), W_OK | X_OK) != 0) throw failure(folder.string(), errno);
}

}  // namespace

OutputTree::OutputTree(const std::string& name, bool folder, bool parents)
    : m_name(name), m_inFolder(folder) {
    const fs::path asked(name);
    std::string parent;
    if (name == STANDARD_OUTPUT) {
        m_device = true;
        m_stream = STDOUT_FILENO;
    } else {
        if (!asked.has_filename() || asked.filename() == "." || asked.filename() == "..")
            throw failure(name, EISDIR);
        struct stat info {};
        const bool exists = stat(name.c_str(), &info) == 0;
        if (!exists && errno != ENOENT) throw failure(name, errno);
        const bool isFolder = exists && S_ISDIR(info.st_mode);
        if (isFolder && !folder) throw failure(name, EISDIR);
        if (exists) m_stream = standardStream(info);
        m_device = exists && !isFolder && (!S_ISREG(info.st_mode) || m_stream >= 0);
        parent = asked.parent_path();
    }
    std::error_code err;
    if (!parents && !parent.empty() && !fs::exists(parent, err) &&
        (!err || err == std::errc::no_such_file_or_directory))
        throw InputError(parent + ": there is no such folder; --parents creates it");
    if (m_device) {
        parent = fs::temp_directory_path(err);
    }
    m_signals = std::make_unique<EndSignals>(
        [](void* tree) noexcept { static_cast<OutputTree*>(tree)->remove(); }, this);
    const EndSignals::Pause pause(*m_signals);
    try {
        create(parent.empty() ? "." : parent);
        // The library warns of a folder that is there already.
        m_path = (fs::path(m_folder.path()) / FILES / asked.filename()).string();
    } catch (...) {
        remove();
        throw;
    }
    current = this;
}

OutputTree::~OutputTree() {
    current = nullptr;
    const EndSignals::Pause pause(*m_signals);
    remove();
}

void OutputTree::discardCurrent() {
    OutputTree* const tree = current;
    if (!tree) return;
    const EndSignals::Pause pause(*tree->m_signals);
    tree->remove();
}

bool OutputTree::isStandardOutput() const { return m_stream == STDOUT_FILENO; }

void OutputTree::create(const std::string& parent) {
    std::error_code err;
    for (fs::path path = parent; !path.empty() && !fs::exists(path, err); path = path.parent_path())
        m_created.push_back(path.string());
    fs::create_directories(parent, err);
    if (err) throw InputError(parent + ": " + err.message());
    m_folder.make(parent);
}

void OutputTree::remove() noexcept {
    m_folder.remove();
    // Those that hold a file stay.
    for (const std::string& folder : m_created) rmdir(folder.c_str());
}

void OutputTree::protect(const std::string& input) { m_inputs.push_back(input); }

/// The files that were written, as names within their folder, the asked one first.
std::vector<fs::path> OutputTree::written() const {
    const fs::path top = fs::path(m_path).parent_path();
    const fs::path asked = fs::path(m_path).filename();
    const auto fail = [this](const std::error_code& err) {
        return InputError(m_name + ": what was written can't be found: " + err.message());
    };
    std::vector<fs::path> files;
    for (std::vector<fs::path> folders{top}; !folders.empty();) {
        const fs::path folder = std::move(folders.back());
        folders.pop_back();
        // As a mask of modes may have taken the right to read.
        chmod(folder.c_str(), S_IRWXU);
        try {
            for (const std::string& name : namesIn(folder.string())) {
                const fs::path path = folder / name;
                if (fs::is_directory(path))
                    folders.push_back(path);
                else
                    files.push_back(path.lexically_relative(top));
            }
        } catch (const std::system_error& err) {
            throw fail(err.code());
        }
    }
    std::sort(files.begin(), files.end());
    const auto rest = std::stable_partition(files.begin(), files.end(),
                                            [&](const fs::path& file) { return file == asked; });
    if (m_inFolder ? files.empty() : rest == files.begin())
        throw fail(std::make_error_code(std::errc::no_such_file_or_directory));
    return files;
}

std::vector<std::string> OutputTree::commit() {
    if (m_device) return copyToDevice();
    const EndSignals::Pause pause(*m_signals);
    const fs::path parent = fs::path(m_name).parent_path();
    const std::vector<fs::path> files = written();
    std::vector<std::string> names;
    // What stands in the way of one keeps all of them from their names.
    for (const fs::path& file : files) {
        const fs::path name = parent / file;
        names.push_back(name.string());
        for (const std::string& input : m_inputs) requireOther(names.back(), input);
        std::error_code err;
        if (fs::is_directory(name, err)) throw failure(name.string(), EISDIR);
        const fs::path folder = name.parent_path();
        if (folder.empty()) continue;
        m_created.insert(m_created.begin(), folder.string());
        if (!fs::create_directories(folder, err)) m_created.erase(m_created.begin());
        if (err) throw InputError(folder.string() + ": " + err.message());
        requireWritable(folder);
    }
    // Names are moved without an allocation, which could fail between two of them.
    const fs::path top = fs::path(m_path).parent_path();
    std::vector<std::string> complete;
    for (const fs::path& file : files) complete.push_back((top / file).string());
    for (std::size_t i = 0; i < files.size(); ++i)
        if (std::rename(complete[i].c_str(), names[i].c_str()) != 0) throw failure(names[i], errno);
    return names;
}

std::vector<std::string> OutputTree::copyToDevice() {
    std::ifstream file(m_path, std::ios::binary);
    int device = -1;
    if (file)
        device = m_stream >= 0 ? fcntl(m_stream, F_DUPFD_CLOEXEC, 3)
                               : open(m_name.c_str(), O_WRONLY | O_CLOEXEC);
    if (device < 0) throw failure(m_name, errno);
    char block[1 << 16];
    int err = 0;
    while (err == 0 && (file.read(block, sizeof block), file.gcount() > 0)) {
        const char* rest = block;
        for (std::streamsize left = file.gcount(); left > 0 && err == 0;) {
            const ssize_t count = write(device, rest, static_cast<std::size_t>(left));
            if (count < 0 && errno != EINTR) err = errno;
            if (count > 0) {
                rest += count;
                left -= count;
            }
        }
    }
    if (file.bad() && err == 0) err = EIO;
    if (close(device) != 0 && err == 0) err = errno;
    if (err == EPIPE && isStandardOutput()) throw ClosedPipe(failure(m_name, err).what());
    if (err != 0) throw failure(m_name, err);
    return {m_name};
}

void requireOther(const std::string& output, const std::string& input) {
    std::error_code err;
    if (fs::is_regular_file(output, err) && fs::equivalent(output, input, err))
        throw UsageError(output + " is read, and would be overwritten; give another name to write");
}

}  // namespace vorl::app
