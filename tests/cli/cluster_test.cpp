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
              "{\"network\": {, \"nodes\": 34, \"links\": 78, \"directed\": false, \"weighted\": "
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
    EXPECT_TRUE(
        contains(vorl("cluster " + folder.write("h.nse", "1 2\n1 2\n2 1\n")).err, "duplicated"));
    EXPECT_TRUE(
        contains(vorl("cluster " + folder.write("i.nse", "# Nodes: 9, Edges: 1\n1 2\n")).err,
                 "the header tells of 9 nodes, 2 have a link"));
}

}  // namespace
}  // namespace vorl::test
