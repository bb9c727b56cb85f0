// `vorl` on bad input of each format: file, line, message and exit code, little memory, no output.
#include "cli/child.hpp"
#include "cli/packed.hpp"

#include <gtest/gtest.h>

#include <fstream>
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

constexpr auto nameOf = [](const auto& param) { return param.param.name; };

const std::string BOM = "\xEF\xBB\xBF";
constexpr std::size_t LONG = 10'000'000;

/// Runs the program, which must refuse the file, and leave nothing in the folder.
void expectRefused(const std::vector<std::string>& arguments, const std::string& file,
                   const char* message) {
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    const std::vector<std::string> before = listing(folder);
    Child child(arguments);
    const Outcome run = child.outcome();
    EXPECT_EQ(run.code, 1) << run.err;
    EXPECT_TRUE(run.err.starts_with("vorl: " + file + message)) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(listing(folder), before);
    // What a lying header asks for is far more, and the memory of this process counts as well.
    EXPECT_LT(child.peakMemory(), 1000);
}

class BadLinks : public testing::TestWithParam<BadInput> {};

TEST_P(BadLinks, AreToldByFileAndLine) {
    const BadInput& bad = GetParam();
    const Folder folder;
    for (const char* name : {"net.nse", "net.nsa"}) {
        const std::string file = folder.write(name, bad.text);
        expectRefused({"cluster", file, "-o", (folder / "out.cnl").string()}, file, bad.message);
    }
}

const BadInput BAD_LINKS[] = {
    {"empty", "", ": the file is empty"},
    {"onlyComments", "# nothing\n#\n", ":2: the file ends without a link"},
    {"onlyHeader", "# Nodes: 3, Edges: 0\n", ":1: the file ends without a link"},
    {"singleId", "1 2\n3\n", ":2: a single id, a source and a destination"},
    {"singleIdBlanks", "1 2\n3 \t\n", ":2: a single id"},
    {"words", "1 2\n\nhello world\n", ":3: the source is \"hello\", an id"},
    {"wordDest", "1 x\n", ":1: the destination is \"x\", an id"},
    {"idNone", "1 4294967295\n", ":1: the destination is \"4294967295\", an id below"},
    {"idHuge", "99999999999999999999999 1\n", ":1: the source is \"999"},
    {"idNegative", "1 2\n-1 2\n", ":2: the source is \"-1\""},
    {"idPlus", "+1 2\n", ":1: the source is \"+1\""},
    {"idHex", "0x10 2\n", ":1: the source is \"0x10\""},
    {"idFloat", "1.5 2\n", ":1: the source is \"1.5\""},
    {"weightNegative", "1 2 -0.5\n", ":1: the weight is \"-0.5\", it must not"},
    {"weightMinusZero", "1 2 -0\n", ":1: the weight is \"-0\", it must not"},
    {"weightNan", "1 2 nan\n", ":1: the weight is \"nan\", a number"},
    {"weightInf", "1 2 1\n2 3 inf\n", ":2: the weight is \"inf\", 0 or a number"},
    {"weightBig", "1 2 1e39\n", ":1: the weight is \"1e39\", 0 or a number"},
    {"weightOverflow", "1 2 1e400\n", ":1: the weight is \"1e400\", 0 or a number"},
    {"weightTiny", "1 2 1e-45\n", ":1: the weight is \"1e-45\", 0 or a number"},
    {"weightWord", "1 2 abc\n", ":1: the weight is \"abc\", a number"},
    {"weightTail", "1 2 1.5x\n", ":1: the weight is \"1.5x\", a number"},
    {"weightsSum", "1 2 3e38\n2 3 3e38\n", ": the weights add up to more"},
    {"binary",
     "\x7F"
     "ELF\0\0\0\1"s,
     ":1: a NUL byte"},
    {"binaryLater", "1 2\n2 \0 3\n"s, ":2: a NUL byte"},
    {"headerLinks", "# Nodes: 3, Edges: 5\n1 2\n2 3\n",
     ":1: the header tells of 5 links, the file has 2"},
    {"headerArcs", "#\n# nodes: 3 arcs: 1\n1 2\n2 3\n",
     ":2: the header tells of 1 links, the file has 2"},
    {"headerNodes", "# Nodes: 2, Edges: 2\n1 2\n2 3\n",
     ":1: the header tells of 2 nodes, the file has 3"},
    {"headerHuge", "# Nodes: 4294967295\n1 2\n",
     ":1: the header's number of nodes is 4294967295, at most"},
    {"headerHuge2", "# Nodes: 4294967294, Edges: 1\n1 2\n",
     ":1: the header tells of 4294967294 nodes, the file has 2"},
    {"headerWord", "# Nodes: many\n1 2\n", ":1: the header's number of nodes is "},
    {"headerBadLinks", "# Nodes: 2, Edges: -1\n1 2\n",
     ":1: the header's number of links is \"-1\""},
    {"onlyMark", BOM, ":1: the file ends without a link"},
    {"onlyCarriageReturns", "\r\n\r\n", ":2: the file ends without a link"},
    {"carriageReturnsAlone", "1 2\r2 3\r", ":1: the destination is \"2?2\", an id"},
    {"markLater", "1 2\n" + BOM + "2 3\n", ":2: the source is \""},
    {"wideCharacters",
     "\xFF\xFE"
     "1\0 \0002\0\n\0"s,
     ":1: a NUL byte"},
    {"commas", "1,2\n", ":1: the source is \"1,2\", an id"},
    {"idMinusZero", "-0 1\n", ":1: the source is \"-0\", an id"},
    {"idOverflow", "1 18446744073709551616\n",
     ":1: the destination is \"18446744073709551616\", an id below"},
    {"idWraps", "1 4294967296\n", ":1: the destination is \"4294967296\", an id below"},
    {"weightPlus", "1 2 +5\n", ":1: the weight is \"+5\", a number"},
    {"weightHex", "1 2 0x10\n", ":1: the weight is \"0x10\", a number"},
    {"weightComma", "1 2 0,5\n", ":1: the weight is \"0,5\", a number"},
    {"weightSum", "1 2 3.4e38\n3 4 1e-3\n", ": the weights add up to more"},
    {"headerOverflow", "# Nodes: 99999999999999999999\n1 2\n",
     ":1: the header's number of nodes is \"99999999999999999999\", a whole number"},
    {"headerHex", "# Nodes: 0x10\n1 2\n", ":1: the header's number of nodes is \"0x10\""},
    {"headerPlus", "# Nodes: +2\n1 2\n", ":1: the header's number of nodes is \"+2\""},
    {"headerFloat", "# Nodes: 2.0\n1 2\n", ":1: the header's number of nodes is \"2.0\""},
    {"headerLinksOverflow", "# Nodes: 2, Edges: 18446744073709551616\n1 2\n",
     ":1: the header's number of links is \"184467"},
    {"headerLinksMany", "# Nodes: 2, Arcs: 18446744073709551615\n1 2\n",
     ":1: the header tells of 18446744073709551615 links"},
    {"headerWeighted", "# Nodes: 2, Edges: 1, Weighted: yes\n1 2\n",
     ":1: the header's \"Weighted:\" is \"yes\", 0 or 1"},
    {"longLine", "1 2\n" + std::string(LONG, 'x') + "\n",
     ":2: the source is \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...\""},
    {"longId", "1 " + std::string(LONG, '9') + "\n",
     ":1: the destination is \"99999999999999999999999999999999...\", an id below"},
    {"longWeight", "1 2 " + std::string(LONG, '9') + "\n",
     ":1: the weight is \"99999999999999999999999999999999...\", 0 or"}};
INSTANTIATE_TEST_SUITE_P(, BadLinks, testing::ValuesIn(BAD_LINKS), nameOf);

class BadSections : public testing::TestWithParam<BadInput> {};

TEST_P(BadSections, AreToldByFileAndLine) {
    const BadInput& bad = GetParam();
    const Folder folder;
    const std::string file = folder.write("net.rcg", bad.text);
    expectRefused({"cluster", file, "-o", (folder / "out.cnl").string()}, file, bad.message);
}

const BadInput BAD_SECTIONS[] = {
    {"empty", "", ": the file is empty"},
    {"noLinks", "/Graph weighted:0\n/Edges\n", ":2: the file ends without a link"},
    {"onlyNodes", "/Nodes 3 0\n/Edges\n0>\n1>\n", ":4: the file ends without a link"},
    {"outside", "1> 2\n/Edges\n2> 3\n", ":1: \"1> 2\" stands before the first section of links"},
    {"behindGraph", "/Graph weighted:1\n1> 2\n",
     ":2: \"1> 2\" stands before the first section of links"},
    {"behindNodes", "/Nodes 3\n1> 2\n", ":2: \"1> 2\" stands before the first section of links"},
    {"linesOfAnotherFormat", "1 2\n2 3\n", ":1: \"1 2\" stands before the first section"},
    {"unknownSection", "/Edges\n1> 2\n/Links\n", ":3: the section \"/Links\" is unknown"},
    {"longerSection", "/Edgess\n1> 2\n", ":1: the section \"/Edgess\" is unknown"},
    {"namelessSection", "/\n", ":1: the section \"/\" is unknown"},
    {"graphLater", "/Edges\n1> 2\n/Graph weighted:1\n",
     ":3: the section /Graph must be the first one"},
    {"graphTwice", "/Graph\n/Graph\n/Edges\n1> 2\n",
     ":2: the section /Graph must be the first one"},
    {"graphBehindNodes", "/Nodes 2\n/Graph\n/Edges\n1> 2\n",
     ":2: the section /Graph must be the first one"},
    {"nodesLater", "/Edges\n1> 2\n/Nodes 2\n", ":3: the section /Nodes must be the first one"},
    {"nodesTwice", "/Nodes 2\n/Nodes 2\n/Edges\n1> 2\n",
     ":2: the section /Nodes must be the first one"},
    {"weightedWord", "/Graph weighted:yes\n/Edges\n1> 2\n",
     ":1: the header's \"weighted:\" is \"yes\", 0 or 1"},
    {"weightedNegative", "/Graph weighted: -1\n/Edges\n1> 2\n",
     ":1: the header's \"weighted:\" is \"-1\", 0 or 1"},
    {"weightedOverflow", "/Graph weighted:4294967296\n/Edges\n1> 2\n",
     ":1: the header's \"weighted:\" is \"4294967296\""},
    {"validatedWord", "/Graph weighted:0 validated:x\n/Edges\n1> 2\n",
     ":1: the header's \"validated:\" is \"x\", 0 or 1"},
    {"nodesWord", "/Nodes many\n/Edges\n1> 2\n",
     ":1: the header's number of nodes is \"many\", a whole"},
    {"nodesNegative", "/Nodes -2\n/Edges\n1> 2\n",
     ":1: the header's number of nodes is \"-2\", a whole"},
    {"nodesOverflow", "/Nodes 18446744073709551616\n/Edges\n1> 2\n",
     ":1: the header's number of nodes is \"1844"},
    {"nodesNone", "/Nodes 4294967295\n/Edges\n1> 2\n",
     ":1: the header's number of nodes is 4294967295, at most"},
    {"nodesMost", "/Nodes 4294967294\n/Edges\n1> 2\n",
     ":1: the header tells of 4294967294 nodes, the file has 2"},
    {"nodesFew", "/Nodes 2\n/Edges\n1> 2 3\n", ":1: the header tells of 2 nodes, the file has 3"},
    {"nodesZero", "/Nodes 0 1\n/Edges\n1> 2\n", ":1: the header tells of 0 nodes, at least 1"},
    {"rangeHuge", "/Nodes 4000000000 0\n/Edges\n1> 2\n",
     ":1: the header tells of 4000000000 nodes, more than the file has bytes"},
    {"rangePastIds", "/Nodes 2 4294967294\n/Edges\n4294967294> 0\n",
     ":1: the ids of 2 nodes from 4294967294 on go beyond the largest one, 4294967294"},
    {"firstIdWord", "/Nodes 2 x\n/Edges\n1> 2\n", ":1: the first id of the nodes is \"x\", an id"},
    {"firstIdNone", "/Nodes 2 4294967295\n/Edges\n1> 2\n",
     ":1: the first id of the nodes is \"4294967295\", an id below"},
    {"sourceUnannounced", "/Nodes 2 1\n/Edges\n1> 2\n0> 1\n",
     ":4: the source is 0, which is none of the nodes 1 to 2 that the file announces"},
    {"destinationUnannounced", "/Nodes 2 1\n/Edges\n1> 2 3\n",
     ":3: the destination is 3, which is none of the nodes 1 to 2"},
    {"noMark", "/Edges\n1 2\n", ":2: \"1 2\" has no \">\" behind the source"},
    {"blankBeforeMark", "/Edges\n1 > 2\n", ":2: the source is \"1 \", an id"},
    {"noSource", "/Edges\n> 2\n", ":2: the source is \"\", an id"},
    {"sourceWord", "/Edges\nx> 2\n", ":2: the source is \"x\", an id"},
    {"destinationWord", "/Arcs\n1> 2 x\n", ":2: the destination is \"x\", an id"},
    {"destinationOverflow", "/Arcs\n1> 99999999999999999999\n",
     ":2: the destination is \"99999999999999999999\", an id below"},
    {"weightNone", "/Edges\n1> 2:\n", ":2: the weight is \"\", a number"},
    {"weightNegative", "/Edges\n1> 2:-1\n", ":2: the weight is \"-1\", it must not"},
    {"weightPlus", "/Edges\n1> 2:+5\n", ":2: the weight is \"+5\", a number"},
    {"weightOverflow", "/Edges\n1> 2:1e400\n", ":2: the weight is \"1e400\", 0 or"},
    {"weightTwice", "/Edges\n1> 2:3:4\n", ":2: the weight is \"3:4\", a number"},
    {"weightsSum", "/Edges\n1> 2:3e38 3:3e38\n", ": the weights add up to more"},
    {"weightInUnweighted", "/Graph weighted:0\n/Edges\n1> 2 3:5\n",
     ":3: \"3:5\" has a weight, the section /Graph tells of unweighted links"},
    {"binary", "/Edges\n1> \0002\n"s, ":2: a NUL byte"},
    {"longLine", "/Edges\n1> 2\n" + std::string(LONG, '7') + "\n",
     ":3: \"77777777777777777777777777777777...\" has no \">\""},
    {"carriageReturnsAlone", "/Edges\r1> 2\r", ":1: the section \"/Edges?1> 2\" is unknown"}};
INSTANTIATE_TEST_SUITE_P(, BadSections, testing::ValuesIn(BAD_SECTIONS), nameOf);

TEST(BadLines, OfAnyLengthTakeTwiceTheFile) {
    if (VORL_SANITIZED) GTEST_SKIP() << "a sanitizer takes memory of its own";
    const struct {
        const char* file;
        const char* begin;
        const char* unit;
        const char* end;
        const char* message;
    } cases[] = {
        {"a.csv", "", ",", "", ":1: the source is \"\""},
        {"a.csv", "1,2\n3,", "x", "", ":2: the name \"xxx"},
        {"a.csv", "1,2\n\"", "\"\"", "\",2\n", ":2: the name \"\"\"\""},
        {"a.mtx", "%%MatrixMarket ", "x", "", ":1: the object is \"xxx"},
        {"a.graph", "2 1\n", "2 ", "", ":2: the header tells of 1 edge"},
        {"a.net", "*Vertices 2\n1 \"", "x", "\"", ":2: the line of the vertex"},
        {"a.gml", "graph [ node [ id \"", "x", "\" ] ]", ":1: the name \"xxx"},
        {"a.gml", "graph [ node [ id \"", "\n", "", ":1: the quotes that begin with"},
        {"a.graphml", "<graphml><graph><node id='1'><data key='name'>", "x", "</data></node>",
         ":1: the name \"xxx"},
        {"a.json", "{\"nodes\": [\"", "x", "\"]}", ":1: the name \"xxx"},
        {"a.json", "{\"x\": \"", "x", "\"", ":1: found the end of the file"},
    };
    constexpr std::size_t size = 40 << 20;
    const Folder folder;
    for (const auto& bad : cases) {
        const std::string file = (folder / bad.file).string();
        std::ofstream out(file);
        out << bad.begin;
        const std::string block = [&] {
            std::string text;
            while (text.size() < 1 << 20) text += bad.unit;
            return text;
        }();
        for (std::size_t i = 0; i < size >> 20; ++i) out << block;
        out << bad.end << std::flush;
        const Outcome run =
            Child({"info", file}, [] { limit(RLIMIT_DATA, 2 * size + (30 << 20)); }).outcome();
        EXPECT_EQ(run.code, 1);
        EXPECT_TRUE(run.err.starts_with("vorl: " + file + bad.message)) << run.err;
    }
}

class BadClusters : public testing::TestWithParam<BadInput> {};

TEST_P(BadClusters, AreToldByFileAndLine) {
    const BadInput& bad = GetParam();
    const Folder folder;
    const std::string file = folder.write("bad.cnl", bad.text);
    const std::string good = folder.write("good.cnl", "1 2\n");
    const std::string network = folder.write("net.nse", "1 2\n");
    expectRefused({"compare", good, file}, file, bad.message);
    expectRefused({"evaluate", network, file}, file, bad.message);
}

const BadInput BAD_CLUSTERS[] = {
    {"empty", "", ": there are no clusters, at least one is expected"},
    {"onlyMark", BOM, ": there are no clusters, at least one is expected"},
    {"onlyEmptyClusters", "# Clusters: 2, Numbered: 1\n1>\n2>\n", ": there are no clusters"},
    {"words", "1 2\nhello\n", ":2: the node is \"hello\", an id of decimal digits is expected"},
    {"commentBehind", "1 2 #3\n", ":1: the node is \"#3\""},
    {"commas", "1,2\n", ":1: the node is \"1,2\", an id"},
    {"idNegative", "1 -2\n", ":1: the node is \"-2\", an id"},
    {"idNone", "1 4294967295\n", ":1: the node is \"4294967295\", an id below"},
    {"idOverflow", "1 2\n1 18446744073709551617\n",
     ":2: the node is \"18446744073709551617\", an id below"},
    {"noId", "1 :0.5\n", ":1: the node is \"\", an id"},
    {"twice", "1 2 3\n4 5 4\n", ":2: node 4 stands twice in the line"},
    {"shareNone", "1: 2\n", ":1: the share of node 1 is \"\", a number above 0"},
    {"shareZero", "1:0 2\n", ":1: the share of node 1 is \"0\", a number above 0"},
    {"shareNegative", "1:-0.5 2\n", ":1: the share of node 1 is \"-0.5\", a number above 0"},
    {"shareMinusZero", "1:-0 2\n", ":1: the share of node 1 is \"-0\", a number above 0"},
    {"sharePlus", "1:+0.5 2\n", ":1: the share of node 1 is \"+0.5\", a number above 0"},
    {"shareHex", "1:0x1 2\n", ":1: the share of node 1 is \"0x1\", a number above 0"},
    {"shareLarge", "1:1.5 2\n", ":1: the share of node 1 is \"1.5\", a number above 0 and up to 1"},
    {"shareOverflow", "1:1e400 2\n", ":1: the share of node 1 is \"1e400\""},
    {"shareBelowFloats", "1:1e-50 2\n", ":1: the share of node 1 is \"1e-50\""},
    {"shareTiny", "1:1e-400 2\n", ":1: the share of node 1 is \"1e-400\""},
    {"shareNan", "1:nan 2\n", ":1: the share of node 1 is \"nan\""},
    {"shareInf", "1:inf 2\n", ":1: the share of node 1 is \"inf\""},
    {"shareTwice", "1:0.5:0.5\n", ":1: the share of node 1 is \"0.5:0.5\""},
    {"shareComma", "1:0,5\n", ":1: the share of node 1 is \"0,5\""},
    {"numberMissing", "1> 1 2\n3 4\n", ":2: the line begins with \"3\", a cluster's id"},
    {"numberMissingAll", "# Clusters: 1, Numbered: 1\n3 4\n",
     ":2: the line begins with \"3\", a cluster's id"},
    {"numberUntold", "# Clusters: 1, Nodes: 2, Fuzzy: 0, Numbered: 0\n1> 3 4\n",
     ":2: the node is \"1>\", an id"},
    {"numberNone", "4294967295> 1 2\n", ":1: the cluster's id is \"4294967295\", an id below"},
    {"numberOverflow", "99999999999999999999> 1\n",
     ":1: the cluster's id is \"99999999999999999999\", an id below"},
    {"numberWord", "# Clusters: 1, Numbered: 1\nx> 1\n",
     ":2: the line begins with \"x>\", a cluster's id"},
    {"numberLate", "1 2\n5> 1\n", ":2: the node is \"5>\", an id"},
    {"numberEmpty", "# Clusters: 1, Numbered: 1\n>1\n", ":2: the line begins with \">1\""},
    {"numberApart", "1 > 2 3\n", ":1: the node is \">\", an id"},
    {"headerWord", "# Clusters: many\n1 2\n",
     ":1: the header's \"Clusters:\" is \"many\", a whole number"},
    {"headerNegative", "# Clusters: -1\n1 2\n",
     ":1: the header's \"Clusters:\" is \"-1\", a whole number"},
    {"headerOverflow", "# Clusters: 4294967296\n1 2\n",
     ":1: the header's \"Clusters:\" is \"4294967296\", a whole"},
    {"headerNodes", "# Clusters: 1, Nodes: 1e3\n1 2\n",
     ":1: the header's \"Nodes:\" is \"1e3\", a whole number"},
    {"headerFuzzy", "# Clusters: 1, Nodes: 2, Fuzzy: yes\n1 2\n",
     ":1: the header's \"Fuzzy:\" is \"yes\", a whole number"},
    {"headerNothing", "#\n# Clusters: 1, Numbered: ,\n1\n",
     ":2: the header's \"Numbered:\" is \"\""},
    {"headerNumbered", "# Clusters: 1, Nodes: 2, Fuzzy: 0, Numbered: +1\n1 2\n",
     ":1: the header's \"Numbered:\" is \"+1\""},
    {"binary", "1 2\n3 \0004\n"s, ":2: a NUL byte"},
    {"wideCharacters",
     "\xFF\xFE"
     "1\0 \0002\0\n\0"s,
     ":1: a NUL byte"},
    {"carriageReturnsAlone", "1 2\r3 4\r", ":1: the node is \"2?3\", an id"},
    {"markLater", "1 2\n" + BOM + "3\n", ":2: the node is \""},
    {"longLine", "1 2\n" + std::string(LONG, 'x') + "\n",
     ":2: the node is \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...\""},
    {"longShare", "1:0." + std::string(LONG, '9') + "9x\n",
     ":1: the share of node 1 is \"0.999999999999999999999999999999...\""}};
INSTANTIATE_TEST_SUITE_P(, BadClusters, testing::ValuesIn(BAD_CLUSTERS), nameOf);

const std::string PLAIN = "1 2\n2 3\n3 1\n3 4\n4 5\n5 6\n6 4\n";
const std::string GZIP = gzip(PLAIN);
const std::string ZSTD = zstd(PLAIN);

std::string damaged(std::string text, std::size_t place, int bits = 0x10) {
    text[place] = static_cast<char>(text[place] ^ bits);
    return text;
}

class BadPacking : public testing::TestWithParam<BadInput> {};

TEST_P(BadPacking, IsTold) {
    const BadInput& bad = GetParam();
    const Folder folder;
    const std::string file = folder.write("net.nse", bad.text);
    expectRefused({"convert", file, (folder / "out.rcg").string()}, file, bad.message);
}

const BadInput BAD_PACKING[] = {
    {"gzipMagic", GZIP.substr(0, 2), ": the gzip data ends early"},
    {"gzipHeader", GZIP.substr(0, 10), ": the gzip data ends early"},
    {"gzipHalf", GZIP.substr(0, GZIP.size() / 2), ": the gzip data ends early"},
    {"gzipNoSum", GZIP.substr(0, GZIP.size() - 8), ": the gzip data ends early"},
    {"gzipNoSize", GZIP.substr(0, GZIP.size() - 1), ": the gzip data ends early"},
    {"gzipMethod", damaged(GZIP, 2), ": the gzip data is damaged: unknown compression method"},
    {"gzipFlags", damaged(GZIP, 3, 0x80), ": the gzip data is damaged: unknown header flags set"},
    {"gzipBlock", damaged(GZIP, 10, 0x04), ": the gzip data is damaged: invalid block type"},
    {"gzipSum", damaged(GZIP, GZIP.size() - 8), ": the gzip data is damaged: incorrect data check"},
    {"gzipSize", damaged(GZIP, GZIP.size() - 1),
     ": the gzip data is damaged: incorrect length check"},
    {"gzipAndText", GZIP + "1 2\n", ": the gzip data is damaged: incorrect header check"},
    {"gzipSecondMember", GZIP + GZIP.substr(0, 9), ": the gzip data ends early"},
    {"gzipOfNothing", gzip(""), ": the file is empty"},
    {"gzipOfBadLine", gzip("1 2\n3\n"), ":2: a single id"},
    {"gzipTwice", gzip(GZIP), ":1: a NUL byte"},
    {"zstdMagic", ZSTD.substr(0, 4), ": the zstd data ends early"},
    {"zstdHalf", ZSTD.substr(0, ZSTD.size() / 2), ": the zstd data ends early"},
    {"zstdNoSum", ZSTD.substr(0, ZSTD.size() - 1), ": the zstd data ends early"},
    {"zstdSum", damaged(ZSTD, ZSTD.size() - 1),
     ": the zstd data is damaged: Restored data doesn't match checksum"},
    {"zstdReserved", damaged(ZSTD, 4, 0x08),
     ": the zstd data is damaged: Unsupported frame parameter"},
    {"zstdAndText", ZSTD + "1 2\n2 3\n", ": the zstd data is damaged: Unknown frame descriptor"},
    {"zstdOfNothing", zstd(""), ": the file is empty"},
    {"zstdOfBadLine", zstd("1 2\n3 x\n"), ":2: the destination is \"x\""},
    {"zlibStream", "\x78\x9C\x33\x54\x30\x02\0"s, ":1: a NUL byte"}};
INSTANTIATE_TEST_SUITE_P(, BadPacking, testing::ValuesIn(BAD_PACKING), nameOf);

}  // namespace
}  // namespace vorl::test
