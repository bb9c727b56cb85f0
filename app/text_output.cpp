#include "text_output.hpp"

#include "errors.hpp"

#include <vorl/reading/pack.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

namespace vorl::app {

void writeText(std::string plain, OutputTree& files, const std::string& name) {
    const std::string text = packed(std::move(plain), name);
    std::error_code err;
    std::filesystem::create_directories(std::filesystem::path(files.path()).parent_path(), err);
    std::FILE* const file = std::fopen(files.path().c_str(), "w");
    if (!file) throw InputError(name + ": " + std::strerror(errno));
    errno = 0;
    const bool whole = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (std::fclose(file) != 0 || !whole)
        throw InputError(name + ": " + std::strerror(errno ? errno : EIO));
    files.commit();
}

}  // namespace vorl::app
