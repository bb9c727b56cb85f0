#include "progress_line.hpp"

#include <vorl/reading/wording.hpp>

#include <sys/ioctl.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace vorl::app {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds DELAY{500};
constexpr std::chrono::milliseconds STEP{200};
constexpr std::string_view CLEARED = "\r\x1B[K";

bool countsBytes(std::string_view stage) { return stage == "reading"; }

/// Past the buffer of the stream, which a trace may fill.
void put(const std::string& text) {
    // Nothing depends on whether it is seen.
    [[maybe_unused]] const auto count = write(STDERR_FILENO, text.data(), text.size());
}

std::size_t columns() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col - 1u : 79u;
}

bool isTerminal() {
    const char* const term = std::getenv("TERM");
    return isatty(STDERR_FILENO) && term && std::string_view(term) != "dumb";
}

}  // namespace

std::string progressText(const Progress::State& state, std::chrono::seconds elapsed) {
    if (!state.stage) return "";
    std::string text;
    if (state.level != Progress::NO_LEVEL) text = "level " + std::to_string(state.level) + ", ";
    text += state.stage;
    const bool isLeft = state.total != 0;
    const Size count = isLeft ? state.left() : state.done;
    if (isLeft || count != 0)
        text += ": " + (countsBytes(state.stage) ? bytes(count) : grouped(count)) +
                (isLeft ? " left" : "");
    const auto seconds = elapsed.count();
    const std::string rest = std::to_string(seconds % 60);
    return text + ", " + std::to_string(seconds / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

ProgressLine* ProgressLine::s_current = nullptr;

ProgressLine::ProgressLine() {
    s_current = this;
    if (!isTerminal()) return;
    // Signals are for the thread that works.
    sigset_t all;
    sigset_t former;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &former);
    try {
        m_thread = std::thread([this] { show(); });
        m_scope.emplace(m_progress);
    } catch (const std::system_error&) {
        // The run does without.
    }
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

ProgressLine::~ProgressLine() {
    stop();
    s_current = nullptr;
}

void ProgressLine::end() {
    if (s_current) s_current->stop();
}

void ProgressLine::stop() {
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard lock(m_mutex);
        m_end = true;
    }
    m_ended.notify_one();
    m_thread.join();
}

void ProgressLine::show() {
    const auto start = Clock::now();
    std::unique_lock lock(m_mutex);
    bool shown = false;
    for (auto pause = DELAY; !m_ended.wait_for(lock, pause, [this] { return m_end; });
         pause = STEP) {
        const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
        const std::string text = progressText(m_progress.state(), elapsed);
        put(std::string(CLEARED) + text.substr(0, columns()));
        shown = true;
    }
    if (shown) put(std::string(CLEARED));
}

}  // namespace vorl::app
