#include "cli/packed.hpp"
#include "cli/program.hpp"
#include "support/trace.hpp"

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/source.hpp>
#include <vorl/reading/unpack.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

namespace vorl {
namespace {

struct Case {
    Packing packing;
    std::string (*pack)(const std::string&);
};

const std::string KARATE = VORL_DATA_DIR "/karate.nse";
constexpr std::size_t MOST = 1 << 24;

std::string readAll(Source& source) {
    std::string text;
    char block[4096];
    while (const std::size_t count = source.read(block, sizeof block)) text.append(block, count);
    return text;
}

/// The unpacked text.
std::string unpack(std::string_view packed, Packing packing, const std::string& file,
                   std::size_t window) {
    return readAll(*unpacked(std::make_unique<TextSource>(packed), packing, file, window));
}

const Case CASES[] = {{Packing::GZIP, test::gzip}, {Packing::ZSTD, test::zstd}};

TEST(Unpack, NoDamageGoesUnnoticed) {
    const std::string text = test::contents(KARATE);
    for (const Case& c : CASES) {
        const std::string packed = c.pack(text);
        EXPECT_EQ(packingOf(packed), c.packing);
        EXPECT_EQ(unpack(packed, c.packing, "f", MOST), text);
        for (std::size_t size = 0; size < packed.size(); ++size)
            EXPECT_THROW(
                unpack(std::string_view(packed).substr(0, size), c.packing, "f", MOST) + "accepted",
                InputError)
                << size;
        for (std::size_t bit = 0; bit < 8 * packed.size(); ++bit) {
            std::string damaged = packed;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
            // Bits of the header that tell of no contents change nothing.
            try {
                EXPECT_EQ(unpack(damaged, c.packing, "f", MOST), text) << bit;
            } catch (const InputError&) {
            }
        }
    }
}

TEST(Unpack, PiecesAreJoined) {
    // Longer than the blocks that are unpacked at once.
    std::string text;
    for (int i = 0; i < 200'000; ++i) text += std::to_string(i) + "\n";
    for (const Case& c : CASES) {
        std::string packed;
        for (std::size_t begin = 0; begin < text.size(); begin += 99'999)
            packed += c.pack(text.substr(begin, 99'999)) + c.pack("");
        EXPECT_TRUE(unpack(packed, c.packing, "f", MOST) == text);
    }
}

TEST(Unpack, ZerosMayFillUpABlock) {
    const std::string packed = test::gzip("1 2\n") + std::string(700, '\0');
    EXPECT_EQ(unpack(packed, Packing::GZIP, "f", MOST), "1 2\n");
    EXPECT_THROW(unpack(packed + "1", Packing::GZIP, "f", MOST), InputError);
}

TEST(Unpack, WindowsMayBeAsLargeAsTheText) {
    // The head of a frame of unknown size with a window of 2 GiB, and one block, "1 2\n".
    const std::string head = std::string("\x28\xB5\x2F\xFD", 4) + '\0' + '\xA8';
    const std::string packed = head + std::string(
                                          "\x21\0\0"
                                          "1 2\n",
                                          7);
    EXPECT_EQ(unpack(packed, Packing::ZSTD, "f", std::size_t{1} << 32), "1 2\n");
    const std::string error =
        test::errorOf<InputError>([&] { unpack(packed, Packing::ZSTD, "f", MOST); });
    EXPECT_EQ(error,
              "f: the zstd data needs a window of more than 128.0 MiB, which is too much here");
}

TEST(Unpack, TextsNeedntFitIntoMemory) {
    // Ten thousand times as much as what is packed.
    const std::string zeros(100'000'000, '0');
    for (const Case& c : CASES) {
        const std::string packed = c.pack(zeros);
        const auto source = unpacked(std::make_unique<TextSource>(packed), c.packing, "f", MOST);
        char block[1000];
        std::size_t size = 0;
        while (const std::size_t count = source->read(block, sizeof block)) size += count;
        EXPECT_EQ(size, zeros.size());
    }
}

TEST(Sources, GiveTheSameBytes) {
    const std::string text = test::contents(KARATE);
    EXPECT_EQ(readAll(*openSource(KARATE)), text);
    EXPECT_EQ(openSource(KARATE)->size(), text.size());
    TextSource memory(text);
    EXPECT_EQ(readAll(memory), text);
    std::istringstream stream(text);
    StreamSource streamed(stream, "stream");
    EXPECT_EQ(readAll(streamed), text);
    const test::Folder folder;
    for (const Case& c : CASES)
        EXPECT_EQ(readAll(*openSource(folder.write("packed", c.pack(text)))), text);
    // Shorter than what tells of a packing.
    for (const char* few : {"", "1", "\x1F", "\x28\xB5"})
        EXPECT_EQ(readAll(*openSource(folder.write("few", few))), few);
    EXPECT_THROW(openSource(folder.path().string()), InputError);
}

}  // namespace
}  // namespace vorl
