// Lists of thousands of links that arrive in any order, against a plain model.
#include <vorl/graph.hpp>

#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorl::test {
namespace {

using Fault = std::pair<Id, Id>;

// A collector keeps a few faults only, hence one for each operation.
void take(const StructLinkErrors& errors, std::vector<Fault>& faults) {
    ASSERT_LE(errors.size, StructErrors::ERRORS_MAX);
    for (Size i = 0; i < errors.size; ++i)
        faults.emplace_back(errors.lids[i].sid, errors.lids[i].did);
}

/// The rules of repeated links on ordered maps. Ids are places of creation, hence of addresses.
struct Model {
    bool weighted;
    bool sumdups;
    std::map<Id, std::map<Id, LinkWeight>> lists;
    std::vector<Fault> faults;

    void insert(Id src, Id dst, LinkWeight weight) {
        auto& list = lists[src];
        const auto it = list.find(dst);
        if (it == list.end())
            list.emplace(dst, weighted ? weight : 1);
        else if (weighted && sumdups && dst != list.rbegin()->first)
            it->second += weight;
        else
            faults.emplace_back(src, dst);
    }

    void add(Id src, Id dst, LinkWeight weight, bool arc) {
        if (!arc) insert(dst, src, weight);
        insert(src, dst, weight);
    }
};

template <bool WEIGHTED>
void expectSame(Graph<WEIGHTED>& graph, const Model& model) {
    for (auto& node : graph.nodes()) {
        std::vector<std::pair<Id, LinkWeight>> stored;
        for (const auto& ln : node.links) stored.emplace_back(ln.dest->id, ln.weight);
        const auto it = model.lists.find(node.id);
        std::vector<std::pair<Id, LinkWeight>> expected;
        if (it != model.lists.end()) expected.assign(it->second.begin(), it->second.end());
        ASSERT_EQ(stored, expected) << "node " << node.id;
    }
}

enum class When { NEVER, MIDWAY, FIRST };

/// Two hubs, each linked with most nodes, some often.
/// @param looked when the nodes are looked at, which must not matter
template <bool WEIGHTED>
void compare(std::uint64_t seed, bool sumdups, When looked) {
    constexpr Id nodes = 6000;
    constexpr int steps = 22000;
    std::mt19937_64 random(seed);
    const auto below = [&](Id bound) { return static_cast<Id>(random() % bound); };
    Graph<WEIGHTED> graph(nodes, false, sumdups);
    graph.addNodes(nodes);
    Model model{WEIGHTED, sumdups, {}, {}};
    std::vector<Fault> faults;
    for (int step = 0; step < steps; ++step) {
        if (looked == When::FIRST ? step == 0 : looked == When::MIDWAY && step == steps / 2)
            expectSame(graph, model);
        Id src = below(2) * (nodes / 2);
        // Also the greatest one, whose repeats are a case of their own, in the midst of others.
        Id dst = below(40) == 0 ? nodes - 1 : below(8) == 0 ? 10 + below(30) : below(nodes);
        if (dst == src) ++dst;
        if (below(2) != 0) std::swap(src, dst);
        const bool arc = below(2) != 0;
        const auto weight = static_cast<LinkWeight>(1 + below(1000)) / 7;
        StructLinkErrors errors("");
        if (below(3) != 0) {
            arc ? graph.template addLink<true>(src, dst, weight, &errors)
                : graph.template addLink<false>(src, dst, weight, &errors);
            model.add(src, dst, weight, arc);
        } else {
            InpLinks<WEIGHTED> links;
            links.emplace_back(dst, weight);
            if (const Id other = below(nodes); other != src) links.emplace_back(other, weight / 3);
            for (const auto& ln : links) model.add(src, ln.id, ln.weight, arc);
            switch (2 * below(2) + arc) {
                case 0: graph.template addNodeLinks<false>(src, links, &errors); break;
                case 1: graph.template addNodeLinks<true>(src, links, &errors); break;
                case 2: graph.template addNodeAndLinks<false>(src, links, &errors); break;
                default: graph.template addNodeAndLinks<true>(src, links, &errors);
            }
        }
        take(errors, faults);
    }
    ASSERT_GT(graph.node(0)->links.size(), nodes / 2);
    ASSERT_GT(model.faults.size(), 200);
    EXPECT_EQ(faults, model.faults);
    expectSame(graph, model);
}

TEST(LongLists, AreThoseOfAPlainModel) {
    std::uint64_t seed = 1;
    for (bool sumdups : {false, true})
        for (When looked : {When::NEVER, When::MIDWAY, When::FIRST}) {
            SCOPED_TRACE("seed " + std::to_string(seed) + (sumdups ? " summed" : " reported"));
            compare<false>(seed, sumdups, looked);
            compare<true>(seed, sumdups, looked);
            ++seed;
        }
}

/// Links to all nodes but the last two ones, each four times, after one to the last but one.
InpLinks<true> shuffledLinks(Id hub) {
    InpLinks<true> links;
    for (Id id = 0; id < 4 * hub; ++id) links.emplace_back(id % hub, static_cast<LinkWeight>(id));
    std::shuffle(links.begin(), links.end(), std::mt19937_64(3));
    links.emplace(links.begin(), hub, 0.5f);
    return links;
}

TEST(LongLists, OfOneCallAreCompleteBehindIt) {
    constexpr Id last = 5000;
    const InpLinks<true> links = shuffledLinks(last - 1);
    Model model{true, true, {}, {}};
    for (const auto& ln : links) model.add(last, ln.id, ln.weight, true);
    const auto expectComplete = [&](const Node<WeightedLinks>& hub, const char* what) {
        ASSERT_EQ(hub.links.size(), last) << what;
        auto expected = model.lists[last].begin();
        for (const auto& ln : hub.links) {
            EXPECT_EQ(std::make_pair(ln.dest->id, ln.weight),
                      std::make_pair(expected->first, expected->second));
            ++expected;
        }
    };

    NodesIdsT ids;
    for (Id id = 0; id <= last; ++id) ids.push_back(id);
    for (int call = 0; call < 4; ++call) {
        const bool fails = call % 2 != 0;
        Nodes<WeightedLinks> nodes;
        IdNodes<WeightedLinks> idnodes;
        acsAddNodes(nodes, idnodes, ids, false);
        InpLinks<true> given = links;
        if (fails) given.emplace_back(last + 7);
        try {
            const auto add = call < 2 ? acsAddNodeLinks<true, true> : acsAddNodeLinks<false, true>;
            add(idnodes, last, given, true, Reduction::NONE, 0, nullptr);
            EXPECT_FALSE(fails);
        } catch (const std::out_of_range&) {
            EXPECT_TRUE(fails);
        }
        expectComplete(nodes.back(), "the function");
    }

    // A node that was looked at before.
    Graph<true> graph(0, false, true);
    graph.addNodes(ids);
    const auto* hub = graph.node(last);
    graph.addNodeAndLinks<true>(last, links);
    expectComplete(*hub, "a node from before");

    // Moved and released before anybody looked.
    Graph<true> source(0, false, true);
    source.addNodes(ids);
    for (const auto& ln : links) source.addLink<true>(last, ln.id, ln.weight);
    const auto moved = source.toSharedPtr();
    source.addNodeAndLinks<true>(1, {InpLink<true>(2)});
    expectComplete(moved->release()->back(), "a moved graph");
    EXPECT_EQ(source.node(1)->links.size(), 1);

    // Nothing of a former network is left.
    source.reset(0, false, true);
    source.addNodes(ids);
    for (const auto& ln : links) source.addLink<true>(last, ln.id, ln.weight);
    expectComplete(*source.node(last), "a graph after a reset");
}

TEST(LongLists, OfAHierarchyAreCompleteAtOnce) {
    const Trace trace;
    constexpr Id last = 8000;
    Graph<false> graph(last + 1);
    graph.addNodes(last + 1);
    for (Id id = 1; id < last; id += 2) graph.addLink<false>(last, id);
    for (Id id = 0; id < last - 2; id += 4) graph.addLink<false>(last, id);
    const auto hier = graph.buildHierarchy();
    EXPECT_EQ(hier->weight(), 2 * (last / 2 + last / 4));
    const auto& hub = hier->nodes().back();
    EXPECT_EQ(hub.links.size(), last / 2 + last / 4);
    graph.addLink<false>(last, 2);
    EXPECT_EQ(hub.links.size(), last / 2 + last / 4 + 1);
}

}  // namespace
}  // namespace vorl::test
