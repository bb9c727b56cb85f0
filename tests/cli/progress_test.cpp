// The line that shows how far a run is: on a terminal, and nowhere else.
#include "app/progress_line.hpp"
#include "cli/child.hpp"

#include <gtest/gtest.h>

#include <pty.h>

namespace vorl::test {
namespace {

TEST(ProgressLine, TellsStageLevelRestAndTime) {
    using std::chrono::seconds;
    const Size none = Progress::NO_LEVEL;
    EXPECT_EQ(app::progressText({nullptr, none, 0, 0}, seconds(3)), "");
    EXPECT_EQ(app::progressText({"candidates", 2, 12'000, 10'766}, seconds(67)),
              "level 2, candidates: 1,234 left, 1:07");
    EXPECT_EQ(app::progressText({"reading", none, 3 << 20, 1 << 20}, seconds(600)),
              "reading: 2.0 MiB left, 10:00");
    EXPECT_EQ(app::progressText({"writing clusters", none, 0, 55}, seconds(0)),
              "writing clusters: 55, 0:00");
    EXPECT_EQ(app::progressText({"sorting links", none, 0, 0}, seconds(1)), "sorting links, 0:01");
}

/// Runs the program on a pipe that it has to wait for, and gives what it showed on a terminal.
/// @param awaited  what it shows before the input ends; empty where it shows nothing
std::string shown(std::vector<std::string> words, const std::string& awaited) {
    int terminal = -1;
    int other = -1;
    EXPECT_EQ(openpty(&terminal, &other, nullptr, nullptr, nullptr), 0);
    int feed[2];
    EXPECT_EQ(pipe2(feed, O_CLOEXEC), 0);
    Child child(words, [&] {
        dup2(other, STDERR_FILENO);
        dup2(feed[0], STDIN_FILENO);
        setenv("TERM", "xterm", 1);
    });
    close(other);
    close(feed[0]);
    const std::string text = "1 2\n2 3\n1 3\n3 4\n";
    EXPECT_EQ(write(feed[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    fcntl(terminal, F_SETFL, O_NONBLOCK);
    std::string output;
    const auto gather = [&] {
        char block[4096];
        for (ssize_t count; (count = ::read(terminal, block, sizeof block)) > 0;)
            output.append(block, static_cast<std::size_t>(count));
    };
    // The input ends when the line has come; a loaded machine takes its time.
    for (int wait = awaited.empty() ? 12 : 300; wait > 0; --wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        gather();
        if (!awaited.empty() && contains(output, awaited)) break;
    }
    close(feed[1]);
    EXPECT_EQ(child.outcome().code, 0);
    gather();
    close(terminal);
    return output;
}

TEST(ProgressLine, IsOnATerminalAndGoesInTheEnd) {
    const std::string line = "\r\x1B[Kreading: 16 B, ";
    const std::string output = shown({"cluster", "-", "--format", "nse"}, line);
    EXPECT_TRUE(contains(output, line)) << output;
    EXPECT_TRUE(output.ends_with("\r\x1B[K")) << output;
    EXPECT_EQ(shown({"cluster", "-", "--format", "nse", "-q"}, ""), "");
}

}  // namespace
}  // namespace vorl::test
