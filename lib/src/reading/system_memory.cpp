#include "system_memory.hpp"

#include <unistd.h>
#include <algorithm>
#include <fstream>
#include <limits>

namespace vorl {

namespace {

constexpr std::size_t UNKNOWN = std::numeric_limits<std::size_t>::max();

std::size_t machineMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long size = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || size <= 0) return UNKNOWN;
    return static_cast<std::size_t>(pages) * static_cast<std::size_t>(size);
}

/// The least limit of a group and of those that it lies in.
std::size_t groupLimit(const std::string& hierarchy, std::string group, const char* file) {
    std::size_t least = UNKNOWN;
    for (;;) {
        while (group.ends_with('/')) group.pop_back();
        // It holds a word, and not a number, where there is no limit.
        if (std::size_t limit = 0; std::ifstream(hierarchy + group + file) >> limit)
            least = std::min(least, limit);
        if (group.empty()) return least;
        group.erase(group.rfind('/'));
    }
}

}  // namespace

std::size_t systemMemory(const std::string& root) {
    std::size_t least = machineMemory();
    std::ifstream groups(root + "proc/self/cgroup");
    // A line is number:controllers:group; those of the second version have no controllers.
    for (std::string line; std::getline(groups, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = line.find(':', first + 1);
        if (second == std::string::npos) continue;
        const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
        const std::string group = line.substr(second + 1);
        if (!group.starts_with('/')) continue;
        if (controllers == ",,")
            least = std::min(least, groupLimit(root + "sys/fs/cgroup", group, "/memory.max"));
        else if (controllers.find(",memory,") != std::string::npos)
            least = std::min(
                least, groupLimit(root + "sys/fs/cgroup/memory", group, "/memory.limit_in_bytes"));
    }
    return least;
}

}  // namespace vorl
