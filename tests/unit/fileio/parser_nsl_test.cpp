// The reader of the plain network format: header, body, faults and estimates.
#include <vorl/fileio/parser_nsl.hpp>

#include "support/folder.hpp"
#include "support/links_text.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <ios>
#include <memory>
#include <stdexcept>
#include <string>

namespace vorl::test {
namespace {

/// A text read as a file.
template <bool WEIGHTED = true>
struct Read {
    bool weighted = false;
    bool directed = false;
    std::shared_ptr<Graph<WEIGHTED>> graph;
    std::string trace;

    explicit Read(const std::string& text, FileFormat format = FileFormat::NSE,
                  bool sumdups = false) {
        const Folder folder;
        Trace traced;
        InpOptions options;
        options.format = format;
        options.filename = folder.write("network", text);
        options.sumdups = sumdups;
        NslParser parser(options);
        weighted = parser.weighted();
        directed = parser.directed();
        graph = parser.build<Graph<WEIGHTED>>();
        trace = traced.take();
    }

    std::string links() const { return linksText(graph->nodes()); }
};

constexpr FileFormat NSE = FileFormat::NSE;
constexpr FileFormat NSA = FileFormat::NSA;

TEST(NslHeader, TellsOfTheLinks) {
    const auto used = [](const std::string& specified, const std::string& actual) {
        return "WARNING header(), specified file format (" + specified +
               ") does not match the actual file format (" + actual +
               "). The actual one is used.\n";
    };
    const auto omitted = [](const std::string& what, const std::string& fault) {
        return "WARNING header(), the " + what + " is invalid, omitted: " + fault + "\n";
    };
    const std::string countIs5 =
        "The number of links specified in the header (5) does not correspond to the actual number "
        "of links(2)\n";
    const std::string ending = ": Terminating symbol is invalid";
    const struct {
        const char* text;
        FileFormat format;
        bool directed;
        bool weighted;
        std::string trace = {};
    } cases[] = {
        {"", NSE, false, true},
        {"# a comment\n\n#", NSA, true, true},
        {"# Nodes: 3, Edges: 2, Weighted: 0", NSE, false, false},
        {" #\tnOdEs:\t3 ARCS: 2 weighted:\t7 and more", NSA, true, true},
        {"#Nodes: 3 Weighted: 0", NSA, true, false},
        {"# Nodes:", NSE, false, true},
        {"# Nodes: 3,", NSE, false, true},
        {"# Nodes: 3, Weighted:", NSE, false, true},
        {"# Nodes: 3, Links: 2, Weighted: 0", NSE, false, true},
        {"# Nodes: 3 , Weighted: 0", NSE, false, true},
        // The flavour of the file is the actual one, where a number follows.
        {"# Nodes: 3, Edges: 2", NSA, false, true, used("ARCS", "EDGES")},
        {"# Nodes: 3, Arcs: 2, Weighted: 0", NSE, true, false, used("EDGES", "ARCS")},
        {"# Nodes: 3, Arcs: \t", NSE, false, true},
        {"# Nodes: 3, Edges: 5, Weighted: 0", NSE, false, false, countIs5},
        // What doesn't begin with the number of nodes is a plain comment, as is all behind the
        // header or behind the first link.
        {"# Edges: 5", NSA, true, true},
        {"# Nodes:5", NSE, false, true},
        {"## Nodes: 3, Weighted: 0", NSE, false, true},
        {"# Nodes: 3\n# Nodes: 3, Weighted: 0", NSE, false, true},
        {"# text\n# Nodes: 3, Weighted: 0", NSE, false, false},
        // Bad values.
        {"# Nodes: 3x, Edges: 5\n# Nodes: 3, Weighted: 0", NSE, false, false,
         omitted("nodes number", numberFault("3x, Edges: 5", "3") + ending)},
        {"# Nodes: 4294967296", NSE, false, true,
         omitted("nodes number", numberFault("4294967296", "4294967296") + ending)},
        {"# Nodes: 3, Arcs: 18446744073709551616, Weighted: 0", NSA, true, true,
         omitted("links number value",
                 numberFault("18446744073709551616, ", "18446744073709551615") +
                     ": Numerical result out of range")},
        {"# Nodes: 3, Edges: 2, Weighted: no", NSE, false, true,
         omitted("weighted value", numberFault("no", "0") + ending)},
    };
    for (const auto& header : cases) {
        const Read<> read(header.text + std::string("\n0 1 0.5\n0 2\n"), header.format);
        EXPECT_EQ(read.directed, header.directed) << header.text;
        EXPECT_EQ(read.weighted, header.weighted) << header.text;
        EXPECT_EQ(read.trace, header.trace) << header.text;
        EXPECT_EQ(read.links(), header.directed ? "0>1:0.5 0>2:1 " : "0>1:0.5 0>2:1 1>0:0.5 2>0:1 ")
            << header.text;
    }
}

TEST(NslBody, SkipsBlanksAndComments) {
    const Read<> read(
        " \t7\t8 2.5 and more\n\n  # 1 2\n \t\n7 9 1e-1\n7 1\t\n9 8 0x1p-2\n#\n1 9 -3");
    EXPECT_EQ(read.links(),
              "7>8:2.5 7>9:0.1 7>1:1 8>7:2.5 8>9:0.25 9>7:0.1 9>8:0.25 9>1:-3 1>7:1 1>9:-3 ");
    EXPECT_EQ(read.trace, "");
    EXPECT_EQ(Read<>("").links() + Read<>("\n\n#").links(), "");
    EXPECT_EQ(Read<>("# Nodes: 9, Edges: 0").graph->nodes().size(), 0);
}

TEST(NslBody, ReadsTheDefaultWeightFromNoneZeroAndWords) {
    EXPECT_EQ(Read<>("0 1 0\n0 2 abc\n0 3 -0.0\n0 4 0.5x\n0 5 .5\n", NSA).links(),
              "0>1:1 0>2:1 0>3:1 0>4:0.5 0>5:0.5 ");
    // Unweighted, the third column isn't looked at.
    EXPECT_EQ(Read<false>("0 1 1e99\n0 2 7\n", NSA).links(), "0>1:1 0>2:1 ");
}

TEST(NslBody, HandsOverLinksBySource) {
    constexpr const char* text = "0 1 2\n0 2 3\n0 1 4\n3 3 5\n0 2 6\n0 1 7\n3 3 5\n";
    EXPECT_EQ(Read<>(text, NSA).links(), "0>1:2 0>2:3 3=10 ");
    EXPECT_EQ(Read<>(text, NSA).trace,
              "WARNING build(), the duplicated links are skipped:  0->1 0->2 0->1 3->3\n");
    EXPECT_EQ(Read<>(text, NSA, true).links(), "0>1:13 0>2:3 3=20 ");
    // Both ends of a repeated edge are told. The number of links counts repeated lines too.
    const Read<false> edges("# Nodes: 2, Edges: 2\n1 2\n2 1\n");
    EXPECT_EQ(edges.trace, "WARNING build(), the duplicated links are skipped:  1->2 2->1\n");
    EXPECT_FALSE(edges.graph->directed());
    EXPECT_TRUE(Read<>(text, NSA).graph->directed());
    EXPECT_FALSE(Read<>("1 1\n", NSA).graph->directed());
}

TEST(NslBody, RefusesWhatIsNoLink) {
    const auto refused = [](const std::string& text) {
        return errorOf<std::invalid_argument>([&] { Read<>("0 1\n" + text); });
    };
    const std::string reason = ": id == ID_NONE or the terminating symbol is invalid\n";
    const std::string range = ": Numerical result out of range\n";
    const std::string most = "18446744073709551615";
    EXPECT_EQ(refused("4294967295 1\n"), numberFault("4294967295 1", "4294967295") + reason);
    EXPECT_EQ(refused("2 1,\n"), numberFault("1,", "1") + reason);
    EXPECT_EQ(refused("x 1\n"), numberFault("x 1", "0") + reason);
    EXPECT_EQ(refused("2 #3\n"), numberFault("#3", "0") + reason);
    EXPECT_EQ(refused("2 -1\n"), numberFault("-1", most) + reason);
    EXPECT_EQ(refused("3 99999999999999999999999\n"),
              numberFault("9999999999999999999999", most) + range);
    EXPECT_EQ(refused("2 1 1e99\n"), numberFault("1e99", "inf") + range);
    EXPECT_EQ(Read<>("4294967294 00000000000000000003\n", NSA).links(), "4294967294>3:1 ");
    EXPECT_EQ(errorOf<std::domain_error>([] { Read<>("0 1\n 5 \t\n"); }),
              "ERROR build(), The dest id is expected:  5 \t\n");
}

TEST(NslFile, MustBeThereAndOfTheFormat) {
    InpOptions options;
    options.filename = "/nonexistent/network.rcg";
    options.format = FileFormat::RCG;
    EXPECT_EQ(errorOf<std::invalid_argument>([&] { NslParser parser(options); }),
              "NslParser(), NSL format is expected instead of RCG\n");
    options.format = NSE;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(errorOf<std::ios_base::failure>([&] {
                    NslParser parser(options);
                }).starts_with("No such file or directory\n"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "NslParser(), error opening the file /nonexistent/network.rcg: No such file or "
              "directory\n");
}

TEST(NslFile, SizesTheMapOfIds) {
    const auto buckets = [](const Read<>& read) {
        Graph<true>::IdNodesT idnodes;
        read.graph->release(&idnodes);
        return idnodes.bucket_count();
    };
    const auto expected = [](Id nodesNum) {
        Graph<true>::IdNodesT idnodes;
        idnodes.reserve(nodesNum);
        return idnodes.bucket_count();
    };
    // 1234 bytes: 4 / 2 + 30 / 3 + 200 / 4 + 1000 / 5 = 262 tokens, to the power of 0.78 are 76.96
    // nodes; of arcs half as many tokens, 44.8 nodes.
    std::string text = "0 1\n#";
    text.resize(1234, 'x');
    EXPECT_EQ(buckets(Read<>(text)), expected(76));
    EXPECT_EQ(buckets(Read<>(text, NSA)), expected(44));
    // The header knows better, but no file holds more nodes than bytes.
    EXPECT_EQ(buckets(Read<>("# Nodes: 500\n" + text)), expected(500));
    EXPECT_EQ(buckets(Read<>("# Nodes: 4000000000\n0 1\n")), expected(24));
}

}  // namespace
}  // namespace vorl::test
