/// @file
/// What long work tells of itself, and how it is ended before its time.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/numbers.hpp>

#include <atomic>
#include <stdexcept>

namespace vorl {

/// Thrown out of work that `Progress::cancel` ends. What was built is gone then, and so are nodes
/// that were handed over.
class VORL_API Cancelled : public std::runtime_error {
public:
    Cancelled() : std::runtime_error("the work was ended on demand\n") {}
};

/// How far some work is, and the wish to end it.
///
/// The work writes and others look when they like, from any thread; `cancel` may also be called by
/// a signal handler. Work reports to the progress that its thread listens with, see
/// `ProgressScope`; where there is none, nothing is kept and nothing can be cancelled:
///
///     vorl::Progress progress;  // shared with a thread that shows it
///     const vorl::ProgressScope scope(progress);
///     const auto hierarchy = graph.buildHierarchy();
class VORL_API Progress {
public:
    /// The level of a stage that has none.
    static constexpr Size NO_LEVEL = ~Size{0};

    /// A look at the work. Its parts are read one after another, while the work goes on.
    struct State {
        const char* stage;  ///< in words, such as "reading"; null before the first one
        Size level;         ///< of the hierarchy, or NO_LEVEL
        Size total;         ///< items of the stage (of reading: bytes); 0 where unknown
        Size done;          ///< how many of them are done

        Size left() const { return done < total ? total - done : 0; }
    };

    State state() const noexcept {
        return {m_stage.load(READ), m_level.load(READ), m_total.load(READ), m_done.load(READ)};
    }

    /// Lets the work throw `Cancelled` soon.
    void cancel() noexcept { m_cancelled.store(true, READ); }
    bool cancelled() const noexcept { return m_cancelled.load(READ); }

    /// The one that the calling thread listens with, null if there is none.
    static Progress* current() noexcept;

private:
    friend class ProgressReporter;
    friend class ProgressScope;

    // Nothing else is passed on by these values.
    static constexpr std::memory_order READ = std::memory_order_relaxed;

    std::atomic<const char*> m_stage{nullptr};
    std::atomic<Size> m_level{NO_LEVEL};
    std::atomic<Size> m_total{0};
    std::atomic<Size> m_done{0};
    std::atomic<bool> m_cancelled{false};
};

/// Lets the work of this thread report to a progress, up to the end of the scope.
class VORL_API ProgressScope {
public:
    /// @param progress must outlive the scope; null for none
    explicit ProgressScope(Progress* progress) noexcept;
    explicit ProgressScope(Progress& progress) noexcept : ProgressScope(&progress) {}
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;
    ~ProgressScope();

private:
    Progress* const m_former;
};

/// The side of the work: reports to the progress that the thread listened with when this was made.
///
/// Several threads may work for one progress, each with a reporter of its own.
class ProgressReporter {
public:
    ProgressReporter() noexcept : m_progress(Progress::current()) {}

    /// Starts a stage.
    /// @param stage a text that is never freed
    /// @throws Cancelled
    void begin(const char* stage, Size total = 0, Size level = Progress::NO_LEVEL) const {
        if (!m_progress) return;
        m_progress->m_done.store(0, Progress::READ);
        m_progress->m_stage.store(stage, Progress::READ);
        m_progress->m_level.store(level, Progress::READ);
        m_progress->m_total.store(total, Progress::READ);
        check();
    }

    /// Tells of items that are done; cheap enough for each item of a loop.
    /// @throws Cancelled
    void advance(Size count = 1) const {
        if (!m_progress) return;
        m_progress->m_done.fetch_add(count, Progress::READ);
        check();
    }

    /// For loops within an item.
    /// @throws Cancelled
    void check() const {
        if (m_progress && m_progress->cancelled()) throw Cancelled();
    }

private:
    Progress* m_progress;
};

}  // namespace vorl
