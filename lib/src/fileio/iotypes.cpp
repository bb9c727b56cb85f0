#include <vorl/fileio/iotypes.hpp>

#include <vorl/types/plain_text.hpp>
#include <vorl/types/trace.hpp>

#include <cstring>
#include <filesystem>
#include <utility>

namespace vorl {

FileFormat inpFileFmt(const char* filename) {
    const char* dot = std::strrchr(filename, '.');
    if (!dot) return FileFormat::UNKNOWN;
    const char* ext = dot + 1;
    if (std::strstr(extensions::RCG, ext)) return FileFormat::RCG;
    if (std::strstr(extensions::NSE, ext)) return FileFormat::NSE;
    if (std::strstr(extensions::NSA, ext)) return FileFormat::NSA;
    return FileFormat::UNKNOWN;
}

FileWrapper::FileWrapper(FileWrapper&& other) noexcept
    : m_file(std::exchange(other.m_file, nullptr)), m_closable(other.m_closable) {}

FileWrapper& FileWrapper::operator=(FileWrapper&& other) noexcept {
    if (this != &other) reset(other.release(), other.m_closable);
    return *this;
}

FileWrapper::~FileWrapper() { reset(); }

int FileWrapper::reset(std::FILE* file, bool closable) {
    const int result = m_file && m_closable ? std::fclose(m_file) : 0;
    m_file = file;
    m_closable = closable;
    return result;
}

std::FILE* FileWrapper::release() { return std::exchange(m_file, nullptr); }

void ensureDir(const std::string& dir) {
    namespace fs = std::filesystem;
    const detail::PlainLocale plain;
    std::error_code err;
    const fs::file_status status = fs::status(dir, err);
    if (status.type() == fs::file_type::not_found || status.type() == fs::file_type::none) {
        err.clear();
        fs::create_directories(dir, err);
        if (err)
            VORL_TRACE("ERROR ensureDir(), target directory '%s' can't be created: %s\n",
                       dir.c_str(), err.message().c_str());
    } else if (fs::is_directory(status)) {
        VORL_TRACE(
            "  > WARNING ensureDir(), the target base dir already exists, the content will be "
            "rewritten: %s\n",
            dir.c_str());
    } else {
        VORL_TRACE(
            "ERROR ensureDir(), target directory '%s' already exists as non-directory path\n",
            dir.c_str());
    }
}

}  // namespace vorl
