// The reader of the readable network format: sections, values, links and faults.
#include <vorl/fileio/parser_rcg.hpp>

#include "support/folder.hpp"
#include "support/links_text.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <unistd.h>
#include <memory>
#include <stdexcept>
#include <string>

namespace vorl::test {
namespace {

InpOptions optionsFor(const std::string& file, bool sumdups = false) {
    InpOptions options;
    options.format = FileFormat::RCG;
    options.filename = file;
    options.sumdups = sumdups;
    return options;
}

/// A text read as a file.
template <bool WEIGHTED = true>
struct Read {
    bool weighted = false;
    bool validated = false;
    std::shared_ptr<Graph<WEIGHTED>> graph;
    std::string links;
    std::string trace;

    explicit Read(const std::string& text, bool sumdups = false) {
        const Folder folder;
        Trace traced;
        RcgParser parser(optionsFor(folder.write("network", text), sumdups));
        weighted = parser.weighted();
        validated = parser.validated();
        graph = parser.build<Graph<WEIGHTED>>();
        links = linksText(graph->nodes());
        trace = traced.take();
    }
};

template <class ErrorT, bool WEIGHTED = true>
std::string faultOf(const std::string& text) {
    return errorOf<ErrorT>([&] { Read<WEIGHTED> read(text); });
}

TEST(RcgSections, TellOfTheGraph) {
    const struct {
        const char* text;
        bool weighted;
        bool validated;
    } cases[] = {
        {"", true, false},
        {"/Graph", true, false},
        {" \t/gRAPH\tweighted: 0 validated:\t2 more", false, true},
        // A blank behind a key isn't needed.
        {"/Graph weighted:0 VALIDATED:1", false, true},
        // The keys have an order, and what doesn't match is passed over.
        {"/graph validated:1 weighted:0", true, true},
        {"/graph directed:1 weighted:0", true, false},
        {"/graph weighted:", true, false},
        {"text\n# /Edges\n\n/graph weighted:0\n7> 8\n# 1> 2", false, false},
    };
    for (const auto& graph : cases) {
        const Read<> read(graph.text + std::string("\n/Edges\n0> 1\n"));
        EXPECT_EQ(read.weighted, graph.weighted) << graph.text;
        EXPECT_EQ(read.validated, graph.validated) << graph.text;
        EXPECT_EQ(read.links, "0>1:1 1>0:1 ") << graph.text;
    }
}

TEST(RcgSections, HaveAnOrder) {
    const std::string initial =
        "header(), unexpected section - 'Graph' should be an initial section\n";
    const std::string second =
        "header(), unexpected section - 'Nodes' should be either initial or following the 'Graph' "
        "section\n";
    EXPECT_EQ(faultOf<std::domain_error>("/Graph\n/Graph\n/Edges\n"), initial);
    EXPECT_EQ(faultOf<std::domain_error>("/Nodes 3\n/Graph\n/Edges\n"), initial);
    EXPECT_EQ(faultOf<std::domain_error>("/Nodes 3\n/Nodes 3\n/Edges\n"), second);
    EXPECT_EQ(faultOf<std::domain_error>(" /Edge\n"), "ERROR header(), unknown section:  /Edge\n");
    EXPECT_EQ(faultOf<std::domain_error>("/Edges:\n"),
              "ERROR header(), unknown section: /Edges:\n");
    for (const char* late : {"/Graph weighted:1", "/nodes 3", "/Arc", "/edges1"})
        EXPECT_EQ(faultOf<std::domain_error>("/Edges\n0> 1\n  " + std::string(late)),
                  "Unknown section is used: " + std::string(late) + "\n");
}

TEST(RcgSections, SwitchBetweenEdgesAndArcs) {
    const Read<> read(
        "/Arcs of all kinds\n 0> 1:0.5\t2 \n\n# 8> 9\n/eDGES\n1>2:3 3:0\n/arcs\n\t3>\t0:1e-1 "
        "3:4\n");
    EXPECT_EQ(read.links, "0>1:0.5 0>2:1 1>2:3 1>3:1 2>1:3 3>0:0.1 3>1:1 3=8 ");
    EXPECT_EQ(read.trace, "");
    EXPECT_TRUE(read.graph->directed());
    EXPECT_FALSE(Read<>("/Edges\n0> 1\n/Arcs\n2> 2\n").graph->directed());
    EXPECT_EQ(Read<>("# nothing\n7> 8\n").links, "");
}

TEST(RcgNodes, AreAnnouncedByNumberAndFirstId) {
    const Read<> read("/Nodes 4 7 and more\n/Edges\n8> 9:2\n");
    EXPECT_EQ(read.graph->nodes().size(), 4);
    EXPECT_EQ(read.graph->nodes().front().id, 7);
    EXPECT_EQ(read.links, "8>9:2 9>8:2 ");
    // The end of the ids, whatever follows; the links before stay unread.
    EXPECT_EQ(Read<>("/Graph\n/Nodes 2 3").graph->nodes().size(), 2);
    const std::string unknown = "acsAddNodeLinks(), the link with non-existent node is used: #";
    EXPECT_TRUE(
        faultOf<std::out_of_range>("/Nodes 2 0\n/Edges\n0> 1 2\n").starts_with(unknown + "2\n"));
    EXPECT_TRUE(
        faultOf<std::out_of_range>("/Nodes 2 0\n/Arcs\n2> 1\n").starts_with(unknown + "2\n"));
    // Without a first id, and with that of no node, the nodes aren't announced.
    for (const char* text :
         {"/Nodes\n", "/Nodes 9\n", "/Nodes 4000000000\n", "/Nodes 0\n", "/Nodes 9 4294967295\n"})
        EXPECT_EQ(Read<>(text + std::string("/Edges\n5> 6\n")).links, "5>6:1 6>5:1 ") << text;
}

TEST(RcgNodesDeathTest, AreNotNone) {
    EXPECT_DEATH(Read<>("/Nodes 0 0\n/Edges\n"),
                 "addNodes\\(\\), the number of nodes to instantiate must be positive");
}

TEST(RcgLinks, RepeatedAreToldOrSummed) {
    constexpr const char* text = "/Arcs\n0> 1:2 2:3\n0> 1:4 0:5 0:5\n";
    EXPECT_EQ(Read<>(text).links, "0>1:2 0>2:3 0=10 ");
    EXPECT_EQ(Read<>(text).trace,
              "WARNING build(), the duplicated links are skipped:  0->1 0->0\n");
    EXPECT_EQ(Read<>(text, true).links, "0>1:6 0>2:3 0=20 ");
    EXPECT_EQ(Read<>("/Edges\n0>\n1> \t\n2> 0\n").trace,
              "WARNING parseLinks(), no links specified:  \n"
              "WARNING parseLinks(), no links specified:  \n");
}

TEST(RcgLinks, RefuseWhatIsNoNumber) {
    const auto body = [](const std::string& line) {
        return faultOf<std::invalid_argument>("/Edges\n 1> 2\n" + line + "\n");
    };
    const std::string source = ": Node id is invalid\n";
    EXPECT_EQ(body("x> 1"), numberFault("x> 1", "0") + source);
    EXPECT_EQ(body("5 > 1"), numberFault("5 > 1", "5") + source);
    EXPECT_EQ(body("4294967295> 1"), numberFault("4294967295> 1", "4294967295") + source);
    const std::string dest = ": Parsed dst id is invalid (or equals to ID_NONE)\n";
    EXPECT_EQ(body("0> 1,2"), numberFault("1,2", "1") + dest);
    EXPECT_EQ(body("0> 4294967295"), numberFault("4294967295", "4294967295") + dest);
    EXPECT_EQ(body("0> 4294967294"), "");
    const std::string weight = ": Parsed weight is invalid (should be a non-negative float)\n";
    EXPECT_EQ(body("0> 1:-0.5 3"), numberFault("-0.5 3", "-0.500000") + weight);
    EXPECT_EQ(body("0> 1:2x"), numberFault("2x", "2.000000") + weight);
    EXPECT_EQ(body("0> 1:-0"), "");
    // Unweighted links have no weights.
    EXPECT_EQ((faultOf<std::invalid_argument, false>("/Edges\n0> 1:1\n")),
              numberFault("1:1", "1") + dest);
    EXPECT_EQ(Read<false>("/Edges\n0> 1 2\n").links, "0>1:1 0>2:1 1>0:1 2>0:1 ");

    // Bad values of sections stop the reading, other than those of comments.
    const std::string ending = ": Terminating symbol is invalid\n";
    EXPECT_EQ(faultOf<std::invalid_argument>("/Graph weighted:1, validated:1\n"),
              numberFault("1, validated:1", "1") + ending);
    EXPECT_EQ(faultOf<std::invalid_argument>("/Graph weighted: validated:1\n"),
              numberFault("validated:1", "0") + ending);
    EXPECT_EQ(faultOf<std::invalid_argument>("/Nodes 4 0x\n"), numberFault("0x", "0") + ending);
    EXPECT_EQ(faultOf<std::invalid_argument>("/Nodes 4294967296\n"),
              numberFault("4294967296", "4294967296") + ending);
}

TEST(RcgFile, MustBeOfTheFormat) {
    InpOptions options;
    options.format = FileFormat::NSE;
    EXPECT_EQ(errorOf<std::invalid_argument>([&] { RcgParser parser(options); }),
              "RcgParser(), RCG format is expected instead of NSE\n");
}

TEST(RcgFile, MayBeAPipe) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string text = "/Nodes 4\n/Edges\n0> 1\n";
    ASSERT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(ends[1]);
    Trace traced;
    RcgParser parser(optionsFor("/proc/self/fd/" + std::to_string(ends[0])));
    EXPECT_EQ(linksText(parser.build<Graph<true>>()->nodes()), "0>1:1 1>0:1 ");
    EXPECT_EQ(traced.take(), "");
    close(ends[0]);
}

}  // namespace
}  // namespace vorl::test
