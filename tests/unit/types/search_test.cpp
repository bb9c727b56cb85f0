// Search and insertion in ordered vectors.
#include <vorl/types/link.hpp>
#include <vorl/types/search.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace vorl {
namespace {

int compare(int a, int b) { return a < b ? -1 : a > b; }

/// 0, 2, 4, ... of the given number.
std::vector<int> evens(int count) {
    std::vector<int> els(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) els[static_cast<std::size_t>(i)] = 2 * i;
    return els;
}

/// The elements that a search looks at.
std::vector<int> probes(const std::vector<int>& els, int val) {
    std::vector<int> seen;
    findPlace(els.begin(), els.end(), val, [&](int el, int sought) {
        seen.push_back(el);
        return compare(el, sought);
    });
    return seen;
}

TEST(Search, ScansTenElementsAndBisectsEleven) {
    EXPECT_EQ(probes(evens(10), 8), (std::vector{0, 2, 4, 6, 8}));
    EXPECT_EQ(probes(evens(11), 18), (std::vector{10, 16, 20, 18}));
    EXPECT_EQ(probes(evens(11), 10), (std::vector{10}));
    EXPECT_EQ(probes(evens(12), 1), (std::vector{12, 6, 2, 0}));
}

TEST(Search, FindsEachElementAndEachGapAtAllLengths) {
    for (int count = 0; count < 40; ++count) {
        const std::vector<int> els = evens(count);
        for (int val = -1; val <= 2 * count; ++val) {
            const auto expected = std::lower_bound(els.begin(), els.end(), val);
            EXPECT_EQ(findPlace(els.begin(), els.end(), val, compare), expected);
            EXPECT_EQ(binary_ifind(els.begin(), els.end(), val, compare), expected);
            if (std::binary_search(els.begin(), els.end(), val)) continue;
            EXPECT_EQ(insorted(els, val, compare), expected);
            EXPECT_EQ(insortedLight(els, val, compare), expected);
        }
    }
}

TEST(Search, InsortedCountsTheRangeBehindTheFront) {
    std::vector<int> seen;
    const auto recorded = [&](int el, int sought) {
        seen.push_back(el);
        return compare(el, sought);
    };
    const auto probesOf = [&](int count, int val) {
        seen.clear();
        const std::vector<int> els = evens(count);
        insorted(els, val, recorded);
        seen.pop_back();  // the check of uniqueness
        return seen;
    };
    EXPECT_EQ(probesOf(11, 5), (std::vector{0, 2, 4, 6}));
    EXPECT_EQ(probesOf(12, 5), (std::vector{0, 12, 6, 4}));
    EXPECT_EQ(probesOf(12, -1), (std::vector{0}));
}

TEST(SearchDeathTest, InsortedRefusesRepeats) {
    std::vector<int> els = evens(12);
    for (int val : {0, 2, 22}) {
        EXPECT_DEATH(insorted(els, val, compare), "insorted\\(\\), elements must be unique");
        EXPECT_DEATH(insortedLight(els, val, compare),
                     "insortedLight\\(\\), elements must be unique");
    }
}

TEST(Search, ByAddress) {
    std::vector<int> items(25);
    for (std::size_t count : {0u, 3u, 10u, 11u, 25u}) {
        std::vector<int*> ptrs;
        for (std::size_t i = 1; i < count; i += 2) ptrs.push_back(&items[i]);
        for (std::size_t i = 0; i < items.size(); ++i) {
            EXPECT_EQ(holds(ptrs, &items[i]), i % 2 == 1 && i < count);
            EXPECT_EQ(findItem(ptrs.begin(), ptrs.end(), &items[i]) - ptrs.begin(),
                      static_cast<std::ptrdiff_t>(std::min(i / 2, ptrs.size())));
        }
    }
    EXPECT_EQ(bsVal(&items[0], &items[1]), -1);
    EXPECT_EQ(bsVal(&items[1], &items[1]), 0);
    EXPECT_EQ(bsVal(&items[2], &items[1]), 1);
}

TEST(BestGain, KeepsTheItemsOfATie) {
    const auto best = [](std::initializer_list<double> gains, Size n) {
        std::pair<std::vector<int>, AccWeight> result({}, GAIN_NONE);
        int item = 0;
        for (double gain : gains) accBest(result.first, result.second, item++, gain, n);
        return result;
    };
    using Result = std::pair<std::vector<int>, AccWeight>;
    EXPECT_EQ(best({1, 1, 2}, 1), Result({2}, 2));
    EXPECT_EQ(best({2, 1}, 1), Result({0}, 2));
    EXPECT_EQ(best({2, 1, 2, 2}, 1), Result({0, 2, 3}, 2));
    // A tie doesn't move the best gain, so that a row of small steps can't creep upward.
    EXPECT_EQ(best({1, 1 + 1e-9, 1 - 1e-9}, 1), Result({0, 1, 2}, 1));
    EXPECT_EQ(best({1, 1 + 0x1p-23, 1 + 0x1p-22}, 1), Result({2}, 1 + 0x1p-22));
    EXPECT_EQ(best({1, 1 + 0x1p-23, 1 + 0x1p-22}, 2), Result({2}, 1 + 0x1p-22));
    EXPECT_EQ(best({1, 1 + 0x1p-23, 1 + 0x1p-22}, 1000), Result({0, 1, 2}, 1));
}

TEST(WeightOrder, LeavesTiesAlone) {
    std::vector<InpLink<true>> links;
    for (Id id = 0; id < 6; ++id) links.emplace_back(id, id % 2 == 0 ? 2.0f : 1.0f);
    links[3].weight = std::nextafter(1.0f, 0.0f);
    std::stable_sort(links.begin(), links.end(), cmpObjsWeight<InpLink<true>>);
    std::vector<Id> ids;
    for (const InpLink<true>& ln : links) ids.push_back(ln.id);
    EXPECT_EQ(ids, (std::vector<Id>{1, 3, 5, 0, 2, 4}));
}

}  // namespace
}  // namespace vorl
