// Whole runs on real networks against figures of an independent implementation.
#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/types/trace.hpp>

#include "support/describe.hpp"
#include "support/networks.hpp"

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

struct Figures {
    const char* file;
    float gamma;
    Coupling rootMax;
    std::size_t levels;
    Size clusters;
    std::size_t root;
    float modularity;
};

std::ostream& operator<<(std::ostream& out, const Figures& figures) {
    return out << figures.file << " gamma " << figures.gamma << " root " << figures.rootMax;
}

class RealNetwork : public testing::TestWithParam<Figures> {};

template <class HierT>
void check(const HierT& hier, const Figures& figures) {
    EXPECT_EQ(hier.levels().size(), figures.levels);
    EXPECT_EQ(hier.score().clusters, figures.clusters);
    EXPECT_EQ(hier.root().size(), figures.root);
    EXPECT_FLOAT_EQ(hier.score().modularity, figures.modularity);
}

TEST_P(RealNetwork, HasTheFigures) {
    ftrace = nullptr;
    const Figures& figures = GetParam();
    InpOptions input;
    input.filename = std::string(VORL_DATA_DIR "/") + figures.file;
    input.format = inpFileFmt(figures.file);
    ClusterOptions options(figures.gamma);
    options.rootMax = figures.rootMax;
    NslParser parser(input);
    if (parser.weighted())
        check(*parser.build<Graph<true>>()->buildHierarchy(options), figures);
    else
        check(*parser.build<Graph<false>>()->buildHierarchy(options), figures);
}

INSTANTIATE_TEST_SUITE_P(
    , RealNetwork,
    testing::Values(Figures{"karate.nse", -1, 0, 7, 30, 4, 0.412615031f},
                    Figures{"karate.nse", 1, 0, 7, 30, 4, 0.418803424f},
                    Figures{"karate.nse", -1, 1, 7, 30, 4, 0.468292028f},
                    Figures{"karate.nse", 1, 1, 8, 31, 3, 0.535688519f},
                    Figures{"dolphins.nse", -1, 0, 9, 75, 5, 0.48734158f},
                    Figures{"football.nse", -1, 0, 7, 135, 8, 0.58597827f},
                    Figures{"polbooks.nse", -1, 0, 15, 142, 5, 0.51615822f},
                    Figures{"lesmis.nse", -1, 0, 14, 109, 6, 0.56227648f},
                    Figures{"jazz.nse", -1, 0, 38, 326, 3, 0.41547516f},
                    Figures{"netscience.nse", -1, 0, 23, 1036, 289, 0.94882083f},
                    Figures{"power.nse", -1, 0, 40, 5278, 47, 0.93044591f},
                    Figures{"celegansneural.nsa", -1, 0, 52, 486, 11, 0.49661097f}));

struct Shape {
    std::vector<std::pair<Size, Id>> levels;
    std::vector<Id> root;
    std::uint32_t modularity;
    std::uint32_t egamma;
    float conductance;
};

template <class LinksT>
void checkShape(const Hierarchy<LinksT>& hier, const Shape& shape) {
    std::vector<std::pair<Size, Id>> levels;
    for (const auto& level : hier.levels())
        levels.emplace_back(level.clusters.size(), level.fullsize);
    EXPECT_EQ(levels, shape.levels);
    std::vector<Id> root;
    const Id base = hier.levels().front().clusters.front().id;
    for (const auto* cl : hier.root()) root.push_back(cl->id - base);
    EXPECT_EQ(root, shape.root);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(hier.score().modularity), shape.modularity);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(hier.score().egamma), shape.egamma);
    EXPECT_EQ(hier.score().conductance, shape.conductance);
}

std::shared_ptr<Hierarchy<UnweightedLinks>> build(const TestNetwork& network, float gamma) {
    ftrace = nullptr;
    auto nodes = makeNodes<UnweightedLinks>(network);
    return cluster<UnweightedLinks>(nodes, true, ClusterOptions(gamma));
}

TEST(KnownShapes, RingOfCliques) {
    checkShape(*build(ringOfCliques(5, 6), -1),
               {{{15, 15}, {5, 5}}, {15, 16, 17, 18, 19}, 0x3F3C2111, 0x3F9019E9, 0.0625f});
}

TEST(KnownShapes, CliquesThatShareANode) {
    TestNetwork network("two cliques", 9);
    for (Id first : {0u, 4u})
        for (Id i = 0; i < 5; ++i)
            for (Id j = i + 1; j < 5; ++j) network.add(first + i, first + j);
    const auto hier = build(network, 1);
    checkShape(*hier, {{{3, 3}, {2, 2}}, {3, 4}, 0x3E99999A, 0x3F5D9914, 0.200000003f});
    // The shared node lies half in each clique.
    const auto& owners = std::next(hier->nodes().begin(), 4)->owners;
    ASSERT_EQ(owners.size(), 1u);
    const auto& above = owners.front().dest->owners;
    ASSERT_EQ(above.size(), 2u);
    EXPECT_EQ(above[0].numac, above[1].numac);
}

TEST(KnownShapes, Karate) {
    ftrace = nullptr;
    InpOptions input;
    input.filename = VORL_DATA_DIR "/karate.nse";
    input.format = FileFormat::NSE;
    const auto hier = NslParser(input).build<Graph<false>>()->buildHierarchy(ClusterOptions(-1));
    checkShape(*hier, {{{17, 17}, {4, 13}, {3, 10}, {3, 7}, {1, 6}, {1, 5}, {1, 4}},
                       {19, 24, 26, 29},
                       0x3ED34247,
                       0x3F8B90C0,
                       0.287933081f});
}

}  // namespace
}  // namespace vorl::test
