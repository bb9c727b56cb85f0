// Files as other systems and tools leave them: the result is that of the plain file.
#include "cli/child.hpp"
#include "cli/packed.hpp"
#include "support/comma_locale.hpp"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace vorl::test {
namespace {

const std::string BOM = "\xEF\xBB\xBF";

std::string withCarriageReturns(const std::string& text) {
    std::string result;
    for (const char c : text) result += c == '\n' ? std::string("\r\n") : std::string(1, c);
    return result;
}

/// The text in all guises, by the ends of the names that they bear.
std::multimap<std::string, std::string> guises(const std::string& text) {
    const std::string dos = withCarriageReturns(text);
    const std::string unended = text.substr(0, text.size() - 1);
    // A member ends inside a line, and an empty one follows.
    const std::size_t half = text.size() / 2 + 1;
    const std::string first = text.substr(0, half);
    const std::string second = text.substr(half);
    return {{"", dos},
            {"", BOM + text},
            {"", BOM + dos},
            {"", unended},
            {"", withCarriageReturns(unended) + "\r"},
            {"", text + "\n \t\n# the end\n"},
            {"", gzip(text)},
            {"", zstd(text)},
            {".gz", gzip(text)},
            {".gz", gzip(first) + gzip(second)},
            {".gz", gzip("") + gzip(first) + gzip("") + gzip(second) + gzip("")},
            {".gz", gzip(BOM + dos)},
            {".zst", zstd(text)},
            {".zst", zstd(first) + zstd("") + zstd(second)},
            {".zst", zstd(BOM + dos)}};
}

/// Runs the program with a text as its standard input.
Outcome fed(const std::string& text, const std::vector<std::string>& arguments) {
    const Folder folder;
    const std::string file = folder.write("input", text);
    return Child(arguments, [&] { dup2(open(file.c_str(), O_RDONLY), STDIN_FILENO); }).outcome();
}

/// Runs the program with a text that comes through a pipe.
Outcome piped(const std::string& text, const std::vector<std::string>& arguments) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    Child child(arguments, [&] { dup2(ends[0], STDIN_FILENO); });
    close(ends[0]);
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t count = write(ends[1], text.data() + done, text.size() - done);
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    close(ends[1]);
    return child.outcome();
}

TEST(ExoticInput, NetworksGiveTheSameClusters) {
    const Folder folder;
    const std::string sections = (folder / "mixed.rcg").string();
    ASSERT_EQ(vorl("convert -q " + DATA + "lesmis.nse " + sections).code, 0);
    const std::string lesmis = contents(DATA + "lesmis.nse");
    const std::map<std::string, std::string> networks{
        {"nse", lesmis},
        {"nsa", "# Arcs\n" + lesmis.substr(lesmis.find("\n", lesmis.rfind('#')) + 1)},
        {"rcg", contents(sections) + "/Arcs\n1> 5:3 7\n/Edges\n# more\n8> 1:2\n"}};
    for (const auto& [format, text] : networks) {
        const std::string plain = folder.write("plain." + format, text);
        const Outcome expected = vorl("cluster -q -o - " + plain);
        ASSERT_TRUE(expected.code == 0 && expected.out.starts_with("# Clusters: ")) << expected.err;
        const std::string info = vorl("info " + plain).out.substr(plain.size());
        std::size_t count = 0;
        for (const auto& [end, guise] : guises(text)) {
            const std::string name = std::to_string(count++) + "." + format + end;
            const std::string file = folder.write(name, guise);
            const Outcome run = vorl("cluster -q -o - " + file);
            EXPECT_TRUE(run.out == expected.out) << name << run.err;
            EXPECT_EQ(vorl("info " + file).out.substr(file.size()), info) << name;
            const std::vector<std::string> words{"cluster", "-q",       "-o",  "-",
                                                 "-",       "--format", format};
            EXPECT_TRUE(fed(guise, words).out == expected.out) << name;
            EXPECT_TRUE(piped(guise, words).out == expected.out) << name;
        }
    }
}

TEST(ExoticInput, ClustersGiveTheSameMeasures) {
    const Folder folder;
    const std::string network = DATA + "football.nse";
    const std::string plain = (folder / "plain.cnl").string();
    ASSERT_EQ(vorl("cluster -q --levels root " + network + " -o " + plain).code, 0);
    const std::string truth = DATA + "football.cnl";
    const auto measures = [](const Outcome& run) {
        EXPECT_EQ(run.code, 0) << run.err;
        return run.err + run.out.substr(run.out.rfind("ed_nodes\": 115, "));
    };
    const std::string expected = measures(vorl("evaluate --json " + network + " " + plain));
    const std::string alike = measures(vorl("compare --json " + truth + " " + plain));
    std::size_t count = 0;
    for (const auto& [end, guise] : guises(contents(plain))) {
        const std::string name = std::to_string(count++) + ".cnl" + end;
        const std::string file = folder.write(name, guise);
        EXPECT_EQ(measures(vorl("evaluate --json " + network + " " + file)), expected) << name;
        EXPECT_EQ(measures(vorl("compare --json " + truth + " " + file)), alike) << name;
        EXPECT_EQ(measures(piped(guise, {"evaluate", "--json", network, "-"})), expected) << name;
        EXPECT_EQ(measures(fed(guise, {"compare", "--json", truth, "-"})), alike) << name;
    }
}

TEST(ExoticInput, OddNamesAndColumnsAreTaken) {
    const Folder folder;
    const std::string file = folder.write("NET.NSE", "1 2 3 4\n2 3 5\n1 3 1 1\n");
    EXPECT_EQ(vorl("cluster " + file).err,
              "vorl: " + file +
                  ": line 1 and others have more than three columns; what follows the weight isn't "
                  "read\n");
    // No sequence of a terminal comes out of a name.
    const Outcome run = Child({"info", "a\x1B[31m\x7F\xC2\x9B.dat"}).outcome();
    EXPECT_TRUE(run.err.starts_with("vorl: a?[31m??.dat: ")) << run.err;
}

TEST(ExoticInput, NumbersAreReadAlikeUnderADecimalComma) {
    const Folder folder;
    const std::string net =
        folder.write("net.nse", "0 1 .5\n0 2 .25\n1 2 1.5\n2 3 .125\n3 4 2.5\n");
    const std::string cls = folder.write("net.cnl", "0 1 2:.25\n2:0.75 3 4\n");
    const CommaLocale locale;
    ASSERT_TRUE(locale.enter());
    std::setlocale(LC_ALL, "C");
    for (const std::string& arguments :
         {"cluster --gamma .5 -o - -t " + net, "info --json " + net,
          "evaluate --gamma 0.5 " + net + " " + cls, "compare " + cls + " " + cls}) {
        const Outcome plain = vorl(arguments);
        const Outcome comma = vorl(arguments, std::string("LC_ALL=") + CommaLocale::NAME);
        EXPECT_EQ(plain.code, 0) << plain.err;
        EXPECT_EQ(comma.out, plain.out);
        EXPECT_EQ(comma.err, plain.err);
    }
    EXPECT_TRUE(contains(vorl("info " + net).out, "4.875"));
}

TEST(ExoticInput, OddLinesAreTaken) {
    const Folder folder;
    const auto rows = [&](const std::string& name, const std::string& text) {
        const std::string file = folder.write(name, text);
        const Outcome run = vorl("convert " + file + " - --to nse");
        EXPECT_EQ(run.code, 0) << run.err;
        return run.out.substr(run.out.find('\n') + 1);
    };
    const std::string blanks(10'000'000, ' ');
    EXPECT_EQ(rows("blanks.nse", blanks + "1" + blanks + "2\n" + blanks + "\n2 3\n"),
              "1 2 1\n2 3 1\n");
    EXPECT_EQ(rows("comment.nse", "#" + blanks + "\n1 2\n#" + blanks + "x\n"), "1 2 1\n");
    EXPECT_EQ(rows("ids.nse", "4294967294 0\n00000000000000000000007 1\n"),
              "4294967294 0 1\n7 1 1\n");
    EXPECT_EQ(
        rows("weights.nse", "1 2 1.1754944e-38\n2 3 1E+30\n3 4 .5\n4 5 5.\n5 6 0\n6 7 0e999\n"),
        "1 2 1.1754944e-38\n2 3 1e+30\n3 4 0.5\n4 5 5\n5 6 1\n6 7 1\n");
    EXPECT_EQ(rows("cases.rcg",
                   "# first\n/GRAPH Weighted: 1 VALIDATED:1\n/nodes 4\n/edges\n\n"
                   "  1>2:3\t4\n1>\n/EDGES\n2> 3:1e-3\n"),
              "1 2 3\n1 4 1\n2 3 0.001\n");
    EXPECT_EQ(rows("last.rcg", "/Nodes 3 4294967292\n/Edges\n4294967294> 4294967292 4294967293\n"),
              "4294967294 4294967292 1\n4294967294 4294967293 1\n");
}

TEST(ExoticInput, PlainOnesNeedNoUnpacker) {
    // Libraries of the system as they are where they are missing.
    const Folder folder;
    folder.write("libz.so.1", "");
    folder.write("libzstd.so.1", "");
    const std::string without = "LD_LIBRARY_PATH=" + folder.path().string();
    EXPECT_EQ(vorl("info " + folder.write("plain.nse", "1 2\n"), without).code, 0);
    for (const auto& [packed, text] :
         {std::pair{gzip("1 2\n"), "gzip data can't be unpacked here, "},
          std::pair{zstd("1 2\n"), "zstd data can't be unpacked here, "}}) {
        const std::string file = folder.write("packed.nse", packed);
        const Outcome outcome = vorl("info " + file, without);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_TRUE(contains(outcome.err, "vorl: " + file + ": " + text)) << outcome.err;
        EXPECT_EQ(vorl("info " + file).code, 0);
    }
}

}  // namespace
}  // namespace vorl::test
