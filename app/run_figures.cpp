#include "run_figures.hpp"

#include <sys/resource.h>
#include <fstream>
#include <string>

namespace vorl::app {

double Stopwatch::lap() {
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::duration<double> elapsed = now - m_start;
    m_start = now;
    return elapsed.count();
}

Size peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        Size kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes) return 1024 * kilobytes;
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return Size{1024} * static_cast<Size>(usage.ru_maxrss);
}

}  // namespace vorl::app
