#include "memory_limit.hpp"

#include <vorl/reading/wording.hpp>

#include <malloc.h>
#include <pthread.h>
#include <sys/resource.h>
#include <fstream>

namespace vorl::app {

namespace {

constexpr std::size_t THREAD_STACK = std::size_t{1} << 18;

std::size_t limitSet = 0;  // bytes, 0 if there is none

}  // namespace

std::size_t ownMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::size_t kilobytes = 0;
        if (word == "VmRSS:" && status >> kilobytes) return 1024 * kilobytes;
    }
    return 0;
}

void limitMemory(std::size_t most) {
    limitSet = most;
    rlimit limit{};
    if (getrlimit(RLIMIT_DATA, &limit) != 0 || limit.rlim_cur <= most) return;
    limit.rlim_cur = most;
    setrlimit(RLIMIT_DATA, &limit);
    // What threads set apart counts, too, whether they use it or not.
    mallopt(M_ARENA_MAX, 1);
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return;
    if (pthread_attr_setstacksize(&attributes, THREAD_STACK) == 0)
        pthread_setattr_default_np(&attributes);
    pthread_attr_destroy(&attributes);
}

std::string lackOfMemory() {
    if (limitSet == 0) return "out of memory";
    return "out of memory: the limit is " + bytes(limitSet) + "; --memory-limit SIZE allows more";
}

}  // namespace vorl::app
