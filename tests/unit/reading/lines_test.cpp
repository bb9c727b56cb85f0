#include "support/trace.hpp"

#include <vorl/reading/lines.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace vorl {
namespace {

/// A text that comes in pieces of one size.
class Pieces : public Source {
public:
    Pieces(std::string_view text, std::size_t size) : m_text(text), m_size(size) {}

    std::size_t read(char* data, std::size_t most) override {
        return m_text.read(data, std::min(most, m_size));
    }

private:
    TextSource m_text;
    std::size_t m_size;
};

std::vector<std::string> linesOf(std::string_view text, std::size_t piece) {
    Pieces source(text, piece);
    Lines lines(source, "f");
    std::vector<std::string> result;
    while (lines.next()) {
        result.emplace_back(lines.line());
        EXPECT_EQ(lines.number(), result.size());
    }
    EXPECT_FALSE(lines.next());
    EXPECT_EQ(lines.bytes(), text.size());
    return result;
}

TEST(Lines, ComeAsPiecesOfAnyLength) {
    std::string text(1 << 20, 'x');
    text[1000] = '\n';
    Pieces source(text, 300);
    Lines lines(source, "f", 10'000);
    ASSERT_TRUE(lines.next());
    std::string all(lines.line());
    all += '\n';
    for (std::string_view piece = lines.nextPiece(); !piece.empty(); piece = lines.nextPiece())
        all += piece;
    EXPECT_EQ(all, text);
    text[text.size() - 5] = '\0';
    Pieces binary(text, 300);
    Lines told(binary, "f", 10'000);
    const auto readOn = [&] {
        while (!told.nextPiece().empty()) {
        }
    };
    EXPECT_EQ(test::errorOf<InputError>(readOn),
              "f:2: a NUL byte: the file is binary, lines of text are expected");
}

TEST(Lines, AreTheSameHoweverTheyCome) {
    using Texts = std::vector<std::string>;
    const std::string wide(600'000, 'x');
    const std::pair<std::string, Texts> cases[] = {
        {"", {}},
        {"\n", {""}},
        {"a", {"a"}},
        {"a\nb\n", {"a", "b"}},
        {"a\r\n\r\n\nb\r", {"a", "", "", "b"}},
        {"a\rb\r\r\n", {"a\rb\r"}},
        {"\xEF\xBB\xBF", {}},
        {"\xEF\xBB\xBF\na\xEF\xBB\xBF", {"", "a\xEF\xBB\xBF"}},
        {"\xEF\xBB", {"\xEF\xBB"}},
        {"a\n" + wide + "\n" + wide + "b", {"a", wide, wide + "b"}},
    };
    for (const auto& [text, expected] : cases)
        for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::size_t{1} << 30})
            EXPECT_EQ(linesOf(text, text.size() > 1000 && piece == 1 ? 4099 : piece), expected);
}

TEST(Lines, ComeAgainWhereTheyAreHeld) {
    std::string text;
    for (int i = 0; i < 200'000; ++i) text += std::to_string(i) + "\n";
    TextSource source(text);
    Lines lines(source, "f");
    lines.hold();
    for (int i = 0; i < 100'000; ++i) ASSERT_TRUE(lines.next());
    lines.rewind(true);
    for (int i = 0; i < 150'000; ++i) ASSERT_TRUE(lines.next());
    lines.rewind(false);
    for (int i = 0; i < 200'000; ++i) {
        ASSERT_TRUE(lines.next());
        ASSERT_EQ(lines.line(), std::to_string(i));
    }
    EXPECT_FALSE(lines.next());
    EXPECT_EQ(lines.number(), 200'000);
}

TEST(Lines, FaultsAreToldByLine) {
    const auto fault = [](std::string_view text, std::size_t longest) {
        return test::errorOf<InputError>([&] {
            TextSource source(text);
            Lines lines(source, "f", longest);
            while (lines.next()) {
            }
        });
    };
    EXPECT_EQ(fault({"a\nb\0c\n", 6}, 100),
              "f:2: a NUL byte: the file is binary, lines of text are expected");
    EXPECT_EQ(fault({"\xFF\xFE"
                     "1\0\n\0",
                     6},
                    100),
              "f:1: a NUL byte: the file is in UTF-16, text in UTF-8 is expected");
    // A device without lines.
    EXPECT_EQ(test::errorOf<InputError>([] {
                  const auto source = openSource("/dev/zero");
                  Lines(*source, "/dev/zero").next();
              }),
              "/dev/zero:1: a NUL byte: the file is binary, lines of text are expected");
    EXPECT_EQ(fault("a\n" + std::string(2'000'000, 'x'), 1'000'000),
              "f:2: the line has more than 976.6 KiB, which is too much here");
}

TEST(InputErrors, TellTheirPartsApart) {
    const InputError error(
        InputError::Parts{"f", 3, "the weight", "\"x\"", "a number is expected"});
    EXPECT_STREQ(error.what(), "f:3: the weight is \"x\", a number is expected");
    const InputError copy = error;
    EXPECT_EQ(copy.file() + copy.wrong() + copy.found() + copy.expected(),
              "fthe weight\"x\"a number is expected");
    EXPECT_EQ(copy.line(), 3);
    EXPECT_STREQ(InputError("alone").what(), "alone");
}

}  // namespace
}  // namespace vorl
