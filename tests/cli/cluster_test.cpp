// `vorl cluster` on good input.
#include "cli/program.hpp"

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

/// Removes what stands from `begin` to the next `end` behind it, both included.
void cut(std::string& text, const std::string& begin, char end) {
    if (const size_t first = text.find(begin); first != std::string::npos)
        text.erase(first, text.find(end, first + begin.size()) + 1 - first);
}

/// The JSON summary without what differs between runs.
std::string stable(std::string json) {
    cut(json, "\"seconds\": {", '}');
    cut(json, "\"file\": \"", '"');
    if (const size_t memory = json.find("\"peak_memory_bytes\""); memory != std::string::npos)
        json.erase(memory, json.find('}', memory) - memory);
    return json;
}

TEST(Cluster, JsonTellsTheFigures) {
    const Outcome run = vorl("cluster " + DATA + "karate.nse --json --no-level-measures");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(stable(run.out),
              "{\"network\": {, \"nodes\": 34, \"edges\": 78, \"arcs\": 0, \"repeated_links\": 0, "
              "\"zero_weight_links\": 0, \"directed\": false, \"weighted\": "
              "false, \"weight\": 156}, \"levels\": [{\"clusters\": 17, \"fullsize\": 17}, "
              "{\"clusters\": 4, \"fullsize\": 13}, {\"clusters\": 3, \"fullsize\": 10}, "
              "{\"clusters\": 3, \"fullsize\": 7}, {\"clusters\": 1, \"fullsize\": 6}, "
              "{\"clusters\": 1, \"fullsize\": 5}, {\"clusters\": 1, \"fullsize\": 4}], \"root\": "
              "4, \"clusters\": 30, \"score\": {\"modularity\": 0.412615031, \"gamma\": \"auto\", "
              "\"modularity_at_1\": 0.418803419, \"estimated_gamma\": 1.09035492, \"conductance\": "
              "0.287933081}, \"files\": [], , }\n");
}

TEST(Cluster, OptionsReachTheEngine) {
    const auto json = [](const std::string& arguments) {
        return vorl("cluster " + DATA + arguments + " --json").out;
    };
    EXPECT_TRUE(contains(json("karate.nse --gamma 1"), "\"modularity\": 0.418803424"));
    EXPECT_TRUE(
        contains(json("karate.nse --gamma auto --root-max 1"), "\"modularity\": 0.468292028"));
    EXPECT_TRUE(contains(json("karate.nse --gamma 1 --root-max 1"), "\"root\": 3"));
    EXPECT_TRUE(contains(json("celegansneural.nsa"), "\"weight\": 8819"));
    EXPECT_TRUE(contains(json("celegansneural.nsa --unweighted"), "\"weight\": 2345"));
    EXPECT_TRUE(contains(json("lesmis.nse --unweighted"), "\"weight\": 508"));
    EXPECT_TRUE(contains(json("karate.nse --format nsa"), "\"directed\": false"));
    // Without validation arcs need their back links all the same.
    EXPECT_EQ(stable(json("celegansneural.nsa --validation none")),
              stable(json("celegansneural.nsa --validation severe")));
    for (const char* options :
         {"--reduction severe", "--reduction mean,skip-clusters", "--reduction accurate,skip-nodes",
          "--speedup coarse", "--trace-modularity --gain-margin 0.01", "--filter-margin 0.5"})
        EXPECT_TRUE(contains(json(std::string("jazz.nse ") + options), "\"nodes\": 198"))
            << options;
    EXPECT_EQ(vorl("cluster " + DATA + "jazz.nse --reduction severe,by-weight").code, 1);
}

TEST(Cluster, WeightsOfZeroCountAsOneOrAreDropped) {
    const Folder folder;
    // Two triangles, of which each node has a link of weight 0 to each one of the other.
    std::string text = "# Nodes: 6, Edges: 15\n";
    for (const char* link : {"0 1", "1 2", "2 0", "3 4", "4 5", "5 3"})
        text += std::string(link) + " 0.2\n";
    for (int i = 0; i < 9; ++i)
        text += std::to_string(i / 3) + " " + std::to_string(3 + i % 3) + " 0\n";
    const std::string file = folder.write("n.nse", text);
    const Outcome run = vorl("cluster " + file);
    EXPECT_TRUE(contains(run.out, "total weight 20.4"));
    EXPECT_EQ(run.err, "vorl: " + file + ": 9 links of weight 0 count as 1, the first in line 8\n" +
                           "vorl: --zero-weights drop leaves out links of weight 0\n");
    const Outcome dropped = vorl("cluster --json --zero-weights drop " + file);
    EXPECT_EQ(dropped.err, "");
    EXPECT_TRUE(contains(dropped.out, "\"edges\": 6, ")) << dropped.out;
    EXPECT_TRUE(contains(dropped.out, "\"zero_weight_links\": 9, "));
    EXPECT_TRUE(contains(dropped.out, "\"weight\": 2.4"));
    EXPECT_TRUE(contains(dropped.out, "\"root\": 2"));
    EXPECT_TRUE(contains(vorl("info " + file).out, "9 links of weight 0 counted as 1"));
    const std::string lean = (folder / "lean.nse").string();
    EXPECT_TRUE(contains(vorl("convert " + file + " " + lean).out, "9 links of weight 0 written"));
    EXPECT_EQ(vorl("convert -q --zero-weights drop " + file + " " + lean).code, 0);
    EXPECT_TRUE(contents(lean).starts_with("# Nodes: 6, Edges: 6, Weighted: 1\n0 1 0.2\n"));

    // Arcs in a file of edges, and nodes that are announced, stay what they are.
    const std::string arcs = folder.write("a.nse", "# Nodes: 3, Arcs: 3\n0 1 0\n1 2 4\n2 0 2\n");
    EXPECT_TRUE(contains(vorl("cluster --json --zero-weights drop " + arcs).out,
                         "\"arcs\": 2, \"repeated_links\": 0, \"zero_weight_links\": 1"));
    const std::string sections = folder.write("s.rcg", "/Nodes 4 0\n/Edges\n0> 1:2 2:0\n3> 2:0\n");
    EXPECT_TRUE(contains(vorl("info --json --zero-weights drop " + sections).out,
                         "\"nodes\": 4, \"edges\": 1, "));
    EXPECT_TRUE(contains(vorl("cluster --json --zero-weights drop " + sections).out,
                         "\"nodes\": 4, \"edges\": 1, "));
    EXPECT_EQ(vorl("cluster --unweighted " + file).err, "");
    const Outcome none =
        vorl("cluster --zero-weights drop " + folder.write("0.nse", "# none\n1 2 0\n2 3 0\n"));
    EXPECT_EQ(none.code, 1);
    EXPECT_TRUE(contains(none.err, "0.nse:2: the weight is 0, as that of all links"));
}

TEST(Cluster, ResolutionsAreTriedOnOneReading) {
    const Folder folder;
    for (const char* network : {"football.nse", "celegansneural.nsa --validation none"}) {
        const std::string cluster = std::string("cluster ") + DATA + network + " -o ";
        const std::string name = (folder / "all.cnl").string();
        const Outcome run = vorl(cluster + name + " --gamma auto,0.5,2.50 --json");
        ASSERT_EQ(run.code, 0) << run.err;
        std::string scores = run.out;
        for (const char* gamma : {"auto", "0.5", "2.5"}) {
            const std::string alone = (folder / "alone.cnl").string();
            const Outcome one = vorl(cluster + alone + " --json --gamma " + gamma);
            const std::string here = (folder / "all_gamma_").string() + gamma;
            EXPECT_EQ(contents(here + ".cnl"), contents(alone)) << network << gamma;
            EXPECT_EQ(contents(here + ".rhb"), contents(folder / "alone.rhb")) << network << gamma;
            const std::size_t begin = one.out.find("\"levels\"");
            EXPECT_TRUE(contains(run.out, one.out.substr(begin, one.out.find("\"files\"") - begin)))
                << network << gamma;
        }
        const Outcome table = vorl(cluster + name + " --gamma 0.5,2.5 --levels per-level");
        EXPECT_TRUE(contains(table.out, "\n     gamma ") && contains(table.out, "\n       0.5 "));
        EXPECT_TRUE(std::filesystem::exists(folder / "all_gamma_2.5/all_gamma_2.5_0.cnl"));
    }
    // What can't be named, and what would be lost.
    for (const char* output : {"-", "noextension"})
        EXPECT_EQ(vorl("cluster " + DATA + "karate.nse --gamma 1,2 -o " + output).code, 2);
    EXPECT_EQ(vorl("cluster " + DATA + "karate.nse --gamma 1,2,1.0").code, 2);
    const std::string input = folder.write("in_gamma_2.nse", "0 1\n");
    EXPECT_EQ(vorl("cluster " + input + " --gamma 1,2 -o " + (folder / "in.nse").string()).code, 2);
    EXPECT_EQ(contents(input), "0 1\n");
}

TEST(Cluster, AnyResolutionFromZeroOnIsTaken) {
    const auto json = [](const std::string& gamma) {
        return vorl("cluster " + DATA + "football.nse --json --gamma " + gamma);
    };
    // Conferences are finer than classical modularity has it.
    EXPECT_TRUE(contains(json("1.73").out, "\"root\": 12"));
    EXPECT_TRUE(contains(json("3e38").out, "\"root\": 0"));
    EXPECT_TRUE(contains(json("1e10").out, "\"gamma\": 1e+10"));
    for (const char* gamma : {"-1", "nan", "inf", "-inf", "1e39", "1,", "\"\"", "1,x"})
        EXPECT_EQ(json(gamma).code, 2) << gamma;
}

TEST(Cluster, WritesTheHierarchy) {
    const Folder folder;
    const std::string file = (folder / "karate.rhb").string();
    const Outcome run = vorl("cluster " + DATA + "karate.nse --levels hierarchy -o " + file);
    EXPECT_EQ(run.code, 0);
    EXPECT_TRUE(contains(run.out, "written       " + file));
    const std::string text = contents(file);
    EXPECT_TRUE(
        text.starts_with("/Hierarchy levels:7 clusters:30\n\n/Nodes 34\n"
                         "# node1_id> owner1_id[:share1] owner2_id[:share2] ...\n1> 6\n"));
    EXPECT_TRUE(contains(text, "\n/Level 0 pure:17 extended:17\n"));
    EXPECT_TRUE(contains(text, "\n/Level 6 pure:1 extended:4\n29>\n"));
    // Nothing lies beside the file.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(Cluster, RunsAreEqualByteForByte) {
    const Folder folder;
    for (const char* network : {"celegansneural.nsa", "netscience.nse"}) {
        std::vector<std::string> texts;
        for (const char* before : {"", "", "setarch -R", "env MALLOC_PERTURB_=85"}) {
            const std::string file = (folder / "hierarchy").string();
            const Outcome run =
                vorl("cluster " + DATA + network + " -t --levels hierarchy -o " + file, before);
            ASSERT_EQ(run.code, 0) << before << run.err;
            texts.push_back(run.err + contents(file));
        }
        for (const std::string& text : texts) EXPECT_TRUE(text == texts.front());
    }
}

TEST(Cluster, TraceGoesToStandardError) {
    const Outcome run = vorl("cluster " + DATA + "karate.nse -q --trace");
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.starts_with("The clustering has been started\nVersion: r-"));
    EXPECT_TRUE(contains(run.err, "\nResult>  Q: 0.412615, root size: 4 (non-nodes: 4), "));
}

TEST(Cluster, WhatTiesTooMuchIsToldByItsFile) {
    const Folder folder;
    std::string path;
    for (int i = 0; i < 700; ++i) path += std::to_string(i) + " " + std::to_string(i + 1) + "\n";
    const std::string file = folder.write("path.nse", path);
    const Outcome regular = vorl("cluster --no-level-measures " + file);
    EXPECT_EQ(regular.code, 0);
    EXPECT_TRUE(regular.err.starts_with("vorl: " + file + ": ") &&
                contains(regular.err, " clusters of 701 nodes: the network is so regular that "))
        << regular.err;
    EXPECT_TRUE(contains(regular.err, "\"vorl communities\"")) << regular.err;
    EXPECT_EQ(vorl("cluster -q " + file).err, "");

    std::string star;
    for (int i = 1; i <= 65535; ++i) star += "0 " + std::to_string(i) + "\n";
    const std::string hub = folder.write("star.nse", star);
    const Outcome beyond = vorl("cluster " + hub);
    EXPECT_EQ(beyond.code, 1);
    EXPECT_TRUE(beyond.err.starts_with("vorl: " + hub + ": no hierarchy can be built, ") &&
                contains(beyond.err, "group size causes overflow"))
        << beyond.err;
    const std::string karate = DATA + "karate.nse";
    EXPECT_EQ(
        vorl("cluster --reduction accurate,by-weight -q " + karate).err,
        "vorl: " + karate + ": its links have no weights that --reduction by-weight could go by\n");
}

TEST(Cluster, TakesRepeatedAndSelfLinks) {
    const Folder folder;
    const auto summary = [](const std::string& file, const std::string& options = "") {
        return stable(vorl("cluster " + file + " --json " + options).out);
    };
    EXPECT_TRUE(contains(
        summary(folder.write("e.nse", "1 2 1\n2 1 2\n2 3 1\n1 2 2.5\n"), "--sum-duplicates"),
        "\"weight\": 13"));
    // Self links and isolated nodes.
    EXPECT_TRUE(contains(summary(folder.write("f.nse", "1 1\n2 3\n")), "\"root\": 2"));
    EXPECT_TRUE(contains(summary(folder.write("g.nse", "7 7 3\n")), "\"weight\": 6"));
    const Outcome thrice = vorl("cluster " + folder.write("h.nse", "1 2\n1 2\n2 1\n"));
    EXPECT_TRUE(contains(thrice.err, "h.nse: 2 edges repeat earlier ones, and are left out\n"));
    EXPECT_TRUE(contains(thrice.out,
                         "2 nodes, 1 edge (3 in the file, 2 of them repeated), "
                         "unweighted, total weight 2 (both directions of an edge)\n"));
    EXPECT_TRUE(contains(vorl("cluster --sum-duplicates " + (folder / "h.nse").string()).out,
                         "weighted, total weight 6"));
    const std::string mixed =
        folder.write("j.rcg", "/Edges\n1> 2:1500000.5 1\n2> 1 3\n/Arcs\n3> 2 4:0.1\n1> 1\n");
    const Outcome both = vorl("cluster " + mixed);
    EXPECT_TRUE(contains(both.err, "j.rcg: 4 directions repeat earlier ones")) << both.err;
    EXPECT_TRUE(contains(both.out, "4 edges and 3 arcs (4 directions repeated), weighted"));
    EXPECT_TRUE(contains(both.out, " 3,000,005 (both directions of an edge)")) << both.out;
    EXPECT_TRUE(contains(summary(mixed), "\"edges\": 4, \"arcs\": 3, \"repeated_links\": 4"));
    EXPECT_TRUE(contains(vorl("cluster " + DATA + "celegansneural.nsa").out,
                         "2,345 arcs, weighted, total weight 8,819\n"));
    EXPECT_TRUE(
        contains(vorl("cluster " + folder.write("i.nse", "# Nodes: 9, Edges: 1\n1 2\n")).err,
                 "the header tells of 9 nodes, 2 have a link"));
}

}  // namespace
}  // namespace vorl::test
