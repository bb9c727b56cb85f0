#include "folder_names.hpp"

#include <dirent.h>
#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>

namespace vorl::app {

std::vector<std::string> namesIn(const std::string& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(folder.c_str()), closedir);
    const auto fail = [] { return std::system_error(errno, std::generic_category()); };
    if (!stream) throw fail();
    std::vector<std::string> names;
    for (;;) {
        errno = 0;
        const dirent* const entry = readdir(stream.get());
        if (!entry && errno != 0) throw fail();
        if (!entry) return names;
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            names.emplace_back(entry->d_name);
    }
}

}  // namespace vorl::app
