// Names of formats, owners of streams, folders and the check of parsed numbers.
#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/parse_number.hpp>

#include "support/folder.hpp"
#include "support/trace.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>
#include <vector>

namespace vorl::test {
namespace {

TEST(FormatOfAFile, FollowsFromItsExtension) {
    const std::pair<std::vector<const char*>, FileFormat> cases[] = {
        // A part of the lists is enough, and the list of edges comes before that of arcs.
        {{"a.rcg", "a.hig", "a.g", "a.", "a.g h"}, FileFormat::RCG},
        {{"a.nse", "a.nsl", "a.ncol", "a.ll", "a.l", "a.s", "a.e n"}, FileFormat::NSE},
        {{"a.nsa", "dir.nse/a.nsa", "a.sa"}, FileFormat::NSA},
        {{"a.cnl", "a.rhb", "a.RCG", "dir.d/file", "nse", "a.nse.gz"}, FileFormat::UNKNOWN},
    };
    for (const auto& [names, format] : cases)
        for (const char* name : names) EXPECT_EQ(inpFileFmt(name), format) << name;
}

bool isOpen(int descriptor) { return fcntl(descriptor, F_GETFD) != -1; }

TEST(FileOwner, ClosesWhatItMay) {
    std::FILE* const first = std::fopen("/dev/null", "r");
    std::FILE* const second = std::fopen("/dev/null", "r");
    const int firstFd = fileno(first);
    const int secondFd = fileno(second);
    {
        FileWrapper file(first);
        EXPECT_EQ(file.fdescr(), first);
        EXPECT_EQ(file.reset(second, false), 0);
        EXPECT_FALSE(isOpen(firstFd));
        EXPECT_EQ(file.reset(), 0);
        EXPECT_TRUE(isOpen(secondFd));
        file.reset(second);
        EXPECT_EQ(file.release(), second);
        EXPECT_EQ(file.fdescr(), nullptr);
    }
    EXPECT_TRUE(isOpen(secondFd));
    { const FileWrapper file(second); }
    EXPECT_FALSE(isOpen(secondFd));
}

TEST(FileOwner, MovesWithItsFlag) {
    FileWrapper kept(std::fopen("/dev/null", "r"), false);
    std::FILE* const stream = kept.fdescr();
    FileWrapper moved(std::move(kept));
    EXPECT_EQ(moved.fdescr(), stream);
    FileWrapper other(std::fopen("/dev/null", "r"));
    const int closed = fileno(other.fdescr());
    other = std::move(moved);
    EXPECT_FALSE(isOpen(closed));
    EXPECT_EQ(other.fdescr(), stream);
    other.reset();
    EXPECT_TRUE(isOpen(fileno(stream)));
    std::fclose(stream);
}

TEST(FileOwner, TellsThatClosingFailed) {
    FileWrapper file(std::fopen("/dev/full", "w"));
    std::fputs("lost", file.fdescr());
    EXPECT_EQ(file.reset(), EOF);
}

TEST(TargetFolder, IsMadeOrTold) {
    const Folder folder;
    Trace trace;
    const std::string deep = (folder / "a/b/c").string();
    ensureDir(deep);
    EXPECT_EQ(trace.take(), "");
    EXPECT_TRUE(std::filesystem::is_directory(deep));
    const std::string file = folder.write("a/b/c/file", "content");
    ensureDir(deep);
    EXPECT_EQ(trace.take(),
              "  > WARNING ensureDir(), the target base dir already exists, the content will be "
              "rewritten: " +
                  deep + "\n");
    EXPECT_EQ(contents(file), "content");
    ensureDir(file);
    EXPECT_EQ(trace.take(), "ERROR ensureDir(), target directory '" + file +
                                "' already exists as non-directory path\n");
    ensureDir(file + "/under");
    EXPECT_EQ(trace.take(), "ERROR ensureDir(), target directory '" + file +
                                "/under' can't be created: Not a directory\n");
}

TEST(ParsedNumber, IsRefusedWithItsTextAndValue) {
    validateVal<unsigned>(4294967295ul, "4294967295", false, nullptr);
    validateVal<unsigned long>(18446744073709551615ull, nullptr, false, "unused");
    const auto refused = [](auto type, auto value, const char* text, bool isBad,
                            const char* reason) {
        return errorOf<std::invalid_argument>(
            [&] { validateVal<decltype(type)>(value, text, isBad, reason); });
    };
    EXPECT_EQ(refused(0u, 4294967296ull, "4294967296, Edges: 12", false, nullptr),
              numberFault("4294967296, Edges: 12", "4294967296\n"));
    EXPECT_EQ(refused(0u, 7ul, "7abcdefghijklmnopqrstuvwxyz", true, "a reason"),
              numberFault("7abcdefghijklmnopqrstu", "7: a reason\n"));
    EXPECT_EQ(refused(0.f, 0.5f, "1/2", true, nullptr), numberFault("1/2", "0.500000\n"));
}

}  // namespace
}  // namespace vorl::test
