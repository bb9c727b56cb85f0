// Lists of links that move, and what their links tell of each other meanwhile.
#include "support/networks.hpp"

#include <gtest/gtest.h>
#include <vorl/hierarchy/link_lists.hpp>

#include <map>
#include <set>

namespace vorl::test {
namespace {

using LinkT = TrackedLink<false>;
using Pairs = std::map<std::pair<std::uint32_t, std::uint32_t>, AccWeight>;

/// Checks that the lists hold the pairs, once from each end, and that back links are found.
void expectPairs(const LinkLists<LinkT>& lists, std::uint32_t seats, const Pairs& pairs) {
    std::size_t found = 0;
    for (std::uint32_t seat = 0; seat < seats; ++seat) {
        std::set<std::uint32_t> dests;
        const auto links = lists[seat];
        for (std::uint32_t i = 0; i < links.size(); ++i) {
            const LinkT& ln = links[i];
            if (ln.isGone()) continue;
            const auto pair = pairs.find(std::minmax(seat, ln.seat));
            ASSERT_NE(pair, pairs.end()) << seat << " to " << ln.seat;
            EXPECT_EQ(ln.weight, pair->second);
            EXPECT_EQ(lists.mate(ln).seat, seat);
            EXPECT_EQ(lists.mate(ln).mate, i);
            EXPECT_TRUE(dests.insert(ln.seat).second) << "twice in the list: " << ln.seat;
        }
        EXPECT_EQ(dests.size(), lists.count(seat));
        found += dests.size();
    }
    EXPECT_EQ(found, 2 * pairs.size());
}

std::uint32_t placeOf(const LinkLists<LinkT>& lists, std::uint32_t seat, std::uint32_t dest) {
    const auto links = lists[seat];
    std::uint32_t place = 0;
    while (links[place].seat != dest) ++place;
    return place;
}

void add(LinkLists<LinkT>& lists, std::uint32_t a, std::uint32_t b, AccWeight weight) {
    const std::uint32_t place = lists.newPlace(a);
    lists.at(a, place) = {{b, 0}, weight};
    const std::uint32_t back = lists.newPlace(b);
    lists.at(b, back) = {{a, place}, weight};
    lists.at(a, place).mate = back;
}

void removePair(LinkLists<LinkT>& lists, std::uint32_t a, std::uint32_t b) {
    const std::uint32_t place = placeOf(lists, a, b);
    lists.remove(b, lists.at(a, place).mate);
    lists.remove(a, place);
}

TEST(LinkLists, KeepBackLinksHoweverListsMove) {
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
        Random rnd(seed);
        LinkLists<LinkT> lists;
        std::uint32_t seats = 2 + rnd.below(20);
        // Without room for all of them, lists outgrow the block again and again.
        lists.reserveSeats(seats);
        lists.reserveLinks(rnd.below(3) * seats);
        for (std::uint32_t i = 0; i < seats; ++i) lists.addSeat();
        Pairs pairs;
        for (int step = 0; step < 3000; ++step) {
            const auto ends = std::minmax({rnd.below(seats), rnd.below(seats)});
            const auto pair = pairs.find(ends);
            // Phases of growth and of decline, so that blocks are given back, too.
            const bool grows = step / 500 % 2 == 0;
            if (ends.first != ends.second && pair == pairs.end() && (grows || rnd.chance(0.2))) {
                add(lists, ends.first, ends.second, step);
                pairs.emplace(ends, step);
            } else if (pair != pairs.end() && (!grows || rnd.chance(0.2))) {
                removePair(lists, ends.first, ends.second);
                pairs.erase(pair);
            } else if (rnd.chance(0.02)) {
                const std::uint32_t seat = rnd.below(seats);
                for (auto it = pairs.begin(); it != pairs.end();) {
                    const auto [a, b] = it->first;
                    if (a == seat || b == seat) {
                        removePair(lists, a, b);
                        it = pairs.erase(it);
                    } else {
                        ++it;
                    }
                }
                lists.clear(seat);
            } else if (rnd.chance(0.02)) {
                lists.addSeat();
                ++seats;
            } else if (rnd.chance(0.1)) {
                lists.reserveMore(rnd.below(seats), rnd.below(40));
            } else if (rnd.chance(0.02)) {
                lists.limitRoom();
            }
            if (lists.isHoley(ends.first)) lists.closeHoles(ends.first);
        }
        expectPairs(lists, seats, pairs);
        for (std::uint32_t seat = 0; seat < seats; ++seat) {
            lists.closeHoles(seat);
            EXPECT_EQ(lists[seat].size(), lists.count(seat)) << "a hole is left";
        }
        expectPairs(lists, seats, pairs);
        if (HasFailure()) FAIL() << "seed " << seed;
    }
}

TEST(LinkLists, KeepLinksWhereMemoryIsGivenBackAndTakenAgain) {
    LinkLists<LinkT> lists;
    constexpr std::uint32_t seats = 900;
    const auto weight = [](std::uint32_t a, std::uint32_t b) { return AccWeight{a + 7.0 * b}; };
    Pairs pairs;
    lists.reserveSeats(seats);
    lists.reserveLinks(400'000);
    for (std::uint32_t i = 0; i < seats; ++i) lists.addSeat();
    const auto fill = [&](std::uint32_t stride) {
        for (std::uint32_t a = 0; a < seats; ++a)
            for (std::uint32_t b = a + 1; b < seats; b += stride)
                if (pairs.emplace(std::pair(a, b), weight(a, b)).second)
                    add(lists, a, b, weight(a, b));
    };
    fill(6);
    for (auto it = pairs.begin(); it != pairs.end();) {
        const auto [a, b] = it->first;
        if (b % 50 == 0) {
            ++it;
        } else {
            removePair(lists, a, b);
            it = pairs.erase(it);
        }
    }
    for (std::uint32_t seat = 0; seat < seats; ++seat) lists.closeHoles(seat);
    // Moves the lists together, and fills what was given back.
    fill(5);
    expectPairs(lists, seats, pairs);
}

}  // namespace
}  // namespace vorl::test
