// `vorl` on wrong usage and faults of the system: message, exit code, nothing left behind.
#include "cli/program.hpp"

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

TEST(Usage, IsToldWithCodeTwo) {
    const struct {
        const char* arguments;
        const char* message;
    } cases[] = {
        {"", "subcommand is required"},
        {"clutser x.nse", "did you mean cluster?"},
        {"cluster", "NETWORK is required"},
        {"cluster x.nse --gama 1", "did you mean --gamma?"},
        {"cluster x.nse --gamma 1.5", "--gamma: \"1.5\" isn't a number from 0 to 1"},
        {"cluster x.nse --gamma -2", "--gamma"},
        {"cluster x.nse --gamma nan", "--gamma"},
        {"cluster x.nse --root-max 70000", "--root-max"},
        {"cluster x.nse --root-max -1", "--root-max"},
        {"cluster x.nse --speedup corse", "did you mean coarse?"},
        {"cluster x.nse --reduction mean,skipnodes", "did you mean skip-nodes?"},
        {"cluster x.nse --validation no", "is none of none, severe, standard"},
        {"cluster x.nse --format csv", "is none of nsa, nse, rcg"},
        {"cluster x.dat", "the format can't be told from the name"},
        {"cluster x.nse -o y.rhb", "take another extension, or --levels hierarchy"},
        {"cluster x.nse --levels root", "--levels needs a file to write"},
        {"cluster x.nse -o y --levels around", "--clusters N"},
        {"cluster x.nse -o y --min-size 3", "--min-size goes with --levels significant only"},
        {"cluster x.nse -o y --levels root --level-max 3", "--levels per-level only"},
        {"cluster x.nse -o y --levels per-level --level-min 4 --level-max 3", "must not be above"},
        {"cluster x.nse -o y --levels per-level --level-step 2", "--level-step: \"2\""},
        {"cluster x.nse -o y --levels significant --weight-step 0.6", "is at most 0.5"},
        {"cluster x.nse -o y --levels significant --min-size-by root3", "did you mean root2?"},
        {"cluster x.nse -o y --shares all", "is none of full, none, uneven"},
        {"evaluate x.nse", "CLUSTERS is required"},
        {"evaluate x.nse y.cnl --gamma -1", "--gamma: \"-1\""},
        {"info - ", "the format can't be told from the name"},
        {"convert x.nse y", "y: the format can't be told from the name"},
        {"cluster x.nse --levels hierachy", "did you mean hierarchy?"},
    };
    for (const auto& usage : cases) {
        const Outcome run = vorl(usage.arguments);
        EXPECT_EQ(run.code, 2) << usage.arguments << run.err;
        EXPECT_NE(run.err.find(usage.message), std::string::npos) << usage.arguments << run.err;
    }
}

TEST(Usage, HelpAndVersion) {
    EXPECT_EQ(vorl("--version").code, 0);
    EXPECT_TRUE(vorl("--version").out.starts_with("vorl "));
    for (const char* arguments : {"--help", "cluster --help"}) {
        const Outcome run = vorl(arguments);
        EXPECT_EQ(run.code, 0);
        EXPECT_NE(run.out.find("Exit codes: 0 done"), std::string::npos);
    }
}

TEST(SystemFaults, AreTold) {
    const Folder folder;
    const std::string network = VORL_DATA_DIR "/karate.nse";
    const auto fails = [](const std::string& arguments, const std::string& message) {
        const Outcome run = vorl(arguments);
        EXPECT_EQ(run.code, 1) << arguments;
        EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
    };
    fails("cluster " + (folder / "none.nse").string(), "none.nse: No such file or directory");
    fails("cluster " + folder.path().string() + " --format nse", ": Is a directory");
    const std::string write = "cluster " + network + " --levels hierarchy -o ";
    fails(write + folder.write("file", "") + "/out", "Not a directory");
    fails(write + folder.path().string(), "Is a directory");
    fails(write + "/dev/full", "/dev/full: No space left on device");
    fails("convert " + network + " /dev/full --to rcg", "/dev/full: No space left on device");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
    for (const char* command : {"cluster ", "info "})
        EXPECT_EQ(std::system(
                      (std::string(VORL_BINARY " ") + command + network + " >/dev/full 2>/dev/null")
                          .c_str()),
                  1 << 8);
}

}  // namespace
}  // namespace vorl::test
