// Clusters a small network and tells who belongs where.
#include <vorl/graph.hpp>
#include <vorl/types/trace.hpp>

#include <cstdio>
#include <utility>

int main() {
    // Two triangles, and a node between them.
    vorl::Graph<true> graph;
    graph.addNodes(7);
    for (const auto& [a, b] : {std::pair{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}})
        graph.addLink<false>(static_cast<vorl::Id>(a), static_cast<vorl::Id>(b));
    graph.addNodeLinks<false>(6, {vorl::InpLink<true>(2, 0.8f), vorl::InpLink<true>(3, 0.8f)});

    vorl::ftrace = nullptr;
    const auto hierarchy = graph.buildHierarchy(vorl::ClusterOptions());

    std::printf("%zu levels, modularity %.3f\n", hierarchy->levels().size(),
                static_cast<double>(hierarchy->score().modularity));
    for (const auto* cluster : hierarchy->root()) {
        std::printf("cluster of %g nodes:", cluster->nnodes());
        for (const auto& [node, share] : hierarchy->unwrap(*cluster))
            std::printf(" %u (%.2f)", node->id, static_cast<double>(share));
        std::printf("\n");
    }
}
