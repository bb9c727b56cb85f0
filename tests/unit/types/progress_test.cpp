// What long work tells of itself, and how it is ended.
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/graph.hpp>
#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/types/progress.hpp>
#include <vorl/types/trace.hpp>

#include "support/describe.hpp"
#include "support/folder.hpp"
#include "support/networks.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <set>
#include <thread>
#include <utility>

namespace vorl::test {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// Does something now and then while some work goes on.
class Beside {
public:
    explicit Beside(std::function<void()> action)
        : m_thread([this, action = std::move(action)] {
              while (!m_done) action();
          }) {}
    ~Beside() {
        m_done = true;
        m_thread.join();
    }

private:
    std::atomic<bool> m_done{false};
    std::thread m_thread;
};

class ProgressTest : public testing::Test {
protected:
    ~ProgressTest() override { ftrace = m_former; }

private:
    std::FILE* const m_former = std::exchange(ftrace, nullptr);
};

std::string clustered(const TestNetwork& net) {
    auto nodes = makeNodes<UnweightedLinks>(net);
    return describe(*cluster<UnweightedLinks>(nodes, true, ClusterOptions()));
}

TEST_F(ProgressTest, TellsStagesAndLevelsOfTheThreadThatListens) {
    Random rnd(7);
    const TestNetwork net = sparse(rnd, 5'000, 6);
    Progress progress;
    EXPECT_EQ(progress.state().stage, nullptr);
    std::set<std::string> stages;
    Size last = 0;
    {
        const ProgressScope scope(progress);
        const Beside sampler([&] {
            const auto state = progress.state();
            if (!state.stage) return;
            stages.insert(state.stage);
            EXPECT_LE(state.left(), state.total);
            if (state.level == Progress::NO_LEVEL) return;
            EXPECT_GE(state.level + 1, last);
            last = state.level;
        });
        clustered(net);
    }
    EXPECT_TRUE(stages.contains("candidates") && stages.contains("folding"));
    EXPECT_GE(last, 1u);
    const auto state = progress.state();
    EXPECT_EQ(state.left(), 0u);
    clustered(ring(10));  // nobody listens any more
    EXPECT_EQ(progress.state().done, state.done);
}

// At every point of the work: what was made is freed, and the next run is as any other.
TEST_F(ProgressTest, EndsClusteringAtAnyPoint) {
    Random rnd(3);
    const TestNetwork net = overlappingBlocks(rnd, 400, 12, 3);
    const auto start = Clock::now();
    const std::string whole = clustered(net);
    const Seconds needed = Clock::now() - start;
    int ended = 0;
    for (int part = 0; part < 40; ++part) {
        Progress progress;
        const ProgressScope scope(progress);
        const auto now = Clock::now();
        const Beside stop([&] {
            if (Clock::now() - now >= needed * (part / 40.)) progress.cancel();
        });
        try {
            EXPECT_EQ(clustered(net), whole);
        } catch (const Cancelled&) {
            ++ended;
        }
    }
    EXPECT_GE(ended, 10);
    EXPECT_EQ(clustered(net), whole);
}

TEST_F(ProgressTest, EndsLongItemsSoon) {
    const TestNetwork net = complete(500);
    Clock::time_point asked;
    bool ended = false;
    // On a machine with much to do the stage may be over before it is looked at.
    for (int tries = 0; tries < 50 && !ended; ++tries) {
        auto nodes = makeNodes<UnweightedLinks>(net);
        Progress progress;
        const ProgressScope scope(progress);
        std::atomic<bool> over = false;
        std::thread stop([&] {
            for (; !over; std::this_thread::yield()) {
                const auto state = progress.state();
                if (state.done < 3 || std::string("chains") != state.stage) continue;
                asked = Clock::now();
                progress.cancel();
                return;
            }
        });
        try {
            cluster<UnweightedLinks>(nodes, true, ClusterOptions());
        } catch (const Cancelled&) {
            ended = true;
        }
        over = true;
        stop.join();
    }
    EXPECT_TRUE(ended);
    EXPECT_LT(Seconds(Clock::now() - asked).count(), 1);
}

TEST_F(ProgressTest, TellsBytesThatAreRead) {
    const Folder folder;
    std::string text;
    for (int i = 0; i < 100'000; ++i)
        text += std::to_string(i) + " " + std::to_string(i / 2) + "\n";
    InpOptions options;
    options.filename = folder.write("net.nse", text);
    options.format = FileFormat::NSE;
    const auto read = [&] { NslParser(options).build<Graph<false>>(); };
    Progress progress;
    Size most = 0;
    {
        const ProgressScope scope(progress);
        const Beside sampler([&] {
            const auto state = progress.state();
            if (state.stage && std::string("reading") == state.stage)
                most = std::max(most, state.done);
        });
        read();
    }
    EXPECT_GT(most, 0u);
    EXPECT_LE(most, text.size());
    progress.cancel();
    const ProgressScope scope(progress);
    EXPECT_THROW(read(), Cancelled);
}

}  // namespace
}  // namespace vorl::test
