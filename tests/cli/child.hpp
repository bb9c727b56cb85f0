/// @file
/// The program as a child process that limits and signals can be put on.
#pragma once

#include "cli/program.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <thread>
#include <vector>

namespace vorl::test {

class Child {
public:
    /// @param prepare runs in the child, before the program
    explicit Child(const std::vector<std::string>& arguments,
                   const std::function<void()>& prepare = {}) {
        std::vector<char*> words{const_cast<char*>(VORL_BINARY)};
        for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
        words.push_back(nullptr);
        const std::string out = (m_folder / "out").string();
        const std::string err = (m_folder / "err").string();
        // Opened here, for it may lie where a child without rights can't go.
        const int program = open(VORL_BINARY, O_RDONLY | O_CLOEXEC);
        m_pid = fork();
        if (m_pid != 0) {
            close(program);
            return;
        }
        const auto redirect = [](const std::string& file, int stream) {
            dup2(open(file.c_str(), O_WRONLY | O_CREAT, 0600), stream);
        };
        redirect(out, STDOUT_FILENO);
        redirect(err, STDERR_FILENO);
        // A test may itself run where they are ignored.
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
        // A sanitizer would answer the signal of a fault in the program's place.
        if (VORL_SANITIZED) setenv("ASAN_OPTIONS", "handle_segv=0", 1);
        if (prepare) prepare();
        fexecve(program, words.data(), environ);
        _exit(127);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void send(int signal) const { kill(m_pid, signal); }

    /// Waits until the condition holds.
    /// @return false if the child ends, or a minute passes, before
    bool waitFor(const std::function<bool()>& condition) {
        for (int i = 0; i < 60'000; ++i) {
            if (condition()) return true;
            if (reap(WNOHANG)) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }

    /// The outcome, once the child has ended.
    Outcome outcome() {
        reap(0);
        return {WIFEXITED(m_status) ? WEXITSTATUS(m_status) : -1, contents(m_folder / "out"),
                contents(m_folder / "err")};
    }
    /// The signal that ended it, 0 if none did.
    int signal() const { return WIFSIGNALED(m_status) ? WTERMSIG(m_status) : 0; }
    /// In MiB.
    long peakMemory() const { return m_usage.ru_maxrss / 1024; }

private:
    bool reap(int options) {
        if (!m_ended) m_ended = wait4(m_pid, &m_status, options, &m_usage) == m_pid;
        return m_ended;
    }

    Folder m_folder;
    pid_t m_pid;
    int m_status = 0;
    bool m_ended = false;
    rusage m_usage{};
};

inline void limit(decltype(RLIMIT_AS) resource, rlim_t most) {
    const rlimit both{most, most};
    setrlimit(resource, &both);
}

/// The names of what is in a folder, hidden ones too.
inline std::vector<std::string> listing(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace vorl::test
