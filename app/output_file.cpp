#include "output_file.hpp"

#include "errors.hpp"

#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace vorl::app {

namespace {

// What a signal handler has to remove; its first byte is 0 while there is nothing.
char unfinished[4096];

extern "C" void removeUnfinished(int signal) {
    if (unfinished[0]) unlink(unfinished);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

InputError failure(const std::string& name, int err) {
    return InputError(name + ": " + std::strerror(err));
}

}  // namespace

OutputFile::OutputFile(const std::string& name) : m_name(name), m_temporary(name + ".XXXXXX") {
    struct stat info {};
    if (stat(name.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) throw failure(name, EISDIR);
    // A device or a pipe is written as it is.
    if (stat(name.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) {
        m_temporary.clear();
        m_stream = std::fopen(name.c_str(), "w");
        if (!m_stream) throw failure(name, errno);
        return;
    }
    if (m_temporary.size() >= sizeof unfinished) throw failure(name, ENAMETOOLONG);
    const int file = mkstemp(m_temporary.data());
    if (file < 0) throw failure(name, errno);
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(file, 0666 & ~mask);
    std::strcpy(unfinished, m_temporary.c_str());
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, removeUnfinished);
    m_stream = fdopen(file, "w");
    if (!m_stream) throw failure(name, errno);
}

OutputFile::~OutputFile() {
    if (m_stream) std::fclose(m_stream);
    if (!m_temporary.empty()) unlink(m_temporary.c_str());
    unfinished[0] = '\0';
}

void OutputFile::commit() {
    errno = 0;
    const bool failed = std::ferror(m_stream) || std::fflush(m_stream) != 0;
    const bool unclosed = std::fclose(m_stream) != 0;
    m_stream = nullptr;
    if (failed || unclosed) throw failure(m_name, errno ? errno : EIO);
    if (m_temporary.empty()) return;
    if (std::rename(m_temporary.c_str(), m_name.c_str()) != 0) throw failure(m_name, errno);
    m_temporary.clear();
    unfinished[0] = '\0';
}

}  // namespace vorl::app
