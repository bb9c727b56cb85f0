// Repair and refusal of links, with the words of each report.
#include <vorl/processing/validation.hpp>

#include "support/links_text.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorl::test {
namespace {

const std::string SELF = "> WARNING validate(), selflink is duplicated. Removed: ";
const std::string REPEATED =
    "> WARNING validate(), links must have unique dest. Duplicates removed: ";
const std::string CREATED =
    "> WARNING validate(), backlink does not exist. Created (with zero weight if weighted): ";

/// Nodes with link lists as they are given, faults included.
template <class LinksT>
struct Network {
    Nodes<LinksT> list;
    std::vector<Node<LinksT>*> nodes;
    AccWeight weight = 0;
    Size linksNum = 0;
    Trace trace;

    explicit Network(Id nodesNum) {
        for (Id id = 0; id < nodesNum; ++id) nodes.push_back(&list.emplace_back(id));
    }

    void link(Id src, Id dst, float wgt = 1) {
        nodes[src]->links.emplace_back(nodes[dst], wgt);
        weight += nodes[src]->links.back().weight;
        ++linksNum;
    }

    template <bool NONSYMMETRIC>
    std::string validated(bool severe = false) {
        validate<NONSYMMETRIC>(list, weight, linksNum, severe);
        return trace.take();
    }

    std::string links(Id id) const { return linksText(*nodes[id]); }
};

using Weighted = Network<WeightedLinks>;
using Unweighted = Network<UnweightedLinks>;

TEST(Validated, ArcGetsABackLinkWithoutWeight) {
    Weighted net(3);
    net.link(0, 1, 5);
    net.link(2, 0, 7);
    net.link(2, 1, 3);
    EXPECT_EQ(net.validated<true>(true), CREATED + " 1->0 0->2 1->2\n");
    EXPECT_EQ(net.links(0), "1:5 2:0 ");
    EXPECT_EQ(net.links(1), "0:0 2:0 ");
    EXPECT_EQ(net.links(2), "0:7 1:3 ");
    EXPECT_EQ(net.linksNum, 6);
    EXPECT_EQ(net.weight, 15);
    EXPECT_EQ(net.validated<true>(true), "");
}

TEST(Validated, BackLinksStandInOrderInLongLists) {
    Weighted net(30);
    for (Id id = 1; id < 30; ++id) {
        net.link(id, 0, 2);
        if (id % 2 == 1) net.link(0, id, 1);
    }
    // 14 even nodes lack a back link, of which 8 are named.
    EXPECT_EQ(net.validated<true>(true),
              CREATED + " 0->2 0->4 0->6 0->8 0->10 0->12 0->14 0->16 ...(and 6 more)\n");
    std::string expected;
    for (Id id = 1; id < 30; ++id) expected += std::to_string(id) + (id % 2 == 1 ? ":1 " : ":0 ");
    EXPECT_EQ(net.links(0), expected);
    EXPECT_EQ(net.linksNum, 29 + 15 + 14);
}

TEST(Validated, EdgeWithoutBackLinkIsRefused) {
    Weighted net(4);
    net.link(0, 1);
    net.link(0, 2);
    net.link(1, 0);
    net.link(2, 1);
    net.link(2, 3);
    EXPECT_EQ(errorOf<std::domain_error>([&] { net.validated<false>(); }),
              "validate(), backlinks should always exist for the symmetric links\n");
    const auto named = [&](Id id) {
        char text[64];
        std::snprintf(text, sizeof text, "#%u(%p)", id, static_cast<void*>(net.nodes[id]));
        return std::string(text);
    };
    // Node 1 stands where the back link belongs.
    EXPECT_EQ(net.trace.take(), "> validate(), " + named(0) + " has no backlink from " + named(2) +
                                    " [" + named(1) + "] among 2 links:  " + named(1).substr(1) +
                                    " " + named(3).substr(1) + "\n");
    net.nodes[2]->links.clear();
    EXPECT_THROW(net.validated<false>(), std::domain_error);
    EXPECT_EQ(net.trace.take(), "> validate(), " + named(0) + " has no backlink from " + named(2) +
                                    " [#4294967295((nil))] among 0 links: \n");
}

TEST(Validated, OfRepeatsTheLastSurvives) {
    Weighted net(3);
    net.link(0, 1, 2);
    net.link(0, 1, 3);
    net.link(0, 1, 4);
    net.link(0, 2, 8);
    net.link(1, 0, 16);
    net.link(2, 0, 8);
    auto& context = net.nodes[0]->m_context;
    context = std::make_unique<Context<Node<WeightedLinks>>>();
    context->weight = 100;
    EXPECT_EQ(net.validated<false>(true), REPEATED + " 0->1 0->1\n");
    EXPECT_EQ(net.links(0), "1:4 2:8 ");
    EXPECT_EQ(net.links(1), "0:16 ");
    EXPECT_EQ(net.nodes[0]->links.capacity(), 2);
    EXPECT_EQ(net.linksNum, 4);
    EXPECT_EQ(net.weight, 41 - 5);
    EXPECT_EQ(context->weight, 95);
}

TEST(Validated, SelfLinksGoWhereverTheyStand) {
    Weighted net(3);
    net.link(0, 0, 9);
    net.link(1, 0, 1);
    net.link(1, 1, 2);
    net.link(1, 2, 4);
    // Reports come in a fixed order, whatever was found first.
    EXPECT_EQ(net.validated<true>(), SELF + " 0 1\n" + CREATED + " 0->1 2->1\n");
    EXPECT_EQ(net.links(0), "1:0 ");
    EXPECT_EQ(net.links(1), "0:1 2:4 ");
    EXPECT_EQ(net.weight, 5);
    EXPECT_EQ(net.linksNum, 4);

    Unweighted lonely(1);
    lonely.link(0, 0);
    lonely.link(0, 0);
    EXPECT_EQ(lonely.validated<false>(true), SELF + " 0 0\n");
    EXPECT_EQ(lonely.nodes[0]->links.capacity(), 0);
    EXPECT_EQ(lonely.weight, 0);
    EXPECT_EQ(lonely.linksNum, 0);

    // By the id, also where two nodes bear one.
    Unweighted twins(2);
    twins.nodes[1]->id = 0;
    twins.link(0, 1);
    twins.link(1, 0);
    EXPECT_EQ(twins.validated<false>(), SELF + " 0 0\n");
    EXPECT_EQ(twins.linksNum, 0);
}

TEST(Validated, UnweightedBackLinkReadsAsOne) {
    Unweighted net(2);
    net.link(0, 1);
    EXPECT_EQ(net.validated<true>(), CREATED + " 1->0\n");
    EXPECT_EQ(net.links(1), "0:1 ");
    EXPECT_EQ(net.weight, 1);
    EXPECT_EQ(net.linksNum, 2);
}

TEST(Validated, NodesAreLeftAsTheyAreButForTheirLinks) {
    Weighted net(3);
    Nodes<WeightedLinks> others;
    Node<WeightedLinks>& other = others.emplace_back(7);
    other.totac = 1;
    net.link(0, 1);
    net.link(1, 0);
    net.link(1, 2);
    net.nodes[2]->links.emplace_back(&other);
    EXPECT_EQ(net.validated<true>(), CREATED + " 2->1 7->2\n");
    for (const auto* node : net.nodes) EXPECT_EQ(node->totac, 0u);
    EXPECT_EQ(other.totac, 1u);
}

TEST(Validated, CleanNetworkIsSilent) {
    Weighted empty(0);
    EXPECT_EQ(empty.validated<true>(true), "");
    Weighted net(2);
    net.link(0, 1, 0);
    net.link(1, 0, 0);
    EXPECT_EQ(net.validated<true>(true), "");
    EXPECT_EQ(net.validated<false>(true), "");
}

TEST(ValidatedDeathTest, WeightsAndOrderAreInvariants) {
    const auto pass = [](float weight) {
        Weighted net(2);
        net.link(0, 1, weight);
        net.validated<true>();
    };
    constexpr const char* WEIGHT = "validate\\(\\), link weight should be non-negative";
    EXPECT_DEATH(pass(-1), WEIGHT);
    EXPECT_DEATH(pass(std::numeric_limits<float>::quiet_NaN()), WEIGHT);
    Weighted net(3);
    net.link(0, 2);
    net.link(0, 1);
    EXPECT_DEATH(net.validated<true>(), "validate\\(\\), the links should be ordered");
    EXPECT_DEATH(net.validated<true>(true), "validate\\(\\), node links should be sorted");
}

TEST(BackLinks, AreMadeAndReportedAsValidationDoes) {
    std::vector<std::string> results;
    for (bool ahead : {true, false}) {
        Unweighted net(16);
        for (Id src = 0; src < 16; ++src)
            for (Id dst = 0; dst < 16; ++dst)
                if ((7 * src + 3 * dst) % 5 < 2) net.link(src, dst);
        StructLinkErrors created(BACKLINKS_MESSAGE);
        if (ahead) detail::createBackLinks(net.list, created);
        EXPECT_EQ(net.trace.take(), "");
        detail::validate<true>(net.list, net.weight, net.linksNum, true, &created);
        std::string& result = results.emplace_back(net.trace.take());
        EXPECT_NE(result.find(CREATED), std::string::npos);
        for (Id id = 0; id < 16; ++id) result += net.links(id) + "\n";
        result += std::to_string(net.weight);
    }
    EXPECT_EQ(results[0], results[1]);
}

TEST(BackLinks, OfEdgesMustWeighTheSameToMirrorThem) {
    const auto mirrored = [](float back, bool arcs, bool complete = true) {
        Weighted net(3);
        net.link(0, 1, 1);
        net.link(0, 2, 0.25f);
        net.link(1, 0, back);
        net.link(1, 2, 3);
        if (complete) net.link(2, 0, 0.25f);
        net.link(2, 1, 3);
        const auto tell = [&] {
            return arcs ? detail::isMirrored<true>(net.list) : detail::isMirrored<false>(net.list);
        };
        const bool first = tell();
        EXPECT_EQ(tell(), first) << "what was counted is left behind";
        // The validation tells the same, but for the back links of arcs, which it makes.
        if (arcs || complete) {
            const bool valid =
                arcs ? detail::validate<true>(net.list, net.weight, net.linksNum, true, nullptr)
                     : detail::validate<false>(net.list, net.weight, net.linksNum, true, nullptr);
            EXPECT_EQ(valid, arcs || first);
        }
        return first;
    };
    EXPECT_TRUE(mirrored(1, false));
    EXPECT_TRUE(mirrored(1, true));
    EXPECT_FALSE(mirrored(1 + 0x1p-23f, false));
    EXPECT_TRUE(mirrored(1 + 0x1p-23f, true));
    EXPECT_FALSE(mirrored(1, false, false));
    EXPECT_FALSE(mirrored(1, true, false));
}

TEST(FaultCollector, OfNothingIsSilentAndOfEightNamesAll) {
    Trace trace;
    StructNodeErrors nodes("nodes:");
    nodes.show();
    for (Id id = 1; id <= 8; ++id) EXPECT_EQ(nodes.add(id), id);
    nodes.show();
    EXPECT_EQ(trace.take(), "nodes: 1 2 3 4 5 6 7 8\n");
}

}  // namespace
}  // namespace vorl::test
