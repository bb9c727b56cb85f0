#include "work.hpp"

#include <vorl/types/progress.hpp>

#include <pthread.h>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <exception>
#include <mutex>
#include <thread>

namespace nb = nanobind;

namespace vorl::python {

namespace {

constexpr std::chrono::milliseconds STEP{50};

/// Work on a thread that takes no signals, which are for the one that waits.
class Worker {
public:
    explicit Worker(const std::function<void()>& work) {
        sigset_t all;
        sigset_t former;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &former);
        try {
            m_thread = std::thread([this, &work] { run(work); });
        } catch (...) {
            pthread_sigmask(SIG_SETMASK, &former, nullptr);
            throw;
        }
        pthread_sigmask(SIG_SETMASK, &former, nullptr);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker() { m_thread.join(); }

    /// Waits a step long.
    /// @return whether the work is done
    bool wait() {
        std::unique_lock lock(m_mutex);
        return m_ended.wait_for(lock, STEP, [this] { return m_done; });
    }
    void waitForEnd() {
        std::unique_lock lock(m_mutex);
        m_ended.wait(lock, [this] { return m_done; });
    }

    Progress progress;
    std::exception_ptr fault;

private:
    void run(const std::function<void()>& work) {
        try {
            const ProgressScope scope(progress);
            work();
        } catch (...) {
            fault = std::current_exception();
        }
        // The worker mustn't be gone before it is told.
        const std::lock_guard lock(m_mutex);
        m_done = true;
        m_ended.notify_one();
    }

    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_done = false;
    std::thread m_thread;
};

void look(const Progress& progress, nb::handle tell) {
    if (PyErr_CheckSignals() != 0) throw nb::python_error();
    if (tell.is_none()) return;
    const Progress::State state = progress.state();
    if (!state.stage) return;
    nb::object level = nb::none();
    if (state.level != Progress::NO_LEVEL) level = nb::int_(state.level);
    tell(state.stage, level, state.total, state.done);
}

}  // namespace

void watched(nb::handle tell, const std::function<void()>& work) {
    std::exception_ptr fault;
    {
        const nb::gil_scoped_release released;
        Worker worker(work);
        while (!fault && !worker.wait()) {
            const nb::gil_scoped_acquire held;
            try {
                look(worker.progress, tell);
            } catch (...) {
                fault = std::current_exception();
                worker.progress.cancel();
            }
        }
        worker.waitForEnd();
        if (!fault) fault = worker.fault;
    }
    if (fault) std::rethrow_exception(fault);
}

}  // namespace vorl::python
