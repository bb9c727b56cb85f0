// Threads that share out the items of a loop.
#pragma once

#include <vorl/types/numbers.hpp>
#include <vorl/types/progress.hpp>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vorl::detail {

/// Runs loops on several threads. Who takes which items is left to chance, so nothing may depend
/// on it.
class Workers {
public:
    /// @param threads 0 for as many as the process may use
    explicit Workers(unsigned threads);
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    unsigned count() const { return static_cast<unsigned>(m_threads.size()) + 1; }

    /// Calls work(first, last, worker) for ranges that cover [0, items), worker < count().
    /// @param grain items of a range, as many as are worth the way to another thread
    /// @throws what the work throws, Cancelled among it
    template <class WorkT>
    void share(Size items, Size grain, const WorkT& work) {
        m_report.check();
        if (m_threads.empty() || items <= grain) {
            if (items) work(Size{0}, items, 0u);
            return;
        }
        run(items, grain, work);
    }

    /// Calls work(i) for each item.
    template <class WorkT>
    void each(Size items, const WorkT& work) {
        share(items, GRAIN, [&](Size first, Size last, unsigned) {
            for (Size i = first; i < last; ++i) work(i);
        });
    }

    static constexpr Size GRAIN = 1 << 12;

private:
    using Work = std::function<void(Size, Size, unsigned)>;

    void run(Size items, Size grain, const Work& work);
    void take(unsigned worker) noexcept;
    void wait(unsigned worker);

    ProgressReporter m_report;
    std::vector<std::thread> m_threads;
    std::mutex m_mutex;
    std::condition_variable m_start;
    std::condition_variable m_end;
    Size m_run = 0;  // number of the loop
    unsigned m_busy = 0;
    bool m_stop = false;
    const Work* m_work = nullptr;
    Size m_items = 0;
    Size m_grain = 0;
    std::atomic<Size> m_next{0};
    std::exception_ptr m_failure;
};

/// Adds to a value that several threads may add to. The sum is exact, so the order is no matter.
template <class ValueT>
void addShared(ValueT& value, ValueT change) {
    std::atomic_ref<ValueT> shared(value);
    ValueT former = shared.load(std::memory_order_relaxed);
    while (!shared.compare_exchange_weak(former, former + change, std::memory_order_relaxed)) {
    }
}

}  // namespace vorl::detail
