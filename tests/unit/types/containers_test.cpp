// The containers of ids, items and names against those of the standard library, and the arena's
// measure of places.
#include "support/networks.hpp"

#include <vorl/types/arena.hpp>
#include <vorl/types/id_numbers.hpp>
#include <vorl/types/item_map.hpp>
#include <vorl/types/labels.hpp>
#include <vorl/types/large_pages.hpp>

#include <gtest/gtest.h>

#include <unordered_map>

namespace vorl::test {
namespace {

/// Ids as files have them: dense, with gaps, all over the range, or first far and later near.
Id nextId(Random& rnd, int kind, Id step) {
    switch (kind) {
        case 0: return step + rnd.below(3);
        case 1: return 40 * rnd.below(4000);
        case 2: return rnd.below(ID_NONE);
        case 3: return step < 3000 ? 5000 + 7 * rnd.below(9000) : rnd.below(30000);
        default: return rnd.chance(0.5) ? rnd.below(2000) : ID_NONE - 1 - rnd.below(2000);
    }
}

TEST(IdNumbers, CountIdsInTheOrderInWhichTheyCome) {
    Random rnd(67);
    for (int round = 0; round < 15; ++round) {
        IdNumbers numbers(round % 3 == 0 ? rnd.below(20000) : 0);
        std::unordered_map<Id, Id> expected;
        std::vector<Id> ids;
        Size skipped = 0;
        for (Id step = 0; step < 8000; ++step) {
            const Id id = nextId(rnd, round % 5, step);
            const auto held = expected.find(id);
            ASSERT_EQ(numbers.find(id), held == expected.end() ? ID_NONE : held->second) << id;
            if (rnd.chance(0.01)) {
                numbers.skip();
                ++skipped;
            }
            const auto next = static_cast<Id>(expected.size() + skipped);
            const Id number = expected.try_emplace(id, next).first->second;
            ASSERT_EQ(rnd.chance(0.5) ? numbers.number(id) : numbers.number(id, ids), number) << id;
            ASSERT_EQ(numbers.size(), expected.size() + skipped);
        }
        // Tables that were widened and moved meanwhile still hold all of them, and no others.
        for (const auto& [id, number] : expected) ASSERT_EQ(numbers.find(id), number) << id;
        for (int i = 0; i < 5000; ++i) {
            const Id id = nextId(rnd, (round + i) % 5, rnd.below(9000));
            ASSERT_EQ(numbers.find(id) != ID_NONE, expected.contains(id)) << id;
        }
    }
}

TEST(ItemMap, KeepsTheOrderOfInsertionThroughAnyUse) {
    Random rnd(71);
    std::vector<std::pair<int, double>> items(5000);
    using Item = std::pair<int, double>;
    ItemMap<Item, int> map;
    std::vector<std::pair<Item*, int>> expected;
    std::unordered_map<Item*, std::size_t> places;
    for (int step = 0; step < 60000; ++step) {
        // Many, then few at a time, so that what is too wide gets narrow.
        Item* const item = &items[rnd.below(step < 30000 ? 5000 : 12)];
        const auto held = places.find(item);
        const auto found = map.find(item);
        ASSERT_EQ(found == map.end(), held == places.end());
        ASSERT_TRUE(held == places.end() || *found == expected[held->second]);
        const bool isNew = places.try_emplace(item, expected.size()).second;
        if (isNew) expected.emplace_back(item, 0);
        int& value = expected[places[item]].second;
        if (step % 3 == 0) {
            map[item] += step;
            value += step;
        } else {
            const auto [kept, inserted] = map.insert(item, step);
            ASSERT_EQ(inserted, isNew);
            if (isNew) value = step;
            ASSERT_EQ(kept, value);
        }
        ASSERT_EQ(map.size(), expected.size());
        if (step < 30000 ? step % 14000 == 13999 : rnd.chance(0.05)) {
            ASSERT_TRUE(std::equal(map.begin(), map.end(), expected.begin(), expected.end()));
            map.clear();
            ASSERT_TRUE(map.empty() && map.find(item) == map.end());
            expected.clear();
            places.clear();
            if (rnd.chance(0.3)) map.reserve(rnd.below(200));
        }
    }
}

/// Texts of any bytes but zero, many of them alike but for their ends, and numbers of all kinds.
std::string randomText(Random& rnd) {
    std::string text;
    switch (rnd.below(5)) {
        case 0: return std::to_string(std::uint64_t{rnd.below(100)} << rnd.below(57));
        case 1: return "0" + std::to_string(rnd.below(100));
        case 2: text = std::string(rnd.below(20), 'a'); break;
        case 3: return "18446744073709551" + std::to_string(600 + rnd.below(50));
        default: break;
    }
    for (Id i = rnd.below(10); i > 0; --i) text += static_cast<char>(1 + rnd.below(255));
    return text;
}

/// As names are ordered by the documents: numbers by their values, then texts by their bytes.
std::tuple<bool, std::uint64_t, std::string> rank(const std::string& name) {
    std::uint64_t value = 0;
    bool number = !name.empty() && (name == "0" || name[0] != '0');
    for (const char c : name) {
        const auto digit = static_cast<std::uint64_t>(c - '0');
        number = number && c >= '0' && c <= '9' && value <= (~std::uint64_t{0} - digit) / 10;
        if (number) value = 10 * value + digit;
    }
    return {!number, number ? value : 0, number ? "" : name};
}

TEST(Labels, KeepNamesApartAndOrderThem) {
    Random rnd(73);
    for (int round = 0; round < 12; ++round) {
        Labels labels;
        std::map<std::string, Id> ids;
        // One table grows over several sizes.
        const int names = round == 0 ? 6000 : 200;
        for (int i = 0; i < names; ++i) {
            const std::string name = randomText(rnd);
            Id number = 0;
            const bool isId = Labels::isId(name, number);
            if (isId) {
                EXPECT_EQ(labels.find(name), number);
                EXPECT_EQ(std::to_string(number), name);
                continue;
            }
            const auto held = ids.find(name);
            ASSERT_EQ(labels.find(name), held == ids.end() ? ID_NONE : held->second);
            const Id id = labels.add(name);
            ASSERT_EQ(ids.try_emplace(name, id).first->second, id);
            ASSERT_TRUE(labels.has(id) && labels.size() == ids.size());
        }
        std::vector<std::string> ordered;
        for (const auto& [name, id] : ids) {
            ASSERT_EQ(labels.text(id), name);
            ordered.push_back(name);
        }
        std::sort(ordered.begin(), ordered.end(),
                  [](const std::string& a, const std::string& b) { return rank(a) < rank(b); });
        const std::vector<Id> anew = labels.sort();
        ASSERT_EQ(anew.size(), ids.size());
        for (const auto& [name, id] : ids) {
            const Id after = anew[ID_MAX - 1 - id];
            ASSERT_EQ(labels.text(after), name);
            ASSERT_EQ(labels.find(name), after);
        }
        for (std::size_t i = 0; i < ordered.size(); ++i)
            ASSERT_EQ(labels.text(ID_MAX - static_cast<Id>(ordered.size() - i)), ordered[i]) << i;
        // Names come in behind the ordered ones.
        const Size before = labels.size();
        labels.add("\x01 a further one");
        EXPECT_EQ(labels.size(), before + 1);
        EXPECT_FALSE(labels.has(ID_MAX - 1 - static_cast<Id>(labels.size())));
    }
}

TEST(Memory, IsMeasuredAcrossRanges) {
    for (const std::size_t limit : {std::size_t{1} << 16, std::size_t{1} << 18}) {
        Random rnd(limit);
        Arena arena;
        arena.rangeLimit(limit);
        std::vector<std::pair<char*, std::size_t>> blocks;
        for (int i = 0; i < 3000; ++i) {
            const std::size_t size = rnd.chance(0.01) ? 1 + rnd.below(100000) : 1 + rnd.below(300);
            char* const block = static_cast<char*>(arena.allocate(size, 8));
            ASSERT_EQ(block[0] | block[size - 1], 0) << "not filled with zeros";
            std::fill_n(block, size, 'x');
            blocks.emplace_back(block, size);
            ASSERT_EQ(arena.used(), arena.offset(block) + size);
        }
        std::size_t end = 0;
        for (const auto& [block, size] : blocks) {
            ASSERT_GE(arena.offset(block), end);
            ASSERT_EQ(arena.offset(block + size - 1), arena.offset(block) + size - 1);
            end = arena.offset(block) + size;
        }
        EXPECT_GT(arena.used(), limit);
    }
}

TEST(Memory, LargePagesHoldWhatTheyAreGiven) {
    std::vector<std::uint32_t, LargePageAllocator<std::uint32_t>> numbers;
    std::vector<std::uint32_t> expected;
    // Over the size from which on blocks are aligned, up and down again.
    for (std::uint32_t i = 0; i < 1'600'000; ++i) {
        numbers.push_back(i * 2654435761u);
        expected.push_back(i * 2654435761u);
    }
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(numbers.data()) % detail::LARGE_PAGE, 0u);
    EXPECT_TRUE(std::equal(numbers.begin(), numbers.end(), expected.begin(), expected.end()));
    // Pages that are given back are there again, and those beside them keep what they hold.
    const std::size_t first = 100'000;
    const std::size_t count = 1'200'000;
    detail::returnLargePages(numbers.data() + first, count * sizeof(std::uint32_t));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const bool given = i >= first && i < first + count;
        ASSERT_TRUE(numbers[i] == expected[i] || (given && numbers[i] == 0)) << i;
    }
    numbers.resize(1000);
    numbers.shrink_to_fit();
    EXPECT_TRUE(std::equal(numbers.begin(), numbers.end(), expected.begin()));
}

}  // namespace
}  // namespace vorl::test
