// Time and memory of a run.
#pragma once

#include <vorl/types/numbers.hpp>

#include <chrono>

namespace vorl::app {

class Stopwatch {
public:
    /// Seconds since the last call, or since the start.
    double lap();

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

/// In bytes. What `getrusage` tells may be the peak of the process that started this one.
Size peakMemory();

}  // namespace vorl::app
