#include "support/scanned_links.hpp"
#include "support/trace.hpp"

#include <vorl/reading/network_scan.hpp>

#include <gtest/gtest.h>

#include <algorithm>

namespace vorl {
namespace {

std::string linksOf(std::string_view text, ScanOptions options = {}) {
    options.format = NetworkFormat::LIST;
    return test::linksOf(text, options);
}

TEST(EdgeLists, AreReadInTheirDialects) {
    const std::string expected = "1-2 2-3:0.5";
    for (const char* text : {
             "1 2\n2 3 .5\n",
             "1\t2\n2\t3\t0.5\n",
             "1,2\n2,3,0.5\n",
             "1;2\n2;3;5e-1\n",
             " 1 , 2\n2, 3 ,0.5 \n",
             "1 \t2\n2 3\t0.5\n",
             "# a\n% b\n// c\n\n1 2\r\n2 3 0.5\r\n",
             "# of \"a, \"b\n# x,\"y\"z\n1 2\n2 3 0.5\n",
             "\"1\",\"2\"\n\"2\",\"3\",\"0.5\"\n",
             "\"1\" \"2\"\n\"2\" \"3\" 0.5\n",
             "1 2 {}\n2 3 {'weight': 0.5}\n",
             "1 2 {'color': 'a, b', 'weight': 1.0, 'x': 7}\n2 3 {\"weight\":0.5}\n",
             "1,2,{}\n2,3,{'weight': 0.5, 'y': {'z': 1}}\n",
             "source,target,weight\n1,2,\n2,3,0.5\n",
             "# FromNodeId\tToNodeId\tweight\n1\t2\t1\n2\t3\t0.5\n",
             "Weight;To_Node;From Node\n;2;1\n0.5;3;2\n",
             "id,src,dst,Value\n7,1,2,1\n8,2,3,0.5\n",
             "person,friend,weight\n1,2,1\n2,3,0.5\n",
             "from to w\n1 2 1\n2 3 0.5",
             "\xEF\xBB\xBFsource,target,weight\n1,2,1\n2,3,0.5\n",
         })
        EXPECT_EQ(linksOf(text), expected) << text;
    EXPECT_EQ(linksOf("1 2\n", {.directed = true}), "1>2");
    EXPECT_EQ(linksOf("1 2 7\n", {.weights = false}), "1-2");
    // What isn't called a weight is none.
    EXPECT_EQ(linksOf("source,target,year\n1,2,1999\n"), "1-2");
    EXPECT_EQ(linksOf("from,to,year\n1,2,1999\n", {.weightName = "year"}), "1-2:1999");
    EXPECT_EQ(linksOf("1 2 {'cost': 3}\n", {.weightName = "cost"}), "1-2:3");
    EXPECT_EQ(linksOf("Source;Target;Weight\n1;2;1,5\n2;3;\"0,25\"\n"), "1-2:1.5 2-3:0.25");
    EXPECT_EQ(linksOf("a\tb\t1,5\n"), "a-b:1.5");
}

TEST(EdgeLists, TellEdgesFromArcsByAColumn) {
    const std::string text =
        "Source,Target,Type,Id,Weight\na,b,Directed,0,2\nb,c,Undirected,1,3\nc,a,,2,1\n";
    EXPECT_EQ(linksOf(text), "a>b:2 b-c:3 c-a");
    EXPECT_EQ(linksOf(text, {.directed = true}), "a>b:2 b>c:3 c>a");
    EXPECT_EQ(linksOf(text, {.directed = false}), "a-b:2 b-c:3 c-a");
    EXPECT_EQ(linksOf("from,to,type\na,b,friend\n"), "a-b");
    EXPECT_EQ(linksOf("who,whom,type\n1,2,directed\n"), "1>2");
    EXPECT_EQ(linksOf("type,from,to\ndirected,b\n", {.columns = "type,from"}), "directed-b");
}

TEST(EdgeLists, TakeColumnsByNameOrNumber) {
    const std::string text = "when,who,whom,times\n3,a,b,2\n4,b,c,5\n";
    EXPECT_EQ(linksOf(text, {.columns = "who,whom"}), "a-b b-c");
    EXPECT_EQ(linksOf(text, {.columns = "who,whom,times"}), "a-b:2 b-c:5");
    EXPECT_EQ(linksOf(text, {.columns = "Whom, WHO ,4"}), "b-a:2 c-b:5");
    EXPECT_EQ(linksOf("x a b 2\n", {.columns = "2,3,4"}), "a-b:2");
    EXPECT_EQ(linksOf("1 2 9\n", {.columns = "2,1"}), "2-1");
}

TEST(EdgeLists, KeepNamesAsTheyAre) {
    EXPECT_EQ(linksOf("a,b c\n\"d, \"\"e\"\"\",f'g\n"), "a-b c d, \"e\"-f'g");
    EXPECT_EQ(linksOf("Ann Lee\tBob\nBob\t007\n"), "Ann Lee-Bob Bob-007");
    EXPECT_EQ(linksOf("4294967295 18446744073709551616\n-1 1.5\n"),
              "4294967295-18446744073709551616 -1-1.5");
    // A number is the same node however it is quoted.
    EXPECT_EQ(linksOf("5,\"5\"\n05,5\n"), "5-5 05-5");
    EXPECT_EQ(linksOf("\"#a\" \"\xC3\xA4\"\n"), "#a-\xC3\xA4");
}

TEST(EdgeLists, FaultsAreToldByLine) {
    const auto fault = [](const std::string& text, const ScanOptions& options = {}) {
        return test::errorOf<InputError>([&] { linksOf(text, options); });
    };
    const std::pair<std::string, const char*> cases[] = {
        {"", "f: the file is empty, links are expected"},
        {"# a\n", "f:1: the file ends without a link"},
        {"source,target\n", "f:1: the file ends without a link"},
        {"a\n", "f:1: the line has 1 field, a destination is expected in column 2, behind a blank"},
        {"a,b\nc;d\n",
         "f:2: the line has 1 field, a destination is expected in column 2, behind a comma"},
        {"a\tb\nc d\n",
         "f:2: the line has 1 field, a destination is expected in column 2, behind a tab"},
        {"a,\n", "f:1: the destination is \"\", a name is expected"},
        {",a\n", "f:1: the source is \"\", a name is expected"},
        {"a,b\n\"\",b\n", "f:2: the source is \"\", a name is expected"},
        {"\ta\n1\t2\n", "f:1: the source is \"\", a name is expected"},
        {"a,b\n\"c,d\n",
         "f:2: the quotes that begin with \"\"c,d\" aren't closed in their line, over which a "
         "field can't go"},
        {"a b\n\"c\"d e\n", "f:2: \"d e\" stands behind closing quotes, a blank is expected"},
        {"\"a\"b,c\n", "f:1: \"b,c\" stands behind closing quotes, a comma is expected"},
        {"a,b,x\n",
         "f:1: the weight is \"x\", a number is expected; if the line has names of columns, tell "
         "which ones to read (--columns A,B[,W]): \"a\", \"b\", \"x\""},
        {"a,b,1\na,c,x\n", "f:2: the weight is \"x\", a number is expected"},
        {"node\tcommunity\tshare\na\t0\t1\n",
         "f:1: the columns \"node\", \"community\", \"share\" are those of a table of clusters, a "
         "network is expected; --columns A,B reads links all the same"},
        {"a,b,1\nc,\"d\ne\",2\n",
         "f:2: the quotes that begin with \"\"d\" aren't closed in their line, over which a field "
         "can't go"},
        {"a,b,-1\n", "f:1: the weight is \"-1\", it must not be negative"},
        {"a,b,nan\n", "f:1: the weight is \"nan\", a number is expected"},
        {"1;2;0,5\n2;3;1.234\n",
         "f:2: the weight is \"1.234\", a decimal comma is expected, as before"},
        {"1;2;0.5\n2;3;1,5\n",
         "f:2: the weight is \"1,5\", a decimal point is expected, as before"},
        {"1;2;1\n2;3;1,234,5\n", "f:2: the weight is \"1,234,5\", a number is expected"},
        {"1;2;1\n2;3;1.234,5\n", "f:2: the weight is \"1.234,5\", a number is expected"},
        {"a,b,1e39\n",
         "f:1: the weight is \"1e39\", 0 or a number from 1.2e-38 to 3.4e38 is expected"},
        {"1 2 {'weight': 'x'}\n", "f:1: the weight is \"'x'\", a number is expected"},
        {{"a,b\0\n", 5}, "f:1: a NUL byte: the file is binary, lines of text are expected"},
        {{"\xFF\xFE"
          "a\0,\0",
          6},
         "f:1: a NUL byte: the file is in UTF-16, text in UTF-8 is expected"},
        {"1,2,3,4,\"x\n",
         "f:1: the quotes that begin with \"\"x\" aren't closed in their line, over which a field "
         "can't go"},
        {"1,2\n2,3,4,5,\"x\n",
         "f:2: the quotes that begin with \"\"x\" aren't closed in their line, over which a field "
         "can't go"},
        {std::string(100'000, ','),
         "f:1: the line has more than 100,000 fields, a source and a destination are expected"},
        {"1 2 3e38\n2 3 3e38\n", "f: the weights add up to more than 1.7e38"},
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(fault(text), message) << text;
    EXPECT_EQ(fault("a,b,0\n", {.zeros = ZeroWeights::DROP}),
              "f:1: the weight is 0, as that of all links, and none is left");
    EXPECT_EQ(fault("a,b\n", {.columns = "x,b"}),
              "f:1: there is no column \"x\", the columns are \"a\", \"b\"");
    EXPECT_EQ(fault("a,b\n", {.weightName = "w"}),
              "f:1: there is no column \"w\", the columns are \"a\", \"b\"");
    for (const char* columns : {"1", "a,b,c,d", ",", "1,2,"})
        EXPECT_TRUE(fault("a,b\n", {.columns = columns})
                        .starts_with("f: the columns asked for are \"" + std::string(columns)))
            << columns;
    EXPECT_EQ(fault("a,b\n", {.columns = "1,3"}),
              "f:1: the line has 2 fields, a destination is expected in column 3, behind a comma");
}

TEST(NodeNames, AreInOrderOnceSorted) {
    NodeNames nodes;
    const char* const words[] = {"b", "7", "10000000000", "a", "b", "4000000000", "007", "7"};
    std::vector<Id> numbers;
    for (const char* word : words) numbers.push_back(nodes.numberOf(word));
    EXPECT_EQ(numbers, (std::vector<Id>{0, 1, 2, 3, 0, 4, 5, 1}));
    nodes.sortLabels();
    std::vector<std::string> sorted;
    std::vector<Id> ids = nodes.ids();
    std::sort(ids.begin(), ids.end());
    for (const Id id : ids) sorted.push_back(naming::plain(id, nodes.labels().get()));
    EXPECT_EQ(sorted,
              (std::vector<std::string>{"7", "4000000000", "10000000000", "007", "a", "b"}));
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        EXPECT_EQ(naming::plain(nodes.id(numbers[i]), nodes.labels().get()), words[i]);
        EXPECT_EQ(nodes.numberOf(words[i]), numbers[i]);
        EXPECT_EQ(nodes.labels()->find(words[i]), nodes.id(numbers[i]));
    }
    EXPECT_EQ(nodes.labels()->find("c"), ID_NONE);
}

TEST(NodeNames, MayBeMany) {
    Labels labels;
    for (int i = 0; i < 100'000; ++i) labels.add("name of " + std::to_string(i));
    EXPECT_EQ(labels.size(), 100'000u);
    for (int i = 0; i < 100'000; ++i)
        ASSERT_EQ(labels.text(labels.find("name of " + std::to_string(i))),
                  "name of " + std::to_string(i));
    for (int i = 100'000; i < 200'000; ++i)
        ASSERT_EQ(labels.find("name of " + std::to_string(i)), ID_NONE);
}

TEST(NetworkFormats, AreToldByNameOrLines) {
    for (const auto& [name, format] : std::initializer_list<std::pair<const char*, NetworkFormat>>{
             {"a.nse", NetworkFormat::NSE},
             {"A.NSA.GZ", NetworkFormat::NSA},
             {"a.rcg.zst", NetworkFormat::RCG},
             {"a.csv", NetworkFormat::LIST},
             {"a.edges.gz", NetworkFormat::LIST},
             {"a.dat", NetworkFormat::UNKNOWN},
             {"-", NetworkFormat::UNKNOWN}})
        EXPECT_EQ(formatByName(name), format) << name;
    for (const auto& [text, format] : std::initializer_list<std::pair<const char*, NetworkFormat>>{
             {"# Nodes: 3, Edges: 2, Weighted: 1\n1 2\n", NetworkFormat::NSE},
             {"#\n\n# nodes: 3 arcs: 2\n1 2\n", NetworkFormat::NSA},
             {"# c\n/Graph weighted:1\n/Edges\n", NetworkFormat::RCG},
             {"a,b\n", NetworkFormat::LIST},
             {"# c\n1\t2\n", NetworkFormat::LIST},
             {"abc\n", NetworkFormat::UNKNOWN},
             {"", NetworkFormat::UNKNOWN}}) {
        TextSource source(text);
        Lines lines(source, "f");
        EXPECT_EQ(formatByLines(lines), format) << text;
        EXPECT_EQ(lines.number(), 0u);
    }
}

}  // namespace
}  // namespace vorl
