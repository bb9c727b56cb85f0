// The hierarchy around communities: its shares, weights and levels, and its files.
#include <vorl/communities_hierarchy.hpp>

#include "support/folder.hpp"
#include "support/networks.hpp"

#include <vorl/fileio/printer_rhb.hpp>
#include <vorl/hierarchy/cluster.hpp>
#include <vorl/reading/hierarchy_file.hpp>

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

namespace vorl::test {
namespace {

using HierarchyT = Hierarchy<WeightedLinks>;
using ClusterT = HierarchyT::ClusterT;

FlatNetwork flat(const TestNetwork& network) {
    return FlatNetwork(makeNodes<WeightedLinks>(network), network.directed);
}

std::string description(const HierarchyT& hier) {
    const Folder folder;
    const std::string name = (folder / "out.rhb").string();
    FileWrapper file(std::fopen(name.c_str(), "w"));
    RhbPrinter<WeightedLinks>(hier).output(file);
    file.reset();
    return contents(name);
}

struct Built {
    FlatNetwork network;
    Communities found;
    LevelNum level = 0;
    std::shared_ptr<HierarchyT> hier;
    std::string text;
    HierarchyFile file;

    explicit Built(const TestNetwork& net, const ClusterOptions& options = ClusterOptions())
        : network(flat(net)),
          found(communities(network)),
          hier(communitiesHierarchy(network, found, options, &level)),
          text(description(*hier)),
          file(parseHierarchy(text, "out.rhb")) {}

    /// Own clusters of a level that have more than one part.
    Size formed(LevelNum index) const {
        Size count = 0;
        for (const ClusterT& cl : hier->levels()[index].clusters) count += cl.des.size() > 1;
        return count;
    }
};

/// The weight inside a cluster by the shares of its nodes, both directions counted.
AccWeight innerWeight(const Built& built, const std::map<Id, AccWeight>& shares) {
    const auto shareOf = [&](Id place) {
        const auto it = shares.find(built.network.ids[place]);
        return it == shares.end() ? 0 : it->second;
    };
    AccWeight sum = 0;
    for (Id i = 0; i < built.network.size(); ++i) {
        const AccWeight share = shareOf(i);
        sum += built.network.self[i] * share * share;
        for (Size ln = built.network.begin[i]; share > 0 && ln < built.network.begin[i + 1]; ++ln)
            sum += static_cast<AccWeight>(built.network.weight[ln]) * share *
                   shareOf(built.network.neighbour[ln]);
    }
    return sum;
}

void expectCommunities(const Built& built) {
    const auto& clusters = built.hier->levels().at(built.level).clusters;
    ASSERT_EQ(clusters.size(), built.found.count());
    Id community = 0;
    for (const ClusterT& cl : clusters) {
        const auto nodes = built.hier->unwrap(cl);
        const auto members = built.found.members(community++);
        std::map<Id, AccWeight> shares;
        for (const auto& [node, share] : nodes) shares[node->id] = static_cast<AccWeight>(share);
        ASSERT_EQ(shares.size(), members.size());
        for (const auto& [place, share] : members)
            EXPECT_NEAR(shares[built.network.ids[place]], static_cast<AccWeight>(share), 1e-3);
    }
    EXPECT_EQ(built.file.standingClusters()[built.level], built.found.count());
}

void expectSound(const Built& built) {
    const HierarchyT& hier = *built.hier;
    ASSERT_EQ(hier.nodes().size(), built.network.size());
    for (const auto& node : hier.nodes()) {
        std::uint32_t sum = 0;
        for (const auto& owner : node.owners) {
            EXPECT_EQ(owner.dest->levnum, 0u);
            sum += owner.numac;
        }
        EXPECT_EQ(node.totac, sum);
    }
    Id id = 0;
    const auto standing = built.file.standingClusters();
    for (LevelNum level = 0; level < hier.levels().size(); ++level) {
        EXPECT_EQ(built.file.heightOf(level), standing[level]);
        for (const ClusterT& cl : hier.levels()[level].clusters) {
            EXPECT_EQ(cl.id, id++);
            EXPECT_EQ(cl.levnum, level);
            ASSERT_FALSE(cl.des.empty());
            AccWeight count = 0;
            std::map<Id, AccWeight> shares;
            for (const auto& [node, share] : hier.unwrap(cl)) {
                shares[node->id] = static_cast<AccWeight>(share);
                count += static_cast<AccWeight>(share);
            }
            EXPECT_NEAR(cl.m_nnodes, count, 1e-4 * count);
            const AccWeight inner = innerWeight(built, shares);
            EXPECT_NEAR(cl.weight(), inner, 1e-3 * inner + 1e-6 * hier.weight());
            EXPECT_LE(cl.weight(), cl.ctxWeight(false) * (1 + 1e-5) + 1e-9 * hier.weight());
        }
    }
    EXPECT_EQ(id, hier.score().clusters);

    // Each node reaches the root as a whole.
    std::map<Id, AccWeight> reached;
    AccWeight weight = 0;
    for (const ClusterT* cl : hier.root()) {
        EXPECT_TRUE(cl->owners.empty());
        weight += cl->ctxWeight();
        for (const auto& [node, share] : hier.unwrap(*cl))
            reached[node->id] += static_cast<AccWeight>(share);
    }
    EXPECT_NEAR(weight, hier.weight(), 1e-4 * hier.weight());
    EXPECT_EQ(reached.size(), built.network.size());
    for (const auto& [node, share] : reached) EXPECT_NEAR(share, 1, 1e-5);
}

TEST(CommunitiesHierarchy, TwoCliquesThatShareANode) {
    TestNetwork net("cliques", 11);
    for (Id i = 0; i < 6; ++i)
        for (Id j = 0; j < i; ++j) {
            net.add(i, j);
            net.add(5 + i, 5 + j);
        }
    const Built built(net);
    expectSound(built);
    expectCommunities(built);
    ASSERT_EQ(built.found.count(), 2u);
    const auto path = built.file.ancestors(built.file.node(5));
    std::map<LevelNum, std::vector<double>> shares;
    for (const auto& [item, share] : path) shares[built.file.levelOf(item)].push_back(share);
    EXPECT_EQ(shares[built.level], (std::vector<double>{0.5, 0.5}));
}

TEST(CommunitiesHierarchy, LevelsInsideAndAbove) {
    // Cliques in threes, of which two hang together more; the third is carried past them.
    constexpr Id groups = 20;
    TestNetwork threes("threes of cliques", 18 * groups);
    for (Id group = 0; group < groups; ++group) {
        const auto node = [&](Id clique, Id place) { return 18 * group + 6 * clique + place; };
        for (Id clique = 0; clique < 3; ++clique)
            for (Id i = 0; i < 6; ++i)
                for (Id j = 0; j < i; ++j) threes.add(node(clique, i), node(clique, j));
        for (Id i = 0; i < 3; ++i) threes.add(node(0, i), node(1, i));
        for (Id i = 3; i < 5; ++i) threes.add(node(1, i), node(2, i));
        if (group) threes.add(node(0, 5), node(0, 5) - 18);
    }
    ClusterOptions options;
    options.gamma = 1;
    const Built above(threes, options);
    expectSound(above);
    expectCommunities(above);
    ASSERT_EQ(above.found.count(), 3 * groups);
    ASSERT_GT(above.hier->levels().size(), above.level + Size{2});
    for (const LevelNum step : {1u, 2u}) {
        EXPECT_EQ(above.formed(above.level + step), groups);
        for (const ClusterT& cl : above.hier->levels()[above.level + step].clusters) {
            EXPECT_EQ(cl.des.size(), 2u);
            EXPECT_NEAR(cl.m_nnodes, 6 + 6 * step, 1e-4);
        }
    }
    EXPECT_GT(above.hier->score().modularity, static_cast<float>(above.found.score().modularity));

    Random rnd(7);
    TestNetwork net("cliques in groups", 0);
    for (Id part = 0; part < 4; ++part) {
        const Id first = net.nodesNum;
        net.nodesNum += 40;
        for (Id block = 0; block < 5; ++block)
            for (Id i = 0; i < 8; ++i)
                for (Id j = 0; j < i; ++j) net.add(first + 8 * block + i, first + 8 * block + j);
        for (int i = 0; i < 240; ++i) net.add(first + rnd.below(40), first + rnd.below(40));
    }
    for (int i = 0; i < 20; ++i) net.add(rnd.below(160), rnd.below(160));
    const Built nested(net);
    expectSound(nested);
    expectCommunities(nested);
    EXPECT_GT(nested.level, 0u);
    EXPECT_GT(nested.formed(0), nested.found.count());
}

TEST(CommunitiesHierarchy, AnyNetwork) {
    Size shared = 0;
    for (std::uint64_t seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        ClusterOptions options;
        options.gamma = seed % 3 == 0 ? 1.f : -1.f;
        const Built built(randomNetwork(seed), options);
        expectSound(built);
        expectCommunities(built);
        shared += built.found.shared();
        if (HasFailure()) break;
    }
    EXPECT_GT(shared, 0u);
}

TEST(CommunitiesHierarchy, NothingToCluster) {
    const FlatNetwork none;
    EXPECT_TRUE(communitiesHierarchy(none, communities(none))->levels().empty());
    const Built isolated(TestNetwork("isolated", 3));
    expectSound(isolated);
    EXPECT_EQ(isolated.hier->root().size(), 3u);
    EXPECT_EQ(isolated.hier->levels().size(), 1u);
    EXPECT_THROW(communitiesHierarchy(none, isolated.found), std::invalid_argument);
}

TEST(CommunitiesHierarchy, SameForAnyOrderOfLinksAndBuilds) {
    TestNetwork net = ringOfCliques(12, 6);
    const Built first(net);
    expectSound(first);
    expectCommunities(first);
    std::reverse(net.links.begin(), net.links.end());
    EXPECT_EQ(Built(net).text, first.text);
    // What is gathered above keeps to the wanted size of the root.
    ClusterOptions options;
    options.rootMax = 2;
    const Built small(net, options);
    expectSound(small);
    expectCommunities(small);
    EXPECT_LE(small.hier->root().size(), first.hier->root().size());
}

}  // namespace
}  // namespace vorl::test
