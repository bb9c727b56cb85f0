// `vorl communities`.
#include "cli/program.hpp"

#include <vorl/reading/source.hpp>

#include <gtest/gtest.h>

#include <fstream>

namespace vorl::test {
namespace {

TEST(CommunitiesCommand, FindsTheConferencesOfFootball) {
    const Folder folder;
    const std::string base = (folder / "found").string();
    const Outcome run =
        vorl("communities " + DATA + "football.nse -o " + base + ".cnl --table " + base + ".csv");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(contains(run.out, "11 communities, 0 nodes in several")) << run.out;
    EXPECT_TRUE(contains(run.out, "modularity    0.603063 at gamma 1")) << run.out;
    EXPECT_TRUE(contains(contents(base + ".csv"), "node,community,share\n0,"));
    const Outcome same = vorl("compare " + base + ".csv " + base + ".cnl --json");
    EXPECT_TRUE(contains(same.out, "\"ari\": 1,")) << same.out;
    const Outcome measured = vorl("evaluate " + DATA + "football.nse " + base + ".cnl --json");
    const Outcome json = vorl("communities " + DATA + "football.nse --json");
    for (const char* key : {"\"conductance\": ", "\"modularity\": "}) {
        const auto value = [&](const std::string& text) {
            return text.substr(text.find(key), std::string(key).size() + 7);
        };
        EXPECT_EQ(value(json.out), value(measured.out)) << json.out;
    }
}

TEST(CommunitiesCommand, TheHierarchyHasTheCommunitiesOnALevel) {
    const Folder folder;
    const std::string base = (folder / "found").string();
    EXPECT_EQ(
        vorl("communities " + DATA + "jazz.nse -q -o " + base + ".cnl --hierarchy " + base + ".rhb")
            .code,
        0);
    const Outcome levels = vorl("compare --levels " + base + ".rhb " + base + ".cnl --json");
    EXPECT_EQ(levels.code, 0) << levels.err;
    EXPECT_TRUE(contains(levels.out, "\"nmi_max\": 1,")) << levels.out;
    EXPECT_EQ(vorl("show " + base + ".rhb --node 7").code, 0);
    EXPECT_EQ(vorl("communities " + DATA + "jazz.nse --hierarchy " + base).code, 2);
}

TEST(CommunitiesCommand, TextsAreCompressedByTheirNames) {
    const Folder folder;
    const auto named = [&](const std::string& name) { return (folder / name).string(); };
    const std::string football = DATA + "football.nse";
    ASSERT_EQ(
        vorl("communities -q " + football + " -o " + named("a.cnl") + " --table " + named("a.csv"))
            .code,
        0);
    ASSERT_EQ(vorl("communities -q " + football + " -o " + named("a.cnl.zst") + " --table " +
                   named("a.csv.gz"))
                  .code,
              0);
    const auto plain = [](const std::string& file) {
        const auto source = openSource(file);
        std::string text;
        char block[4096];
        while (const std::size_t size = source->read(block, sizeof block)) text.append(block, size);
        return text;
    };
    EXPECT_EQ(plain(named("a.cnl.zst")), contents(named("a.cnl")));
    EXPECT_EQ(plain(named("a.csv.gz")), contents(named("a.csv")));
    EXPECT_LT(contents(named("a.csv.gz")).size(), contents(named("a.csv")).size() / 2);
    // Larger than any block.
    std::string links;
    for (int i = 0; i < 200'000; ++i)
        links += std::to_string(i * 7919 % 65'537) + " " + std::to_string(i) + "\n";
    const std::string network = folder.write("b.nse", links);
    for (const std::string packing : {".gz", ".zst"}) {
        ASSERT_EQ(vorl("convert -q " + network + " " + named("c.nse" + packing)).code, 0);
        ASSERT_EQ(vorl("convert -q " + named("c.nse" + packing) + " " + named("d.nse")).code, 0);
        ASSERT_EQ(vorl("convert -q " + network + " " + named("e.nse")).code, 0);
        EXPECT_EQ(contents(named("d.nse")), contents(named("e.nse")));
    }
}

TEST(CommunitiesCommand, SaysWhereThereAreNone) {
    const Folder folder;
    std::ofstream ring(folder / "ring.nse");
    for (int i = 0; i < 24; ++i) ring << i << ' ' << (i + 1) % 24 << '\n';
    ring.close();
    const std::string file = (folder / "ring.nse").string();
    const Outcome none = vorl("communities " + file);
    EXPECT_EQ(none.code, 0);
    EXPECT_TRUE(contains(none.out, "There are no communities")) << none.out;
    EXPECT_TRUE(contains(vorl("communities " + file + " --json").out, "\"communities\": 1,"));
    EXPECT_TRUE(contains(vorl("communities " + DATA + "karate.nse").out, "may be chance"));
}

TEST(CommunitiesCommand, FiguresAreThoseOfOtherCommands) {
    const Folder folder;
    const auto value = [](const std::string& text, const std::string& key) {
        const std::size_t at = text.find("\"" + key + "\": ");
        return at == text.npos ? "none" : text.substr(at, text.find_first_of(",}", at) - at);
    };
    const std::string self = folder.write("self.nsa", "1 2 2\n2 1 3\n2 3 1\n3 3 5\n");
    for (const std::string& file : {DATA + "celegansneural.nsa", DATA + "karate.nse", self})
        EXPECT_EQ(value(vorl("communities --json " + file).out, "weight"),
                  value(vorl("cluster --json " + file).out, "weight"));
    const std::string two =
        folder.write("two.nse", "1 2\n2 3\n3 4\n4 1\n1 3\n2 4\n5 6\n6 7\n7 8\n8 5\n5 7\n6 8\n");
    const std::string found = (folder / "two.cnl").string();
    const Outcome run = vorl("communities --json " + two + " -o " + found);
    EXPECT_TRUE(contains(run.out, "\"communities\": 2,")) << run.out;
    EXPECT_EQ(value(run.out, "estimated_gamma"),
              value(vorl("evaluate --json " + two + " " + found).out, "estimated_gamma"));
}

TEST(CommunitiesCommand, StarsTooLargeForAHierarchyAreToldSo) {
    const Folder folder;
    std::string links;
    for (int i = 1; i <= 66'000; ++i) links += "0 " + std::to_string(i) + "\n";
    const std::string star = folder.write("star.nse", links);
    EXPECT_EQ(vorl("communities -q " + star).code, 0);
    for (const std::string& command :
         {"cluster " + star, "communities " + star + " --hierarchy " + (folder / "x.rhb").string(),
          "view " + star + " -o " + (folder / "x.html").string(), "info --estimate " + star}) {
        const Outcome run = vorl(command);
        EXPECT_EQ(run.code, 1) << command;
        EXPECT_TRUE(contains(run.err, star + ": no hierarchy can be built, the network is beyond"))
            << command << run.err;
    }
}

TEST(CommunitiesCommand, ResultsDoNotDependOnThreadsAndOrder) {
    const Folder folder;
    const std::string one = vorl("communities " + DATA + "power.nse --threads 1 -q -o -").out;
    EXPECT_TRUE(one.starts_with("# Clusters: "));
    EXPECT_EQ(vorl("communities " + DATA + "power.nse --threads 5 -q -o -").out, one);
    EXPECT_EQ(vorl("communities - --format nse -q -o - < " + (folder / "turned.nse").string(),
                   "tac " + DATA + "power.nse > " + (folder / "turned.nse").string() + " &&")
                  .out,
              one);
}

TEST(CommunitiesCommand, RefusesWhatCannotBe) {
    const Folder folder;
    const std::string karate = DATA + "karate.nse";
    const std::string file = (folder / "x.cnl").string();
    EXPECT_EQ(vorl("communities " + karate + " --threads -1").code, 2);
    EXPECT_EQ(vorl("communities " + karate + " -o " + file + " --table " + file).code, 2);
    EXPECT_EQ(vorl("communities " + karate + " -o - --json").code, 2);
    EXPECT_EQ(vorl("communities " + karate + " -o " + (folder / "no/x.cnl").string()).code, 1);
    const Outcome input = vorl("communities " + karate + " -o " + karate);
    EXPECT_EQ(input.code, 2);
    const Outcome missing = vorl("communities " + (folder / "none.nse").string());
    EXPECT_EQ(missing.code, 1);
    EXPECT_TRUE(contains(missing.err, "No such file"));
    std::ofstream(folder / "bad.nse") << "1 2\n1 x\n";
    EXPECT_TRUE(contains(vorl("communities " + (folder / "bad.nse").string()).err, "bad.nse:2: "));
}

}  // namespace
}  // namespace vorl::test
