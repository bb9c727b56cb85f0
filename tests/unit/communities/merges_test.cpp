// The merges of the search for communities against naive ones on dense matrices, its cuts against
// all that there are, and flat networks against sums over pairs.
#include "../../../lib/src/communities/agglomeration.hpp"

#include <vorl/communities.hpp>
#include <vorl/communities_text.hpp>

#include "support/networks.hpp"
#include "support/pairs.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numeric>

namespace vorl::test {
namespace {

using namespace detail;
using Matrix = std::vector<std::vector<double>>;

/// Links of weights that are all different, in some groups of nodes more than between them.
Matrix randomMatrix(Random& rnd, Id nodes) {
    Matrix matrix(nodes, std::vector<double>(nodes));
    for (Id a = 0; a < nodes; ++a)
        for (Id b = 0; b < a; ++b)
            if (b + 1 == a || rnd.chance(a / 6 == b / 6 ? 0.7 : 0.1))
                matrix[a][b] = matrix[b][a] =
                    static_cast<double>(1 + rnd.below(1u << 20)) * 0x1p-12;
    return matrix;
}

ItemLinks<LinkWeight> linksOf(const Matrix& matrix) {
    ItemLinks<LinkWeight> links{{0}, {}, {}};
    for (const auto& row : matrix) {
        for (Id dest = 0; dest < row.size(); ++dest)
            if (row[dest] > 0) {
                links.dest.push_back(dest);
                links.weight.push_back(static_cast<LinkWeight>(row[dest]));
            }
        links.begin.push_back(links.dest.size());
    }
    return links;
}

double rowSum(const std::vector<double>& row) {
    return std::accumulate(row.begin(), row.end(), 0.);
}

/// The weights of the links that the search goes by.
Matrix similarMatrix(const Matrix& matrix, double power) {
    const std::size_t nodes = matrix.size();
    std::vector<double> degree(nodes);
    for (std::size_t i = 0; i < nodes; ++i)
        degree[i] = static_cast<double>(
            std::count_if(matrix[i].begin(), matrix[i].end(), [](double w) { return w > 0; }));
    Matrix result(nodes, std::vector<double>(nodes));
    for (std::size_t a = 0; a < nodes; ++a)
        for (std::size_t b = 0; b < nodes; ++b) {
            double common = 0;
            for (std::size_t c = 0; c < nodes; ++c) common += matrix[a][c] > 0 && matrix[b][c] > 0;
            result[a][b] = matrix[a][b] * (common + 1) / std::pow(degree[a] * degree[b], power);
        }
    return result;
}

TEST(Merges, LinksAreWeighedByTheNeighboursThatTheirEndsShare) {
    Random rnd(43);
    Workers workers(1);
    const std::pair<Similarity, double> powers[] = {
        {Similarity::COSINE, 0.5}, {Similarity::MIXED, 0.25}, {Similarity::COMMON, 0}};
    Size left = 0;
    for (int round = 0; round < 20; ++round) {
        const Matrix matrix = randomMatrix(rnd, 3 + rnd.below(40));
        ItemLinks<LinkWeight> links = linksOf(matrix);
        const auto shared = sharedNeighbours(links, workers);
        // Whether a node shares a neighbour with one of its own.
        std::vector<char> close(matrix.size());
        for (Id i = 0; i < links.size(); ++i)
            for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln)
                close[i] |= shared[ln] != 0;
        for (const auto& [similarity, power] : powers) {
            const Matrix expected = similarMatrix(matrix, power);
            const SimilarLinks found = similar(links, shared, similarity, workers);
            double whole = 0;
            for (Id i = 0; i < links.size(); ++i) {
                EXPECT_NEAR(found.total[i], rowSum(expected[i]), 1e-5 * found.total[i]);
                whole += found.total[i];
                std::map<Id, double> kept;
                const ItemLinks<LinkWeight>& own = found.network.links;
                for (Size ln = own.begin[i]; ln < own.begin[i + 1]; ++ln)
                    kept[own.dest[ln]] = static_cast<double>(own.weight[ln]);
                for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln) {
                    const Id dest = links.dest[ln];
                    const bool matters = shared[ln] != 0 || !close[i] || !close[dest];
                    ASSERT_EQ(kept.contains(dest), matters);
                    left += !matters;
                    if (!matters) continue;
                    EXPECT_NEAR(kept[dest], expected[i][dest], 1e-6 * expected[i][dest]);
                }
            }
            EXPECT_EQ(found.weight, whole);
        }
    }
    EXPECT_GT(left, 100u);
}

/// One round of merges: the items that hang together by pointers to the best neighbours.
detail::Labels naiveRound(const Matrix& weight, const std::vector<double>& total,
                          const detail::Labels& group, const std::vector<double>& groupTotal) {
    const auto items = static_cast<Id>(weight.size());
    detail::Labels label(items);
    std::iota(label.begin(), label.end(), Id{0});
    for (Id i = 0; i < items; ++i) {
        Id aim = i;
        double best = 0;
        for (Id j = 0; j < items; ++j) {
            if (i == j || weight[i][j] <= 0 || group[i] != group[j]) continue;
            const double gain = weight[i][j] - total[i] * total[j] / groupTotal[group[i]];
            // What rounding may leave is no gain.
            if (gain > best && gain > 1e-11 * weight[i][j]) {
                best = gain;
                aim = j;
            }
        }
        const Id from = label[std::max(i, aim)];
        const Id to = label[std::min(i, aim)];
        std::replace(label.begin(), label.end(), std::max(from, to), std::min(from, to));
    }
    compact(label);
    return label;
}

TEST(Merges, AreThoseOfANaiveSearch) {
    Random rnd(47);
    Size steps = 0;
    for (int round = 0; round < 60; ++round) {
        const Matrix matrix = randomMatrix(rnd, 4 + rnd.below(50));
        const auto nodes = static_cast<Id>(matrix.size());
        ItemLinks<LinkWeight> links = linksOf(matrix);
        Workers workers(static_cast<unsigned>(1 + round % 3));
        SimilarLinks found =
            similar(links, sharedNeighbours(links, workers), Similarity::MIXED, workers);
        // Where only links inside groups count, those that are left out don't count either.
        const Id groups = round % 2 ? 1 : 3;
        detail::Labels group(nodes);
        for (Id& label : group) label = rnd.below(groups);
        Matrix weight(nodes, std::vector<double>(nodes));
        const ItemLinks<LinkWeight>& own = found.network.links;
        for (Id i = 0; i < nodes; ++i)
            for (Size ln = own.begin[i]; ln < own.begin[i + 1]; ++ln)
                if (group[i] == group[own.dest[ln]])
                    weight[i][own.dest[ln]] = static_cast<double>(own.weight[ln]);
        std::vector<double> total = found.total;
        if (groups != 1)
            for (Id i = 0; i < nodes; ++i) total[i] = rowSum(weight[i]);
        std::vector<double> groupTotal(groups);
        for (Id i = 0; i < nodes; ++i) groupTotal[group[i]] += total[i];

        const Merges merges = mergeSimilar(found, group, groups, workers);
        for (std::size_t step = 0; step <= merges.steps.size(); ++step) {
            const detail::Labels expected = naiveRound(weight, total, group, groupTotal);
            const Id count = 1 + *std::max_element(expected.begin(), expected.end());
            if (step == merges.steps.size()) {
                ASSERT_EQ(count, expected.size()) << "something is left to merge";
                break;
            }
            ++steps;
            ASSERT_EQ(merges.steps[step], expected) << round << " " << step;
            ASSERT_EQ(merges.counts[step], count);
            Matrix folded(count, std::vector<double>(count));
            std::vector<double> sums(count);
            detail::Labels coarse(count);
            for (Id a = 0; a < expected.size(); ++a) {
                coarse[expected[a]] = group[a];
                sums[expected[a]] += total[a];
                for (Id b = 0; b < expected.size(); ++b)
                    if (expected[a] != expected[b])
                        folded[expected[a]][expected[b]] += weight[a][b];
            }
            weight = std::move(folded);
            total = std::move(sums);
            group = std::move(coarse);
        }
    }
    EXPECT_GT(steps, 100u);
}

/// What the best cut through the tree below an item is worth.
double bestOf(const std::vector<std::vector<std::vector<Id>>>& parts,
              const std::vector<std::vector<double>>& worth, std::size_t height, Id item) {
    const double whole = worth[height][item];
    if (height == 0) return whole;
    double split = 0;
    for (const Id part : parts[height][item]) split += bestOf(parts, worth, height - 1, part);
    return std::max(whole, split);
}

TEST(Merges, TheCutIsTheLikeliestOfAll) {
    Random rnd(53);
    Size between = 0;
    for (int round = 0; round < 200; ++round) {
        const Id base = 2 + rnd.below(30);
        Workers workers(1);
        Merges merges;
        for (Id count = base; count > 1 && merges.steps.size() < 5;) {
            detail::Labels step(count);
            const Id wanted = 1 + rnd.below(count);
            for (Id& label : step) label = rnd.below(wanted);
            count = compact(step);
            merges.steps.push_back(step);
            merges.counts.push_back(count);
        }
        // What items hold: some of the weight of each turns inner where they merge.
        std::vector<std::vector<Holding>> held(merges.steps.size() + 1);
        AccWeight weight = 0;
        for (Id i = 0; i < base; ++i) {
            held[0].push_back({0, static_cast<double>(1 + rnd.below(50)), 1});
            weight += held[0].back().total;
        }
        std::vector<std::vector<std::vector<Id>>> parts(held.size());
        for (std::size_t step = 0; step < merges.steps.size(); ++step) {
            held[step + 1].resize(merges.counts[step]);
            parts[step + 1].resize(merges.counts[step]);
            for (Id i = 0; i < merges.steps[step].size(); ++i) {
                held[step + 1][merges.steps[step][i]] += held[step][i];
                parts[step + 1][merges.steps[step][i]].push_back(i);
            }
            for (Holding& item : held[step + 1])
                item.inner += (item.total - item.inner) * rnd.below(5) / 5.;
        }
        Likelihood likelihood(round % 2 ? Density::OWN : Density::COMMON, weight, base, 1);
        likelihood.estimate(held[held.size() / 2]);
        std::vector<std::vector<double>> worth(held.size());
        for (std::size_t height = 0; height < held.size(); ++height)
            for (const Holding& item : held[height])
                worth[height].push_back(likelihood.value(item));
        double best = 0;
        for (Id item = 0; item < held.back().size(); ++item)
            best += bestOf(parts, worth, held.size() - 1, item);

        const std::vector<std::vector<Holding>> heights(held.begin() + 1, held.end());
        const detail::Labels cut = likeliestCut(merges, held[0], heights, likelihood);
        // Each part is an item of some height; the largest one that holds no more than it.
        std::vector<std::set<Id>> found(1 + *std::max_element(cut.begin(), cut.end()));
        for (Id i = 0; i < base; ++i) found[cut[i]].insert(i);
        double sum = 0;
        for (const std::set<Id>& part : found) {
            double value = -1e300;
            detail::Labels pieces(base);
            std::iota(pieces.begin(), pieces.end(), Id{0});
            for (std::size_t height = 0;; ++height) {
                std::set<Id> inside;
                for (Id i = 0; i < base; ++i)
                    if (pieces[i] == pieces[*part.begin()]) inside.insert(i);
                if (inside == part) {
                    value = std::max(value, worth[height][pieces[*part.begin()]]);
                    between += height > 0 && height + 1 < held.size();
                }
                if (height == merges.steps.size()) break;
                pieces = composed(pieces, merges.steps[height]);
            }
            sum += value;
        }
        EXPECT_NEAR(sum, best, 1e-9 * (1 + std::abs(best)));
    }
    EXPECT_GT(between, 200u);
}

/// Links with weights of few digits, so that all sums are exact, self links among them.
Pairs exactPairs(Random& rnd, Id nodes, Id group) {
    Pairs pairs;
    for (Id a = 0; a < nodes; ++a)
        for (Id b = 0; b <= a; ++b)
            if (rnd.chance(a == b ? 0.1 : a / group == b / group ? 0.5 : 0.03))
                pairs.add(3 * a + 5, 3 * b + 5, static_cast<float>(1 + rnd.below(255)) / 16);
    return pairs;
}

TEST(FlatNetwork, HoldsTheSumsOverThePairs) {
    Random rnd(59);
    for (int round = 0; round < 60; ++round) {
        Pairs pairs;
        std::map<std::pair<Id, Id>, double> sums;
        std::set<Id> ids;
        const Id step = round % 3 == 0 ? 1 : 1 + rnd.below(1000);
        const Id nodes = 1 + rnd.below(30);
        for (Id i = 0; i < rnd.below(200); ++i) {
            const Id src = 7 + step * rnd.below(nodes);
            const Id dst = 7 + step * rnd.below(nodes);
            const auto weight = static_cast<float>(rnd.below(64)) / 16;
            pairs.add(src, dst, weight);
            sums[{src, dst}] += static_cast<double>(weight);
            sums[{dst, src}] += static_cast<double>(weight);
            ids.insert({src, dst});
        }
        std::vector<Id> others;
        for (Id i = 0; i < rnd.below(5); ++i) ids.insert(others.emplace_back(rnd.below(50)));
        std::erase_if(sums, [](const auto& entry) { return entry.second == 0; });
        const FlatNetwork network =
            FlatNetwork::ofPairs(pairs.src, pairs.dst, pairs.weight, others);
        ASSERT_EQ(network.ids, std::vector<Id>(ids.begin(), ids.end()));
        std::map<std::pair<Id, Id>, double> held;
        for (Id i = 0; i < network.size(); ++i) {
            if (network.self[i] != 0) held[{network.ids[i], network.ids[i]}] = network.self[i];
            for (Size ln = network.begin[i]; ln < network.begin[i + 1]; ++ln)
                held[{network.ids[i], network.ids[network.neighbour[ln]]}] =
                    static_cast<double>(network.weight[ln]);
        }
        EXPECT_EQ(held, sums);
    }
}

TEST(Communities, NeitherParallelLinksNorGapsOfIdsMatter) {
    Random rnd(61);
    for (int round = 0; round < 8; ++round) {
        const Pairs pairs = exactPairs(rnd, 40 + rnd.below(150), 6 + rnd.below(20));
        const Communities whole = communities(pairs.network());
        // Each link in pieces of a quarter, a half and a quarter, here and there and turned around.
        Pairs split;
        for (const float piece : {0.25f, 0.5f, 0.25f})
            for (std::size_t i = pairs.src.size(); i-- > 0;) {
                const bool turned = rnd.chance(0.5);
                split.add(turned ? pairs.dst[i] : pairs.src[i],
                          turned ? pairs.src[i] : pairs.dst[i], piece * pairs.weight[i]);
            }
        EXPECT_EQ(clustersText(communities(split.network())), clustersText(whole));
        // The ids otherwise, in the same order.
        Pairs renamed = pairs;
        for (auto* const ends : {&renamed.src, &renamed.dst})
            for (Id& id : *ends) id = id / 3 + (id > 60 ? 4000000000u : 0);
        const Communities same = communities(renamed.network());
        EXPECT_EQ(same.score().saving, whole.score().saving);
        ASSERT_EQ(same.count(), whole.count());
        for (Id community = 0; community < whole.count(); ++community) {
            const auto members = whole.members(community);
            const auto others = same.members(community);
            EXPECT_TRUE(std::equal(members.begin(), members.end(), others.begin(), others.end()));
        }
        // Isolated nodes are communities of their own, and nothing else.
        std::vector<Id> further{0, 1, 7, 4294967290u};
        const Communities more =
            communities(FlatNetwork::ofPairs(pairs.src, pairs.dst, pairs.weight, further));
        EXPECT_EQ(more.isolated(), 4u);
        EXPECT_EQ(more.count(), whole.count() + 4);
        EXPECT_EQ(more.score().modularity, whole.score().modularity);
        EXPECT_EQ(more.score().saving, whole.score().saving);
    }
}

}  // namespace
}  // namespace vorl::test
