// `vorl` on bad input, wrong usage and faults of the system: message and exit code, no output.
#include "cli/program.hpp"

#include <gtest/gtest.h>

#include <ostream>

namespace vorl::test {
namespace {

using namespace std::string_literals;

struct BadInput {
    const char* name;
    std::string text;
    const char* message;  ///< behind the file's name
};

std::ostream& operator<<(std::ostream& out, const BadInput& bad) { return out << bad.name; }

class BadNetwork : public testing::TestWithParam<BadInput> {};

TEST_P(BadNetwork, IsToldByFileAndLine) {
    const BadInput& bad = GetParam();
    const Folder folder;
    for (const char* name : {"net.nse", "net.nsa"}) {
        const std::string file = folder.write(name, bad.text);
        const std::string output = (folder / "out.rhb").string();
        const Outcome run = vorl("cluster " + file + " --levels hierarchy -o " + output);
        EXPECT_EQ(run.code, 1) << run.err;
        EXPECT_NE(run.err.find(file + bad.message), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_FALSE(std::filesystem::exists(output));
    }
}

INSTANTIATE_TEST_SUITE_P(
    , BadNetwork,
    testing::Values(
        BadInput{"empty", "", ": the file is empty"},
        BadInput{"onlyComments", "# nothing\n#\n", ":2: the file ends without a link"},
        BadInput{"onlyHeader", "# Nodes: 3, Edges: 0\n", ":1: the file ends without a link"},
        BadInput{"singleId", "1 2\n3\n", ":2: a single id, a source and a destination"},
        BadInput{"singleIdBlanks", "1 2\n3 \t\n", ":2: a single id"},
        BadInput{"words", "1 2\n\nhello world\n", ":3: the source is \"hello\", an id"},
        BadInput{"wordDest", "1 x\n", ":1: the destination is \"x\", an id"},
        BadInput{"idNone", "1 4294967295\n", ":1: the destination is \"4294967295\", an id below"},
        BadInput{"idHuge", "99999999999999999999999 1\n", ":1: the source is \"999"},
        BadInput{"idNegative", "1 2\n-1 2\n", ":2: the source is \"-1\""},
        BadInput{"idPlus", "+1 2\n", ":1: the source is \"+1\""},
        BadInput{"idHex", "0x10 2\n", ":1: the source is \"0x10\""},
        BadInput{"idFloat", "1.5 2\n", ":1: the source is \"1.5\""},
        BadInput{"weightNegative", "1 2 -0.5\n", ":1: the weight is \"-0.5\", it must not"},
        BadInput{"weightMinusZero", "1 2 -0\n", ":1: the weight is \"-0\", it must not"},
        BadInput{"weightNan", "1 2 nan\n", ":1: the weight is \"nan\", a number"},
        BadInput{"weightInf", "1 2 1\n2 3 inf\n", ":2: the weight is \"inf\", 0 or a number"},
        BadInput{"weightBig", "1 2 1e39\n", ":1: the weight is \"1e39\", 0 or a number"},
        BadInput{"weightOverflow", "1 2 1e400\n", ":1: the weight is \"1e400\", 0 or a number"},
        BadInput{"weightTiny", "1 2 1e-45\n", ":1: the weight is \"1e-45\", 0 or a number"},
        BadInput{"weightWord", "1 2 abc\n", ":1: the weight is \"abc\", a number"},
        BadInput{"weightTail", "1 2 1.5x\n", ":1: the weight is \"1.5x\", a number"},
        BadInput{"weightsSum", "1 2 3e38\n2 3 3e38\n", ": the weights add up to more"},
        BadInput{"binary",
                 "\x7F"
                 "ELF\0\0\0\1"s,
                 ":1: a NUL byte"},
        BadInput{"binaryLater", "1 2\n2 \0 3\n"s, ":2: a NUL byte"},
        BadInput{"headerLinks", "# Nodes: 3, Edges: 5\n1 2\n2 3\n",
                 ":1: the header tells of 5 links, the file has 2"},
        BadInput{"headerArcs", "#\n# nodes: 3 arcs: 1\n1 2\n2 3\n",
                 ":2: the header tells of 1 links, the file has 2"},
        BadInput{"headerNodes", "# Nodes: 2, Edges: 2\n1 2\n2 3\n",
                 ":1: the header tells of 2 nodes, the file has 3"},
        BadInput{"headerHuge", "# Nodes: 4294967295\n1 2\n",
                 ":1: the header's number of nodes is 4294967295, at most"},
        BadInput{"headerHuge2", "# Nodes: 4294967294, Edges: 1\n1 2\n",
                 ":1: the header tells of 4294967294 nodes, the file has 2"},
        BadInput{"headerWord", "# Nodes: many\n1 2\n", ":1: the header's number of nodes is "},
        BadInput{"headerBadLinks", "# Nodes: 2, Edges: -1\n1 2\n",
                 ":1: the header's number of links is \"-1\""},
        BadInput{"longLine", "1 2\n" + std::string(1 << 20, 'x') + "\n",
                 ":2: the source is \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...\""}),
    [](const auto& param) { return param.param.name; });

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
