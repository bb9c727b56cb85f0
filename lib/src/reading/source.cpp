#include <vorl/reading/source.hpp>

#include "system_memory.hpp"

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/unpack.hpp>
#include <vorl/types/plain_text.hpp>
#include <vorl/types/progress.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <istream>
#include <utility>

namespace vorl {

namespace {

InputError failure(const std::string& name, int err) {
    return InputError(InputError::Parts{.file = name, .wrong = std::strerror(err)});
}

/// The bytes of a file as they are.
class FileSource : public Source {
public:
    explicit FileSource(const std::string& name)
        : m_name(name),
          m_file(name == STANDARD_INPUT ? dup(STDIN_FILENO)
                                        : open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (m_file < 0) throw failure(name, errno);
        struct stat info {};
        int err = fstat(m_file, &info) != 0 ? errno : 0;
        if (err == 0 && S_ISDIR(info.st_mode)) err = EISDIR;
        if (err != 0) {
            close(m_file);
            throw failure(name, err);
        }
        if (S_ISREG(info.st_mode)) m_size = static_cast<std::size_t>(info.st_size);
        m_report.begin("reading", m_size.value_or(0));
    }
    ~FileSource() override { close(m_file); }

    /// Bytes at the begin, which are read all the same; fewer only if there are no more.
    std::string_view head(std::size_t count) {
        std::string data(count, '\0');
        while (m_head.size() < count) {
            const std::size_t got = fetch(data.data(), count - m_head.size());
            if (got == 0) break;
            m_head.append(data, 0, got);
        }
        return m_head;
    }

    std::size_t read(char* data, std::size_t most) override {
        if (m_head.empty()) return fetch(data, most);
        const std::size_t count = m_head.copy(data, most);
        m_head.erase(0, count);
        return count;
    }
    std::optional<std::size_t> size() const override { return m_size; }

private:
    std::size_t fetch(char* data, std::size_t most) {
        while (true) {
            const ssize_t count = ::read(m_file, data, most);
            if (count < 0 && errno != EINTR) throw failure(m_name, errno);
            m_report.advance(count > 0 ? static_cast<Size>(count) : 0);
            if (count >= 0) return static_cast<std::size_t>(count);
        }
    }

    std::string m_name;
    int m_file;
    std::optional<std::size_t> m_size;
    std::string m_head;
    ProgressReporter m_report;
};

}  // namespace

Source::~Source() = default;

std::size_t TextSource::read(char* data, std::size_t most) {
    const std::size_t count = m_rest.copy(data, most);
    m_rest.remove_prefix(count);
    return count;
}

StreamSource::StreamSource(std::istream& stream, std::string name)
    : m_stream(stream), m_name(std::move(name)) {}

std::size_t StreamSource::read(char* data, std::size_t most) {
    m_stream.read(data, static_cast<std::streamsize>(most));
    if (m_stream.bad()) throw failure(m_name, EIO);
    return static_cast<std::size_t>(m_stream.gcount());
}

std::size_t memoryLimit() {
    static const std::size_t limit = systemMemory() / 8 * 7;
    return limit;
}

std::unique_ptr<Source> openSource(const std::string& name, std::size_t memory) {
    auto file = std::make_unique<FileSource>(name);
    const Packing packing = packingOf(file->head(PACKING_HEAD));
    if (packing == Packing::NONE) return file;
    return unpacked(std::move(file), packing, name, memory / 2);
}

}  // namespace vorl
