#include "workers.hpp"

#include <sched.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace vorl::detail {

namespace {

/// How many threads the process may run at once.
unsigned available() {
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0)
        return static_cast<unsigned>(std::max(1, CPU_COUNT(&set)));
    return std::max(1u, std::thread::hardware_concurrency());
}

}  // namespace

Workers::Workers(unsigned threads) {
    const unsigned wanted = threads ? threads : available();
    try {
        for (unsigned i = 1; i < wanted; ++i) m_threads.emplace_back([this, i] { wait(i); });
    } catch (const std::system_error&) {
        // Fewer threads do the same work.
    }
}

Workers::~Workers() {
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_start.notify_all();
    for (std::thread& thread : m_threads) thread.join();
}

void Workers::run(Size items, Size grain, const Work& work) {
    {
        const std::lock_guard lock(m_mutex);
        m_work = &work;
        m_items = items;
        m_grain = grain;
        m_next.store(0, std::memory_order_relaxed);
        m_busy = static_cast<unsigned>(m_threads.size());
        ++m_run;
    }
    m_start.notify_all();
    take(0);
    std::unique_lock lock(m_mutex);
    m_end.wait(lock, [this] { return m_busy == 0; });
    if (m_failure) std::rethrow_exception(std::exchange(m_failure, nullptr));
}

void Workers::take(unsigned worker) noexcept {
    try {
        for (;;) {
            const Size first = m_next.fetch_add(m_grain, std::memory_order_relaxed);
            if (first >= m_items) return;
            m_report.check();
            (*m_work)(first, std::min(m_items, first + m_grain), worker);
        }
    } catch (...) {
        const std::lock_guard lock(m_mutex);
        if (!m_failure) m_failure = std::current_exception();
        m_next.store(m_items, std::memory_order_relaxed);
    }
}

void Workers::wait(unsigned worker) {
    Size done = 0;
    for (;;) {
        {
            std::unique_lock lock(m_mutex);
            m_start.wait(lock, [&] { return m_stop || m_run != done; });
            if (m_stop) return;
            done = m_run;
        }
        take(worker);
        const std::lock_guard lock(m_mutex);
        if (--m_busy == 0) m_end.notify_one();
    }
}

}  // namespace vorl::detail
