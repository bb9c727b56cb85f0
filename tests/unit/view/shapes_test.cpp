// What holds of the picture of any network: rings, stars, hubs, loose parts, deep hierarchies,
// weights of any size.
#include "../../../lib/src/view/pieces.hpp"
#include "../../../lib/src/view/scene.hpp"

#include "support/networks.hpp"
#include "support/trace.hpp"

#include <vorl/communities_hierarchy.hpp>
#include <vorl/reading/described_hierarchy.hpp>
#include <vorl/reading/nested_hierarchy.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace vorl::view {

namespace {

using Links = std::vector<std::pair<Id, Id>>;

struct Shape {
    const char* name;
    Id nodes;  ///< 0 up to this, whether they have links or not
    std::function<Links(Id)> links;
    std::function<LinkWeight(Size)> weight = [](Size) { return LinkWeight{1}; };
    /// Clusters inside each other; those that the communities are in if it is empty.
    std::function<std::string(Id)> clusters = {};
};

void PrintTo(const Shape& shape, std::ostream* out) { *out << shape.name; }

Links none(Id) { return {}; }

Links ring(Id nodes) {
    Links links;
    for (Id i = 0; i < nodes; ++i) links.emplace_back(i, (i + 1) % nodes);
    return links;
}

Links star(Id nodes) {
    Links links;
    for (Id i = 1; i < nodes; ++i) links.emplace_back(0, i);
    return links;
}

Links pairs(Id nodes) {
    Links links;
    for (Id i = 0; i + 1 < nodes; i += 2) links.emplace_back(i, i + 1);
    return links;
}

/// The last tenth of the nodes is alone.
Links cliques(Id nodes) {
    Links links;
    for (Id first = 0; first + 6 <= nodes - nodes / 10; first += 6)
        for (Id a = first; a < first + 6; ++a)
            for (Id b = a + 1; b < first + 6; ++b) links.emplace_back(a, b);
    return links;
}

/// Cliques of nine, each of which shares a node with the next.
Links chain(Id nodes) {
    Links links;
    for (Id first = 0; first + 9 <= nodes; first += 8)
        for (Id a = first; a < first + 9; ++a)
            for (Id b = a + 1; b < first + 9; ++b) links.emplace_back(a, b);
    return links;
}

Links tree(Id nodes) {
    Links links;
    for (Id i = 1; i < nodes; ++i) links.emplace_back((i - 1) / 2, i);
    return links;
}

/// Cluster k has the nodes 0 to k.
std::string shells(Id nodes) {
    std::string text;
    std::string line = "0";
    for (Id i = 1; i < nodes; ++i) text += (line += " " + std::to_string(i)) + "\n";
    return text;
}

/// All nodes in each of some clusters, with ever smaller shares.
std::string shared(Id nodes) {
    std::string text;
    const char* const shares[] = {"0.5", "0.499", "0.000999", "0.000001"};
    for (const char* share : shares) {
        for (Id i = 0; i < nodes; ++i) text += std::to_string(i) + ":" + share + " ";
        text += "\n";
    }
    return text;
}

std::string oneEach(Id nodes) {
    std::string text;
    for (Id i = 0; i < nodes; ++i) text += std::to_string(i) + "\n";
    return text;
}

const Shape SHAPES[] = {
    {"one", 1, none},
    {"two", 2, pairs},
    {"loose", 50, none},
    {"ring", 60, ring},
    {"star", 40, star},
    {"hub", 10'001, star},
    {"pairs", 5'000, pairs},
    {"cliques", 700, cliques},
    {"chain", 801, chain},
    {"tree", 1'500, tree},
    {"heavy", 400, chain, [](Size i) { return i % 7 == 0   ? 1e30f
                                              : i % 5 == 0 ? 1.2e-38f
                                                           : 1.f; }},
    {"light", 400, chain, [](Size) { return 1.2e-38f; }},
    {"falling", 200, ring, [](Size i) { return std::pow(0.5f, static_cast<float>(i % 100)); }},
    {"shells", 250, ring, [](Size) { return 1.f; }, shells},
    {"shared", 90, chain, [](Size) { return 1.f; }, shared},
    {"apart", 300, chain, [](Size) { return 1.f; }, oneEach},
};

class Shapes : public testing::TestWithParam<Shape> {
protected:
    void SetUp() override {
        const Shape& shape = GetParam();
        std::vector<Id> src, dst, nodes;
        std::vector<LinkWeight> weights;
        for (const auto& [a, b] : shape.links(shape.nodes)) {
            weights.push_back(shape.weight(src.size()));
            src.push_back(a);
            dst.push_back(b);
        }
        for (Id i = 0; i < shape.nodes; ++i) nodes.push_back(i);
        network = FlatNetwork::ofPairs(src, dst, weights, nodes);
        if (shape.clusters) {
            file = nestedHierarchy(parseClusters(shape.clusters(shape.nodes), "shape.cnl"));
        } else if (!src.empty()) {
            const test::Trace trace;
            file = describedHierarchy(
                *communitiesHierarchy(network, communities(network), ClusterOptions()), "shape");
        }
    }

    Scene scene(bool allLevels) const {
        ViewOptions options;
        options.allLevels = allLevels;
        return Scene(network, file, options);
    }

    FlatNetwork network;
    HierarchyFile file;
};

/// The first two of some circles that overlap, if there are any.
std::optional<std::pair<std::size_t, std::size_t>> overlap(const std::vector<Circle>& circles) {
    std::vector<std::size_t> order(circles.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    const auto left = [&](std::size_t i) { return circles[i].x - circles[i].r; };
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return left(a) < left(b); });
    for (std::size_t i = 0; i < order.size(); ++i) {
        const Circle& a = circles[order[i]];
        for (std::size_t j = i + 1; j < order.size() && left(order[j]) < a.x + a.r; ++j) {
            const Circle& b = circles[order[j]];
            if (std::hypot(a.x - b.x, a.y - b.y) < (a.r + b.r) * (1 - 1e-9))
                return std::pair(order[i], order[j]);
        }
    }
    return std::nullopt;
}

TEST_P(Shapes, AllSharesOfANodeHavePlaces) {
    for (const bool allLevels : {false, true}) {
        const Scene shown = scene(allLevels);
        const Nest& nest = shown.nest;
        std::vector<double> sums(network.size());
        for (Number i = 0; i < nest.node.size(); ++i) {
            ASSERT_GT(nest.share[i], 0);
            sums[nest.node[i]] += nest.share[i];
            const Nest::Cluster& own = nest.clusters[nest.clusterOf[i]];
            ASSERT_TRUE(own.places <= i && i < own.own);
        }
        for (Id node = 0; node < network.size(); ++node) {
            ASSERT_NEAR(sums[node], 1, 1e-5) << node;
            ASSERT_EQ(nest.node[nest.home[node]], node);
        }
        const auto all = static_cast<double>(network.size());
        EXPECT_NEAR(nest.clusters[0].mass, all, 1e-5 * all);
        for (Number i = 1; i < nest.clusters.size(); ++i) {
            const Nest::Cluster& above = nest.clusters[nest.clusters[i].parent];
            ASSERT_LT(nest.clusters[i].parent, i);
            ASSERT_LE(nest.clusters[i].end, above.end);
            ASSERT_GT(nest.size(i), 0u) << "cluster " << i << " has nothing in it";
        }
    }
}

TEST_P(Shapes, CirclesLieInsideEachOtherAndDoNotOverlap) {
    for (const bool allLevels : {false, true}) {
        const Scene shown = scene(allLevels);
        const Nest& nest = shown.nest;
        const MapLayout& map = shown.map;
        ASSERT_TRUE(std::isfinite(map.unit) && map.unit > 0);
        for (Number i = 0; i < nest.clusters.size(); ++i) {
            const Circle& around = map.clusters[i];
            std::vector<Circle> inside;
            nest.eachPart(i, [&](Number part) { inside.push_back(map.clusters[part]); });
            for (Number place = nest.clusters[i].places; place < nest.clusters[i].own; ++place)
                inside.push_back(
                    {map.x[place], map.y[place], map.unit * std::sqrt(nest.share[place])});
            for (const Circle& circle : inside) {
                ASSERT_TRUE(std::isfinite(circle.x) && std::isfinite(circle.y));
                ASSERT_GT(circle.r, 0);
                ASSERT_LE(std::hypot(circle.x - around.x, circle.y - around.y) + circle.r,
                          around.r * (1 + 1e-9))
                    << "in cluster " << i;
            }
            const auto found = overlap(inside);
            ASSERT_FALSE(found) << "in cluster " << i << ": " << found->first << ", "
                                << found->second;
        }
    }
}

TEST_P(Shapes, NodesAreDrawnApartWithTheLinksBetweenThem) {
    const Scene shown = scene(false);
    for (const Number most : {3000u, 40u}) {
        std::set<Number> seen;
        for (const Piece& piece : pieces(network, shown.nest, shown.map, shown.base, 2, most)) {
            ASSERT_LE(shown.nest.size(piece.cluster), most);
            ASSERT_TRUE(seen.insert(piece.cluster).second);
            const Drawing& drawing = piece.drawing;
            const std::set<Id> nodes(piece.nodes.begin(), piece.nodes.end());
            ASSERT_EQ(nodes.size(), piece.nodes.size());
            ASSERT_EQ(drawing.x.size(), nodes.size());
            std::set<std::pair<double, double>> places;
            for (std::size_t i = 0; i < nodes.size(); ++i) {
                ASSERT_LE(std::hypot(drawing.x[i], drawing.y[i]), 1 + 1e-9) << i;
                ASSERT_TRUE(places.emplace(drawing.x[i], drawing.y[i]).second)
                    << "two nodes lie at one place";
            }
            Size inside = 0;
            for (const Id node : nodes)
                for (Size at = network.begin[node]; at < network.begin[node + 1]; ++at)
                    inside += network.neighbour[at] > node && nodes.contains(network.neighbour[at]);
            ASSERT_EQ(piece.links, inside);
            ASSERT_EQ(drawing.links.size(), std::min<Size>(inside, 30'000));
            for (const Drawing::Link& ln : drawing.links) ASSERT_LT(ln.a, ln.b);
        }
        for (const Bundle& bundle : bundles(network, shown.nest, most)) {
            EXPECT_EQ(shown.nest.clusters[bundle.a].parent, shown.nest.clusters[bundle.b].parent);
            EXPECT_LT(bundle.a, bundle.b);
            EXPECT_TRUE(std::isfinite(bundle.weight));
        }
    }
}

TEST_P(Shapes, AnyNumberOfThreadsGivesTheSameBytes) {
    ViewOptions options;
    options.weighted = true;
    options.threads = 1;
    const std::string page = viewPage(network, file, options);
    const std::string map = viewSvg(network, file, options);
    for (const char* word : {"nan", "inf", "NaN", "Infinity"})
        EXPECT_EQ(map.find(std::string("=\"") + word), std::string::npos) << word;
    for (const unsigned threads : {2u, 3u, 8u}) {
        options.threads = threads;
        EXPECT_TRUE(viewPage(network, file, options) == page) << threads;
        EXPECT_TRUE(viewSvg(network, file, options) == map) << threads;
    }
}

INSTANTIATE_TEST_SUITE_P(All, Shapes, testing::ValuesIn(SHAPES),
                         [](const auto& shape) { return std::string(shape.param.name); });

TEST(MapLayout, SmallSharesAndManyLevelsStayVisible) {
    // Each shell adds a node; the innermost circle is as large as two nodes need.
    const HierarchyFile file = nestedHierarchy(parseClusters(shells(300), "shells.cnl"));
    std::vector<Id> nodes(300);
    for (Id i = 0; i < nodes.size(); ++i) nodes[i] = i;
    const Nest nest(FlatNetwork::ofPairs({}, {}, {}, nodes), file);
    const MapLayout map(nest);
    ASSERT_EQ(nest.clusters.size(), 300u);
    for (Number i = 1; i < nest.clusters.size(); ++i) {
        EXPECT_LT(map.clusters[i].r, map.clusters[nest.clusters[i].parent].r);
        EXPECT_GT(map.clusters[i].r, map.unit);
    }
}

}  // namespace

}  // namespace vorl::view
