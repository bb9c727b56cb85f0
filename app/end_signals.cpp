#include "end_signals.hpp"

#include <unistd.h>
#include <algorithm>
#include <cerrno>

namespace vorl::app {

static_assert(std::atomic<EndSignals*>::is_always_lock_free &&
              std::atomic<int>::is_always_lock_free);

namespace {

/// Those that can't be caught, or that don't end a program.
constexpr int OTHERS[] = {SIGKILL, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU,
                          SIGCONT, SIGCHLD, SIGURG,  SIGWINCH};
/// Of a fault at the very place, to which the handler would return.
constexpr int FAULTS[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS};

template <std::size_t SIZE>
bool isAmong(const int (&signals)[SIZE], int signal) {
    return std::find(signals, signals + SIZE, signal) != signals + SIZE;
}

/// Whether the program itself is at fault, and nobody else sent the signal.
bool isOwnFault(int signal, const siginfo_t& info) {
    return isAmong(FAULTS, signal) && (info.si_code > 0 || info.si_pid == getpid());
}

}  // namespace

std::atomic<EndSignals*> EndSignals::s_current{nullptr};

EndSignals::EndSignals(Action action, void* object) : m_action(action), m_object(object) {
    s_current = this;
    struct sigaction own {};
    own.sa_sigaction = handle;
    own.sa_flags = SA_RESTART | SA_SIGINFO;
    sigemptyset(&own.sa_mask);
    for (int signal = 1; signal < NSIG; ++signal) {
        // Those of a run that nohup started, and the like, stay ignored.
        if (isAmong(OTHERS, signal) || sigaction(signal, nullptr, &m_former[signal]) != 0 ||
            m_former[signal].sa_handler == SIG_IGN)
            continue;
        m_taken[signal] = sigaction(signal, &own, nullptr) == 0;
    }
}

EndSignals::~EndSignals() {
    pause();
    for (int signal = 1; signal < NSIG; ++signal)
        if (m_taken[signal]) sigaction(signal, &m_former[signal], nullptr);
    s_current = nullptr;
    if (m_waiting != 0) raise(m_waiting);
}

void EndSignals::handle(int signal, siginfo_t* info, void*) {
    const int err = errno;
    const bool fault = isOwnFault(signal, *info);
    EndSignals* const signals = s_current;
    int state = OPEN;
    if (signals && !signals->m_state.compare_exchange_strong(state, ENDING)) {
        // At the end of the pause, which a fault can't wait for; or another thread does it already.
        if (state == PAUSED && !fault) {
            signals->m_waiting = signal;
            if (signals->m_state == OPEN) signals->resume();
        }
        if (!fault) {
            errno = err;
            return;
        }
    }
    if (signals) {
        if (state != ENDING) signals->m_action(signals->m_object);
        sigaction(signal, &signals->m_former[signal], nullptr);
    }
    // It is blocked until the handler returns.
    raise(signal);
    errno = err;
}

void EndSignals::pause() {
    for (int state = OPEN; !m_state.compare_exchange_strong(state, PAUSED); state = OPEN)
        ::pause();  // for the end, which another thread brings about
}

void EndSignals::resume() {
    m_state = OPEN;
    if (const int signal = m_waiting.exchange(0)) raise(signal);
}

}  // namespace vorl::app
