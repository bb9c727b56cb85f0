// A network of groups with some nodes in two, and the hierarchy that is found in it.
#pragma once

#include "support/networks.hpp"
#include "support/trace.hpp"

#include <vorl/communities_hierarchy.hpp>
#include <vorl/flat_network.hpp>
#include <vorl/reading/described_hierarchy.hpp>

#include <vector>

namespace vorl::test {

struct Sample {
    FlatNetwork network;
    HierarchyFile file;
    LevelNum level = 0;  ///< of the communities

    /// @param groups of 30 nodes, the last 3 of which are in the next group, too
    explicit Sample(Id groups) {
        constexpr Id size = 30;
        Random random(7);
        TestNetwork planted("planted", groups * size);
        for (Id node = 0; node < groups * size; ++node) {
            const Id own = node / size;
            for (int i = 0; i < 8; ++i) planted.add(node, own * size + random.below(size));
            if (node % size >= size - 3)
                for (int i = 0; i < 8; ++i)
                    planted.add(node, (own + 1) % groups * size + random.below(size));
            if (random.chance(0.3)) planted.add(node, random.below(groups * size));
        }
        std::vector<Id> src, dst, nodes;
        for (const TestLink& ln : planted.links) {
            src.push_back(ln.src);
            dst.push_back(ln.dst);
        }
        for (Id id = 0; id < groups * size; ++id) nodes.push_back(id);
        network = FlatNetwork::ofPairs(src, dst, {}, nodes);
        const Trace trace;
        file = describedHierarchy(
            *communitiesHierarchy(network, communities(network), ClusterOptions(), &level),
            "planted");
    }
};

}  // namespace vorl::test
