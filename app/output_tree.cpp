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
#include <thread>

namespace vorl::app {

namespace fs = std::filesystem;

namespace {

InputError failure(const std::string& name, int err) {
    return InputError(name + ": " + std::strerror(err));
}

}  // namespace

/// Removes the folder before a signal ends the program. A handler could not do that, since it may
/// interrupt the allocation of memory, hence a thread waits for the signals.
class OutputTree::SignalWatch {
public:
    explicit SignalWatch(const std::string& folder) {
        sigemptyset(&m_signals);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, WAKE}) sigaddset(&m_signals, signal);
        pthread_sigmask(SIG_BLOCK, &m_signals, &m_former);
        m_thread = std::thread([this, folder] { watch(folder); });
    }

    ~SignalWatch() {
        pthread_kill(m_thread.native_handle(), WAKE);
        m_thread.join();
        pthread_sigmask(SIG_SETMASK, &m_former, nullptr);
    }

private:
    static constexpr int WAKE = SIGUSR2;

    void watch(const std::string& folder) const {
        int signal = 0;
        sigwait(&m_signals, &signal);
        if (signal == WAKE) return;
        std::error_code err;
        // The rest of the program goes on writing until it ends.
        for (int tries = 0; tries < 100 && fs::exists(folder, err); ++tries)
            fs::remove_all(folder, err);
        std::signal(signal, SIG_DFL);
        pthread_sigmask(SIG_UNBLOCK, &m_signals, nullptr);
        raise(signal);
    }

    sigset_t m_signals;
    sigset_t m_former;
    std::thread m_thread;
};

OutputTree::OutputTree(const std::string& name) : m_name(name) {
    const fs::path asked(name);
    if (!asked.has_filename() || asked.filename() == "." || asked.filename() == "..")
        throw failure(name, EISDIR);
    struct stat info {};
    const bool exists = stat(name.c_str(), &info) == 0;
    if (exists && S_ISDIR(info.st_mode)) throw failure(name, EISDIR);
    m_device = exists && !S_ISREG(info.st_mode);

    std::error_code err;
    fs::path parent = m_device ? fs::temp_directory_path(err) : asked.parent_path();
    if (parent.empty()) parent = ".";
    fs::create_directories(parent, err);
    if (err) throw InputError(parent.string() + ": " + err.message());
    m_folder = (parent / ".vorl-XXXXXX").string();
    if (!mkdtemp(m_folder.data())) throw failure(parent.string(), errno);
    m_watch = std::make_unique<SignalWatch>(m_folder);
    // The library warns of a folder that is there already.
    m_path = (fs::path(m_folder) / "files" / asked.filename()).string();
}

OutputTree::~OutputTree() {
    std::error_code err;
    fs::remove_all(m_folder, err);
}

std::vector<std::string> OutputTree::commit() {
    if (m_device) return copyToDevice();
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
    std::vector<std::string> names;
    for (const fs::path& file : written) {
        const fs::path name = parent / file;
        if (!name.parent_path().empty()) fs::create_directories(name.parent_path(), err);
        if (!err) fs::rename(files / file, name, err);
        if (err) throw InputError(name.string() + ": " + err.message());
        names.push_back(name.string());
    }
    return names;
}

std::vector<std::string> OutputTree::copyToDevice() {
    std::ifstream file(m_path, std::ios::binary);
    const int device = file ? open(m_name.c_str(), O_WRONLY | O_CLOEXEC) : -1;
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

}  // namespace vorl::app
