// Circles in circles, places of nodes told by links, and the pieces of a network.
#include "sample.hpp"

#include "../../../lib/src/view/pieces.hpp"
#include "../../../lib/src/view/scene.hpp"
#include "../../../lib/src/view/sections.hpp"

#include <vorl/reading/nested_hierarchy.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

namespace vorl::view {

namespace {

double distance(const Circle& a, const Circle& b) { return std::hypot(a.x - b.x, a.y - b.y); }

TEST(Circles, PackedOnesTouchButDoNotOverlap) {
    std::mt19937 random(1);
    // A few are packed by all pairs, many by the front, very many on a grid.
    for (const std::size_t count : {1u, 2u, 3u, 4u, 30u, 101u, 700u, 20001u}) {
        std::vector<Circle> circles(count);
        for (Circle& circle : circles) circle.r = 0.2 + static_cast<double>(random() % 100) / 50;
        std::sort(circles.begin(), circles.end(),
                  [](const Circle& a, const Circle& b) { return a.r > b.r; });
        pack(circles);
        double area = 0;
        for (std::size_t i = 0; i < std::min<std::size_t>(count, 800); ++i) {
            area += circles[i].r * circles[i].r;
            for (std::size_t j = 0; j < i; ++j)
                ASSERT_GE(distance(circles[i], circles[j]),
                          (circles[i].r + circles[j].r) * (1 - 1e-6))
                    << count << ": " << i << ", " << j;
        }
        const Circle around = enclosing(circles);
        for (const Circle& circle : circles)
            ASSERT_LE(distance(around, circle) + circle.r, around.r * (1 + 1e-9));
        if (count <= 700) {
            EXPECT_LT(around.r * around.r, 2.2 * area) << count;
        }
    }
}

TEST(Circles, TheOneAroundIsTheSmallest) {
    // Around the corners of a triangle of sides of 2: 2 / sqrt(3), and the radius of each.
    const std::vector<Circle> triangle{{0, 0, 0.5}, {2, 0, 0.5}, {1, std::sqrt(3.), 0.5}};
    EXPECT_NEAR(enclosing(triangle).r, 2 / std::sqrt(3.) + 0.5, 2e-3);
    const std::vector<Circle> inside{{0, 0, 3}, {1, 0, 1}};
    EXPECT_NEAR(enclosing(inside).r, 3, 5e-3);
}

/// Two cliques of ten nodes that share node 9, and node 40 that is in neither.
FlatNetwork twoCliques() {
    std::vector<Id> src, dst;
    for (const Id first : {0u, 9u})
        for (Id a = first; a < first + 10; ++a)
            for (Id b = a + 1; b < first + 10; ++b) {
                src.push_back(a);
                dst.push_back(b);
            }
    const std::vector<Id> alone{40};
    return FlatNetwork::ofPairs(src, dst, {}, alone);
}

HierarchyFile twoLevels() {
    return nestedHierarchy(
        parseClusters("# Clusters: 5, Nodes: 20, Fuzzy: 1, Numbered: 1\n"
                      "1> 0 1 2 3\n2> 4 5 6 7 8 9:0.25\n3> 9:0.75 10 11 12 13 14 15 16 17 18\n"
                      "4> 0 1 2 3 4 5 6 7 8 9:0.25\n5> 0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 "
                      "17 18\n",
                      "two.cnl"));
}

TEST(NestedHierarchy, ClustersOwnWhatIsInsideOfThemAlone) {
    const HierarchyFile file = twoLevels();
    ASSERT_EQ(file.levels(), 3u);
    const auto owners = file.owners(file.node(Id{9}));
    ASSERT_EQ(owners.size(), 2u);
    EXPECT_EQ(file.id(owners[0].item), 2u);
    EXPECT_DOUBLE_EQ(owners[0].share, 0.25);
    EXPECT_EQ(file.id(owners[1].item), 3u);
    EXPECT_EQ(file.id(file.owners(file.cluster(1)).front().item), 4u);
    EXPECT_EQ(file.id(file.owners(file.cluster(4)).front().item), 5u);
    EXPECT_EQ(file.members(file.cluster(5)).size(), 19u);
}

TEST(HierarchyFile, SomeOfItsLevelsAreAHierarchyAgain) {
    const HierarchyFile file = twoLevels();
    const std::vector<LevelNum> levels{0, 2};
    const HierarchyFile thin = file.withLevels(levels);
    ASSERT_EQ(thin.levels(), 2u);
    EXPECT_EQ(thin.standingClusters(), (std::vector<HierarchyFile::Item>{3, 1}));
    EXPECT_EQ(thin.id(thin.owners(thin.cluster(1)).front().item), 5u);
    EXPECT_EQ(thin.members(thin.cluster(5)).size(), 19u);
    const std::vector<LevelNum> top{2};
    EXPECT_EQ(file.withLevels(top).owners(0).size(), 1u);
}

TEST(HierarchyFile, OwnersOnSeveralLevelsAllHoldTheirParts) {
    // 23 lies in a cluster without others inside, and in one that has two levels below.
    const HierarchyFile file =
        nestedHierarchy(parseClusters("1 23\n2 3 23\n2 3\n2\n2\n", "mixed.cnl"));
    ASSERT_EQ(file.levels(), 3u);
    const auto members = [](const HierarchyFile& some, Id cluster) {
        std::string text;
        for (const auto& [node, share] : some.members(some.cluster(cluster)))
            text += std::to_string(some.id(node)) + ":" + std::to_string(share).substr(0, 4) + " ";
        return text;
    };
    const std::vector<LevelNum> all{0, 1, 2};
    const HierarchyFile same = file.withLevels(all);
    for (const Id cluster : {1u, 2u}) EXPECT_EQ(members(same, cluster), members(file, cluster));
    EXPECT_EQ(members(same, 1), "1:1.00 23:0.50 ");
    EXPECT_EQ(members(same, 2), "2:1.00 3:1.00 23:0.50 ");
    const std::vector<LevelNum> ends{0, 2};
    EXPECT_EQ(members(file.withLevels(ends), 2), "2:1.00 3:1.00 23:0.50 ");
    // All of it is where there is a cluster.
    const std::vector<LevelNum> lowest{0};
    EXPECT_EQ(members(file.withLevels(lowest), 1), "1:1.00 23:1.00 ");
}

TEST(Nest, AllSharesHaveTheirPlaces) {
    const FlatNetwork network = twoCliques();
    const Nest nest(network, twoLevels());
    ASSERT_EQ(nest.clusters.size(), 6u);
    EXPECT_EQ(nest.node.size(), 21u);  // 18 nodes once, one twice, one in no cluster
    EXPECT_DOUBLE_EQ(nest.clusters[0].mass, 20);
    EXPECT_EQ(nest.clusters[0].own, 1u);
    EXPECT_DOUBLE_EQ(nest.share[nest.home[9]], 0.75);
    for (Number i = 1; i < nest.clusters.size(); ++i) {
        const auto& above = nest.clusters[nest.clusters[i].parent];
        EXPECT_GE(nest.clusters[i].places, above.own);
        EXPECT_LE(nest.clusters[i].last, above.last);
    }
}

/// What lies directly in a cluster: its parts, and dots for its own places.
std::vector<Circle> contents(const Nest& nest, const MapLayout& map, Number cluster) {
    std::vector<Circle> list;
    nest.eachPart(cluster, [&](Number part) { list.push_back(map.clusters[part]); });
    for (Number i = nest.clusters[cluster].places; i < nest.clusters[cluster].own; ++i)
        list.push_back({map.x[i], map.y[i], map.unit * std::sqrt(nest.share[i])});
    return list;
}

void expectGoodLayout(const Nest& nest) {
    const MapLayout map(nest);
    EXPECT_DOUBLE_EQ(map.clusters[0].r, 1);
    for (Number i = 0; i < map.clusters.size(); ++i) {
        const Circle& own = map.clusters[i];
        const std::vector<Circle> inside = contents(nest, map, i);
        double area = 0;
        for (std::size_t a = 0; a < inside.size(); ++a) {
            area += inside[a].r * inside[a].r;
            EXPECT_LE(distance(inside[a], own) + inside[a].r, own.r * (1 + 1e-9))
                << "cluster " << i << " lets " << a << " out";
            for (std::size_t b = 0; b < a; ++b)
                EXPECT_GE(distance(inside[a], inside[b]), inside[a].r + inside[b].r)
                    << "in cluster " << i << ", " << a << " overlaps " << b;
        }
        // Not much room is left, and the dots' areas are as their shares.
        if (inside.size() > 2) {
            EXPECT_GT(area, 0.3 * own.r * own.r) << i << ", " << inside.size();
        }
        const double mass = nest.clusters[i].mass * map.unit * map.unit;
        EXPECT_LT(mass, own.r * own.r);
    }
}

TEST(MapLayout, WhatIsInAClusterFillsItsCircleWithoutOverlaps) {
    expectGoodLayout(Nest(twoCliques(), twoLevels()));
    for (const Id groups : {5u, 40u}) {
        const test::Sample sample(groups);
        expectGoodLayout(Nest(sample.network, sample.file));
        ViewOptions options;
        options.level = sample.level;
        const Scene scene(sample.network, sample.file, options);
        expectGoodLayout(scene.nest);
    }
    // Very many nodes in one cluster, and in none.
    std::vector<Id> nodes(30000);
    for (Id i = 0; i < nodes.size(); ++i) nodes[i] = i;
    const Nest loose(FlatNetwork::ofPairs({}, {}, {}, nodes), HierarchyFile());
    const MapLayout map(loose);
    for (Number i = 0; i < loose.node.size(); ++i)
        ASSERT_LE(std::hypot(map.x[i], map.y[i]) + map.unit, 1 + 1e-9);
}

TEST(Pieces, NeighboursComeToLieTogether) {
    const FlatNetwork network = twoCliques();
    const Nest nest(network, twoLevels());
    const MapLayout map(nest);
    const auto base = standing(twoLevels(), nest, 1);
    const std::vector<Piece> found = pieces(network, nest, map, base);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].nodes.size(), 20u);
    EXPECT_EQ(found[0].links, 90u);
    const Drawing& drawing = found[0].drawing;
    double near = 0;
    double all = 0;
    const auto apart = [&](std::size_t a, std::size_t b) {
        return std::hypot(drawing.x[a] - drawing.x[b], drawing.y[a] - drawing.y[b]);
    };
    for (const auto& ln : drawing.links) near += apart(ln.a, ln.b) / 90;
    for (std::size_t a = 0; a < 20; ++a) {
        EXPECT_LE(std::hypot(drawing.x[a], drawing.y[a]), 1.);
        for (std::size_t b = 0; b < a; ++b) {
            EXPECT_GT(apart(a, b), 0.01);
            all += apart(a, b) / 190;
        }
    }
    EXPECT_LT(near, 0.7 * all);
    // Small pieces in place of one large: the whole has too many places.
    EXPECT_EQ(pieces(network, nest, map, base, 0, 12).size(), 2u);
    const std::vector<Bundle> between = bundles(network, nest, 12);
    ASSERT_EQ(between.size(), 1u);
    EXPECT_DOUBLE_EQ(between[0].weight, 9);  // node 9 is at home in the other clique
}

TEST(Colours, ClustersThatAreLinkedDiffer) {
    const FlatNetwork network = twoCliques();
    ViewOptions options;
    options.allLevels = true;
    const HierarchyFile file = twoLevels();
    const Scene scene(network, file, options);
    const auto colour = [&](Id id) {
        return scene.colour[scene.nest.numbers[scene.file.cluster(id) - scene.file.nodes()]];
    };
    EXPECT_EQ(scene.level, 1u);
    EXPECT_NE(colour(3), colour(4));
    EXPECT_EQ(colour(1), colour(4));
    EXPECT_NE(colour(3), GREY);
}

TEST(Sections, NumbersGoByDifferences) {
    Sections sections;
    sections.addNumbers("a", {0, 5, 3, 303, 4294967295u});
    sections.addShorts("b", {258});
    const std::string text = sections.text("\"x\":1");
    const std::string table =
        "{\"x\":1,\"sections\":[[\"a\",\"number\",0,10],[\"b\",\"short\",16,2]]}";
    const std::size_t begin = text.find(table);
    ASSERT_EQ(begin, 4u) << text;
    const std::size_t data = text.find('\0', begin + table.size());
    ASSERT_NE(data, std::string::npos);
    EXPECT_EQ(text.substr(data, 5), std::string("\0\x0a\x03\xd8\x04", 5));
    EXPECT_EQ(text.substr(data + 16, 2), "\x02\x01");
    EXPECT_EQ(base64("any carnal pleas"), "YW55IGNhcm5hbCBwbGVhcw==");
    EXPECT_EQ(base64("ab"), "YWI=");
}

TEST(Escaped, IsSafeInMarkup) {
    EXPECT_EQ(escaped("<b a=\"1\">&</b>"), "&lt;b a=&quot;1&quot;&gt;&amp;&lt;/b&gt;");
    EXPECT_EQ(escaped("\xc3\xa9\x01\xff\xed\xa0\x80"),
              "\xc3\xa9\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
}

TEST(View, PagesAndPicturesDoNotDifferBetweenRuns) {
    const FlatNetwork network = twoCliques();
    const HierarchyFile file = twoLevels();
    ViewOptions options;
    options.title = "</title><script>";
    const std::string page = viewPage(network, file, options);
    EXPECT_EQ(page, viewPage(network, file, options));
    EXPECT_EQ(page.find("{{title}}"), std::string::npos);
    EXPECT_NE(page.find("<title>&lt;/title&gt;&lt;script&gt;</title>"), std::string::npos);
    const std::string svg = viewSvg(network, file, options);
    EXPECT_EQ(svg, viewSvg(network, file, options));
    EXPECT_EQ(svg.find("<script"), std::string::npos);
    // A hierarchy without clusters, and a network without links, are shown as well.
    const std::vector<Id> ids{3, 4};
    const FlatNetwork linkless = FlatNetwork::ofPairs({}, {}, {}, ids);
    EXPECT_NO_THROW(viewPage(linkless, HierarchyFile(), options));
    EXPECT_NO_THROW(viewSvg(FlatNetwork(), HierarchyFile(), options));
    EXPECT_THROW(viewPage(linkless, file, options), InputError);
}

}  // namespace

}  // namespace vorl::view
