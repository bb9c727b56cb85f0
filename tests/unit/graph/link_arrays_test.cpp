// Networks of links in arrays are those that a file of the same links makes.
#include <vorl/link_arrays.hpp>

#include <vorl/reading/network.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorl::test {

namespace {

// Repeated and reversed links, a self link, and ids with gaps.
const std::vector<Id> SRC{9, 2, 2, 5, 700000, 5, 9};
const std::vector<Id> DST{2, 9, 5, 5, 9, 9, 2};
const std::vector<LinkWeight> WEIGHTS{1, 3, 0.5F, 2, 4, 1, 7};

struct Case {
    bool directed;
    bool sum;
};

class LinkArraysOf : public testing::TestWithParam<Case> {
protected:
    LinkArrays arrays() const {
        return {.sources = SRC,
                .destinations = DST,
                .weights = WEIGHTS,
                .nodes = {},
                .directed = GetParam().directed,
                .sumDuplicates = GetParam().sum};
    }
    ReadOptions options() const {
        ReadOptions options;
        options.file = GetParam().directed ? "links.nsa" : "links.nse";
        options.sumDuplicates = GetParam().sum;
        return options;
    }
    std::string text() const {
        std::string text;
        for (std::size_t i = 0; i < SRC.size(); ++i)
            text += std::to_string(SRC[i]) + " " + std::to_string(DST[i]) + " " +
                    std::to_string(WEIGHTS[i]) + "\n";
        return text;
    }
};

TEST_P(LinkArraysOf, AreTheNetworkOfAFile) {
    const std::string file = text();
    TextSource source(file);
    const FlatNetwork expected = readUndirected(source, options()).links;
    const FlatNetwork network = flatNetwork(arrays());
    EXPECT_EQ(network.ids, expected.ids);
    EXPECT_EQ(network.begin, expected.begin);
    EXPECT_EQ(network.neighbour, expected.neighbour);
    EXPECT_EQ(network.weight, expected.weight);
    EXPECT_EQ(network.self, expected.self);
}

TEST_P(LinkArraysOf, AreTheGraphOfAFile) {
    const std::string file = text();
    TextSource source(file);
    const auto expected =
        std::get<std::shared_ptr<Graph<true>>>(readNetwork(source, options()).graph);
    const auto graph = std::get<std::shared_ptr<Graph<true>>>(graphOf(arrays()));
    EXPECT_EQ(graph->directed(), GetParam().directed);
    ASSERT_EQ(graph->nodes().size(), expected->nodes().size());
    auto other = expected->nodes().begin();
    for (const auto& node : graph->nodes()) {
        EXPECT_EQ(node.id, other->id);
        EXPECT_EQ(node.m_sweight, other->m_sweight);
        ASSERT_EQ(node.links.size(), other->links.size());
        for (std::size_t i = 0; i < node.links.size(); ++i) {
            EXPECT_EQ(node.links[i].dest->id, other->links[i].dest->id);
            EXPECT_EQ(node.links[i].weight, other->links[i].weight);
        }
        ++other;
    }
}

INSTANTIATE_TEST_SUITE_P(All, LinkArraysOf,
                         testing::Values(Case{false, false}, Case{false, true}, Case{true, false},
                                         Case{true, true}));

TEST(LinkArrays, NodesComeFirstAndLinksOfWeightZeroAreNone) {
    const std::vector<Id> src{1}, dst{2}, nodes{7, 2};
    const std::vector<LinkWeight> zero{0};
    const auto graph = std::get<std::shared_ptr<Graph<true>>>(
        graphOf({.sources = src, .destinations = dst, .weights = zero, .nodes = nodes}));
    std::vector<Id> ids;
    for (const auto& node : graph->nodes()) {
        ids.push_back(node.id);
        EXPECT_TRUE(node.links.empty());
    }
    EXPECT_EQ(ids, (std::vector<Id>{7, 2, 1}));
}

TEST(LinkArrays, RefuseWhatIsNoLink) {
    const std::vector<Id> one{1}, two{1, 2}, none{ID_NONE};
    EXPECT_THROW(flatNetwork({.sources = one, .destinations = two}), std::invalid_argument);
    EXPECT_THROW(flatNetwork({.sources = one, .destinations = none}), std::invalid_argument);
    for (const LinkWeight wrong :
         {-1.F, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        const std::vector<LinkWeight> weight{wrong};
        EXPECT_THROW(graphOf({.sources = one, .destinations = one, .weights = weight}),
                     std::invalid_argument);
    }
}

}  // namespace

}  // namespace vorl::test
