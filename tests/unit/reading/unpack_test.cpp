#include "cli/packed.hpp"
#include "cli/program.hpp"
#include "support/trace.hpp"

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/text_file.hpp>
#include <vorl/reading/unpack.hpp>

#include <gtest/gtest.h>

namespace vorl {
namespace {

struct Case {
    Packing packing;
    std::string (*pack)(const std::string&);
};

const std::string KARATE = VORL_DATA_DIR "/karate.nse";
constexpr std::size_t MOST = 1 << 24;

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

TEST(Unpack, SizeIsLimited) {
    const std::string zeros(1'000'000, '0');
    for (const Case& c : CASES) {
        const std::string packed = c.pack(zeros);
        EXPECT_EQ(unpack(packed, c.packing, "f", zeros.size()).size(), zeros.size());
        const std::string error =
            test::errorOf<InputError>([&] { unpack(packed, c.packing, "file", zeros.size() - 1); });
        EXPECT_TRUE(test::contains(error, "unpacks to more than 976.6 KiB")) << error;
    }
}

TEST(TextFile, EndlessOnesAreRefused) {
    EXPECT_EQ(test::errorOf<InputError>([] { TextFile("/dev/zero", 1'000'000); }),
              "/dev/zero: there are more than 976.6 KiB, which is too much here");
    const std::size_t size = test::contents(KARATE).size();
    EXPECT_EQ(TextFile(KARATE, size).text(), test::contents(KARATE));
    EXPECT_THROW(TextFile(KARATE, size - 1), InputError);
    EXPECT_GT(textLimit(), std::size_t{1} << 26);
}

}  // namespace
}  // namespace vorl
