#include <vorl/types/membership_table.hpp>

#include <gtest/gtest.h>

#include <stdexcept>

namespace vorl {
namespace {

TEST(MembershipTable, NamesComeBackOrAreRefused) {
    Labels labels;
    const Id plain = labels.add("a\"\tb");
    const Id latin = labels.add("\xFC");
    MembershipTable tabs(TableForm::TABS, "cluster", true, &labels);
    tabs.add(7, 3, 0.5f, 2);
    tabs.add(latin, 3, 1);
    EXPECT_EQ(tabs.take(), "node\tlevel\tcluster\tshare\n7\t2\t3\t0.5\n\xFC\t0\t3\t1\n");
    MembershipTable json(TableForm::JSON, "community", false, &labels);
    json.add(plain, 3, 0.25f);
    EXPECT_EQ(json.take(), "{\"node\": \"a\\\"\\u0009b\", \"community\": 3, \"share\": 0.25}\n");
    // Another character in its place would make one node of several.
    EXPECT_THROW(json.add(latin, 3, 1), std::invalid_argument);
}

}  // namespace
}  // namespace vorl
