// `vorl cluster --table`.
#include "cli/program.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

namespace vorl::test {
namespace {

/// The rows of a table below its names.
std::vector<std::vector<std::string>> rowsOf(const std::string& text) {
    std::istringstream lines(text);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream cells(line);
        rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, '\t');) rows.back().push_back(cell);
    }
    EXPECT_EQ(rows.at(0), (std::vector<std::string>{"node", "level", "cluster", "share"}));
    rows.erase(rows.begin());
    return rows;
}

TEST(ClusterTable, HasTheClustersOfTheLevelsAskedFor) {
    const Folder folder;
    const std::string net = DATA + "lesmis.nse";
    const std::string table = (folder / "t.tsv").string();
    for (const std::string levels :
         {"root", "all", "per-level", "around --clusters 9", "significant"}) {
        const std::string base = (folder / "c.cnl").string();
        ASSERT_EQ(
            vorl("cluster -q " + net + " --levels " + levels + " -o " + base + " --table " + table)
                .code,
            0);
        std::set<std::string> found;  // "level cluster node", as far as files tell of levels
        std::map<std::pair<std::string, std::string>, double> shares;
        const bool several = levels.starts_with("per") || levels.starts_with("around");
        for (const auto& row : rowsOf(contents(table))) {
            found.insert((several ? row.at(1) : "") + " " + row.at(2) + " " + row.at(0));
            shares[{row.at(1), row.at(0)}] += std::stod(row.at(3));
        }
        std::set<std::string> expected;
        const auto read = [&expected](const std::string& file, const std::string& level) {
            std::istringstream lines(contents(file));
            for (std::string line; std::getline(lines, line);) {
                if (line.starts_with('#')) continue;
                const std::string cluster = line.substr(0, line.find('>'));
                std::istringstream words(line.substr(line.find('>') + 1));
                for (std::string word; words >> word;)
                    expected.insert(level + " " + cluster + " " + word.substr(0, word.find(':')));
            }
        };
        if (several)
            for (const auto& entry : std::filesystem::directory_iterator(folder / "c")) {
                const std::string name = entry.path().stem().string();
                read(entry.path().string(), std::to_string(std::stoi(name.substr(2))));
            }
        else
            read(base, "");
        EXPECT_EQ(found, expected) << levels;
        if (levels == "root" || several) {
            for (const auto& [place, share] : shares)
                EXPECT_NEAR(share, 1, 1e-5) << levels << " " << place.second;
        }
        std::filesystem::remove_all(folder / "c");
    }
}

TEST(ClusterTable, IsReadBackAlikeInEveryForm) {
    const Folder folder;
    const std::string net = DATA + "lesmis.nse";
    std::set<std::string> measures;
    for (const char* name : {"t.tsv", "t.csv", "t.json"}) {
        const std::string table = (folder / name).string();
        ASSERT_EQ(vorl("cluster -q " + net + " --levels per-level --table " + table).code, 0);
        const Outcome run = vorl("evaluate --levels --json " + net + " " + table);
        ASSERT_TRUE(contains(run.out, "\"levels\": [{")) << run.err;
        measures.insert(run.out.substr(run.out.find("\"levels\"")));
        const Outcome same = vorl("compare --json " + table + " - < " + table);
        EXPECT_EQ(same.code, 0) << same.err;
    }
    EXPECT_EQ(measures.size(), 1u);
}

TEST(ClusterTable, GoesWhereItsNameTells) {
    const Folder folder;
    const std::string net =
        folder.write("net.csv", "from,to\nAnn,Bob\nBob,\"C, D\"\n\"C, D\",Ann\n");
    const std::string text = vorl("cluster -q --table - " + net).out;
    EXPECT_EQ(text.substr(0, text.find("\nBob")), "node\tlevel\tcluster\tshare\nAnn\t0\t0\t1");
    const auto written = [&](const std::string& name) {
        const std::string file = (folder / name).string();
        const Outcome run = vorl("cluster --json " + net + " --table " + file);
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_TRUE(contains(run.out, "\"files\": [\"" + file + "\"]")) << run.out;
        return contents(file);
    };
    EXPECT_EQ(written("t.tsv"), text);
    EXPECT_TRUE(written("t.tsv.gz").starts_with("\x1F\x8B"));
    EXPECT_TRUE(contains(written("t.csv"), "\n\"C, D\",0,0,1\n"));
    EXPECT_TRUE(contains(written("t.json"),
                         "{\"node\": \"C, D\", \"level\": 0, \"cluster\": 0, \"share\": 1}\n"));
    ASSERT_EQ(
        vorl("cluster -q --gamma 0.5,1 " + net + " --table " + (folder / "g.csv.gz").string()).code,
        0);
    EXPECT_TRUE(std::filesystem::exists(folder / "g_gamma_0.5.csv.gz"));
    for (const char* words : {"--table - --json", "--table - --gamma 0.5,1", "--table x -o x",
                              "--table x --shares none", "--table ''"})
        EXPECT_EQ(vorl("cluster " + net + " " + words).code, 2) << words;
    EXPECT_EQ(vorl("cluster " + net + " --table " + net).code, 2);
}

}  // namespace
}  // namespace vorl::test
