// Networks out of files against the same ones assembled call by call.
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/fileio/parser_rcg.hpp>

#include "support/folder.hpp"
#include "support/links_text.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace vorl::test {
namespace {

/// Links of one node, as a line of a file has them.
struct Line {
    Id src;
    bool arcs;
    InpLinks<true> links;
};

struct Shape {
    const char* name;
    FileFormat format;
    bool repeats;    ///< links and self links may come again
    bool mixed;      ///< edges and arcs in one file
    bool announced;  ///< the nodes are told beforehand
    std::vector<Id> ids;
};

std::vector<Line> randomLines(const Shape& shape, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    const auto below = [&](std::size_t bound) {
        return static_cast<std::size_t>(random() % bound);
    };
    std::vector<std::size_t> pairs;  // of places of ids, the lower one times their number
    const std::size_t count = shape.ids.size();
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t j = i; j < count; ++j)
            for (int times = shape.repeats ? 3 : 1; times > 0; --times)
                if (below(3) == 0) pairs.push_back(i * count + j);
    std::shuffle(pairs.begin(), pairs.end(), random);
    std::vector<Line> lines;
    bool arcs = shape.format == FileFormat::NSA;
    for (const std::size_t pair : pairs) {
        Id src = shape.ids[pair / count];
        Id dst = shape.ids[pair % count];
        if (below(2) != 0) std::swap(src, dst);
        if (shape.mixed && below(20) == 0) arcs = !arcs;
        if (lines.empty() || lines.back().src != src || lines.back().arcs != arcs)
            lines.push_back({src, arcs, {}});
        lines.back().links.emplace_back(dst, static_cast<LinkWeight>(1 + below(99)) / 8);
    }
    return lines;
}

std::string textOf(const Shape& shape, const std::vector<Line>& lines, bool weighted) {
    const auto end = [&](const InpLink<true>& ln) {
        const std::string mark = shape.format == FileFormat::RCG ? ":" : " ";
        return std::to_string(ln.id) + (weighted ? mark + digits(double{ln.weight}) : "");
    };
    std::string text;
    if (shape.announced)
        text = "/Nodes " + std::to_string(shape.ids.size()) + " " +
               std::to_string(shape.ids.front()) + "\n";
    const Line* former = nullptr;
    for (const Line& line : lines) {
        const std::string src = std::to_string(line.src);
        if (shape.format != FileFormat::RCG) {
            for (const auto& ln : line.links) text += src + " " + end(ln) + "\n";
        } else {
            if (!former || former->arcs != line.arcs) text += line.arcs ? "/Arcs\n" : "/Edges\n";
            text += src + ">";
            for (const auto& ln : line.links) text += " " + end(ln);
            text += "\n";
        }
        former = &line;
    }
    return text;
}

template <bool WEIGHTED>
std::string told(Graph<WEIGHTED>& graph) {
    std::string ids;
    for (const auto& node : graph.nodes()) {
        ids += std::to_string(node.id) + " ";
        EXPECT_EQ(graph.node(node.id), &node);
    }
    return ids + (graph.directed() ? "\narcs\n" : "\nedges\n") + linksText(graph.nodes());
}

template <bool WEIGHTED>
std::string read(const Shape& shape, const std::string& text, bool sumdups) {
    const Folder folder;
    InpOptions options;
    options.format = shape.format;
    options.sumdups = sumdups;
    options.filename = folder.write("network", text);
    Trace trace;
    const auto graph = shape.format == FileFormat::RCG
                           ? RcgParser(options).build<Graph<WEIGHTED>>()
                           : NslParser(options).build<Graph<WEIGHTED>>();
    return told(*graph) + trace.take();
}

template <bool WEIGHTED>
std::string assemble(const Shape& shape, const std::vector<Line>& lines, bool sumdups) {
    Graph<WEIGHTED> graph(0, false, sumdups);
    Trace trace;
    if (shape.announced) graph.addNodes(static_cast<Id>(shape.ids.size()), shape.ids.front());
    StructLinkErrors errors("WARNING build(), the duplicated links are skipped: ");
    for (const Line& line : lines) {
        InpLinks<WEIGHTED> links;
        for (const auto& ln : line.links) links.emplace_back(ln.id, ln.weight);
        if (shape.announced)
            line.arcs ? graph.template addNodeLinks<true>(line.src, links, &errors)
                      : graph.template addNodeLinks<false>(line.src, links, &errors);
        else
            line.arcs ? graph.template addNodeAndLinks<true>(line.src, links, &errors)
                      : graph.template addNodeAndLinks<false>(line.src, links, &errors);
    }
    errors.show();
    return told(graph) + trace.take();
}

void compare(const Shape& shape, const std::vector<Line>& lines, bool sumdups) {
    ASSERT_EQ(read<true>(shape, textOf(shape, lines, true), sumdups),
              assemble<true>(shape, lines, sumdups));
    ASSERT_EQ(read<false>(shape, textOf(shape, lines, false), sumdups),
              assemble<false>(shape, lines, sumdups));
}

std::vector<Id> idsFrom(Id first, Id count, Id step = 1) {
    std::vector<Id> ids;
    for (Id i = 0; i < count; ++i) ids.push_back(first + i * step);
    return ids;
}

TEST(LoadedNetworks, AreThoseOfSingleCalls) {
    const Id last = ID_MAX - 1;
    const Shape shapes[] = {
        {"edges", FileFormat::NSE, false, false, false, idsFrom(0, 40)},
        {"repeated edges", FileFormat::NSE, true, false, false, idsFrom(1, 40)},
        {"arcs", FileFormat::NSA, false, false, false, idsFrom(0, 40, 3)},
        {"repeated arcs", FileFormat::NSA, true, false, false, idsFrom(5, 40)},
        {"strewn ids", FileFormat::NSE, false, false, false, idsFrom(7, 3000, 1'400'000)},
        {"ids at the limit", FileFormat::RCG, true, true, false, idsFrom(last - 39, 40)},
        {"edges and arcs", FileFormat::RCG, false, true, false, idsFrom(0, 40)},
        {"announced nodes", FileFormat::RCG, true, true, true, idsFrom(900, 40)},
    };
    for (const Shape& shape : shapes)
        for (std::uint64_t seed = 1; seed <= (shape.ids.size() > 100 ? 1 : 6); ++seed)
            for (const bool sumdups : {false, true}) {
                SCOPED_TRACE(std::string(shape.name) + ", seed " + std::to_string(seed) +
                             (sumdups ? ", summed" : ""));
                Shape used = shape;
                if (used.ids.size() > 100) {
                    std::shuffle(used.ids.begin(), used.ids.end(), std::mt19937_64(seed));
                    used.ids.resize(200);
                }
                compare(used, randomLines(used, seed), sumdups);
            }
}

TEST(LoadedNetworks, HaveListsOfThousandsInAnyOrder) {
    std::vector<Line> lines{{0, true, {}}, {1, false, {}}};
    for (Id id = 2; id < 5000; ++id)
        for (Line& line : lines)
            for (int times = 1 + (id % 3 == 0); times > 0; --times)
                line.links.emplace_back(id, static_cast<LinkWeight>(id % 64) / 8 + 1);
    for (Line& line : lines) std::shuffle(line.links.begin(), line.links.end(), std::mt19937_64(5));
    for (const bool sumdups : {false, true})
        compare({"hubs", FileFormat::RCG, true, true, false, {}}, lines, sumdups);
}

TEST(LoadedNetworks, KnowIdsAgainHoweverTheyCome) {
    // The first ones are far above all that follow for long.
    std::vector<Line> lines{{90'000, false, {InpLink<true>(4'000'000'000)}}};
    for (Id id = 0; id < 20'000; ++id) lines.push_back({id, false, {InpLink<true>(id + 1)}});
    for (const Id id : {90'000u, 4'000'000'000u, 90'001u, 5u})
        lines.push_back({id, false, {InpLink<true>(7)}});
    compare({"far ids", FileFormat::NSE, false, false, false, {}}, lines, false);
}

TEST(LoadedNetworks, AreTheSameInRandomOrder) {
    const Folder folder;
    InpOptions options;
    options.format = FileFormat::RCG;
    options.shuffle = true;
    for (const char* nodes : {"", "/Nodes 6 3\n"}) {
        options.filename =
            folder.write("network", nodes + std::string("/Edges\n3> 4 5 6\n7> 8 3\n4> 8\n"));
        const auto graph = RcgParser(options).build<Graph<false>>();
        std::vector<std::string> links;
        for (const auto& node : graph->nodes())
            for (const auto& ln : node.links)
                links.push_back(std::to_string(node.id) + ">" + std::to_string(ln.dest->id));
        std::sort(links.begin(), links.end());
        EXPECT_EQ(links, (std::vector<std::string>{"3>4", "3>5", "3>6", "3>7", "4>3", "4>8", "5>3",
                                                   "6>3", "7>3", "7>8", "8>4", "8>7"}));
        EXPECT_EQ(graph->nodes().size(), 6);
    }
}

TEST(LoadedNetworks, HaveLinesOfAnyLength) {
    // Around the sizes of the blocks in which a file is read, and far above them.
    for (const std::size_t size :
         {(1u << 17) - 2, (1u << 18) - 1, 1u << 18, (1u << 18) + 1, 1u << 22})
        for (const char* end : {"", "\n"}) {
            SCOPED_TRACE(size);
            const Shape shape{"", FileFormat::NSE, false, false, false, {}};
            const std::string gap(size, ' ');
            const std::string text = "0 1\n0" + gap + "2\n#" + gap + "\n2 3\n3" + gap + "0" + end;
            EXPECT_EQ(read<false>(shape, text, false),
                      "0 1 2 3 \nedges\n0>1:1 0>2:1 0>3:1 1>0:1 2>0:1 2>3:1 3>0:1 3>2:1 ");
        }
}

TEST(LoadedNetworks, GiveTheirNodesByIdAlsoWhenClustered) {
    const Folder folder;
    const Trace trace;
    InpOptions options;
    options.format = FileFormat::NSE;
    options.filename = folder.write("network", "7 4\n4 9\n9 7\n9 12\n12 13\n");
    const auto graph = NslParser(options).build<Graph<false>>();
    const auto hier = graph->buildHierarchy();
    for (const auto& node : hier->nodes()) EXPECT_EQ(graph->node(node.id), &node);
    EXPECT_THROW(graph->node(5), std::out_of_range);
    Graph<false>::IdNodesT idnodes;
    graph->release(&idnodes);
    EXPECT_EQ(idnodes.size(), 5);
    EXPECT_THROW(graph->node(7), std::out_of_range);

    // Nodes that are gone.
    const auto other = NslParser(options).build<Graph<false>>();
    cluster<UnweightedLinks>(other->nodes(), true, ClusterOptions());
    EXPECT_THROW(other->node(5), std::out_of_range);
    other->addNodes(1, 5);
    EXPECT_EQ(other->node(5)->id, 5);
}

}  // namespace
}  // namespace vorl::test
