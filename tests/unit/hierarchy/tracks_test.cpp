// What levels that touch only what changed add up in order.
#include "support/networks.hpp"

#include <gtest/gtest.h>
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>

namespace vorl::test {
namespace {

TEST(Tracks, TermsAreSortedByKeysOfAnySize) {
    Random rnd(1);
    Tracks<false, UnweightedLinks> tracks;
    for (const std::size_t count : {0u, 1u, 2u, 127u, 128u, 129u, 5000u})
        for (unsigned bits = 1; bits <= 32; ++bits) {
            tracks.terms.clear();
            for (std::uint32_t i = 0; i < count; ++i)
                tracks.terms.push_back({rnd.below(0xFFFFFFFF) >> (32 - bits), i, 0.5 * i});
            auto expected = tracks.terms;
            const auto isBelow = [](const auto& a, const auto& b) {
                return std::pair(a.key, a.seat) < std::pair(b.key, b.seat);
            };
            std::sort(expected.begin(), expected.end(), isBelow);
            tracks.sortTerms();
            // Keys that are the same have no order, which few bits are bound to give.
            const auto isKeyBelow = [](const auto& a, const auto& b) { return a.key < b.key; };
            ASSERT_TRUE(std::is_sorted(tracks.terms.begin(), tracks.terms.end(), isKeyBelow))
                << count << " terms of " << bits << " bits";
            std::sort(tracks.terms.begin(), tracks.terms.end(), isBelow);
            const auto isSame = [](const auto& a, const auto& b) {
                return a.key == b.key && a.seat == b.seat && a.weight == b.weight;
            };
            ASSERT_TRUE(std::equal(tracks.terms.begin(), tracks.terms.end(), expected.begin(),
                                   expected.end(), isSame))
                << count << " terms of " << bits << " bits";
        }
}

}  // namespace
}  // namespace vorl::test
