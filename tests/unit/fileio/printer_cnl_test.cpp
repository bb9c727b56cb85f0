// The rows and files that the writer of clusters makes of hierarchies made by hand.
#include <vorl/fileio/printer_cnl.hpp>

#include "support/folder.hpp"
#include "support/hand_made.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <ios>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorl::test {
namespace {

using ClusterT = HandMade::ClusterT;
using TextsT = std::vector<std::string>;

struct Print {
    bool fltMembers = false;
    LevelNum blev = 0;
    LevelNum elev = LEVEL_NONE;
    float ratio = 1;
    const SignifclsOptions* signif = nullptr;
};

/// The texts of the files.
TextsT printed(const HandMade& made, unsigned clsfmt, std::size_t count = 1,
               const Print& print = {}) {
    const Folder folder;
    FileWrappers files;
    const auto name = [&](std::size_t i) { return (folder / std::to_string(i)).string(); };
    for (std::size_t i = 0; i < count; ++i) files.emplace_back(std::fopen(name(i).c_str(), "w"));
    std::string error;
    try {
        CnlPrinter<UnweightedLinks>(made.hier).output(files, static_cast<ClsOutFmtBase>(clsfmt),
                                                      print.fltMembers, print.blev, print.elev,
                                                      print.ratio, print.signif);
    } catch (const std::logic_error& err) {
        error = err.what();
    }
    files.clear();
    TextsT texts;
    for (std::size_t i = 0; i < count; ++i) texts.push_back(contents(name(i)));
    if (!error.empty()) texts.push_back(error);
    return texts;
}

/// Nodes 0 to 4, the last one filtered on demand; 1 and 2 are shared.
HandMade overlapping() {
    HandMade made(5);
    made.node(4).id = 0x80000004;
    made.level(2);
    ClusterT& a = made.cluster(10, {{&made.node(0), 1}, {&made.node(1), 2}, {&made.node(2), 3}});
    ClusterT& b = made.cluster(
        11, {{&made.node(1), 2}, {&made.node(2), 1}, {&made.node(3), 1}, {&made.node(4), 1}});
    made.level(1);
    made.cluster(20, {{&a, 1}, {&b, 1}});
    made.close();
    return made;
}

TEST(ClusterRows, HaveIdsAndUnevenSharesByTheFileFormat) {
    const HandMade made = overlapping();
    constexpr unsigned all = 0x05;
    EXPECT_EQ(printed(made, all | 0xC0)[0],
              "# Clusters: 3, Nodes: 5, Fuzzy: 1, Numbered: 1\n"
              "10> 0 1 2:0.75 \n11> 1 2:0.25 3 2147483652 \n20> 0 1:1 2:1 3 2147483652 \n");
    EXPECT_EQ(printed(made, all | 0x80, 1, {.fltMembers = true})[0],
              "# Clusters: 3, Nodes: 5, Fuzzy: 1, Numbered: 0\n"
              "0 1 2:0.75 \n1 2:0.25 3 \n0 1:1 2:1 3 \n");
    const std::string simple =
        "# Clusters: 3, Nodes: 5, Fuzzy: 0, Numbered: 0\n"
        "0 1 2 \n1 2 3 2147483652 \n0 1 2 3 2147483652 \n";
    EXPECT_EQ(printed(made, all | 0x40)[0], simple);
    EXPECT_EQ(printed(made, all)[0], simple);
    // The largest share of node 2 is in the first cluster, those of node 1 are equal.
    EXPECT_EQ(printed(made, all | 0xD0)[0],
              "# Clusters: 3, Nodes: 5, Fuzzy: 1, Numbered: 1\n"
              "10> 0 1 2:0.75 \n11> 1 3 2147483652 \n20> 0 1:1 2:0.75 3 2147483652 \n");
    EXPECT_EQ(printed(made, 0xC1)[0],
              "# Clusters: 1, Nodes: 5, Fuzzy: 1, Numbered: 1\n20> 0 1:1 2:1 3 2147483652 \n");
}

TEST(ClusterRows, WithoutMembersHaveNoLineEnd) {
    HandMade made(2);
    made.node(0).id = 0x80000000;
    made.level(2);
    made.cluster(5, {{&made.node(0), 1}});
    made.cluster(6, {{&made.node(1), 1}});
    made.close();
    EXPECT_EQ(printed(made, 0xC5, 1, {.fltMembers = true})[0],
              "# Clusters: 2, Nodes: 2, Fuzzy: 1, Numbered: 1\n5> 6> 1 \n");
}

TEST(ClusterRows, OfSixDigitsFollowTheTolerance) {
    HandMade made(2);
    made.level(2);
    made.cluster(5, {{&made.node(0), 20000}, {&made.node(1), 1}});
    made.cluster(6, {{&made.node(0), 20001}, {&made.node(1), 60000}});
    EXPECT_EQ(printed(made, 0x85)[0],
              "# Clusters: 0, Nodes: 2, Fuzzy: 1, Numbered: 0\n"
              "0:0.499988 1:1.66664E-05 \n0:0.500013 1:0.999983 \n");
}

TEST(AllClusters, LeaveOutThoseThatRepeatTheirDescendant) {
    HandMade made(4);
    made.level(3);
    ClusterT& a = made.cluster(1, {{&made.node(0), 1}, {&made.node(1), 1}});
    ClusterT& b = made.cluster(2, {{&made.node(2), 1}, {&made.node(3), 1}});
    made.level(4);
    ClusterT& c = made.cluster(3, {{&a, 1}});
    ClusterT& d = made.cluster(4, {{&b, 1}});
    ClusterT& e = made.cluster(5, {{&b, 1}});
    made.level(2);
    made.cluster(6, {{&c, 1}, {&d, 1}});
    made.cluster(7, {{&e, 1}});
    made.close();
    // 3 repeats 1; 4 and 5 share 2; 7 has no owners. The header counts all.
    EXPECT_EQ(printed(made, 0xC5)[0],
              "# Clusters: 7, Nodes: 4, Fuzzy: 1, Numbered: 1\n"
              "1> 0 1 \n2> 2 3 \n4> 2:0.5 3:0.5 \n5> 2:0.5 3:0.5 \n"
              "6> 0 1 2:0.5 3:0.5 \n7> 2:0.5 3:0.5 \n");
}

/// Three levels of 3, 2 and 1 items; the cluster 2 is carried past the second level.
HandMade carried() {
    HandMade made(5);
    made.level(3);
    ClusterT& a = made.cluster(0, {{&made.node(0), 1}, {&made.node(1), 1}});
    ClusterT& b = made.cluster(1, {{&made.node(2), 1}, {&made.node(3), 1}});
    ClusterT& c = made.cluster(2, {{&made.node(4), 1}});
    made.level(2);
    ClusterT& d = made.cluster(3, {{&a, 1}, {&b, 1}});
    made.level(1);
    made.cluster(4, {{&c, 1}, {&d, 1}});
    made.close();
    return made;
}

const std::string COUNTS = ", Nodes: 5, Fuzzy: 1, Numbered: 1\n";
const std::string FIRST = "# Clusters: 3" + COUNTS + "0> 0 1 \n1> 2 3 \n2> 4 \n";
const std::string SECOND = "# Clusters: 2" + COUNTS + "2> 4 \n3> 0 1 2 3 \n";
const std::string THIRD = "# Clusters: 1" + COUNTS + "4> 4 0 1 2 3 \n";

TEST(LevelFiles, HoldTheWholePartitionOfALevel) {
    const HandMade made = carried();
    for (unsigned structure : {0xC3u, 0xC4u}) {
        EXPECT_EQ(printed(made, structure, 3), (TextsT{FIRST, SECOND, THIRD}));
        EXPECT_EQ(printed(made, structure, 2, {.blev = 1}), (TextsT{SECOND, THIRD}));
        EXPECT_EQ(printed(made, structure, 1, {.blev = 1}), (TextsT{SECOND}));
        EXPECT_EQ(printed(made, structure, 2, {.blev = 0, .elev = 1}), (TextsT{FIRST, ""}));
    }
    // Per level, the first level is the lowest one.
    EXPECT_EQ(printed(made, 0xC2, 2, {.blev = 1}), (TextsT{FIRST, SECOND}));
}

TEST(LevelFiles, FollowTheRatio) {
    const HandMade made = carried();
    EXPECT_EQ(printed(made, 0xC3, 2, {.ratio = 0.6f}), (TextsT{FIRST, THIRD}));
    EXPECT_EQ(printed(made, 0xC3, 3, {.ratio = 0.7f}), (TextsT{FIRST, SECOND, THIRD}));
    EXPECT_EQ(printed(made, 0xC3, 2, {.blev = 1, .ratio = 0.1f}), (TextsT{SECOND, THIRD}));
    EXPECT_EQ(printed(made, 0xC3, 2, {.elev = 2, .ratio = 0.1f}), (TextsT{FIRST, SECOND}));
    // By a ratio of 0 no level follows but the last one.
    EXPECT_EQ(printed(made, 0xC2, 1, {.ratio = 0}), (TextsT{FIRST}));
    EXPECT_EQ(printed(made, 0xC2, 2, {.ratio = 0}), (TextsT{FIRST, THIRD}));
    const std::string error = "output(), fouts size exceeds the number of the hierarchy levels\n";
    EXPECT_EQ(printed(made, 0xC2, 3, {.ratio = 0}), (TextsT{"", "", "", error}));
    EXPECT_EQ(printed(made, 0xC3, 2, {.blev = 2, .ratio = 0.5f}), (TextsT{"", "", error}));
}

TEST(LevelFiles, FitTheHierarchy) {
    const HandMade made = carried();
    const std::string large = ") is too large (max = 3)\n";
    EXPECT_EQ(printed(made, 0xC3, 1, {.blev = 3})[1],
              "output(), blev (3) or the number of fouts (1" + large);
    EXPECT_EQ(printed(made, 0xC3, 4)[4], "output(), blev (0) or the number of fouts (4" + large);
    EXPECT_EQ(printed(made, 0xC3, 3, {.blev = 1})[3],
              "output(), blev (1) or the number of fouts (3" + large);
    EXPECT_EQ(printed(made, 0xC3, 1, {.ratio = -0.5f})[1],
              "output(), levStepRatio validation failed: -0.500000\n");
    EXPECT_EQ(printed(made, 0xC3, 1, {.ratio = 1.5f})[1],
              "output(), levStepRatio validation failed: 1.500000\n");
}

TEST(ClusterPrinter, RefusesWhatIsUndefined) {
    const HandMade made = carried();
    EXPECT_EQ(printed(made, 0x35)[1], "output(), undefined ClsOutFmt: 0b01000000\n");
    EXPECT_EQ(printed(made, 0xC6)[1], "output(), undefined ClsOutFmt: 0b11000110\n");
    EXPECT_EQ(printed(made, 0xDD)[1], "output(), undefined ClsOutFmt: 0b11011101\n");
    EXPECT_EQ(printed(made, 0xC7, 0), TextsT{});
    EXPECT_EQ(printed(HandMade(2), 0xC7), TextsT{""});
}

TEST(ClusterPrinter, ThatCannotWriteFails) {
    const HandMade made = carried();
    FileWrappers files;
    files.emplace_back(std::fopen("/dev/full", "w"));
    EXPECT_THROW(CnlPrinter<UnweightedLinks>(made.hier).output(files, 0xC5),
                 std::ios_base::failure);
}

/// Under the cluster 1 stand 2, dense and heavy, and 3, thin; under 2 and 3 stand 4 and 6, under 2
/// alone 5, under 3 alone 7; under 4 stand 8 and 9. The digits are the ids.
HandMade significance() {
    HandMade made(12);
    made.level(2);
    ClusterT& c8 = made.cluster(8, {{&made.node(0), 1}, {&made.node(1), 1}}, 30, 30. / 11);
    ClusterT& c9 = made.cluster(9, {{&made.node(2), 1}, {&made.node(3), 1}}, 24, 24. / 13);
    made.level(4);
    ClusterT& c4 = made.cluster(4, {{&c8, 1}, {&c9, 1}}, 14, 2);
    ClusterT& c5 = made.cluster(5, {{&made.node(4), 1}, {&made.node(5), 1}}, 16, 2);
    ClusterT& c6 = made.cluster(6, {{&made.node(6), 1}, {&made.node(7), 1}}, 30, 1.5);
    ClusterT& c7 = made.cluster(7, {{&made.node(8), 1}, {&made.node(9), 1}}, 12, 2);
    made.level(2);
    ClusterT& c2 = made.cluster(2, {{&c4, 1}, {&c5, 1}, {&c6, 1}}, 48, 4);
    ClusterT& c3 = made.cluster(3, {{&c4, 1}, {&c6, 1}, {&c7, 1}}, 30, 6);
    made.level(1);
    made.cluster(1, {{&c2, 1}, {&c3, 1}}, 100, 10);
    made.close();
    return made;
}

/// The ids of the significant clusters, in the file's order.
std::string significant(unsigned structure, float wrstep, bool wrange, std::uint32_t szmin = 0,
                        float densdrop = 1) {
    SignifclsOptions options;
    options.densdrop = densdrop;
    options.wrstep = wrstep;
    options.wrange = wrange;
    options.szmin = szmin;
    const TextsT texts = printed(significance(), 0xC0 | structure, 1, {.signif = &options});
    if (texts.size() > 1) return texts[1];
    std::istringstream lines(texts[0]);
    std::string ids;
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "# Clusters: 9, Nodes: 12, Fuzzy: 1, Numbered: 1");
    while (std::getline(lines, line)) ids += line.substr(0, line.find('>'));
    return ids;
}

constexpr unsigned OWNSDIR = 8;
constexpr unsigned OWNADIR = 9;
constexpr unsigned OWNSHIER = 10;
constexpr unsigned OWNAHIER = 11;

TEST(SignificantClusters, MeetTheBoundsOfTheirOwners) {
    // Bounds of density and weight: 10 and 50 of cluster 1, 12 and 24 of 2. 3 fails; its own ones
    // are 5 and 15, its inherited ones 10 and 50.
    // 4 (7 and 14) meets the own ones of 3 alone, 6 (20 and 30) the inherited ones of 3 alone,
    // 7 (6 and 12) the own ones of 3.
    EXPECT_EQ(significant(OWNSDIR, 0.5f, false), "1247");
    EXPECT_EQ(significant(12, 0.5f, false), "1247");
    EXPECT_EQ(significant(OWNADIR, 0.5f, false), "127");
    // 4 inherits 12 and 24 where one owner is enough, 10 and 50 where all must pass; 8 has 11 and
    // 30, 9 has 13 and 24.
    EXPECT_EQ(significant(OWNSHIER, 0.5f, false), "1269");
    EXPECT_EQ(significant(OWNAHIER, 0.5f, false), "1289");
}

TEST(SignificantClusters, MayHaveARangeOfWeights) {
    // From 25 to 75 of cluster 1, 12 to 36 of 2, 7.5 to 22.5 of 3, 3.5 to 10.5 of 4.
    EXPECT_EQ(significant(OWNSDIR, 0.25f, true), "12467");
    EXPECT_EQ(significant(OWNADIR, 0.25f, true), "127");
    // With a step of 0 the density alone counts.
    EXPECT_EQ(significant(OWNSDIR, 0, true), "1246789");
    // Densities may drop to 10 * 0.5, 12 * 0.5 and so on.
    EXPECT_EQ(significant(OWNADIR, 0, true, 0, 0.5f), "123456789");
}

TEST(SignificantClusters, BelowTheLeastSizeStillBoundOthers) {
    EXPECT_EQ(significant(OWNSDIR, 0.5f, false, 3), "124");
    EXPECT_EQ(significant(OWNSDIR, 0.5f, false, 9), "1");
    EXPECT_EQ(significant(OWNSDIR, 0.5f, false, 100), "1");
}

TEST(SignificantClusters, NeedTheRecordsOfTheirOwners) {
    HandMade made(2);
    made.level(1);
    ClusterT& a = made.cluster(1, {{&made.node(0), 1}, {&made.node(1), 1}}, 1, 2);
    made.level(1);
    ClusterT& b = made.cluster(2, {{&a, 1}}, 1, 2);
    made.level(1);
    made.cluster(3, {{&b, 1}}, 1, 2);
    made.close();
    const SignifclsOptions options;
    const Folder folder;
    FileWrappers files;
    files.emplace_back(std::fopen((folder / "out").c_str(), "w"));
    const CnlPrinter<UnweightedLinks> printer(made.hier);
    EXPECT_THROW(printer.output(files, 0xC8, false, 0, LEVEL_NONE, 1, &options), std::out_of_range);
    EXPECT_DEATH(printer.output(files, 0xC8),
                 "output\\(\\), significant clusters output options should be specified");
    Trace traced;
    EXPECT_EQ(significant(OWNSDIR, 0, false),
              "SignifclsOptions::validate(), invalid attribute(s).\n");
}

}  // namespace
}  // namespace vorl::test
