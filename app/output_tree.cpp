#include "output_tree.hpp"

#include "errors.hpp"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

namespace vorl::app {

namespace fs = std::filesystem;

namespace {

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

void requireWritable(const fs::path& folder) {
    if (access(folder.c_str(), W_OK | X_OK) != 0) throw failure(folder.string(), errno);
}

}  // namespace

/// Removes what was written before a signal ends the program. A handler could not do that, since it
/// may interrupt the allocation of memory, hence a thread waits for the signals.
class OutputTree::SignalWatch {
public:
    explicit SignalWatch(OutputTree& tree) : m_tree(tree) {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, WAKE);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            // Such as those of a run that nohup started.
            struct sigaction action {};
            if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
                sigaddset(&m_signals, signal);
        }
        pthread_sigmask(SIG_BLOCK, &m_signals, &m_former);
        try {
            m_thread = std::thread([this] { watch(); });
        } catch (const std::system_error& err) {
            throw InputError("no thread can be started: " + err.code().message());
        }
    }

    ~SignalWatch() {
        pthread_kill(m_thread.native_handle(), WAKE);
        m_thread.join();
        pthread_sigmask(SIG_SETMASK, &m_former, nullptr);
    }

private:
    static constexpr int WAKE = SIGUSR2;

    void watch() const {
        int signal = 0;
        sigwait(&m_signals, &signal);
        if (signal == WAKE) return;
        {
            const std::lock_guard lock(m_tree.m_mutex);
            m_tree.remove();
        }
        std::signal(signal, SIG_DFL);
        // None but this one, since the call to wake up may have come, too.
        sigset_t own;
        sigemptyset(&own);
        sigaddset(&own, signal);
        pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
        raise(signal);
    }

    OutputTree& m_tree;
    sigset_t m_signals;
    sigset_t m_former;
    std::thread m_thread;
};

OutputTree::OutputTree(const std::string& name, bool folder) : m_name(name) {
    const fs::path asked(name);
    for (const char* packing : {".gz", ".zst"})
        if (name.ends_with(packing))
            throw UsageError(name + ": files are written as plain text, give a name without " +
                             packing);
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
    if (m_device) {
        std::error_code err;
        parent = fs::temp_directory_path(err);
    }
    m_watch = std::make_unique<SignalWatch>(*this);
    const std::lock_guard lock(m_mutex);
    try {
        create(parent.empty() ? "." : parent);
    } catch (...) {
        remove();
        throw;
    }
    // The library warns of a folder that is there already.
    m_path = (fs::path(m_folder) / "files" / asked.filename()).string();
}

OutputTree::~OutputTree() {
    const std::lock_guard lock(m_mutex);
    remove();
}

bool OutputTree::isStandardOutput() const { return m_stream == STDOUT_FILENO; }

void OutputTree::create(const std::string& parent) {
    std::error_code err;
    for (fs::path path = parent; !path.empty() && !fs::exists(path, err); path = path.parent_path())
        m_created.push_back(path.string());
    fs::create_directories(parent, err);
    if (err) throw InputError(parent + ": " + err.message());
    std::string folder = (fs::path(parent) / ".vorl-XXXXXX").string();
    if (!mkdtemp(folder.data())) throw failure(parent, errno);
    m_folder = folder;
}

void OutputTree::remove() {
    std::error_code err;
    // The rest of the program goes on writing until it ends.
    for (int tries = 0; tries < 100 && !m_folder.empty() && fs::exists(m_folder, err); ++tries)
        fs::remove_all(m_folder, err);
    // Those that hold a file stay.
    for (const std::string& folder : m_created) fs::remove(folder, err);
}

std::vector<std::string> OutputTree::commit() {
    if (m_device) return copyToDevice();
    const std::lock_guard lock(m_mutex);
    const fs::path files = fs::path(m_path).parent_path();
    const fs::path parent = fs::path(m_name).parent_path();
    std::error_code err;
    std::vector<fs::path> written;
    for (const auto& entry : fs::recursive_directory_iterator(files, err))
        if (!entry.is_directory()) written.push_back(fs::relative(entry.path(), files));
    std::sort(written.begin(), written.end());
    std::stable_partition(written.begin(), written.end(), [this](const fs::path& file) {
        return file == fs::path(m_path).filename();
    });
    // What stands in the way of one keeps all of them from their names.
    for (const fs::path& file : written) {
        const fs::path name = parent / file;
        if (fs::is_directory(name, err)) throw failure(name.string(), EISDIR);
        const fs::path folder = name.parent_path();
        if (folder.empty()) continue;
        if (fs::create_directories(folder, err))
            m_created.insert(m_created.begin(), folder.string());
        if (err) throw InputError(folder.string() + ": " + err.message());
        requireWritable(folder);
    }
    std::vector<std::string> names;
    for (const fs::path& file : written) {
        const fs::path name = parent / file;
        fs::rename(files / file, name, err);
        if (err) throw InputError(name.string() + ": " + err.message());
        names.push_back(name.string());
    }
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
    if (close(device) != 0 && err == 0) err = errno;
    if (err != 0) throw failure(m_name, err);
    return {m_name};
}

void requireOther(const std::string& output, const std::string& input) {
    std::error_code err;
    if (fs::is_regular_file(output, err) && fs::equivalent(output, input, err))
        throw UsageError(output + " is read, and would be overwritten; give another name to write");
}

}  // namespace vorl::app
