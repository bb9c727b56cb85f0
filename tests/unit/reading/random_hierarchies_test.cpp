// Paths, cuts and selections of random hierarchies against walks over all paths, and the lists of
// clusters inside each other against comparisons of all with all.
#include "support/networks.hpp"
#include "support/trace.hpp"

#include <vorl/reading/hierarchy_file.hpp>
#include <vorl/reading/input_error.hpp>
#include <vorl/reading/nested_hierarchy.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace vorl::test {
namespace {

using Share = HierarchyFile::Share;
using ShareMap = std::map<Id, double>;

/// A hierarchy by the ids of its items; those of nodes and of clusters may be the same numbers.
struct Tall {
    struct Item {
        Id id;
        ShareMap owners;  // shares in 64ths, ids of clusters
    };
    std::vector<Item> nodes;
    std::vector<std::vector<Item>> levels;

    std::string text() const {
        std::size_t clusters = 0;
        for (const auto& level : levels) clusters += level.size();
        std::string text = "/Hierarchy levels:" + std::to_string(levels.size()) +
                           " clusters:" + std::to_string(clusters) + "\n/Nodes " +
                           std::to_string(nodes.size()) + "\n";
        const auto add = [&text](const std::vector<Item>& items) {
            for (const auto& [id, owners] : items) {
                text += std::to_string(id) + ">";
                for (const auto& [owner, share] : owners)
                    text += " " + std::to_string(owner) +
                            (owners.size() > 1 ? ":" + std::to_string(share / 64) : "");
                text += "\n";
            }
        };
        add(nodes);
        for (std::size_t level = 0; level < levels.size(); ++level) {
            text += "/Level " + std::to_string(level) +
                    " pure:" + std::to_string(levels[level].size()) + " extended:0\n";
            add(levels[level]);
        }
        return text;
    }

    const Item& cluster(Id id) const {
        for (const auto& level : levels)
            for (const Item& item : level)
                if (item.id == id) return item;
        throw std::logic_error("no such cluster");
    }
    std::size_t levelOf(Id id) const {
        for (std::size_t level = 0;; ++level)
            for (const Item& item : levels[level])
                if (item.id == id) return level;
    }

    /// Adds what of an item lies in each cluster above, along all paths; those whose level passes.
    void climb(const Item& item, double part, const std::function<bool(Id)>& passes,
               ShareMap& shares) const {
        for (const auto& [owner, share] : item.owners) {
            if (passes(owner)) shares[owner] += part * share / 64;
            climb(cluster(owner), part * share / 64, passes, shares);
        }
    }
    /// Whether a cluster stands at the height of a level: formed there or below, owned above.
    bool stands(Id id, std::size_t level) const {
        const ShareMap& owners = cluster(id).owners;
        return levelOf(id) <= level && (owners.empty() || levelOf(owners.begin()->first) > level);
    }
};

/// Owners of an item among the clusters of a level.
ShareMap randomOwners(Random& rnd, const std::vector<Tall::Item>& level) {
    ShareMap owners;
    double left = 64;
    do {
        const Id id = level[rnd.below(static_cast<Id>(level.size()))].id;
        const double share = rnd.chance(0.5) ? left : 1 + rnd.below(static_cast<Id>(left));
        owners[id] += share;
        left -= share;
    } while (left > 0);
    return owners;
}

Tall randomHierarchy(Random& rnd) {
    Tall tall;
    Id next = rnd.below(50);
    const std::size_t levels = 1 + rnd.below(5);
    for (std::size_t i = 0; i < levels; ++i) {
        tall.levels.emplace_back();
        for (Id count = 1 + rnd.below(6); count > 0; --count)
            tall.levels.back().push_back({next += 1 + rnd.below(3), {}});
    }
    // Some are carried past levels, and some have no owners at all.
    const auto own = [&](Tall::Item& item, std::size_t first) {
        if (first == levels || rnd.chance(0.1)) return;
        item.owners = randomOwners(
            rnd, tall.levels[rnd.chance(0.7) ? first
                                             : first + rnd.below(static_cast<Id>(levels - first))]);
    };
    for (Id node = 0; node < 3 + rnd.below(25); ++node) {
        tall.nodes.push_back({3 * node + rnd.below(3), {}});
        own(tall.nodes.back(), 0);
    }
    for (std::size_t i = tall.nodes.size(); i > 1; --i)
        std::swap(tall.nodes[i - 1], tall.nodes[rnd.below(static_cast<Id>(i))]);
    for (std::size_t level = 0; level < levels; ++level)
        for (Tall::Item& item : tall.levels[level]) own(item, level + 1);
    return tall;
}

ShareMap byId(const HierarchyFile& file, const std::vector<Share>& shares) {
    ShareMap map;
    for (const auto& [item, share] : shares)
        EXPECT_TRUE(map.emplace(file.id(item), share).second) << "stands twice";
    return map;
}

void expectNear(const ShareMap& found, const ShareMap& expected, const std::string& what) {
    ASSERT_EQ(found.size(), expected.size()) << what;
    for (const auto& [id, share] : expected) {
        ASSERT_TRUE(found.contains(id)) << what << " lacks " << id;
        ASSERT_NEAR(found.at(id), share, 1e-6) << what << " in " << id;
    }
}

/// The shares of the members of each cluster.
std::map<Id, ShareMap> sharesOf(const ClustersFile& file) {
    const std::vector<vorl::Share> shares = file.completeShares();
    std::map<Id, ShareMap> result;
    for (const auto& cluster : file.clusters)
        for (std::size_t i = cluster.begin; i < cluster.end; ++i)
            EXPECT_TRUE(
                result[cluster.id].emplace(file.members[i], static_cast<double>(shares[i])).second);
    return result;
}

/// The clusters that stand at a level, by all paths.
std::map<Id, ShareMap> naiveCut(const Tall& tall, std::size_t level) {
    std::map<Id, ShareMap> expected;
    for (const Tall::Item& node : tall.nodes) {
        ShareMap in;
        tall.climb(
            node, 1, [&](Id id) { return tall.stands(id, level); }, in);
        for (const auto& [cluster, share] : in) expected[cluster][node.id] = share;
    }
    return expected;
}

void expectCut(const ClustersFile& cut, const std::map<Id, ShareMap>& expected,
               const std::string& what) {
    const std::map<Id, ShareMap> found = sharesOf(cut);
    ASSERT_EQ(found.size(), expected.size()) << what;
    for (const auto& [cluster, members] : expected) {
        ASSERT_TRUE(found.contains(cluster)) << what;
        expectNear(found.at(cluster), members, what + " " + std::to_string(cluster));
    }
}

TEST(RandomHierarchies, AreCutAndClimbedAlongAllPaths) {
    Random rnd(79);
    for (int round = 0; round < 120; ++round) {
        const Tall tall = randomHierarchy(rnd);
        const std::string text = tall.text();
        const HierarchyFile file = parseHierarchy(text, "tall.rhb");
        ASSERT_EQ(file.nodes(), tall.nodes.size());
        const auto all = [](Id) { return true; };
        std::map<Id, ShareMap> members;
        for (const Tall::Item& node : tall.nodes) {
            ShareMap above;
            tall.climb(node, 1, all, above);
            expectNear(byId(file, file.ancestors(file.node(node.id))), above, text);
            for (const auto& [cluster, share] : above) members[cluster][node.id] = share;
        }
        std::vector<HierarchyFile::Item> standing(tall.levels.size());
        for (std::size_t level = 0; level < tall.levels.size(); ++level)
            for (const Tall::Item& item : tall.levels[level]) {
                const HierarchyFile::Item cluster = file.cluster(item.id);
                EXPECT_EQ(file.levelOf(cluster), level);
                expectNear(byId(file, file.members(cluster)), members[item.id], text);
                for (std::size_t at = level; at < tall.levels.size(); ++at)
                    standing[at] += tall.stands(item.id, at);
            }
        EXPECT_EQ(file.standingClusters(), standing);
        for (LevelNum level = 0; level < file.levels(); ++level) {
            const auto expected = naiveCut(tall, level);
            const ClustersFile cut = file.cut(level);
            expectCut(cut, expected, text);
            // What is written of it says the same.
            if (cut.clusters.empty()) continue;
            const ClustersFile again = parseClusters(cut.strictText(file.nodes(), true), "cut.cnl");
            EXPECT_NO_THROW(again.requireStrict());
            expectCut(again, expected, text);
        }
        if (HasFailure()) return;
    }
}

TEST(RandomHierarchies, LoseNoLineUnnoticed) {
    Random rnd(83);
    for (int round = 0; round < 12; ++round) {
        const std::string text = randomHierarchy(rnd).text();
        EXPECT_NO_THROW(parseHierarchy(text.substr(0, text.size() - 1), "cut.rhb"));
        for (std::size_t size = 0; size + 1 < text.size(); ++size) {
            // The last owners of an item that stands at the end may be lost with their shares.
            const bool inOwners = text.find('\n', size) == text.size() - 1 &&
                                  text.find('>', text.rfind('\n', size - 1) + 1) < size;
            if (inOwners) continue;
            EXPECT_THROW(parseHierarchy(text.substr(0, size), "cut.rhb"), InputError)
                << size << "\n"
                << text;
        }
        // A line that is lost in the middle.
        const std::size_t at = text.find('\n', rnd.below(static_cast<Id>(text.size() - 1)));
        if (at + 1 == text.size()) continue;
        const std::size_t end = text.find('\n', at + 1);
        std::string lacking = text;
        lacking.erase(at, end - at);
        EXPECT_THROW(parseHierarchy(lacking, "cut.rhb"), InputError) << lacking;
        if (HasFailure()) return;
    }
}

TEST(RandomHierarchies, SomeLevelsKeepTheirCuts) {
    Random rnd(89);
    for (int round = 0; round < 120; ++round) {
        const Tall tall = randomHierarchy(rnd);
        const HierarchyFile file = parseHierarchy(tall.text(), "tall.rhb");
        std::vector<LevelNum> chosen;
        for (LevelNum level = 0; level < file.levels(); ++level)
            if (rnd.chance(0.6)) chosen.push_back(level);
        if (chosen.empty()) continue;
        const HierarchyFile some = file.withLevels(chosen);
        ASSERT_EQ(some.levels(), chosen.size());
        for (std::size_t i = 0; i < chosen.size(); ++i) {
            // A cluster that holds nothing but another one is told by that.
            const auto membersOnly = [](const std::map<Id, ShareMap>& cut) {
                std::multiset<std::pair<std::vector<Id>, std::vector<double>>> lists;
                for (const auto& [cluster, members] : cut) {
                    std::vector<Id> ids;
                    std::vector<double> shares;
                    for (const auto& [node, share] : members) {
                        ids.push_back(node);
                        shares.push_back(std::round(share * 1e5));
                    }
                    lists.emplace(ids, shares);
                }
                return lists;
            };
            ASSERT_EQ(membersOnly(sharesOf(some.cut(static_cast<LevelNum>(i)))),
                      membersOnly(naiveCut(tall, chosen[i])))
                << tall.text() << "level " << chosen[i];
        }
    }
}

/// Whether all of the first list and more is in the second one.
bool isInside(const std::set<Id>& inner, const std::set<Id>& outer) {
    return inner.size() < outer.size() &&
           std::includes(outer.begin(), outer.end(), inner.begin(), inner.end());
}

TEST(NestedLevels, AreThoseOfComparisonsOfAllWithAll) {
    Random rnd(97);
    int several = 0;
    for (int round = 0; round < 200; ++round) {
        // Unions and parts of earlier clusters, so that many lie inside each other.
        std::vector<std::set<Id>> clusters;
        for (Id i = 0; i < 2 + rnd.below(10); ++i) {
            std::set<Id> members;
            for (Id k = 0; k < 1 + rnd.below(4); ++k) members.insert(rnd.below(12));
            if (!clusters.empty() && rnd.chance(0.6)) {
                const auto& other = clusters[rnd.below(static_cast<Id>(clusters.size()))];
                members.insert(other.begin(), other.end());
            }
            clusters.push_back(members);
        }
        std::string text;
        std::size_t inner = 0;
        std::vector<std::size_t> height(clusters.size());
        for (std::size_t i = 0; i < clusters.size(); ++i) {
            for (const Id node : clusters[i]) text += std::to_string(node) + " ";
            text += "\n";
            inner += std::any_of(clusters.begin(), clusters.end(),
                                 [&](const auto& outer) { return isInside(clusters[i], outer); });
        }
        for (std::size_t turn = 0; turn < clusters.size(); ++turn)
            for (std::size_t a = 0; a < clusters.size(); ++a)
                for (std::size_t b = 0; b < clusters.size(); ++b)
                    if (isInside(clusters[a], clusters[b]))
                        height[b] = std::max(height[b], height[a] + 1);
        const std::size_t levels = 1 + *std::max_element(height.begin(), height.end());
        // A level has the clusters that came so far and aren't inside others that came.
        std::vector<std::vector<Id>> expected(levels);
        for (std::size_t level = 0; level < levels; ++level)
            for (std::size_t i = 0; i < clusters.size(); ++i) {
                bool covered = height[i] > level;
                for (std::size_t k = 0; k < clusters.size(); ++k)
                    covered = covered || (height[k] <= level && isInside(clusters[i], clusters[k]));
                if (!covered) expected[level].push_back(static_cast<Id>(i));
            }
        const ClustersFile file = parseClusters(text, "nested.cnl");
        EXPECT_EQ(file.severalLevels, 2 * inner > clusters.size()) << text;
        ASSERT_EQ(file.nestedLevels(), expected) << text;
        several += file.severalLevels;

        // The hierarchy has all nodes below their innermost clusters, and each one at its height.
        const HierarchyFile hierarchy = nestedHierarchy(file);
        if (!file.severalLevels) continue;
        ASSERT_EQ(hierarchy.levels(), levels);
        for (std::size_t i = 0; i < clusters.size(); ++i) {
            const bool repeated = std::count(clusters.begin(), clusters.end(), clusters[i]) > 1;
            if (repeated) continue;
            std::set<Id> members;
            for (const Share& part : hierarchy.members(hierarchy.cluster(static_cast<Id>(i + 1))))
                members.insert(hierarchy.id(part.item));
            EXPECT_EQ(members, clusters[i]) << text;
        }
        for (HierarchyFile::Item node = 0; node < hierarchy.nodes(); ++node) {
            double sum = 0;
            for (const Share& owner : hierarchy.owners(node)) sum += owner.share;
            EXPECT_NEAR(sum, 1, 1e-6);
        }
        if (HasFailure()) return;
    }
    EXPECT_GT(several, 25);
}

}  // namespace
}  // namespace vorl::test
