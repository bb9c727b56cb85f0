// Reduction of links during a build: the margin, what one item would drop, and the agreement.
#include <vorl/processing/reduction.hpp>

#include <gtest/gtest.h>

#include <vector>

namespace vorl::test {
namespace {

using NodeT = Node<WeightedLinks>;

TEST(ReductionMargin, GrowsWithTheLogarithm) {
    EXPECT_EQ(reducedLinksMarg(5, Reduction::ACCURATE), 0);
    EXPECT_EQ(reducedLinksMarg(6, Reduction::ACCURATE), 5);
    EXPECT_EQ(reducedLinksMarg(3, Reduction::SEVERE), 0);
    EXPECT_EQ(reducedLinksMarg(4, Reduction::SEVERE), 3);
    EXPECT_EQ(reducedLinksMarg(1000, Reduction::NONE), 0);
    EXPECT_EQ(reducedLinksMarg(1000, Reduction::MEAN), 7);
    EXPECT_EQ(reducedLinksMarg(1000000, Reduction::SEVERE), 14);
    // Natural logarithms 3.497 and 3.526.
    EXPECT_EQ(reducedLinksMarg(33, Reduction::SEVERE), 3);
    EXPECT_EQ(reducedLinksMarg(34, Reduction::SEVERE), 4);
    EXPECT_EQ(reducedLinksMarg(34, Reduction::MEAN | Reduction::CRITERIA_WEIGHT), 5);
    EXPECT_EQ(reducedLinksMarg(1000, Reduction::SKIP_CLUSTERS), 0);
}

/// One item with links of the given criterion values, to the nodes 1, 2, ...
class Droppable {
public:
    Droppable() {
        for (Id id = 0; id <= 30; ++id) m_nodes.push_back(&m_list.emplace_back(id));
    }

    /// The ids of what would be dropped, or {0} if nothing qualifies at all.
    std::vector<Id> operator()(const std::vector<float>& weights, Id margin, Reduction reduction) {
        std::vector<RdsLink<NodeT>> rlinks;
        for (std::size_t i = 0; i < weights.size(); ++i)
            rlinks.push_back({m_nodes[i + 1], weights[i]});
        std::vector<NodeT*> drops;
        if (!droppableLinks(drops, *m_nodes[0], rlinks, margin, reduction)) return {0};
        std::vector<Id> ids;
        for (const NodeT* node : drops) ids.push_back(node->id);
        return ids;
    }

private:
    Nodes<WeightedLinks> m_list;
    std::vector<NodeT*> m_nodes;
};

std::vector<Id> range(Id first, Id last) {
    std::vector<Id> ids;
    for (Id id = first; id <= last; ++id) ids.push_back(id);
    return ids;
}

TEST(DroppableLinks, AreTheLightOnes) {
    Droppable drops;
    EXPECT_EQ(drops({1, 1, 1, 1, 10, 10, 10, 10, 10, 10}, 5, Reduction::ACCURATE), range(1, 4));
    // In the order of the items, whatever the order of the weights.
    EXPECT_EQ(drops({10, 4, 10, 3, 10, 10, 2, 10, 10, 1}, 5, Reduction::ACCURATE),
              (std::vector<Id>{2, 4, 7, 10}));
    // Links of the top are kept even where they are light, and so is one of half the heaviest.
    EXPECT_EQ(drops({1, 1.1f, 1.2f, 1.3f, 1.4f, 10}, 5, Reduction::ACCURATE), range(1, 1));
    EXPECT_EQ(drops({1, 5, 5.1f, 5.2f, 5.3f, 5.4f, 10}, 4, Reduction::ACCURATE), range(1, 1));
    // Equal links go together or not at all.
    EXPECT_EQ(drops({1, 2, 2, 2, 2, 10}, 4, Reduction::ACCURATE), range(1, 1));
    EXPECT_EQ(drops({4, 4, 4, 4, 10, 10, 10, 10, 10, 10}, 5, Reduction::ACCURATE),
              std::vector<Id>{});
    // Nothing qualifies.
    EXPECT_EQ(drops({2, 2, 2, 2, 2, 2, 2}, 5, Reduction::SEVERE), range(0, 0));
    EXPECT_EQ(drops({5, 6, 7, 8, 9, 10}, 3, Reduction::MEAN), range(0, 0));
    EXPECT_EQ(drops({1, 1, 1, 1, 1, 10}, 5, Reduction::ACCURATE), range(0, 0));
}

TEST(DroppableLinks, WeighNoMoreThanTheTopProtects) {
    // 3.0, 3.1, ... 4.4 and five of 10. The protected sum starts with the heaviest link, 10, and
    // the dropped ones add up to 3, 6.1, 9.3, 12.6, 16, 19.5, 23.1, 26.8, 30.6, 34.5, 38.5, 42.6.
    std::vector<float> weights;
    for (int i = 0; i < 15; ++i) weights.push_back(3 + 0.1f * static_cast<float>(i));
    weights.insert(weights.end(), 5, 10.0f);
    Droppable drops;
    // The fifth link reaches 12.6 > 10.
    EXPECT_EQ(drops(weights, 5, Reduction::ACCURATE), range(1, 4));
    // 10 (1 + 1/9 + ... + 4/9) = 21.1, then 23.6, 26.4, 29.7, 33.3, 37.3 as the limit comes down
    // by one link of 4.4, 4.3, ... for each time that the dropped ones reach the sum.
    EXPECT_EQ(drops(weights, 5, Reduction::MEAN), range(1, 10));
    // With roots of the fractions 30.5, then 33.8, 37.3, 41.0.
    EXPECT_EQ(drops(weights, 5, Reduction::SEVERE), range(1, 12));
}

TEST(AgreedLinks, MoveTheirWeightIntoBothEnds) {
    Nodes<WeightedLinks> list;
    std::vector<NodeT*> nodes;
    for (Id id = 0; id < 5; ++id) nodes.push_back(&list.emplace_back(id));
    for (NodeT* node : nodes)
        for (NodeT* dest : nodes)
            if (dest != node)
                node->links.emplace_back(dest, static_cast<float>(2 * (node->id + dest->id)));
    const auto total = [&] {
        double sum = 0;
        for (const NodeT* node : nodes) {
            sum += node->weight();
            for (const auto& ln : node->links) sum += ln.weight;
        }
        return sum;
    };
    const double before = total();

    RdsCands<NodeT> rcands(4);
    rcands.emplace(nodes[0], {nodes[1], nodes[3], nodes[4]});
    rcands.emplace(nodes[1], {nodes[0], nodes[2]});
    rcands.emplace(nodes[2], {nodes[4]});  // 4 has no entry
    rcands.emplace(nodes[3], {nodes[0]});
    rcands.emplace(nodes[3], {nodes[1], nodes[2]});  // comes too late
    Size erased = 0;
    EXPECT_EQ(reduceLinks(rcands, erased), 3);
    EXPECT_EQ(erased, 4);
    EXPECT_EQ(total(), before);
    // Each record of an agreed link gives half of its weight to both ends: 0-1 weighs 2, 0-3 6.
    EXPECT_EQ(nodes[0]->weight(), 2 + 6);
    EXPECT_EQ(nodes[1]->weight(), 2);
    EXPECT_EQ(nodes[2]->weight(), 0);
    EXPECT_EQ(nodes[3]->weight(), 6);
    const auto dests = [](const NodeT* node) {
        std::vector<Id> ids;
        for (const auto& ln : node->links) ids.push_back(ln.dest->id);
        return ids;
    };
    EXPECT_EQ(dests(nodes[0]), (std::vector<Id>{2, 4}));
    EXPECT_EQ(dests(nodes[1]), (std::vector<Id>{2, 3, 4}));
    EXPECT_EQ(dests(nodes[2]), (std::vector<Id>{0, 1, 3, 4}));
    EXPECT_EQ(dests(nodes[3]), (std::vector<Id>{1, 2, 4}));
    EXPECT_EQ(nodes[0]->links.capacity(), 2);
    EXPECT_EQ(rcands.find(nodes[2])->size(), 0);
    EXPECT_EQ(*rcands.find(nodes[0]), (std::vector{nodes[1], nodes[3]}));
}

TEST(AgreedLinks, OfUnweightedNodesWeighOne) {
    using PlainT = Node<UnweightedLinks>;
    Nodes<UnweightedLinks> list;
    PlainT& a = list.emplace_back(0);
    PlainT& b = list.emplace_back(1);
    a.links.emplace_back(&b);
    b.links.emplace_back(&a);
    RdsCands<PlainT> rcands(2);
    rcands.emplace(&a, {&b});
    rcands.emplace(&b, {&a});
    Size erased = 0;
    EXPECT_EQ(reduceLinks(rcands, erased), 2);
    EXPECT_EQ(erased, 2);
    EXPECT_EQ(a.weight(), 1);
    EXPECT_EQ(b.weight(), 1);
    EXPECT_TRUE(a.links.empty() && b.links.empty());
}

}  // namespace
}  // namespace vorl::test
