// What is told, measured and written of hierarchies of random networks, read back and measured in
// another way.
#include "support/describe.hpp"
#include "support/folder.hpp"
#include "support/links_text.hpp"
#include "support/networks.hpp"
#include "support/trace.hpp"

#include <vorl/communities.hpp>
#include <vorl/communities_text.hpp>
#include <vorl/fileio/hierarchy_table.hpp>
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/fileio/parser_rcg.hpp>
#include <vorl/reading/described_hierarchy.hpp>
#include <vorl/reading/evaluation.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/cluster_ids.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

namespace vorl::test {
namespace {

/// A network in sections, with all of its nodes.
std::string sectionsOf(const TestNetwork& network) {
    std::string text = "/Graph weighted:1\n/Nodes " + std::to_string(network.nodesNum) + " 0\n" +
                       (network.directed ? "/Arcs\n" : "/Edges\n");
    char line[64];
    for (const auto& [src, dst, weight] : network.links) {
        std::snprintf(line, sizeof line, "%u> %u:%.9g\n", src, dst, static_cast<double>(weight));
        text += line;
    }
    for (const auto& [node, weight] : network.selfs) {
        std::snprintf(line, sizeof line, "%u> %u:%.9g\n", node, node, static_cast<double>(weight));
        text += line;
    }
    return text;
}

Network networkOf(const std::string& text, NetworkFormat format = NetworkFormat::RCG) {
    TextSource source(text);
    return readNetwork(source, {.file = "net", .format = format});
}

/// The shares of the nodes of each cluster.
using Members = std::map<Id, std::map<Id, double>>;

Members membersOf(const ClustersFile& file) {
    Members result;
    const std::vector<Share> shares = file.completeShares();
    for (const auto& cluster : file.clusters)
        for (std::size_t i = cluster.begin; i < cluster.end; ++i)
            result[cluster.id][file.members[i]] = static_cast<double>(shares[i]);
    return result;
}

void expectAlike(const Members& found, const Members& expected, double tolerance) {
    ASSERT_EQ(found.size(), expected.size());
    for (const auto& [cluster, members] : expected) {
        ASSERT_TRUE(found.contains(cluster)) << cluster;
        const auto& own = found.at(cluster);
        ASSERT_EQ(own.size(), members.size()) << cluster;
        for (const auto& [node, share] : members) {
            ASSERT_TRUE(own.contains(node)) << node;
            ASSERT_NEAR(own.at(node), share, tolerance) << cluster << " " << node;
        }
    }
}

template <class LinksT>
void expectTables(const Hierarchy<LinksT>& hier, const HierarchyFile& file) {
    for (const TableForm form : {TableForm::TABS, TableForm::COMMAS, TableForm::JSON}) {
        std::vector<LevelNum> levels;
        for (LevelNum level = 0; level < file.levels(); ++level) levels.push_back(level);
        const std::string text = tableText(hier, levels, false, form);
        const ClustersFile table = parseTable(text, "t");
        ASSERT_EQ(table.toldLevels.size(), levels.size() == 1 ? 0 : levels.size());
        for (const LevelNum level : levels) {
            const ClustersFile at =
                levels.size() == 1 ? table : table.selected(table.toldLevels[level]);
            expectAlike(membersOf(at), membersOf(file.cut(level)), 1e-5);
        }
    }
}

/// Whether a node or cluster has several owners.
bool isShared(const HierarchyFile& file) {
    for (HierarchyFile::Item item = 0; item < file.nodes() + file.clusters(); ++item)
        if (file.owners(item).size() > 1) return true;
    return false;
}

struct Counts {
    int shared = 0;
    int measured = 0;
};

template <class LinksT>
void expectHierarchy(const Hierarchy<LinksT>& hier, const std::string& network, Counts& counts) {
    const HierarchyFile file = describedHierarchy(hier, "h");
    const Folder folder;
    writeDescription(hier, (folder / "h.rhb").string());
    const HierarchyFile read = parseHierarchy(contents(folder / "h.rhb"), "h");
    ASSERT_EQ(read.levels(), file.levels());
    ASSERT_EQ(read.nodes(), file.nodes());
    ASSERT_EQ(read.clusters(), file.clusters());
    const bool shared = isShared(file);
    counts.shared += shared;
    const auto measures = levelMeasures(hier, 0.75);
    const auto standing = file.standingClusters();
    ASSERT_EQ(measures.size(), standing.size());
    for (LevelNum level = 0; level < file.levels(); ++level) {
        ASSERT_EQ(read.heightOf(level), file.heightOf(level));
        ASSERT_EQ(measures[level].clusters, standing[level]);
        const ClustersFile cut = file.cut(level);
        // Rounded to six digits at each step of a path.
        expectAlike(membersOf(read.cut(level)), membersOf(cut), 1e-5 * (level + 1.));
        for (const auto& cl : hier.levels()[level].clusters) {
            std::map<Id, double> nodes;
            for (const auto& part : file.members(file.cluster(cl.id)))
                nodes[file.id(part.item)] = part.share;
            std::map<Id, double> unwrapped;
            for (const auto& [node, share] : hier.unwrap(cl))
                unwrapped[node->id] = static_cast<double>(share);
            expectAlike({{0, unwrapped}}, {{0, nodes}}, 1e-5);
        }
        // The file's measures are those of the build where nothing is shared, and all lies in some
        // cluster.
        if (shared || cut.nodes.size() != file.nodes()) continue;
        Network fresh = networkOf(network);
        const Intrinsics found = evaluateClusters(fresh, cut, "net", 0.75);
        EXPECT_NEAR(measures[level].modularity, static_cast<double>(found.mod), 1e-5);
        // A single cluster has none, and clusters are apart where next to nothing is between them.
        if (standing[level] > 1 && found.cdn > 0) {
            EXPECT_NEAR(measures[level].conductance, static_cast<double>(found.cdn), 1e-5);
        }
        ++counts.measured;
        if (level + 1 == file.levels()) {
            EXPECT_NEAR(rootModularity(hier, 0.75), static_cast<double>(found.mod), 1e-5);
        }
    }
    if (file.levels() != 0) expectTables(hier, file);
}

TEST(WrittenHierarchies, AreReadAndMeasuredAsTheyWereBuilt) {
    Counts counts;
    Trace trace;
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        Random rnd(seed);
        const TestNetwork shape =
            seed % 2 ? randomNetwork(seed)
                     : overlappingBlocks(rnd, 2 + rnd.below(4), 5 + rnd.below(6), 1 + rnd.below(3));
        if (shape.links.empty()) continue;
        const std::string text = sectionsOf(shape);
        SCOPED_TRACE(text);
        Network network = networkOf(text);
        std::visit(
            [&](auto& graph) {
                const std::string before = linksText(graph->nodes());
                using LinksT = typename std::decay_t<decltype(*graph)>::LinksT;
                std::string copied;
                std::string direct;
                {
                    const ClusterIdsScope<LinksT> ids;
                    const auto hier = clusterCopy(*graph, ClusterOptions());
                    copied = describe(*hier);
                    EXPECT_EQ(linksText(graph->nodes()), before);
                    expectHierarchy(*hier, text, counts);
                }
                // Back links of arcs are made for a copy, whatever the validation is.
                for (const Validation validation : {Validation::NONE, Validation::SEVERE}) {
                    ClusterOptions options;
                    options.validation = validation;
                    const ClusterIdsScope<LinksT> ids;
                    EXPECT_EQ(describe(*clusterCopy(*graph, options)), copied);
                }
                const ClusterIdsScope<LinksT> ids;
                direct = describe(*graph->buildHierarchy());
                EXPECT_EQ(direct, copied);
            },
            network.graph);
        if (HasFailure()) return;
    }
    EXPECT_GT(counts.shared, 3);
    EXPECT_GT(counts.measured, 30);
}

/// The names of the nodes in each community.
std::map<Id, std::map<std::string, double>> namedMembers(const ClustersFile& file) {
    std::map<Id, std::map<std::string, double>> result;
    const std::vector<Share> shares = file.completeShares();
    for (Id place = 0; place < file.clusters.size(); ++place) {
        const auto& cluster = file.clusters[place];
        for (std::size_t i = cluster.begin; i < cluster.end; ++i)
            result[file.numbered ? cluster.id : place][file.nodeName(file.members[i])] =
                static_cast<double>(shares[i]);
    }
    return result;
}

TEST(WrittenCommunities, ComeBackFromEachForm) {
    Random rnd(113);
    Size shared = 0;
    for (int round = 0; round < 24; ++round) {
        const TestNetwork blocks =
            overlappingBlocks(rnd, 3 + rnd.below(4), 6 + rnd.below(8), 1 + rnd.below(2));
        // Half of the nodes bear names, with all that has a meaning in a table.
        const auto labels = std::make_shared<Labels>();
        std::vector<Id> ids;
        for (Id node = 0; node < blocks.nodesNum; ++node) {
            const char* const odd[] = {"a b", "x,y", "#1", "\"q\"", "'it's", "7;", "0{}", "*v"};
            ids.push_back(round % 2 && node % 2
                              ? labels->add(odd[node / 2 % 8] + std::to_string(node))
                              : 10 * node);
        }
        std::vector<Id> src, dst;
        for (const TestLink& link : blocks.links) {
            src.push_back(ids[link.src]);
            dst.push_back(ids[link.dst]);
        }
        const Communities found = communities(FlatNetwork::ofPairs(src, dst, {}, ids));
        shared += found.shared();
        std::map<Id, std::map<std::string, double>> expected;
        CommunityArrays arrays;
        std::vector<Size> ends;
        std::vector<Id> members;
        std::vector<Share> shares;
        for (Id community = 0; community < found.count(); ++community) {
            for (const auto& [place, share] : found.members(community)) {
                const Id id = found.ids()[place];
                expected[community][naming::plain(id, labels.get())] = static_cast<double>(share);
                members.push_back(id);
                shares.push_back(share);
            }
            ends.push_back(members.size());
        }
        arrays = {ends, members, shares, found.nodes()};
        const Labels* const names = round % 2 ? labels.get() : nullptr;
        const std::string list = clustersText(found, names);
        EXPECT_EQ(clustersText(arrays, names), list);
        const ClustersFile read = parseClusters(list, "c");
        EXPECT_NO_THROW(read.requireStrict());
        EXPECT_EQ(read.toldNodes, found.nodes());
        EXPECT_EQ(namedMembers(read), expected) << list;
        for (const TableForm form : {TableForm::TABS, TableForm::COMMAS, TableForm::JSON}) {
            const std::string table = tableText(found, form, names);
            EXPECT_EQ(tableText(arrays, form, names), table);
            EXPECT_EQ(namedMembers(parseTable(table, "t")), expected) << table;
        }
        // Communities without members, and lists of different lengths, are no communities.
        std::vector<Size> hollow = ends;
        hollow.insert(hollow.begin() + rnd.below(static_cast<Id>(ends.size())), Size{0});
        std::sort(hollow.begin(), hollow.end());
        arrays.ends = hollow;
        EXPECT_THROW(clustersText(arrays, names), std::invalid_argument);
        EXPECT_THROW(tableText(arrays, TableForm::TABS, names), std::invalid_argument);
        arrays.ends = std::span(ends).first(ends.size() - 1);
        EXPECT_THROW(clustersText(arrays, names), std::invalid_argument);
        arrays.ends = ends;
        arrays.shares = std::span(shares).first(shares.size() - 1);
        EXPECT_THROW(tableText(arrays, TableForm::JSON, names), std::invalid_argument);
        if (HasFailure()) return;
    }
    EXPECT_GT(shared, 15u);
}

/// What the parsers make of a text.
template <class ParserT>
std::string parsed(const Folder& folder, const std::string& text, FileFormat format) {
    InpOptions options;
    options.filename = folder.write("net", text);
    options.format = format;
    Trace trace;
    return linksText(ParserT(options).template build<Graph<true>>()->nodes());
}

TEST(BothReaders, MakeTheSameOfAText) {
    Random rnd(127);
    const Folder folder;
    for (int round = 0; round < 150; ++round) {
        const bool arcs = round % 2;
        const bool sections = round % 3 == 0;
        const char* const ends[] = {"\n", "\n\n", " \t\n", "\n# a comment\n", "\n  # another\n"};
        const auto blank = [&] { return std::string(rnd.chance(0.8) ? " " : "\t  "); };
        const Id nodes = 2 + rnd.below(12);
        std::string text;
        const bool headed = rnd.chance(0.5);
        const Id lines = 1 + rnd.below(25);
        if (sections && headed)
            text = "/Graph weighted:1\n/nodes " + std::to_string(nodes) + blank() + "3\n";
        else if (headed)
            text = std::string("# Nodes: 15, ") + (arcs ? "Arcs" : "Edges") + ": " +
                   std::to_string(lines) + ", Weighted: 1\n";
        for (Id line = 0; line < lines; ++line) {
            if (sections && (line == 0 || rnd.chance(0.1)))
                text += rnd.chance(0.5) ? "/EDGES\n" : "/Arcs\n";
            text += (rnd.chance(0.2) ? blank() : "") + std::to_string(3 + rnd.below(nodes));
            if (sections) text += ">";
            for (Id link = 0; link < (sections ? 1 + rnd.below(3) : 1); ++link) {
                text += blank() + std::to_string(3 + rnd.below(nodes));
                char weight[32];
                std::snprintf(weight, sizeof weight, rnd.chance(0.5) ? "%.3g" : "%.2e",
                              rnd.below(9) / 8.);
                if (rnd.chance(0.6)) text += (sections ? ":" : blank()) + weight;
            }
            text += ends[rnd.chance(0.7) ? 0 : rnd.below(5)];
        }
        TextSource source(text);
        ReadOptions options{.file = "net"};
        options.format = sections ? NetworkFormat::RCG
                         : arcs   ? NetworkFormat::NSA
                                  : NetworkFormat::NSE;
        const Network network = readNetwork(source, options);
        const std::string found =
            std::visit([](const auto& graph) { return linksText(graph->nodes()); }, network.graph);
        const std::string expected =
            sections ? parsed<RcgParser>(folder, text, FileFormat::RCG)
                     : parsed<NslParser>(folder, text, arcs ? FileFormat::NSA : FileFormat::NSE);
        ASSERT_EQ(found, expected) << text;
    }
}

}  // namespace
}  // namespace vorl::test
