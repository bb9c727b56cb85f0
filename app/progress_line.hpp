// The line that shows how far a run is.
#pragma once

#include <vorl/types/progress.hpp>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace vorl::app {

/// What the line tells, such as "level 2, candidates: 1,234 left, 0:07"; empty before the work.
std::string progressText(const Progress::State& state, std::chrono::seconds elapsed);

/// Shows on a terminal, from some while on, what this thread's work tells of itself; elsewhere
/// nothing. One at a time.
class ProgressLine {
public:
    ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine();

    /// Takes the line away, for good, before something else is printed.
    static void end();

private:
    void show();
    void stop();

    static ProgressLine* s_current;

    Progress m_progress;
    std::optional<ProgressScope> m_scope;
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_end = false;
    std::thread m_thread;
};

}  // namespace vorl::app
