// The commands shown in README and docs give the shown output, and the docs tell what is there.
#include "cli/program.hpp"

#include <gtest/gtest.h>

#include <regex.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace vorl::test {

namespace {

namespace fs = std::filesystem;

struct Example {
    int line;
    std::string command;
    std::string output;
};

/// The lines "$ command" of fenced blocks, with what stands below each of them.
std::vector<Example> examples(const fs::path& file) {
    std::vector<Example> result;
    std::ifstream in(file);
    bool fenced = false, shown = false;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (line.starts_with("```")) {
            fenced = !fenced;
            shown = false;
        } else if (fenced && line.starts_with("$ ")) {
            result.push_back({number, line.substr(2), ""});
            shown = true;
        } else if (shown) {
            result.back().output += line + "\n";
        }
    }
    return result;
}

/// Whether the test can run it: not what builds, installs or calls other programs.
bool runnable(const Example& example) {
    static const std::set<std::string> PROGRAMS{
        "vorl", "cat", "head", "tail",   "sed",
        "grep", "ls",  "gzip", "sort",   "wc",
        "cut",  "awk", "for",  "printf", "docs/pictures/draw_network.py"};
    return PROGRAMS.contains(example.command.substr(0, example.command.find(' ')));
}

/// The text with a sign in place of each match of an extended regular expression.
std::string replaced(const std::string& text, const char* pattern) {
    regex_t regex;
    EXPECT_EQ(regcomp(&regex, pattern, REG_EXTENDED), 0) << pattern;
    std::string result;
    regmatch_t match;
    const char* rest = text.c_str();
    while (regexec(&regex, rest, 1, &match, 0) == 0) {
        result.append(rest, static_cast<std::size_t>(match.rm_so)) += '#';
        rest += match.rm_eo;
    }
    regfree(&regex);
    return result + rest;
}

/// What differs between runs is left out: times, memory and the revision.
std::string masked(std::string text) {
    for (const char* pattern :
         {"[0-9.]+(e-[0-9]+)? s (reading|clustering|writing)", "memory [0-9.]+ [KMG]iB",
          "[0-9.]+(e-[0-9]+)? s [(]similarity [^)]*[)]", "r-[0-9]+([.][0-9a-f]+)?",
          "\"seconds\": *[{][^}]*[}]", "\"peak_memory_bytes\": *[0-9]+"})
        text = replaced(text, pattern);
    return text;
}

std::vector<fs::path> documents() {
    const fs::path source = fs::path(VORL_DATA_DIR).parent_path();
    std::vector<fs::path> result{source / "README.md"};
    for (const auto& entry : fs::directory_iterator(source / "docs"))
        if (entry.path().extension() == ".md") result.push_back(entry.path());
    return result;
}

class Docs : public testing::TestWithParam<fs::path> {};

TEST_P(Docs, ShownCommandsGiveTheShownOutput) {
    const Folder folder;
    fs::create_directory(folder / "work");
    const fs::path source = fs::path(VORL_DATA_DIR).parent_path();
    for (const char* name : {"data", "docs"})
        fs::create_directory_symlink(source / name, folder / "work" / name);
    const std::string before = "cd " + (folder / "work").string() + " && export LC_ALL=C PATH=" +
                               fs::path(VORL_BINARY).parent_path().string() + ":$PATH && ( ";
    for (const Example& example : examples(GetParam())) {
        if (!runnable(example)) continue;
        const std::string run =
            before + example.command + " ) >" + (folder / "out").string() + " 2>&1";
        if (std::system(run.c_str()) == -1) FAIL() << run;
        EXPECT_EQ(masked(contents(folder / "out")), masked(example.output))
            << GetParam().filename() << ":" << example.line << ": " << example.command;
    }
    for (const auto& picture : fs::directory_iterator(source / "docs/pictures")) {
        const fs::path drawn = folder / "work" / picture.path().filename();
        if (!fs::exists(drawn)) continue;
        EXPECT_EQ(contents(drawn), contents(picture.path())) << drawn;
    }
}

TEST(Formats, TellEachNameOfTheJsonDocuments) {
    const Folder folder;
    const std::string clusters = (folder / "c.cnl").string();
    const std::string karate = VORL_DATA_DIR "/karate.nse";
    std::string json;
    for (const std::string& arguments :
         {"cluster " + karate + " --levels root -o " + clusters,
          "cluster " + karate + " --gamma 1,2", "communities " + karate, "info " + karate,
          "evaluate " + karate + " " + clusters, "compare " + clusters + " " + clusters}) {
        const Outcome run = vorl(arguments + " --json");
        ASSERT_EQ(run.code, 0) << run.err;
        json += run.out;
    }
    const std::string text =
        contents(std::filesystem::path(VORL_DATA_DIR).parent_path() / "docs/formats.md");
    const std::regex name("\"([a-z_0-9]+)\":");
    for (std::sregex_iterator it(json.begin(), json.end(), name), end; it != end; ++it)
        EXPECT_TRUE(contains(text, "`" + it->str(1) + "`")) << it->str(1);
}

INSTANTIATE_TEST_SUITE_P(All, Docs, testing::ValuesIn(documents()), [](const auto& parameter) {
    std::string name = parameter.param.stem();
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
});

}  // namespace

}  // namespace vorl::test
