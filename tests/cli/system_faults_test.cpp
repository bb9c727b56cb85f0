// Faults of the system and signals: exit code or signal, message, nothing half-written or hidden.
#include "cli/child.hpp"
#include "cli/packed.hpp"

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>
#include <fstream>

namespace vorl::test {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

/// The program's writing in all its forms: to a file and its description, to a folder, to a
/// description alone, of a network.
std::vector<Names> writers(const std::string& network, const fs::path& folder) {
    const std::string out = folder / "out.cnl";
    return {{"cluster", network, "-o", out},
            {"cluster", network, "-o", out, "--levels", "per-level"},
            {"cluster", network, "-o", folder / "new/sub/out.rhb", "--levels", "hierarchy",
             "--parents"},
            {"convert", network, folder / "out.rcg"}};
}

/// The program must tell of the fault and leave nothing but what was there.
void expectFault(Child&& child, const std::string& fault, const fs::path& folder,
                 const Names& left = {}) {
    const Outcome run = child.outcome();
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(contains(run.err, fault)) << run.err;
    EXPECT_FALSE(contains(run.err, ".vorl-")) << run.err;
    EXPECT_EQ(listing(folder), left) << run.err;
}

TEST(SystemFaults, OfNamesAreTold) {
    const Folder folder;
    const std::string network = DATA + "karate.nse";
    const auto fails = [](const std::string& arguments, const std::string& message) {
        const Outcome run = vorl(arguments);
        EXPECT_EQ(run.code, 1) << arguments;
        EXPECT_TRUE(contains(run.err, message)) << arguments << run.err;
        EXPECT_EQ(run.out, "");
    };
    const std::string inside = folder.path().string() + "/";
    fails("cluster " + inside + "none.nse", "none.nse: No such file or directory");
    fails("cluster " + folder.path().string() + " --format nse", ": Is a directory");
    const std::string write = "cluster " + network + " -o ";
    fails(write + folder.write("file", "") + "/out", "file/out: Not a directory");
    fails(write + folder.path().string(), ": Is a directory");
    fails(write + inside, ": Is a directory");
    fails(write + inside + "file.cnl --levels per-level", "file: it isn't a folder");
    fs::create_directory(folder / "taken.rhb");
    fails(write + inside + "taken.cnl", "taken.rhb: Is a directory");
    fails(write + inside + std::string(256, 'x'), "x: File name too long");
    fails(write + inside + std::string(253, 'x'), "x.rhb: File name too long");
    fails("cluster " + inside + "none.nse -o " + inside + "new/sub/out --parents",
          "none.nse: No such file");
    fails("convert " + inside + "none.nse " + inside + "new/sub/out.rcg --parents",
          "none.nse: No such file");
    EXPECT_EQ(listing(folder.path()), (Names{"file", "taken.rhb"}));
}

TEST(SystemFaults, FullDevicesAreTold) {
    const std::string network = DATA + "karate.nse";
    for (const std::string& write :
         {"cluster " + network + " -o /dev/full", "convert " + network + " /dev/full --to rcg"}) {
        const Outcome run = vorl(write);
        EXPECT_EQ(run.code, 1);
        EXPECT_EQ(run.err, "vorl: /dev/full: No space left on device\n");
    }
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    const std::string clusters = DATA + "karate.cnl";
    for (const Names& words : std::vector<Names>{{"cluster", network},
                                                 {"cluster", network, "--json"},
                                                 {"info", network},
                                                 {"evaluate", network, clusters},
                                                 {"compare", clusters, clusters}}) {
        Child child(words, [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); });
        const Outcome run = child.outcome();
        EXPECT_EQ(run.code, 1) << words[0];
        EXPECT_EQ(run.err, "vorl: standard output: writing failed\n") << words[0];
    }
    EXPECT_EQ(
        Child({"--help"}, [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }).outcome().code,
        1);
    // What is done is told to be done.
    const Folder folder;
    const std::string out = (folder / "out.cnl").string();
    Child child({"cluster", network, "-o", out},
                [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); });
    EXPECT_EQ(child.outcome().err,
              "vorl: standard output: writing failed; " + out + " and 1 other file are written\n");
    EXPECT_TRUE(fs::exists(out));
}

TEST(SystemFaults, LimitOfFileSizesLeavesNothing) {
    const Folder folder;
    const std::string network = folder.write("power.nse", contents(DATA + "power.nse"));
    for (const Names& words : writers(network, folder.path()))
        expectFault(Child(words, [] { limit(RLIMIT_FSIZE, 8192); }), ": File too large",
                    folder.path(), {"power.nse"});
}

/// A small file system in memory.
class SmallDisk {
public:
    explicit SmallDisk(const std::string& place) : m_place(place) {
        m_mounted = mount("tmpfs", place.c_str(), "tmpfs", 0, "size=32k") == 0;
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk() {
        if (m_mounted) umount2(m_place.c_str(), MNT_DETACH);
    }
    bool mounted() const { return m_mounted; }

private:
    std::string m_place;
    bool m_mounted;
};

TEST(SystemFaults, FullDiskLeavesNothing) {
    const Folder folder;
    const SmallDisk disk(folder.path().string());
    if (!disk.mounted()) GTEST_SKIP() << "file systems can't be mounted here";
    for (const Names& words : writers(DATA + "power.nse", folder.path()))
        expectFault(Child(words), ": No space left on device", folder.path());
}

/// In a child: gives up the rights of root, which may write anywhere.
void becomeNobody() {
    constexpr unsigned nobody = 65534;
    if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0)) _exit(126);
}

TEST(SystemFaults, ForbiddenPlacesAreTold) {
    const Folder folder;
    const auto readable = fs::perms(0755);
    fs::permissions(folder.path(), readable);
    const std::string network = folder.write("net.nse", contents(DATA + "karate.nse"));
    const std::string secret = folder.write("secret.nse", "1 2\n");
    fs::permissions(secret, fs::perms::none);
    const fs::path locked = folder / "locked";
    fs::create_directory(locked);
    fs::permissions(locked, fs::perms(0555));
    for (const Names& words : writers(network, locked))
        expectFault(Child(words, becomeNobody), ": Permission denied\n", locked);
    EXPECT_EQ(Child({"info", secret}, becomeNobody).outcome().err,
              "vorl: " + secret + ": Permission denied\n");
    // A folder for levels that is there, but forbidden, is told before the work.
    const fs::path open = folder / "open";
    fs::create_directories(open / "out");
    fs::permissions(open, fs::perms(0777));
    fs::permissions(open / "out", fs::perms(0555));
    const Outcome run =
        Child({"cluster", secret, "-o", open / "out.cnl", "--levels", "per-level"}, becomeNobody)
            .outcome();
    EXPECT_EQ(run.err, "vorl: " + (open / "out").string() + ": Permission denied\n");
    EXPECT_EQ(listing(open), Names{"out"});
}

TEST(SystemFaults, ClosedStreamsAreNoFiles) {
    const Folder folder;
    const std::string network = DATA + "karate.nse";
    const std::string file = (folder / "out.cnl").string();
    ASSERT_EQ(Child({"cluster", network, "-q", "-o", file}).outcome().code, 0);
    const std::string expected = contents(file);
    for (const int closed : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        Child child({"cluster", network, "-t", "-o", file}, [=] { close(closed); });
        EXPECT_EQ(child.outcome().code, closed == STDOUT_FILENO ? 1 : 0) << closed;
        EXPECT_EQ(contents(file), expected) << closed;
    }
    Child child({"cluster", "-", "--format", "nse"}, [] { close(STDIN_FILENO); });
    EXPECT_EQ(child.outcome().err, "vorl: -: Bad file descriptor\n");
}

TEST(SystemFaults, ClosedPipeEndsAsTheShellKnowsIt) {
    const std::string network = DATA + "karate.nse";
    for (const Names& words : std::vector<Names>{{"cluster", network},
                                                 {"info", network},
                                                 {"cluster", network, "-o", "-"},
                                                 {"cluster", network, "-o", "/dev/stdout"},
                                                 {"convert", network, "-", "--to", "rcg"}}) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        close(ends[0]);
        Child child(words, [&] { dup2(ends[1], STDOUT_FILENO); });
        close(ends[1]);
        const Outcome run = child.outcome();
        EXPECT_EQ(child.signal(), SIGPIPE) << words.back();
        EXPECT_EQ(run.err, "");
    }
}

TEST(SystemFaults, LackOfMemoryIsTold) {
    if (VORL_SANITIZED) GTEST_SKIP() << "the sanitizer takes more address space than any limit";
    const Folder folder;
    std::string text;
    for (int i = 0; i < 60'000; ++i) text += std::to_string(i) + " " + std::to_string(i / 2) + "\n";
    const std::string network = folder.write("net.nse", text);
    const std::string packed = folder.write("zeros.nse.gz", gzip(std::string(100'000'000, ' ')));
    const Names before = listing(folder.path());
    int told = 0;
    for (rlim_t most = rlim_t{1} << 24; most <= rlim_t{1} << 28; most += most / 2) {
        Child child({"cluster", network, "-q", "--parents", "-o", folder / "new/out.cnl"},
                    [=] { limit(RLIMIT_AS, most); });
        const Outcome run = child.outcome();
        ASSERT_EQ(child.signal(), 0) << most << run.err;
        if (run.code != 1) {
            fs::remove_all(folder / "new");
            continue;
        }
        ++told;
        EXPECT_EQ(run.err, "vorl: out of memory\n");
        EXPECT_EQ(listing(folder.path()), before);
    }
    EXPECT_GT(told, 0);
    EXPECT_EQ(Child({"info", packed}, [] { limit(RLIMIT_AS, rlim_t{1} << 26); }).outcome().err,
              "vorl: out of memory\n");
}

TEST(SystemFaults, LackOfMemoryInALongLineIsNoEndOfTheFile) {
    if (VORL_SANITIZED) GTEST_SKIP() << "the sanitizer takes more address space than any limit";
    const Folder folder;
    const std::string network =
        folder.write("net.nse", "#" + std::string(40'000'000, 'x') + "\n1 2\n2 3\n3 4\n");
    for (rlim_t most = rlim_t{60} << 20; most <= rlim_t{180} << 20; most += rlim_t{20} << 20) {
        const Outcome run =
            Child({"cluster", network, "-q", "-o", "-"}, [=] { limit(RLIMIT_AS, most); }).outcome();
        EXPECT_TRUE(run.code == 1 || contains(run.out, "Nodes: 4,")) << most << run.out;
    }
}

TEST(SystemFaults, LimitsOfMemoryAreToldBeforeItIsSpent) {
    if (VORL_SANITIZED) GTEST_SKIP() << "the sanitizer takes more memory than any limit";
    const Folder folder;
    std::string links;
    for (int i = 0; i < 5'000'000; ++i) links += "0 1\n";
    const std::string file = folder.write("links.nse.gz", gzip(links));
    const auto fails = [&](const Names& words, const std::string& message) {
        const Outcome run = Child(words).outcome();
        EXPECT_EQ(run.code, 1) << run.out;
        EXPECT_TRUE(contains(run.err, message)) << run.err;
    };
    fails({"cluster", file, "--memory-limit", "200M"},
          ".gz:1638401: there are more than 1,638,400 links, which may need more than 200.0 MiB of "
          "memory; --memory-limit SIZE allows more\n");
    const std::string nodes = folder.write("nodes.rcg", "/Nodes 900000 0\n/Edges\n0> 1\n");
    fails({"cluster", nodes, "--memory-limit", "100M"}, ".rcg:1: the header tells of 900,000");
    // Repeated links take no memory where they are only counted.
    const Outcome run = Child({"info", file, "--memory-limit", "60M"}).outcome();
    EXPECT_TRUE(contains(run.out, "4,999,999 repeated")) << run.out << run.err;
    // What the estimate misses ends all the same.
    links.clear();
    for (int i = 0; i < 50'000; ++i)
        links += std::to_string(i) + " " + std::to_string(i + 1) + "\n";
    fails({"cluster", folder.write("path.nse", links), "--memory-limit", "12M"},
          "vorl: out of memory: the limit is 12.0 MiB; --memory-limit SIZE allows more\n");
    // Threads count by what they use.
    for (const char* limit : {"12M", "16M", "20M", "40M"}) {
        const Names words = {"communities", DATA + "power.nse", "--threads", "8",
                             "-q",          "--memory-limit",   limit};
        const Outcome limited = Child(words).outcome();
        EXPECT_EQ(limited.code, 0) << limit << limited.err;
    }
}

/// A named pipe that the program reads a network from.
class Feed {
public:
    explicit Feed(const Folder& folder) : m_name((folder / "feed.nse").string()) {
        EXPECT_EQ(mkfifo(m_name.c_str(), 0600), 0);
    }
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

    const std::string& name() const { return m_name; }
    /// Waits for the program to open its end.
    void open() { m_pipe.open(m_name, std::ios::binary); }
    void write(const std::string& text) { m_pipe << text << std::flush; }
    void end() { m_pipe.close(); }

private:
    std::string m_name;
    std::ofstream m_pipe;
};

bool hasHidden(const fs::path& folder) {
    for (const std::string& name : listing(folder))
        if (name.starts_with(".vorl-")) return true;
    return false;
}

class Signals : public testing::TestWithParam<int> {
protected:
    /// The child must die of the signal, and say nothing.
    static void expectKilled(Child& child) {
        const Outcome run = child.outcome();
        EXPECT_EQ(child.signal(), GetParam());
        EXPECT_EQ(run.out + run.err, "");
    }
};

TEST_P(Signals, WhileReadingLeaveNothing) {
    const Folder folder;
    Feed feed(folder);
    Child child({"cluster", feed.name(), "--parents", "-o", folder / "new/sub/out.cnl"});
    feed.open();
    feed.write("1 2\n2 3");
    ASSERT_TRUE(child.waitFor([&] { return hasHidden(folder / "new/sub"); }));
    child.send(GetParam());
    expectKilled(child);
    EXPECT_EQ(listing(folder.path()), Names{"feed.nse"});
}

TEST_P(Signals, WhileBuildingLeaveNothing) {
    const Folder folder;
    Feed feed(folder);
    Child child({"cluster", feed.name(), "-q", "-o", (folder / "out.cnl").string()});
    // A network without communities, which takes its time.
    std::string text;
    for (unsigned node = 0, draw = 1; node < 30'000; ++node)
        for (int i = 0; i < 6; ++i) {
            draw = draw * 1664525 + 1013904223;
            text += std::to_string(node) + " " + std::to_string((draw >> 8) % 30'000) + "\n";
        }
    feed.open();
    feed.write(text);
    feed.end();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    child.send(GetParam());
    expectKilled(child);
    EXPECT_EQ(listing(folder.path()), Names{"feed.nse"});
}

TEST_P(Signals, WhileWritingLeaveNothing) {
    // The opening of a pipe that nobody reads takes forever.
    const Folder folder;
    const std::string pipe = (folder / "out.cnl").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const fs::path temporary = folder / "temporary";
    fs::create_directory(temporary);
    Child child({"cluster", DATA + "karate.nse", "-o", pipe},
                [&] { setenv("TMPDIR", temporary.c_str(), 1); });
    ASSERT_TRUE(child.waitFor([&] {
        const Names hidden = listing(temporary);
        return !hidden.empty() && fs::exists(temporary / hidden[0] / "files" / "out.rhb");
    }));
    child.send(GetParam());
    expectKilled(child);
    EXPECT_EQ(listing(temporary), Names{});
}

TEST_P(Signals, LeaveAllFilesOrNone) {
    const Folder folder;
    const fs::path out = folder / "out";
    const Names words{"cluster",     DATA + "jazz.nse", "-q",        "-o",
                      out / "a.cnl", "--levels",        "per-level", "--parents"};
    ASSERT_EQ(Child(words).outcome().code, 0);
    const std::size_t files = listing(out / "a").size();
    for (int delay = 0; delay < 12; ++delay) {
        fs::remove_all(out);
        Child child(words);
        child.waitFor([&] {
            if (!fs::exists(out)) return false;
            for (const std::string& name : listing(out))
                if (fs::exists(out / name / "files")) return true;
            return false;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(200 * delay));
        child.send(GetParam());
        child.outcome();
        EXPECT_FALSE(fs::exists(out) && hasHidden(out));
        if (fs::exists(out / "a.rhb") || fs::exists(out / "a"))
            EXPECT_EQ(listing(out / "a").size(), files) << delay;
        else
            EXPECT_EQ(child.signal(), GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(, Signals,
                         testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU, SIGALRM,
                                         SIGUSR1, SIGUSR2, SIGABRT, SIGSEGV),
                         [](const auto& param) { return std::string(sigabbrev_np(param.param)); });

TEST(SystemFaults, WhatAKilledRunLeftGoesWithTheNextOne) {
    const Folder folder;
    Feed feed(folder);
    const std::string file = (folder / "out.cnl").string();
    Child child({"cluster", feed.name(), "-q", "-o", file});
    feed.open();
    ASSERT_TRUE(child.waitFor([&] { return hasHidden(folder.path()); }));
    // Others find their way past one that lives.
    const Names words{"cluster", DATA + "karate.nse", "-q", "-o", file};
    EXPECT_EQ(Child(words).outcome().code, 0);
    EXPECT_TRUE(hasHidden(folder.path()));
    const std::string hidden = listing(folder.path())[0];
    fs::create_directories(folder / hidden / "files" / "out");
    folder.write(hidden + "/files/out/out_0.cnl", "1 2\n");
    child.send(SIGKILL);
    child.outcome();
    EXPECT_TRUE(hasHidden(folder.path()));
    // Not made by the program.
    fs::create_directory(folder / ".vorl-mine");
    EXPECT_EQ(Child(words).outcome().code, 0);
    EXPECT_EQ(listing(folder.path()), (Names{".vorl-mine", "feed.nse", "out.cnl", "out.rhb"}));
}

TEST(SystemFaults, FewDescriptorsGiveNoFalseSuccess) {
    if (VORL_SANITIZED) GTEST_SKIP() << "the sanitizer opens files where it checks";
    const Folder folder;
    for (rlim_t most = 4; most <= 12; ++most) {
        Child child(
            {"cluster", DATA + "karate.nse", "-q", "--parents", "-o", folder / "new/out.cnl"},
            [=] { limit(RLIMIT_NOFILE, most); });
        const Outcome run = child.outcome();
        ASSERT_EQ(child.signal(), 0) << most;
        if (run.code == 0)
            EXPECT_EQ(listing(folder / "new"), (Names{"out.cnl", "out.rhb"})) << most;
        else
            EXPECT_EQ(listing(folder.path()), Names{}) << most << run.err;
        fs::remove_all(folder / "new");
    }
}

TEST(SystemFaults, MasksOfModesGiveNoFalseSuccess) {
    const Folder folder;
    fs::permissions(folder.path(), fs::perms(0777));
    const std::string network = folder.write("net.nse", contents(DATA + "karate.nse"));
    for (const mode_t mask : {0400u, 0200u, 0100u, 0777u}) {
        const fs::path out = folder / std::to_string(mask);
        const Outcome run = Child({"cluster", network, "-q", "-o", out.string() + ".cnl"}, [=] {
                                becomeNobody();
                                umask(mask);
                            }).outcome();
        EXPECT_TRUE(run.code == 0 || mask != 0400) << run.err;
        for (const char* extension : {".cnl", ".rhb"})
            EXPECT_EQ(fs::exists(out.string() + extension), run.code == 0) << mask << run.err;
    }
    EXPECT_FALSE(hasHidden(folder.path()));
}

TEST(SystemFaults, IgnoredSignalsStayIgnored) {
    const Folder folder;
    Feed feed(folder);
    Child child({"cluster", feed.name(), "-q", "-o", (folder / "out.cnl").string()},
                [] { std::signal(SIGHUP, SIG_IGN); });
    feed.open();
    ASSERT_TRUE(child.waitFor([&] { return hasHidden(folder.path()); }));
    child.send(SIGHUP);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    feed.write("1 2\n2 3\n");
    feed.end();
    EXPECT_EQ(child.outcome().code, 0);
    EXPECT_EQ(listing(folder.path()), (Names{"feed.nse", "out.cnl", "out.rhb"}));
}

TEST(SystemFaults, RunsAtOnceDontMix) {
    const Folder folder;
    const std::string file = (folder / "out.cnl").string();
    ASSERT_EQ(vorl("cluster -q " + DATA + "jazz.nse -o " + file).code, 0);
    const std::string clusters = contents(file);
    const std::string hierarchy = contents(folder / "out.rhb");
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < 6; ++i)
        children.push_back(
            std::make_unique<Child>(Names{"cluster", DATA + "jazz.nse", "-q", "-o", file}));
    for (const auto& child : children) EXPECT_EQ(child->outcome().code, 0);
    EXPECT_EQ(contents(file), clusters);
    EXPECT_EQ(contents(folder / "out.rhb"), hierarchy);
    EXPECT_EQ(listing(folder.path()), (Names{"out.cnl", "out.rhb"}));
}

}  // namespace
}  // namespace vorl::test
