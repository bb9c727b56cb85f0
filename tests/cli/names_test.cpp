// Networks whose nodes have names: these come back in all that the program writes, and are known
// again in what it reads.
#include "cli/child.hpp"
#include "cli/packed.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace vorl::test {
namespace {

/// The names of nodes in a network of numbers: words, blanks, quotes, commas and large numbers.
std::string nameOf(int node) {
    switch (node % 5) {
        case 0: return "node " + std::to_string(node);
        case 1: return "\"" + std::to_string(node) + "\", jr.";
        case 2: return std::to_string(18'000'000'000'000'000'000u + static_cast<unsigned>(node));
        case 3: return "0" + std::to_string(node);
        default: return "Größe:" + std::to_string(node) + ">#";
    }
}

std::string quotedName(int node) {
    std::string text = "\"";
    for (const char c : nameOf(node)) text += c == '"' ? "\"\"" : std::string(1, c);
    return text + "\"";
}

/// The football network as a table of names.
std::string namedTable() {
    std::istringstream links(contents(DATA + "football.nse"));
    std::string text = "source,target\n";
    for (std::string line; std::getline(links, line);) {
        if (line.starts_with('#')) continue;
        std::istringstream words(line);
        int src = 0;
        int dst = 0;
        words >> src >> dst;
        text += quotedName(src) + "," + quotedName(dst) + "\n";
    }
    return text;
}

/// A file of clusters of numbers with names in their place.
std::string renamed(const std::string& text) {
    std::istringstream lines(text);
    std::string result;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string word;
        bool first = true;
        for (; !line.starts_with('#') && words >> word; first = false) {
            const std::size_t end = std::min(word.find(':'), word.size());
            result += (first ? "" : " ") +
                      (word.back() == '>' ? word : quotedName(std::stoi(word)) + word.substr(end));
        }
        result += line.starts_with('#') ? line + "\n" : line.ends_with(' ') ? " \n" : "\n";
    }
    return result;
}

TEST(Names, GiveTheClustersOfNumbers) {
    const Folder folder;
    const std::string named = folder.write("named.csv", namedTable());
    const std::string numbers = DATA + "football.nse";
    const std::string expected = vorl("cluster -q -o - --levels all " + numbers).out;
    ASSERT_TRUE(expected.starts_with("# Clusters:"));
    EXPECT_EQ(vorl("cluster -q -o - --levels all " + named).out, renamed(expected));
    const std::string packed = folder.write("named.csv.gz", gzip(namedTable()));
    EXPECT_EQ(vorl("cluster -q -o - --levels all " + packed).out, renamed(expected));
}

TEST(Names, AreKnownAgainInEveryFile) {
    const Folder folder;
    const std::string net = folder.write("named.csv", namedTable());
    const auto in = [&folder](const char* name) { return (folder / name).string(); };
    const auto runs = [](const std::string& words) {
        const Outcome run = vorl(words);
        EXPECT_EQ(run.code, 0) << words << run.err;
        return run;
    };
    runs("cluster -q " + net + " -o " + in("a.cnl"));
    runs("communities -q " + net + " -o " + in("b.cnl") + " --table " + in("b.csv") +
         " --hierarchy " + in("b.rhb"));
    for (const char* name : {"b.tsv", "b.json", "b.json.gz"})
        runs("communities -q " + net + " --table " + in(name));
    for (const char* name : {"a.cnl", "a.rhb", "b.cnl", "b.csv", "b.tsv", "b.json", "b.rhb"})
        EXPECT_TRUE(
            contains(runs("evaluate --json " + net + " " + in(name)).out, "\"covered_nodes\": 115"))
            << name;
    for (const char* name : {"b.csv", "b.tsv", "b.json", "b.json.gz"})
        EXPECT_TRUE(contains(runs("compare --json " + in("b.cnl") + " " + in(name)).out,
                             "\"compared_nodes\": 115, \"nmi_max\": 1,"));
    EXPECT_TRUE(
        contains(runs("compare --json " + in("a.cnl") + " " + in("a.rhb")).out, "\"nmi_max\": 1,"));
    // The clusters of a level, of one node, the network of one cluster.
    runs("cut -q " + in("a.rhb") + " --level 0 -o " + in("cut.cnl"));
    EXPECT_TRUE(contains(runs("evaluate --levels " + net + " " + in("cut.cnl")).out, "115"));
    const Outcome shown = Child({"show", in("a.rhb"), "--json", "--node", "\"1\", jr."}).outcome();
    EXPECT_TRUE(contains(shown.out, "{\"node\": \"\\\"1\\\", jr.\", \"clusters\": [")) << shown.err;
    EXPECT_EQ(Child({"show", in("a.rhb"), "--node", "nobody"}).outcome().err,
              "vorl: " + in("a.rhb") + ": there is no node nobody\n");
    runs("extract " + net + " " + in("b.cnl") + " --cluster 1 -o " + in("part.tsv"));
    EXPECT_TRUE(contains(runs("info --json " + in("part.tsv")).out, "\"isolated_nodes\": 0"));
    runs("extract " + net + " " + in("b.csv") + " --quotient -o " + in("quotient.nse"));
    runs("convert -q " + net + " " + in("again.tsv"));
    EXPECT_EQ(vorl("cluster -q -o - " + in("again.tsv")).out, contents(in("a.cnl")));
}

TEST(Names, AreHeldByEveryFormatThatHasThem) {
    const Folder folder;
    std::string text = namedTable();
    text += "\"a\tb\",\"<&amp;>\"\n\"\\u0041'\",\"*#% /\"\n\"c\r\",\"{1}\"\n\"\r\",\"{1}\"\n";
    const std::string net = folder.write("named.csv", text);
    const std::string clusters = vorl("cluster -q -o - --levels all " + net).out;
    ASSERT_TRUE(contains(clusters, "Größe"));
    for (const char* name : {"a.tsv", "a.net", "a.gml", "a.graphml", "a.json", "a.csv.zst"}) {
        const std::string file = (folder / name).string();
        ASSERT_EQ(vorl("convert -q " + net + " " + file).code, 0) << name;
        EXPECT_EQ(vorl("cluster -q -o - --levels all " + file).out, clusters) << name;
    }
}

TEST(Names, OfListsStandWithTheDirectionsOfLinks) {
    const Folder folder;
    const std::string arcs = (folder / "arcs.csv").string();
    ASSERT_EQ(vorl("convert -q " + DATA + "celegansneural.nsa " + arcs).code, 0);
    EXPECT_TRUE(contents(arcs).starts_with("source,target,weight,type\n0,1,1,Directed\n"));
    EXPECT_EQ(vorl("convert -q " + arcs + " - --to nsa").out,
              vorl("convert -q " + DATA + "celegansneural.nsa - --to nsa").out);
    EXPECT_EQ(vorl("convert -q " + DATA + "karate.nse - --to list").out.find("type"),
              std::string::npos);
    // Edges among arcs, a link of a node to itself, and repeats.
    const std::string mixed =
        folder.write("mixed.rcg", "/Edges\n1> 2 3\n4> 4\n/Arcs\n3> 4 1\n2> 5 1\n");
    for (const char* name : {"m.csv", "m.tsv.gz", "m.nsa"}) {
        const std::string file = (folder / name).string();
        ASSERT_EQ(vorl("convert -q " + mixed + " " + file).code, 0);
        EXPECT_EQ(vorl("convert -q " + file + " - --to nsa").out,
                  vorl("convert -q " + mixed + " - --to nsa").out)
            << name;
        EXPECT_EQ(vorl("cluster -q -o - --levels all " + file).out,
                  vorl("cluster -q -o - --levels all " + mixed).out)
            << name;
    }
    // A pipe has no name that tells what the lines are.
    EXPECT_TRUE(contains(vorl("info - < " + (folder / "m.nsa").string()).out, "9 arcs"));
}

TEST(Names, AreToldInFaults) {
    const Folder folder;
    const std::string net = folder.write("net.csv", "source,target\nAnn,Bob\nBob,Cid\n");
    const auto fault = [&](const std::string& words, const std::string& name,
                           const std::string& text) {
        const std::string file = folder.write(name, text);
        const Outcome run = vorl(words + " " + file);
        EXPECT_EQ(run.code, 1);
        return run.err.substr(std::min(run.err.size(), 6 + file.size() - name.size()));
    };
    EXPECT_EQ(fault("evaluate " + net, "c.cnl", "\"Ann\" \"Bob\"\n\"Dan\"\n"),
              "c.cnl:2: the node Dan isn't in the network " + net + "\n");
    EXPECT_EQ(fault("evaluate " + net, "c.cnl", "\"Ann\" \"Bob\" \"Ann\"\n"),
              "c.cnl:1: node Ann stands twice in the line, each member once is expected\n");
    EXPECT_EQ(fault("evaluate -q " + DATA + "karate.nse", "c.cnl", "1 2 \"x\"\n"),
              "c.cnl:1: the node x isn't in the network " + DATA + "karate.nse\n");
    EXPECT_EQ(fault("show", "c.rhb", "/Hierarchy levels:0 clusters:0\n/Nodes 1\n\"x\n"),
              "c.rhb:3: the line begins with \"\"x\", a name between quotes directly followed by "
              "\">\" is expected\n");
    EXPECT_EQ(fault("compare " + DATA + "karate.cnl", "c.cnl", "\"a b\n"),
              "c.cnl:1: the quotes that begin with \"\"a b\" aren't closed\n");
    EXPECT_EQ(fault("compare " + DATA + "karate.cnl", "c.cnl", "\"a\"b\n"),
              "c.cnl:1: \"b\" stands behind closing quotes, a blank is expected\n");
    EXPECT_TRUE(contains(vorl("convert " + net + " -" + " --to nse").err,
                         "nodes have names, which the format nse can't hold; list can"));
    // Words need no quotes beside a network of names.
    EXPECT_EQ(vorl("evaluate " + net + " " + folder.write("w.cnl", "Ann Bob\nCid\n")).code, 0);
}

TEST(Names, OrderOfLinesIsOfNoAccount) {
    std::string text = namedTable();
    std::istringstream stream(text.substr(text.find('\n') + 1));
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    const Folder folder;
    const auto table = [&](const char* name) {
        std::string shuffled = "source,target\n";
        for (const std::string& line : lines) shuffled += line + "\n";
        return vorl("communities -q --table - " + folder.write(name, shuffled)).out;
    };
    const std::string first = table("a.csv");
    std::reverse(lines.begin(), lines.end());
    EXPECT_EQ(table("b.csv"), first);
    EXPECT_TRUE(first.starts_with("node\tcommunity\tshare\n\"18000000000000000002\"\t")) << first;
}

}  // namespace
}  // namespace vorl::test
