// What is done before a signal ends the program.
#pragma once

#include <atomic>
#include <csignal>

namespace vorl::app {

/// While it lives, a signal that ends the program, be it sent or of a fault of its own, first lets
/// an action run. One at a time.
///
/// The action runs in a signal handler: it must use nothing but async-signal-safe calls. It never
/// comes between what happens within a `Pause`, which it waits for, unless that is at fault.
class EndSignals {
public:
    using Action = void (*)(void* object) noexcept;

    EndSignals(Action action, void* object);
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;
    ~EndSignals();

    class Pause {
    public:
        explicit Pause(EndSignals& signals) : m_signals(signals) { m_signals.pause(); }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
        ~Pause() { m_signals.resume(); }

    private:
        EndSignals& m_signals;
    };

private:
    enum State { OPEN, PAUSED, ENDING };

    static void handle(int signal, siginfo_t* info, void*);
    void pause();
    void resume();

    static std::atomic<EndSignals*> s_current;

    const Action m_action;
    void* const m_object;
    std::atomic<int> m_state{OPEN};
    std::atomic<int> m_waiting{0};  ///< a signal that came within a pause
    struct sigaction m_former[NSIG];
    bool m_taken[NSIG] = {};
};

}  // namespace vorl::app
