// The planning of output: names, folders, the choice of levels and what goes wrong.
#include "support/folder.hpp"
#include "support/hand_made.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <ios>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorl::test {
namespace {

/// One cluster a level, and full sizes that the test sets at will.
HandMade tower(const std::vector<Id>& sizes, std::size_t root) {
    HandMade made(5);
    HandMade::ClusterT* top = nullptr;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        made.level(sizes[i]);
        if (top)
            top = &made.cluster(static_cast<Id>(i), {{top, 1}});
        else
            top = &made.cluster(0, {{&made.node(0), 1}, {&made.node(1), 1}});
    }
    made.close();
    if (top) made.hier.m_root.assign(root, top);
    return made;
}

/// The files of a folder below it with the number of clusters in their headers.
std::string files(const Folder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
        if (entry.is_regular_file()) {
            std::istringstream text(contents(entry.path()));
            std::string word;
            text >> word >> word >> word;
            names.push_back(std::filesystem::relative(entry.path(), folder.path()).string() + "=" +
                            word);
        }
    std::sort(names.begin(), names.end());
    std::string result;
    for (const std::string& name : names) result += name + " ";
    return result;
}

OutputOptions optionsFor(const std::string& clsfile, unsigned clsfmt) {
    OutputOptions options;
    options.clsfile = clsfile;
    options.clsfmt = static_cast<ClsOutFmtBase>(clsfmt);
    return options;
}

/// The files that an output to `name` makes.
std::string written(const HandMade& made, const std::string& name, unsigned clsfmt) {
    const Folder folder;
    const Trace traced;
    made.hier.output(optionsFor((folder / name).string(), clsfmt));
    return files(folder);
}

TEST(OutputNames, AreSplitAtTheLastDot) {
    const HandMade made = tower({3, 2}, 2);
    EXPECT_EQ(written(made, "res.cnl", 0xC1), "res.cnl=2, res.rhb=clusters:2 ");
    EXPECT_EQ(written(made, "out/a/res.x.cnl", 0xC5),
              "out/a/res.x.cnl=2, out/a/res.x.rhb=clusters:2 ");
    // No extension where a folder follows the dot.
    EXPECT_EQ(written(made, "a.b/res", 0xC1), "a.b/res.rhb=clusters:2 a.b/res=2, ");
    EXPECT_EQ(written(made, "res.cnl", 0xC6), "res.cnl=clusters:2 ");
    EXPECT_EQ(written(made, "out/res.cnl", 0xC2),
              "out/res.rhb=clusters:2 out/res/res_0.cnl=3, out/res/res_1.cnl=2, ");
    EXPECT_EQ(written(made, "res", 0xC3), "res.rhb=clusters:2 res/res_0=3, res/res_1=2, ");
}

TEST(OutputNames, HaveNumbersOfEqualWidth) {
    const auto firstOf = [](std::size_t levels) {
        const Folder folder;
        const Trace traced;
        const HandMade made = tower(std::vector<Id>(levels, 7), 7);
        EXPECT_EQ(errorOf<std::logic_error>(
                      [&] { made.hier.output(optionsFor((folder / "r.cnl").string(), 0xC2)); }),
                  "output(), fouts size exceeds the number of the hierarchy levels\n");
        // All files are there, the description isn't.
        const std::string names = files(folder);
        EXPECT_EQ(std::count(names.begin(), names.end(), ' '), static_cast<int>(levels));
        return names.substr(0, names.find('='));
    };
    EXPECT_EQ(firstOf(9), "r/r_0.cnl");
    EXPECT_EQ(firstOf(10), "r/r_00.cnl");
}

constexpr LevelNum UNSET = LEVEL_NONE;
constexpr LevMargKind NONE = LevMargKind::NONE;
constexpr LevMargKind CLSNUM = LevMargKind::CLSNUM;
constexpr LevMargKind LEVID = LevMargKind::LEVID;
constexpr LevMargKind STEPS = LevMargKind::LEVSTEPNUM;

// Levels of 100, 60, 45, 20 and 8 items, and a root of 8.
TEST(LevelChoice, GoesByMarginsAndStep) {
    const struct {
        unsigned structure;  // 3 of a custom range, 4 around a number of clusters
        LevMargKind levmarg;
        LevelNum margmin;
        LevelNum margmax;
        float step;
        const char* levels;  // the numbers in the names, with the clusters in the headers
    } cases[] = {

        {3, NONE, UNSET, UNSET, 1, "0=100 1=60 2=45 3=20 4=8"},
        // Half of 100, of 45 and of 20 items, in whole numbers.
        {3, NONE, UNSET, UNSET, 0.5f, "0=100 2=45 3=20 4=8"},
        // A fifth of 20 is 4; 8 lies nearer to that than to 20, and 60 nearer to 50 than to 100.
        {3, NONE, UNSET, UNSET, 0.2f, "0=100 3=20 4=8"},
        {3, LEVID, UNSET, 1, 0.1f, "0=100"},
        // Margins are levels of either kind. What is written doesn't know of the upper margin.
        {3, LEVID, 1, 3, 1, "1=60 2=45 3=20"},
        {3, CLSNUM, 1, 3, 1, "1=60 2=45 3=20"},
        {3, NONE, 3, UNSET, 1, "3=20 4=8"},
        {3, LEVID, 3, 1, 1, "1=60"},
        {3, LEVID, UNSET, 1, 0.5f, "0=100 1=45"},
        {3, LEVID, 7, UNSET, 1, ""},
        // A step of 0 writes the first and the last level, whatever the files' numbers.
        {3, LEVID, 2, 2, 0, "2=45"},
        {3, LEVID, 2, 3, 0, "2=45 3=8"},
        // Steps from the lowest level on: from 100 * 0.5 to 100 * 0.25 items, from 25 to the root's
        // 8, and from 20 on, which is found from the top.
        {3, STEPS, 1, 2, 0.5f, "2=45"},
        {3, STEPS, 2, UNSET, 0.5f, "3=20 4=8"},
        {3, STEPS, 1, 0, 0.2f, "3=20 4=8"},
        {3, STEPS, UNSET, 1, 0.5f, "0=100 1=45"},
        {3, STEPS, 9, 9, 0.5f, "4=8"},
        {3, STEPS, 3, 3, 1, "0=100"},
        // Around the root's number of clusters, and around 50.
        {4, NONE, UNSET, UNSET, 1, "3=20 4=8"},
        {4, STEPS, UNSET, 1, 0.5f, "1=60 2=8"},
        {4, STEPS, UNSET, 1, 1, "0=100 1=8"},
    };
    for (const auto& range : cases) {
        SCOPED_TRACE(&range - cases);
        OutputOptions options = optionsFor("", 0x40 | range.structure);
        options.custlevs = {range.levmarg, range.margmin, range.margmax, range.step};
        const Folder folder;
        options.clsfile = (folder / "r").string();
        Trace traced;
        tower({100, 60, 45, 20, 8}, 8).hier.output(options);
        std::string names = files(folder);
        if (*range.levels == '\0') {
            EXPECT_EQ(names, "");
            EXPECT_TRUE(traced.take().ends_with(
                "WARNING output(), files output is omitted because there is nothing to output.\n"));
            continue;
        }
        for (std::size_t place = 0; (place = names.find("r/r_")) != std::string::npos;)
            names.erase(place, 4);
        std::erase(names, ',');
        EXPECT_EQ(names, "r.rhb=clusters:5 " + std::string(range.levels) + " ");
    }
}

TEST(LevelChoiceDeathTest, NeedsAKnownMarginAndARatio) {
    const HandMade made = tower({3, 2}, 2);
    const Trace traced;
    const Folder folder;
    OutputOptions options = optionsFor((folder / "r").string(), 0xC3);
    options.custlevs.levmarg = static_cast<LevMargKind>(1);
    EXPECT_DEATH(made.hier.output(options),
                 "output\\(\\), levmarg should be specified for the CUSTLEVSX");
    options.clsfmt = 0xC4;
    options.custlevs = {NONE, UNSET, UNSET, 1.5f};
    EXPECT_DEATH(made.hier.output(options), "output\\(\\), clsrstep should E \\[0, 1\\]");
    for (const char* name : {"", ".", ".."})
        EXPECT_DEATH(made.hier.output(optionsFor(name, 0xC5)),
                     "output\\(\\), base clusters output file should be valid");
}

TEST(Output, KeepsTheLeastSizeInTheOptions) {
    const HandMade made = tower({3, 2}, 2);
    const Trace traced;
    const Folder folder;
    OutputOptions options = optionsFor((folder / "r.cnl").string(), 0xCC);
    options.signifcls.setClszminf(SzFnName::CLSSZ_LOG2);
    made.hier.output(options);
    EXPECT_EQ(options.signifcls.szmin, 2);  // of the 5 nodes
    options.signifcls.szmin = 4;
    made.hier.output(options);
    EXPECT_EQ(options.signifcls.szmin, 4);
    EXPECT_EQ(files(folder), "r.cnl=2, r.rhb=clusters:2 ");
}

TEST(Output, TellsOfNothingToWrite) {
    const Folder folder;
    const std::string name = (folder / "r.cnl").string();
    Trace traced;
    tower({3, 2}, 2).hier.output(optionsFor(name, 0xC0));
    EXPECT_EQ(traced.take(),
              "WARNING output(), the output is empty, outp_clsfmt: 0x0, hier_levnum: 2\n");
    tower({}, 0).hier.output(optionsFor(name, 0xD8));
    EXPECT_EQ(traced.take(),
              "WARNING output(), the output is empty, outp_clsfmt: 0x8, hier_levnum: 0\n");
    for (unsigned undefined : {0xC7u, 0xCDu, 0xCFu})
        EXPECT_EQ(errorOf<std::invalid_argument>(
                      [&] { tower({1}, 1).hier.output(optionsFor(name, undefined)); }),
                  "output(), unexpected value of ClsOutFmt\n");
    EXPECT_EQ(files(folder), "");
}

TEST(Output, LeavesOutWhatCannotBeOpened) {
    const HandMade made = tower({3, 2}, 2);
    const Folder folder;
    std::filesystem::create_directories(folder / "r.rhb");
    std::filesystem::create_directories(folder / "s.cnl");
    std::filesystem::create_directories(folder / "t" / "t_1");
    Trace traced;
    testing::internal::CaptureStderr();
    made.hier.output(optionsFor((folder / "r.cnl").string(), 0xC1));
    made.hier.output(optionsFor((folder / "s.cnl").string(), 0xC1));
    made.hier.output(optionsFor((folder / "t").string(), 0xC2));
    const std::string path = folder.path().string();
    const std::string reason = ": Is a directory\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING output(), " + path +
                  "/r.rhb can't be created, skipping additional output of the hierarchy" + reason +
                  "WARNING output(), " + path +
                  "/s.cnl can't be created, skipping the clusters output" + reason +
                  "WARNING makeFileRaw(), " + path +
                  "/t/t_1 can't be created, skipping the clusters output for this and following "
                  "levels" +
                  reason);
    EXPECT_EQ(files(folder), "r.cnl=2, t.rhb=clusters:2 t/t_0=3, ");
    EXPECT_TRUE(errorOf<std::ios_base::failure>([&] {
                    made.hier.output(optionsFor("/dev/full", 0xC1));
                }).starts_with("output(), writing of /dev/full failed"));
}

}  // namespace
}  // namespace vorl::test
