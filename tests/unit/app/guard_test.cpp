// What the program leaves behind when an assertion of the library fails.
#include "app/guard.hpp"
#include "app/errors.hpp"
#include "app/output_tree.hpp"
#include "support/folder.hpp"

#include <vorl/types/assert.hpp>

#include <gtest/gtest.h>

namespace vorl::app {
namespace {

TEST(GuardDeathTest, EndsAsAFaultWithNothingHalfWritten) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const test::Folder folder;
    const auto fail = [&] {
        guardAssertions();
        OutputTree files((folder / "net.cnl").string());
        std::ofstream(files.path()) << "half";
        std::printf("half");
        VORL_ASSERT(files.path().empty(), "half(), the file must be whole");
    };
    EXPECT_EXIT(fail(), testing::ExitedWithCode(INPUT_FAULT),
                "^vorl: .*half\\(\\), the file must be whole \\(.*guard_test.cpp:.*please report");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
}  // namespace vorl::app
