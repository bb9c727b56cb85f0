// Networks in the formats of others, good and bad.
#include "support/scanned_links.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <vector>

namespace vorl {
namespace {

std::string linksOf(NetworkFormat format, std::string_view text, ScanOptions options = {}) {
    options.format = format;
    std::string nodes;
    const std::string links = test::linksOf(text, options, &nodes);
    return nodes + " | " + links;
}

constexpr NetworkFormat MTX = NetworkFormat::MATRIX_MARKET;
constexpr NetworkFormat METIS = NetworkFormat::METIS;
constexpr NetworkFormat PAJEK = NetworkFormat::PAJEK;
constexpr NetworkFormat GML = NetworkFormat::GML;
constexpr NetworkFormat GRAPHML = NetworkFormat::GRAPHML;
constexpr NetworkFormat JSON = NetworkFormat::JSON;

const std::string BANNER = "%%MatrixMarket matrix coordinate ";

TEST(NetworkFormats, MatricesAreRead) {
    EXPECT_EQ(linksOf(MTX, BANNER + "real general\n% c\n\n3 3 2\n1 2 0.5\n3 1 2e0\n"),
              "1 2 3 | 1>2:0.5 3>1:2");
    EXPECT_EQ(linksOf(MTX, "%%matrixmarket MATRIX Coordinate Pattern Symmetric\n4 4 2\n2 1\n3 3\n"),
              "1 2 3 4 | 1-2 3-3");
    EXPECT_EQ(linksOf(MTX, BANNER + "integer general\n2 2 1\n1 2 7\n", {.directed = false}),
              "1 2 | 1-2:7");
}

TEST(NetworkFormats, ListsOfNeighboursAreRead) {
    EXPECT_EQ(linksOf(METIS, "% c\n4 3\n2 3\n1 3\n% c\n1 2\n\n"), "1 2 3 4 | 1-2 1-3 2-3");
    EXPECT_EQ(linksOf(METIS, "2 1 1\n2 5\n1 5\n"), "1 2 | 1-2:5");
    EXPECT_EQ(linksOf(METIS, "2 1 011 2\n7 7 2 5\n8 8 1 5\n"), "1 2 | 1-2:5");
    EXPECT_EQ(linksOf(METIS, "2 1 100\n9 2\n9 1\n", {.weights = false}), "1 2 | 1-2");
}

TEST(NetworkFormats, VerticesWithLabelsAreRead) {
    EXPECT_EQ(
        linksOf(PAJEK,
                "% c\n*Network x\n*Vertices 4\n1 \"Ann \"\"A\"\" Lee\" 0.1 0.2\n2 Bob ic Red\n4\n"
                "*Arcs :1 \"knows\"\n1 2 3\n*edges\n4 2\n*Edgeslist\n3 1 2\n*ARCSLIST\n1 4\n"),
        "Ann \"A\" Lee Bob 4 3 | Ann \"A\" Lee>Bob:3 4-Bob 3-Ann \"A\" Lee 3-Bob "
        "Ann \"A\" Lee>4");
    EXPECT_EQ(linksOf(PAJEK, "*vertices 2\n*edges\n1 2\n", {.directed = true}), "1 2 | 1>2");
    EXPECT_EQ(
        linksOf(PAJEK, "*Vertices 2\n1 \"a&#34;&#228;&amp;&#7;&#\"\n2 &#38;#34;\n*Arcs\n1 2\n"),
        "a\"\xC3\xA4&amp;&#7;&# &#34; | a\"\xC3\xA4&amp;&#7;&#>&#34;");
}

TEST(NetworkFormats, KeysAndValuesAreRead) {
    EXPECT_EQ(linksOf(GML,
                      "Creator \"me, [or] not\"\nVersion 1\ngraph [\n  directed 1\n"
                      "  node [ id 7 label \"A &amp; B&#228;\" graphics [ x 1 id 9 ] ]\n"
                      "  node [ id -1 ]\n# c\n  edge [ source 7 target -1 value 2.5 ]\n"
                      "  edge [ target 7 source -1 weight 3 value 4 ] ]\n"),
              "A & B\xC3\xA4 -1 | A & B\xC3\xA4>-1:2.5 -1>A & B\xC3\xA4:3");
    EXPECT_EQ(linksOf(GML,
                      "graph [ node [ id 0 ] node [ id 1 name \"x\" ]edge[source 0 target 1 "
                      "cost 4 ]]",
                      {.weightName = "Cost"}),
              "0 x | 0-x:4");
    EXPECT_EQ(linksOf(GML, "graph [ node [ id 0 ] node [ id 1 ] edge [ source 1 target 0 ] ]",
                      {.directed = true}),
              "0 1 | 1>0");
}

const std::string XML = "<graphml>\n";

TEST(NetworkFormats, XmlIsRead) {
    EXPECT_EQ(
        linksOf(GRAPHML,
                "<?xml version='1.0' encoding='iso-8859-1'?>\n<!-- c --><!DOCTYPE graphml SYSTEM "
                "'none.dtd'>\n<g:graphml xmlns:g=\"http://graphml.graphdrawing.org/xmlns\">\n"
                "<g:key id='l' for='node' attr.name='Label' attr.type='string'/>\n"
                "<g:key id='w' for='edge' attr.name='weight'><g:default>2</g:default></g:key>\n"
                "<g:key id='x' for='node' attr.name='weight'/>\n"
                "<g:graph edgedefault='directed'>\n"
                "<g:node id='n0'><g:data key='l'>\n A &amp; B\xE4 </g:data></g:node>\n"
                "<g:node id='n1'><g:data key='x'>9</g:data><g:port name='p'/></g:node>\n"
                "<g:edge source='n1' target='n0'><g:data key='w'> 0.5 </g:data></g:edge>\n"
                "<g:edge source='n0' target='n1' directed='false'/></g:graph></g:graphml>\n"),
        "A & B\xC3\xA4 n1 | n1>A & B\xC3\xA4:0.5 A & B\xC3\xA4-n1:2");
    // Graphs inside nodes, data whose keys aren't told, and numbers.
    EXPECT_EQ(linksOf(GRAPHML,
                      XML + "<graph><node id='7'><graph edgedefault='directed'><node id='a&#9;b '/>"
                            "<edge source='7' target='a&#9;b '/></graph></node><node id='8'>"
                            "<data key='name'><![CDATA[<x>]]></data></node>"
                            "<edge source='8' target='7'><data key='value'>3</data></edge>"
                            "</graph></graphml>"),
              "7 a\tb  <x> | 7>a\tb  <x>-7:3");
    EXPECT_EQ(linksOf(GRAPHML,
                      XML + "<key id='c' attr.name='cost'/><graph><node id='a'/><edge source='a' "
                            "target='a' directed='true'><data key='c'>4</data></edge>"
                            "</graph></graphml>",
                      {.directed = false, .weightName = "Cost"}),
              "a | a-a:4");
}

TEST(NetworkFormats, XmlTagsAreBounded) {
    // One without end would be gone through again and again.
    const std::string tag = "<graphml a='" + std::string(20 << 20, 'x');
    EXPECT_EQ(test::errorOf<InputError>([&] { linksOf(GRAPHML, tag); }),
              "f:1: a tag or a comment has more than 16.0 MiB, which is too much");
    // Many are not, nor is a long one that has an end.
    std::string many = "<graphml><graph><node id='a'/>\n";
    for (int i = 0; i < 18; ++i) many += "<!--" + std::string(1 << 20, '.') + "-->\n";
    many += "<!--" + std::string(10 << 20, '.') + "-->\n<edge source='a' target='a'/>";
    EXPECT_EQ(linksOf(GRAPHML, many + "</graph></graphml>"), "a | a-a");
}

TEST(NetworkFormats, ListsOfNodesAndLinksAreRead) {
    EXPECT_EQ(
        linksOf(JSON,
                "{\"directed\": true, \"multigraph\": false, \"graph\": {\"a\": [1, {}]},\n"
                "\"nodes\": [{\"id\": \"a\\\"\\u00e4\\ud83d\\ude00\", \"x\": 1}, {\"id\": 5}],\n"
                "\"links\": [{\"source\": 5, \"target\": \"a\\\"\\u00e4\\ud83d\\ude00\", "
                "\"weight\": 2.5}]}"),
        "a\"\xC3\xA4\xF0\x9F\x98\x80 5 | 5>a\"\xC3\xA4\xF0\x9F\x98\x80:2.5");
    // Links by places, and with whole nodes for ends.
    EXPECT_EQ(linksOf(JSON,
                      "{\"nodes\":[{\"name\":\"x\"},{\"name\":\"y\"}],"
                      "\"links\":[{\"source\":0,\"target\":1,\"value\":3}]}"),
              "x y | x-y:3");
    EXPECT_EQ(linksOf(JSON,
                      "{\"nodes\":[{\"name\":\"x\"},{\"name\":\"\"}],"
                      "\"links\":[{\"source\":0,\"target\":1}]}"),
              "x 1 | x-1");
    EXPECT_EQ(linksOf(JSON,
                      "{\"nodes\":[{\"id\":\"x\"},{\"id\":\"y\"}],\"edges\":[{\"source\":"
                      "{\"id\":\"x\",\"q\":[]},\"target\":{\"id\":\"y\"}}]}"),
              "x y | x-y");
    EXPECT_EQ(linksOf(JSON, "{\"links\":[{\"source\":\"b\",\"target\":1}]}"), "b 1 | b-1");
}

struct Bad {
    NetworkFormat format;
    std::string text;
    const char* message;
};

std::ostream& operator<<(std::ostream& out, const Bad& bad) { return out << bad.message; }

std::string nested(std::size_t depth, char open) { return std::string(depth, open); }

std::string repeated(std::size_t count, const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

const Bad BAD[] = {
    {MTX, "", ": the file is empty"},
    {MTX, "1 1 1\n", ":1: the file begins with \"1 1 1\", \"%%MatrixMarket\" is expected"},
    {MTX, "\n1 1 1\n", ":2: the file begins without"},
    {MTX, "%%MatrixMarket vector coordinate real general\n", ":1: the object is \"vector\""},
    {MTX, "%%MatrixMarket matrix array real general\n",
     ":1: the form of the matrix is \"array\", coordinate is expected"},
    {MTX, BANNER + "complex general\n", ":1: the field of the matrix is \"complex\""},
    {MTX, BANNER + "real hermitian\n", ":1: the symmetry of the matrix is \"hermitian\""},
    {MTX, BANNER + "real\n", ":1: the symmetry of the matrix is \"\""},
    {MTX, BANNER + "real general\n", ":1: the file ends without the size"},
    {MTX, BANNER + "real general\nx 3 1\n", ":2: the header's number of rows is \"x\""},
    {MTX, BANNER + "real general\n3 3\n", ":2: the header's number of entries is \"\""},
    {MTX, BANNER + "real general\n3 3 1 1\n", ":2: found \" 1\" behind the size"},
    {MTX, BANNER + "real general\n3 4 1\n1 2 1\n", ":2: the matrix has 3 rows and 4 columns"},
    {MTX, BANNER + "real general\n2200000000 2200000000 1\n",
     ":2: the header tells of 2,200,000,000 nodes"},
    {MTX, BANNER + "real general\n2 2 1\n1,2,1\n", ":3: the row is \"1,2,1\", an id"},
    {MTX, BANNER + "real general\n2000000000 2000000000 1\n1 2 1\n",
     ":2: the header tells of 2000000000 nodes, more than the file has bytes"},
    {MTX, BANNER + "real general\n2 2 2\n1 2 1\n", ":2: the header tells of 2 entries, the file"},
    {MTX, BANNER + "real general\n2 2 1\n1 2 1\n2 1 1\n", ":4: the header tells of 1 entries"},
    {MTX, BANNER + "real general\n2 2 1\n0 2 1\n", ":3: the row is \"0\", a number from 1 to 2"},
    {MTX, BANNER + "real general\n2 2 1\n1 3 1\n", ":3: the column is \"3\", a number from 1"},
    {MTX, BANNER + "real general\n2 2 1\n1 x 1\n", ":3: the column is \"x\", an id"},
    {MTX, BANNER + "real general\n2 2 1\n1 2\n", ":3: the entry has no value"},
    {MTX, BANNER + "real general\n2 2 1\n1 2 -3\n", ":3: the weight is \"-3\", it must not"},
    {MTX, BANNER + "pattern general\n2 2 1\n1 2 1\n", ":3: the entry has the value \"1\""},
    {MTX, BANNER + "real general\n2 2 1\n1 2 1 5\n", ":3: found \" 5\" behind the entry"},
    {MTX, BANNER + "real general\n0 0 0\n", ":2: the file ends without a link"},

    {METIS, "", ": the file is empty"},
    {METIS, "% c\n", ":1: the file ends without the line of counts"},
    {METIS, "x 1\n", ":1: the header's number of nodes is \"x\""},
    {METIS, "2\n", ":1: the header's number of edges is \"\""},
    {METIS, "2 1 7\n", ":1: the header's format is \"7\", up to three digits"},
    {METIS, "2 1 0001\n", ":1: the header's format is \"0001\""},
    {METIS, "2 1 010 x\n", ":1: the header's number of weights of a node is \"x\""},
    {METIS, "2 1 010 5000\n", ":1: the header's number of weights of a node is above 999"},
    {METIS, "2 1 0 1 9\n2\n1\n", ":1: found \" 9\" behind the counts"},
    {METIS, "3000000000 1\n", ":1: the header tells of 3,000,000,000 nodes"},
    {METIS, "5000000000 1\n", ":1: the header's number of nodes is 5000000000"},
    {METIS, "3 1\n2\n1\n", ":1: the header tells of 3 nodes, the file has lines for 2"},
    {METIS, "2 1\n2\n1\n1\n", ":4: the header tells of 2 nodes, this is the line of a further"},
    {METIS, "2 2\n2\n1\n",
     ":1: the header tells of 2 edges, which are 4 neighbours, the file has 2"},
    {METIS, "2 1\n2\n\n", ":1: the header tells of 1 edge, which are 2 neighbours, the file has 1"},
    {METIS, "3 2\n2 3\n1 3\n\n", ":1: edges aren't told alike from both"},
    {METIS, "2 1 1\n2 5\n1 6\n", ":1: edges aren't told alike from both"},
    {METIS, "2 1\n1\n\n", ":2: the node is its own neighbour"},
    {METIS, "2 1\n3\n\n", ":2: the neighbour is \"3\", a number from 1 to 2"},
    {METIS, "2 1\n0\n\n", ":2: the neighbour is \"0\", a number from 1 to 2"},
    {METIS, "2 1\na\n\n", ":2: the neighbour is \"a\", an id"},
    {METIS, "2 1 1\n2\n1 1\n", ":2: the neighbour 2 has no weight"},
    {METIS, "2 1 1\n2 x\n1 x\n", ":2: the weight is \"x\", a number"},
    {METIS, "2 1 010 2\n1\n1 1 1\n", ":2: the line ends within the sizes"},
    {METIS, "2 1\n2 2 2\n1\n",
     ":2: the header tells of 1 edge, which are 2 neighbours, this is a further one"},
    {METIS, "2 9223372036854775809\n2\n1\n",
     ":1: the header's number of edges is \"9223372036854775809\", one below"},
    {METIS, "2 1\n2,\n1\n", ":2: the neighbour is \"2,\", an id"},
    {METIS, "1 0\n\n", ":2: the file ends without a link"},

    {PAJEK, "", ": the file is empty"},
    {PAJEK, "1 2\n", ":1: found \"1 2\", \"*Vertices\" is expected"},
    {PAJEK, "% c\n", ":1: the file ends, \"*Vertices\" is expected"},
    {PAJEK, "*Edges\n1 2\n", ":1: the section \"*edges\" stands before"},
    {PAJEK, "*Vertices\n", ":1: the header's number of nodes is \"\""},
    {PAJEK, "*Vertices x\n", ":1: the header's number of nodes is \"x\""},
    {PAJEK, "*Vertices 3000000000\n", ":1: the header tells of 3,000,000,000 nodes"},
    {PAJEK, "*Vertices 2000000000\n*Edges\n1 2\n",
     ":1: the header tells of 2000000000 nodes, more than the file has bytes"},
    {PAJEK, "*Vertices 2\n*Vertices 2\n", ":2: the section *Vertices stands twice"},
    {PAJEK, "*Vertices 2\n*Network b\n", ":2: a second network begins"},
    {PAJEK, "*Vertices 2\n*Matrix\n", ":2: the section \"*matrix\" is unknown"},
    {PAJEK, "*Vertices 2\n3 \"a\"\n", ":2: the vertex is \"3\", a number from 1 to 2"},
    {PAJEK, "*Vertices 2\nx\n", ":2: the vertex is \"x\", an id"},
    {PAJEK, "*Vertices 2\n1 \"a\n", ":2: the quotes of the label aren't closed"},
    {PAJEK, "*Vertices 2\n1 a\n1 b\n", ":3: the vertex 1 stands twice"},
    {PAJEK, "*Vertices 2\n1 a\n2 a\n", ":3: the label \"a\" is that of another vertex"},
    {PAJEK, "*Vertices 2\n*Edges\n1\n", ":3: a single vertex"},
    {PAJEK, "*Vertices 2\n*Edges\n1 3\n", ":3: the destination is \"3\", a number from 1 to 2"},
    {PAJEK, "*Vertices 2\n*Arcs\n0 1\n", ":3: the source is \"0\", a number from 1 to 2"},
    {PAJEK, "*Vertices 2\n*Edges\n1,2\n", ":3: the source is \"1,2\", an id"},
    {PAJEK, "*Vertices 2\n*Arcs\n1 2 x\n", ":3: the weight is \"x\", a number"},
    {PAJEK, "*Vertices 2\n*Arcslist\n1 9\n", ":3: the destination is \"9\""},
    {PAJEK, "*Vertices 2\n", ":1: the file ends without a link"},

    {GML, "", ": the file is empty"},
    {GML, "x 1\n", ":1: the file has no \"graph [\""},
    {GML, "graph\n", ":1: the file ends behind the key \"graph\""},
    {GML, "graph [\n", ":1: the file ends within \"graph\", \"]\" is expected"},
    {GML, "]\n", ":1: a \"]\" that no \"[\" belongs to"},
    {GML, "graph [ ]\n", ":1: the file ends without a link"},
    {GML, "graph [ node ]\n", ":1: found \"]\" behind the key \"node\""},
    {GML, "graph [ \"a\" 1 ]\n", ":1: found \"a\", a key is expected"},
    {GML, "graph [ [ ] ]\n", ":1: found \"[\", a key is expected"},
    {GML, "graph [ ]\ngraph [ ]\n", ":2: a second graph begins"},
    {GML, "graph [ directed 2 ]\n", ":1: directed is \"2\", 0 or 1 is expected"},
    {GML, "graph [\nnode [ label \"a\" ]\n]\n", ":2: the node has no id"},
    {GML, "graph [\nnode [ id 1 ]\nnode [ id 1 label \"x\" ]\n]\n",
     ":3: the node \"1\" stands twice"},
    {GML, "graph [\nnode [ id 1 label \"x\" ]\nnode [ id 2 label \"x\" ]\n]\n",
     ":3: the name \"x\" is that of another node already"},
    {GML, "graph [ edge [ source 1 target 2 ] ]\n", ":1: the source is \"1\", which is none"},
    {GML, "graph [ node [ id 1 ] edge [ source 1 target 2 ] ]\n", ":1: the target is \"2\""},
    {GML, "graph [ node [ id 1 ]\nedge [ source 1 ] ]\n", ":2: the edge has no target"},
    {GML, "graph [ node [ id 1 ]\nedge [\ntarget 1 ] ]\n", ":2: the edge has no source"},
    {GML, "graph [ node [ id 1 ] edge [ source 1 target 1 weight \"x\" ] ]\n",
     ":1: the weight is \"x\", a number"},
    {GML, "graph [\nnode [ id 1 label \"x\n ] ]\n", ":2: the quotes that begin with"},
    {GML, "graph [ a [ " + nested(3000, '[') + "\n", ":1: found \"[\", a key is expected"},

    {GRAPHML, "", ": the file is empty"},
    {GRAPHML, "x\n", ":1: the document isn't XML: "},
    {GRAPHML, "<gexf/>\n", ":1: the document is one of \"gexf\", one of \"graphml\" is expected"},
    {GRAPHML, XML, ":2: the document isn't XML: no element found"},
    {GRAPHML, XML + "</graphml>\n", ":3: the file ends without a link"},
    {GRAPHML, XML + "<graph>\n</node></graph></graphml>\n",
     ":3: the document isn't XML: mismatched tag"},
    {GRAPHML, XML + "<graph></graph>\n<graph></graph></graphml>", ":3: a second graph begins"},
    {GRAPHML, XML + "<graph edgedefault='both'>", ":2: edgedefault is \"both\", directed or"},
    {GRAPHML, XML + "<key for='edge'/>", ":2: the key has no id"},
    {GRAPHML, XML + "<graph>\n<node/></graph>", ":3: the node has no id"},
    {GRAPHML, XML + "<graph>\n<node><graph/></node></graph>", ":3: the node has no id"},
    {GRAPHML, XML + "<graph>\n<node id='1'/>\n<node id='1'/></graph>", ":4: the name \"1\" is"},
    {GRAPHML,
     XML + "<key id='l' attr.name='label'/><graph>\n<node id='1'><data key='l'>x</data></node>\n"
           "<node id='2'>\n<data key='l'>x</data></node></graph>",
     ":4: the name \"x\" is that of another node already"},
    {GRAPHML,
     XML + "<graph>\n<node id='1'><data key='name'>x</data></node>\n<node id='1'/></graph>",
     ":4: the node \"1\" stands twice"},
    {GRAPHML, XML + "<graph>\n<edge source='1' target='1'/></graph>",
     ":3: the source is \"1\", which is none of the nodes in front of the link"},
    {GRAPHML, XML + "<graph><node id='1'/>\n<edge source='1' target='2'/></graph>",
     ":3: the target is \"2\""},
    {GRAPHML, XML + "<graph><node id='1'/>\n<edge\n source='1'/></graph>",
     ":3: the edge has no target"},
    {GRAPHML, XML + "<graph><node id='1'/>\n<edge target='1'/></graph>",
     ":3: the edge has no source"},
    {GRAPHML, XML + "<graph><node id='1'/>\n<edge source='1' target='1' directed='x'/></graph>",
     ":3: directed is \"x\", true or false"},
    {GRAPHML,
     XML + "<graph><node id='1'/>\n<edge source='1' target='1'>\n"
           "<data key='weight'>x</data></edge></graph>",
     ":3: the weight is \"x\", a number"},
    {GRAPHML,
     XML + "<graph><node id='1'/>\n<edge source='1' target='1'>\n"
           "<data key='weight'>-1</data></edge></graph>",
     ":3: the weight is \"-1\", it must not be negative"},
    {GRAPHML, XML + "<graph>\n<hyperedge/></graph>", ":3: found a hyperedge"},
    {GRAPHML, "<!DOCTYPE graphml [\n<!ENTITY a 'ha'><!ENTITY b '&a;&a;&a;'>]>" + XML,
     ":2: the document declares the entity \"a\", none is expected"},
    {GRAPHML, "<!DOCTYPE graphml [\n<!ENTITY a SYSTEM 'file:///etc/passwd'>]>" + XML,
     ":2: the document declares the entity \"a\""},
    {GRAPHML,
     "<!DOCTYPE graphml SYSTEM 'x.dtd'>" + XML + "<graph><node id='1'><data key='name'>&x;</data>",
     ":2: the entity \"x\" isn't declared here"},
    {GRAPHML, XML + "<graph><node id='&x;'/>", ":2: the document isn't XML: undefined entity"},
    {GRAPHML, "<?xml version='1.0' encoding='x-none'?>\n" + XML,
     ":1: the document isn't XML: unknown encoding"},
    {GRAPHML, XML + "<a b='1' b='2'/>", ":2: the document isn't XML: duplicate attribute"},
    {GRAPHML, XML + "<graph><node id='\xFF\xFE'/>", ":2: the document isn't XML: not well-formed"},
    {GRAPHML, "<graphml>" + repeated(2000, "<a>"), ":1: more than 1,000 elements lie inside"},

    {JSON, "", ": the file is empty"},
    {JSON, "[]", ":1: found \"[]\", \"{\" is expected"},
    {JSON, "{", ":1: found the end of the file, \"\"\" is expected"},
    {JSON, "{}", ":1: the document has no \"links\" or \"edges\", but no keys"},
    {JSON, "{\"nodes\": [], \"relations\": []}",
     ":1: the document has no \"links\" or \"edges\", but \"nodes\", \"relations\""},
    {JSON, "{\"nodes\": [], \"links\": []}", ":1: the file ends without a link"},
    {JSON, "{} x", ":1: found \"x\" behind the document"},
    {JSON, "{\"nodes\" []}", ":1: found \"[]}\", \":\" is expected"},
    {JSON, "{\"nodes\": 5}", ":1: found \"5}\", \"[\" is expected"},
    {JSON, "{\"nodes\": [\n{\"id\": 1},\n{\"id\": 1}]}", ":3: the name \"1\" is that of another"},
    {JSON, "{\"nodes\": [{\"id\": 1}, {\"name\": 2}]}", ":1: some nodes have an id"},
    {JSON, "{\"nodes\": [{\"id\": \"a]}", ":1: the quotes of"},
    {JSON, "{\"nodes\": [{\"id\": \"a\\x\"}]}", ":1: \"\\x\" stands for nothing"},
    {JSON, "{\"nodes\": [{\"id\": \"\\u12\"}]}", ":1: four hexadecimal digits"},
    {JSON, "{\"nodes\": [{\"id\": \"\\ud800x\"}]}", ":1: the text holds the character 55296"},
    {JSON, "{\"nodes\": [{\"id\": \"\\u000a\"}]}", ":1: the text holds the character 10"},
    {JSON, "{\"nodes\": [{\"id\": \"a\tb\"}]}", ":1: a control character"},
    {JSON, "{\"directed\": 1}", ":1: directed is \"1\", true or false"},
    {JSON, "{\"links\": [{\"source\": 1}]}", ":1: the link has no target"},
    {JSON, "{\"links\": [{\"target\": 1}]}", ":1: the link has no source"},
    {JSON, "{\"nodes\": [{\"id\": 1}], \"links\": [{\"source\": 1, \"target\": 2}]}",
     ":1: the target is \"2\", which is none of the nodes"},
    {JSON, "{\"links\": [], \"nodes\": []}", ":1: the nodes stand behind the links"},
    {JSON, "{\"links\": [], \"directed\": true}", ":1: \"directed\" stands behind the links"},
    {JSON, "{\"nodes\": [{\"id\": 1},\n{\"id\": \"\"}]}", ":2: the name of a node is \"\", a name"},
    {JSON, "{\"links\": [{\"source\": 1, \"target\": \"\"}]}", ":1: the name of a node is \"\""},
    {GRAPHML, XML + "<graph>\n<node id=''/></graph></graphml>", ":3: the name of a node is \"\""},
    {GML, "graph [ node [ id \"\" label 1 ] ]", ":1: the name of a node is \"\""},
    {GML, "graph [ node [ id 1 ] edge [ source 1 target 1 ]\ndirected 1 ]",
     ":2: \"directed\" stands behind the edges"},
    {JSON, "{\"links\": [{\"source\": 1, \"target\": 2, \"weight\": \"x\"}]}",
     ":1: the weight is \"x\", a number"},
    {JSON, "{\"links\": [{\"source\": 1, \"target\": 2},]}", ":1: found \"]}\", \"{\" is expected"},
    {JSON, "{\"x\": " + nested(5000, '['), ":1: more than 1,000 values lie inside each other"},
    {JSON, "{\"links\": [{\"source\": 1,\n", ":1: found the end of the file, \"\"\" is expected"},
    {JSON, "{\"x\": [1, \n", ":1: found the end of the file, a value is expected"},
    {JSON, "{\"links\": [{\"source\": 1x}]}", ":1: found \"1x}]}\", a value is expected"},
    {JSON, "{\"x\": hello}", ":1: found \"hello}\", a value is expected"},
};

class BadNetworks : public testing::TestWithParam<Bad> {};

TEST_P(BadNetworks, AreToldByLine) {
    const Bad& bad = GetParam();
    const std::string told = test::errorOf<InputError>([&] { linksOf(bad.format, bad.text); });
    EXPECT_TRUE(told.starts_with(std::string("f") + bad.message)) << told;
}

INSTANTIATE_TEST_SUITE_P(All, BadNetworks, testing::ValuesIn(BAD), [](const auto& param) {
    return std::string(nameOf(param.param.format)) + std::to_string(param.index);
});

TEST(NetworkFormats, BinaryAndWideTextIsTold) {
    const std::string binary("\0\1", 2);
    const std::string wide("\xFF\xFE\x31\0", 4);
    const std::string wideFromTheOtherEnd("\xFE\xFF\0\x31", 4);
    for (const auto& known : networkFormats()) {
        const NetworkFormat format = known.second;
        EXPECT_EQ(test::errorOf<InputError>([&] { linksOf(format, binary); }),
                  "f:1: a NUL byte: the file is binary, lines of text are expected");
        for (const std::string& text : {wide, wideFromTheOtherEnd})
            EXPECT_EQ(test::errorOf<InputError>([&] { linksOf(format, text); }),
                      "f:1: a NUL byte: the file is in UTF-16, text in UTF-8 is expected");
    }
}

TEST(NetworkFormats, WeightsOfAnotherNameMustBeThere) {
    const std::string gml = "graph [ node [ id 1 ] node [ id 2 ] edge [ source 1 target 2 w 3 ] ]";
    const std::string json =
        R"({"nodes": [{"id": 1}, {"id": 2}], "links": [{"source": 1, "target": 2, "w": 3}]})";
    const auto with = [](const char* name) {
        ScanOptions options;
        options.weightName = name;
        return options;
    };
    EXPECT_EQ(linksOf(GML, gml, with("w")), "1 2 | 1-2:3");
    for (const auto& [format, text] : {std::pair(GML, gml), std::pair(JSON, json)}) try {
            linksOf(format, text, with("foo"));
            ADD_FAILURE() << text;
        } catch (const InputError& err) {
            EXPECT_NE(std::string(err.what()).find("no link has a weight called \"foo\""),
                      std::string::npos)
                << err.what();
        }
}

TEST(NetworkFormats, NamesAreBounded) {
    const std::string most(1 << 20, 'x');
    const std::string name = most + "x";
    const std::string fault =
        "the name \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...\" has more than 1.0 MiB";
    const std::pair<NetworkFormat, std::array<std::string, 2>> around[] = {
        {NetworkFormat::LIST, {"a,b\n", ",b\n"}},
        {NetworkFormat::LIST, {"a,b\n\"", "\"\"\",b\n"}},
        {NetworkFormat::LIST, {"", " b\n"}},
        {PAJEK, {"*Vertices 2\n1 ", "\n*Edges\n1 2\n"}},
        {GML, {"graph [\nnode [ id 1 label \"", "\" ] edge [ source 1 target 1 ] ]"}},
        {GML, {"graph [\nnode [ id ", " label \"&amp;\" name \"y\" ] ]"}},
        {GRAPHML,
         {XML + "<graph><node id='1'><data key='name'>",
          "</data></node>\n<edge source='1' target='1'/></graph></graphml>"}},
        {GRAPHML, {XML + "<graph><node id='", "'/></graph></graphml>"}},
        {JSON, {"{\"nodes\":[\n{\"id\":\"", "\"}],\"links\":[{\"source\":\"\",\"target\":1}]}"}},
        {JSON, {"{\n\"links\":[{\"source\":\"", "\",\"target\":1}]}"}},
    };
    for (const auto& [format, parts] : around) {
        const auto read = [&name, form = format, &ends = parts] {
            linksOf(form, ends[0] + name + ends[1]);
        };
        const std::string told = test::errorOf<InputError>(read);
        const std::string line =
            std::to_string(1 + std::count(parts[0].begin(), parts[0].end(), '\n'));
        EXPECT_TRUE(told == "f:" + line + ": " + fault + ", which is too much" ||
                    (format == PAJEK && told ==
                                            "f:2: the line of the vertex has more than 1.0 MiB, "
                                            "which is too much"))
            << told;
    }
    EXPECT_EQ(linksOf(NetworkFormat::LIST, "a,b\n" + most + ",b\n"),
              "a b " + most + " | a-b " + most + "-b");
    // What isn't read may be of any length.
    EXPECT_EQ(
        linksOf(GML, "graph [ comment \"" + name + "\" node [ id 1 ] edge [ source 1 target 1 ] ]"),
        "1 | 1-1");
    EXPECT_EQ(linksOf(JSON, "{\"x\":\"" + name + "\",\"links\":[{\"source\":1,\"target\":2}]}"),
              "1 2 | 1-2");
    EXPECT_EQ(linksOf(NetworkFormat::LIST, "# " + name + " \"\n1,2,3,\"" + name + "\"\n"),
              "1 2 | 1-2:3");
}

}  // namespace
}  // namespace vorl
