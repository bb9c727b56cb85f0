// Names of formats, owners of streams, folders and the check of parsed numbers.
#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/parse_number.hpp>

#include "support/folder.hpp"
#include "support/trace.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace vorl::test {
namespace {

TEST(FormatOfAFile, FollowsFromItsExtension) {
    const std::pair<const char*, FileFormat> cases[] = {
        {"a.rcg", FileFormat::RCG},
        {"a.hig", FileFormat::RCG},
        {"a.nse", FileFormat::NSE},
        {"a.nsl", FileFormat::NSE},
        {"a.ncol", FileFormat::NSE},
        {"a.ll", FileFormat::NSE},
        {"a.nsa", FileFormat::NSA},
        {"dir.nse/a.nsa", FileFormat::NSA},
        {"a.cnl", FileFormat::UNKNOWN},
        {"a.rhb", FileFormat::UNKNOWN},
        {"a.RCG", FileFormat::UNKNOWN},
        {"dir.d/file", FileFormat::UNKNOWN},
        {"nse", FileFormat::UNKNOWN},
        {"a.nse.gz", FileFormat::UNKNOWN},
        // A part of the lists is enough, and the list of edges comes before that of arcs.
        {"a.g", FileFormat::RCG},
        {"a.l", FileFormat::NSE},
        {"a.s", FileFormat::NSE},
        {"a.sa", FileFormat::NSA},
        {"a.", FileFormat::RCG},
        {"a.g h", FileFormat::RCG},
        {"a.e n", FileFormat::NSE},
    };
    for (const auto& [name, format] : cases) EXPECT_EQ(inpFileFmt(name), format) << name;
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
    const std::string words = "Invalid format of val or out of range conversion of '";
    EXPECT_EQ(errorOf<std::invalid_argument>([] {
                  validateVal<unsigned>(4294967296ull, "4294967296, Edges: 12", false, nullptr);
              }),
              words + "4294967296, Edges: 12' with the value = 4294967296\n");
    EXPECT_EQ(errorOf<std::invalid_argument>([] {
                  validateVal<unsigned>(7ul, "7abcdefghijklmnopqrstuvwxyz", true, "a reason");
              }),
              words + "7abcdefghijklmnopqrstu' with the value = 7: a reason\n");
    EXPECT_EQ(
        errorOf<std::invalid_argument>([] { validateVal<float>(0.5f, "1/2", true, nullptr); }),
        words + "1/2' with the value = 0.500000\n");
}

}  // namespace
}  // namespace vorl::test
