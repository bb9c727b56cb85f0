// What the program reads back of hierarchies.
#include "cli/program.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace vorl::test {
namespace {

/// Karate clustered into the folder, all levels in one file and each in its own.
class Hierarchies : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(vorl("cluster -q " + network + " --levels all -o " + all).code, 0);
        ASSERT_EQ(vorl("cluster -q " + network + " --levels per-level -o " + each).code, 0);
    }

    const Folder folder;
    const std::string network = DATA + "karate.nse";
    const std::string all = (folder / "all.cnl").string();
    const std::string hierarchy = (folder / "all.rhb").string();
    const std::string each = (folder / "each.cnl").string();
};

TEST_F(Hierarchies, CutsAreTheFilesOfTheLevels) {
    for (int level = 0; level < 7; ++level) {
        const std::string number = std::to_string(level);
        const std::string cut = (folder / ("cut" + number + ".cnl")).string();
        const Outcome run = vorl("cut " + hierarchy + " --level " + number + " -o " + cut);
        ASSERT_EQ(run.code, 0) << run.err;
        const Outcome likeness = vorl("compare --strict --json " + cut + " " +
                                      (folder / "each").string() + "/each_" + number + ".cnl");
        EXPECT_TRUE(contains(likeness.out, "\"nmi_max\": 1,")) << likeness.out << likeness.err;
        EXPECT_TRUE(contains(likeness.out, "\"vi\": 0}")) << likeness.out;
    }
    const Outcome cut = vorl("cut " + hierarchy + " --clusters 8");
    EXPECT_EQ(cut.out.find("# Clusters: 7, Nodes: 34, Fuzzy: 0, Numbered: 1\n"), 0u) << cut.out;
    EXPECT_TRUE(contains(cut.err, "level 3, 7 clusters of 34 nodes"));
    EXPECT_EQ(vorl("cut " + hierarchy).code, 2);
    EXPECT_EQ(vorl("cut " + hierarchy + " --level 7").code, 1);
    EXPECT_TRUE(contains(vorl("cut " + all + " --level 0").err, all + ":2: found \"6>"));
}

TEST_F(Hierarchies, LevelsAreToldAndMeasuredEach) {
    const std::string truth = " " + DATA + "karate.cnl";
    const Outcome flat = vorl("compare --strict " + all + truth);
    EXPECT_EQ(flat.code, 0) << flat.err;
    EXPECT_TRUE(contains(flat.err, "clusters of several levels")) << flat.err;
    EXPECT_TRUE(contains(vorl("compare " + hierarchy + truth).err, "a hierarchy of 7 levels"));
    const Outcome rows = vorl("compare --levels " + hierarchy + truth);
    EXPECT_EQ(rows.err, "");
    EXPECT_TRUE(contains(rows.out, "     3         7    0.2071 ")) << rows.out;
    EXPECT_TRUE(contains(rows.out, "     6         4    0.2403*    0.2900*")) << rows.out;
    const Outcome pairs = vorl("compare --levels --json " + hierarchy + " " + hierarchy);
    EXPECT_TRUE(contains(pairs.out,
                         "{\"first_level\": 6, \"second_level\": 6, \"first_clusters\": "
                         "4, \"second_clusters\": 4, \"nmi_max\": 1,"))
        << pairs.out;
    const Outcome measures = vorl("evaluate --levels " + network + " " + hierarchy);
    EXPECT_TRUE(contains(measures.out, "     5         5        34     0.436033    0.407709 "));
    EXPECT_TRUE(contains(measures.out, "     6         4        34     0.287933*   0.418803*"))
        << measures.out;
    EXPECT_TRUE(contains(vorl("evaluate --levels --json " + network + " " + all).out,
                         "\"best\": {\"conductance\": 6, \"modularity\": 6}"));
}

TEST_F(Hierarchies, SummaryMeasuresLevelsAsEvaluateDoes) {
    // Karate's clusters don't overlap, so that both count alike.
    const std::string summary = vorl("cluster --json " + network).out;
    const std::string measured = vorl("evaluate --levels --json " + network + " " + hierarchy).out;
    const auto values = [](const std::string& text, const std::string& key) {
        std::vector<double> found;
        const std::string name = "\"" + key + "\": ";
        const std::size_t end = std::min(text.find("\"best\""), text.size());
        for (std::size_t at = text.find(name); at < end; at = text.find(name, at + 1))
            found.push_back(std::stod(text.substr(at + name.size(), 20)));
        return found;
    };
    for (const auto& [here, there] :
         {std::pair("modularity_at_1", "modularity"), std::pair("conductance", "conductance")}) {
        const auto own = values(summary, here);
        const auto other = values(measured, there);
        ASSERT_EQ(own.size(), 7u) << summary;
        ASSERT_EQ(other.size(), 7u) << measured;
        for (std::size_t i = 0; i < own.size(); ++i) EXPECT_NEAR(own[i], other[i], 1e-6) << i;
    }
    EXPECT_TRUE(contains(summary, "\"best\": {\"modularity_at_1\": 6, \"conductance\": 6}"));
    EXPECT_TRUE(contains(vorl("cluster " + network).out, "0.418803*"));
    EXPECT_FALSE(contains(vorl("cluster --no-level-measures " + network).out, "*"));
    EXPECT_FALSE(contains(vorl("cluster --json --no-level-measures " + network).out, "best"));
    // The best level is shown also where only the ends of a tall hierarchy are.
    const Outcome tall = vorl("cluster " + DATA + "power.nse");
    EXPECT_EQ(std::count(tall.out.begin(), tall.out.end(), '*'), 3) << tall.out;
}

TEST_F(Hierarchies, DefaultOutputIsTheRootAndTheDescription) {
    const std::string file = (folder / "d.cnl").string();
    ASSERT_EQ(vorl("cluster -q " + network + " -o " + file).code, 0);
    EXPECT_EQ(contents(file).find("# Clusters: 4, Nodes: 34, Fuzzy: 1, Numbered: 1\n19> "), 0u);
    EXPECT_EQ(contents(folder / "d.rhb"), contents(hierarchy));
    ASSERT_EQ(vorl("cluster -q " + network + " -o " + (folder / "only.rhb").string()).code, 0);
    EXPECT_EQ(contents(folder / "only.rhb"), contents(hierarchy));
    EXPECT_EQ(vorl("cluster -q " + network + " --levels all -o " + hierarchy).code, 2);
}

TEST(Shuffle, IsRepeatedByItsSeed) {
    const Folder folder;
    const auto run = [&](const std::string& options, const std::string& network) {
        const std::string file = (folder / "s.rhb").string();
        const Outcome outcome = vorl("cluster -q " + network + " -o " + file + options);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return contents(file);
    };
    const std::string power = DATA + "power.nse";
    const std::string first = run(" --shuffle --seed 1", power);
    EXPECT_EQ(first, run(" --shuffle --seed 1", power));
    EXPECT_NE(first, run(" --shuffle --seed 2", power));
    EXPECT_NE(first, run("", power));
    // Only the order of nodes is another one: links keep their ends and weights, also repeated
    // ones.
    const std::string odd = folder.write(
        "odd.rcg", "/Nodes 5 10\n/Edges\n10> 11:2 12:3 10:7\n11> 10:9 12\n/Arcs\n12> 13:4\n");
    const auto weight = [&](const std::string& options) {
        const std::string out = vorl("cluster --json " + odd + options).out;
        const std::size_t at = out.find("\"weight\"");
        return out.substr(at, out.find(',', at) - at);
    };
    EXPECT_EQ(weight(" --shuffle --seed 18446744073709551615"), weight(""));
    EXPECT_EQ(weight(" --shuffle --seed 5 --sum-duplicates"), weight(" --sum-duplicates"));
    EXPECT_EQ(vorl("cluster --seed 1 " + power).code, 2);
}

TEST_F(Hierarchies, ShowTellsNodesAndClusters) {
    EXPECT_TRUE(contains(vorl("show " + hierarchy).out, "4 clusters at the root: 19, 24, 26, 29"));
    EXPECT_TRUE(contains(vorl("show --node 33 " + hierarchy).out,
                         "     1          17         1           7\n"));
    EXPECT_EQ(vorl("show --json --cluster 16 " + hierarchy).out,
              "{\"cluster\": 16, \"level\": 0, \"owners\": [{\"cluster\": 24, \"share\": 1}], "
              "\"parts\": [{\"node\": 30, \"share\": 1}, {\"node\": 27, \"share\": 1}], "
              "\"members\": [{\"node\": 30, \"share\": 1}, {\"node\": 27, \"share\": 1}]}\n");
    const Outcome unknown = vorl("show --node 99 " + hierarchy);
    EXPECT_EQ(unknown.code, 1);
    EXPECT_TRUE(contains(unknown.err, hierarchy + ": there is no node 99"));
}

TEST_F(Hierarchies, ExtractsAreNetworks) {
    EXPECT_EQ(vorl("extract " + network + " " + hierarchy + " --cluster 19").out,
              "# Nodes: 5, Edges: 6, Weighted: 0\n5 7\n5 11\n6 7\n6 11\n6 17\n7 17\n");
    const std::string quotient = (folder / "q.nse").string();
    ASSERT_EQ(vorl("extract " + network + " " + hierarchy + " --quotient -o " + quotient).code, 0);
    EXPECT_EQ(contents(quotient),
              "# Nodes: 4, Edges: 8, Weighted: 1\n19 19 6\n19 29 4\n24 24 20\n24 26 7\n24 29 7\n"
              "26 26 7\n26 29 3\n29 29 24\n");
    // Nothing gets lost of shares, arcs and self links.
    const std::string arcs = folder.write("a.nsa", "1 2 2\n2 1 1\n2 3 4\n3 3 8\n3 4 16\n");
    const std::string shared = folder.write("a.cnl", "1 2:0.25\n2:0.75 3\n");
    const Outcome small = vorl("extract " + arcs + " " + shared + " --quotient");
    EXPECT_EQ(small.out,
              "# Nodes: 2, Arcs: 4, Weighted: 1\n1 1 0.375\n1 2 2.5\n2 1 0.75\n2 2 9.5\n");
    EXPECT_TRUE(contains(small.err, "1 node of the network in no cluster"));
    EXPECT_EQ(vorl("extract " + arcs + " " + shared + " --quotient --to nse").code, 1);
    EXPECT_EQ(vorl("extract " + arcs + " " + shared).code, 2);
    EXPECT_TRUE(contains(vorl("extract " + arcs + " " + shared + " --cluster 3").err,
                         "there is no cluster 3"));
}

TEST(Tables, AreReadAsClusters) {
    const Folder folder;
    const std::string table = folder.write("peer.tsv", "1\t0\n2\t0\n3\t1\n4\t1\n");
    const std::string named = folder.write("peer.txt",
                                           "node community share\n1 a 1\n2 a 1\n3 b 1\n"
                                           "4 b 1\n");
    const std::string bare = folder.write("bare.txt", "1 0\n2 0\n3 1\n4 1\n");
    for (const std::string& other : {named, bare + " --table"})
        EXPECT_TRUE(contains(vorl("compare --json " + table + " " + other).out,
                             "\"ari\": 1, \"nmi\": 1, \"vi\": 0}"))
            << other;
    EXPECT_TRUE(contains(vorl("compare " + table + " " + bare).err, "--table reads it"));
    const std::string network = folder.write("n.nse", "1 2\n2 3\n3 4\n");
    EXPECT_TRUE(contains(vorl("evaluate --json " + network + " " + table).out,
                         "\"clusters\": 2, \"nodes\": 4, "));
    EXPECT_TRUE(
        contains(vorl("evaluate " + network + " " + folder.write("x.csv", "2,0\n9,0\n")).err,
                 "x.csv:2: the node 9 isn't in the network"));
}

}  // namespace
}  // namespace vorl::test
