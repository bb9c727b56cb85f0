// vorl view: which clusters it shows, where it writes, and what it refuses.
#include "cli/program.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace vorl::test {

namespace {

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

TEST(View, WritesPagesAndMapsOfCommunitiesClustersAndHierarchies) {
    const Folder folder;
    const std::string karate = DATA + "karate.nse";
    const std::string page = (folder / "page.html").string();
    const std::string map = (folder / "map.svg").string();
    Outcome run = vorl("view " + karate + " -o " + page);
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(contains(run.err, "34 nodes")) << run.err;
    EXPECT_TRUE(contains(contents(page), "<title>karate.nse</title>"));
    EXPECT_TRUE(contains(contents(page), "Content-Security-Policy"));
    EXPECT_EQ(vorl("view " + karate + " -q -o - --to html").out, contents(page));

    run = vorl("view " + karate + " " + DATA + "karate.cnl -q -o " + map);
    ASSERT_EQ(run.code, 0) << run.err;
    // The whole, two clusters and 34 nodes.
    EXPECT_EQ(count(contents(map), "<circle"), 37u);

    const std::string rhb = (folder / "h.rhb").string();
    ASSERT_EQ(vorl("cluster " + karate + " --levels hierarchy -q -o " + rhb).code, 0);
    run = vorl("view " + karate + " " + rhb + " --all-levels --level 2 -o " + page);
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(contains(run.err, "30 clusters on 7 levels")) << run.err;
    const auto levels =
        count(vorl("view " + karate + " " + rhb + " -q -o - --to svg").out, "<circle");
    EXPECT_LT(levels,
              count(vorl("view " + karate + " " + rhb + " -q -o - --to svg --all-levels").out,
                    "<circle"));
}

TEST(View, NamesOfNodesStayText) {
    const Folder folder;
    const std::string file = (folder / "names.csv").string();
    std::ofstream(file) << "from,to\n<script>,b\n<script>,c&d\nb,c&d\n";
    const Outcome run = vorl("view " + file + " -q --title '<i>' -o - --to svg");
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_FALSE(contains(run.out, "<script>"));
    EXPECT_TRUE(contains(run.out, "<title>&lt;i&gt;</title>"));
    const Outcome page = vorl("view " + file + " -q -o -");
    EXPECT_EQ(count(page.out, "<script"), 2u) << "the data, and the program of the page";
}

TEST(View, TellsWhatIsWrong) {
    const Folder folder;
    const std::string karate = DATA + "karate.nse";
    const std::string other = (folder / "other.cnl").string();
    std::ofstream(other) << "1 2 3\n4 99\n";
    const std::string output = (folder / "o.html").string();
    Outcome run = vorl("view " + karate + " " + other + " -o " + output);
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(contains(run.err, "other.cnl:2: the node 99 isn't in the network")) << run.err;
    EXPECT_FALSE(std::filesystem::exists(output));
    run = vorl("view " + karate + " -o " + (folder / "o.pdf").string());
    EXPECT_EQ(run.code, 2);
    EXPECT_TRUE(contains(run.err, "--to")) << run.err;
    EXPECT_EQ(vorl("view " + karate).code, 2);
    run = vorl("view " + karate + " --level 77 -o " + output);
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(contains(run.err, "there is no level 77")) << run.err;
}

}  // namespace

}  // namespace vorl::test
