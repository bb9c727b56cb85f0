#include <vorl/reading/evaluation.hpp>

#include <vorl/reading/memory_file.hpp>
#include <vorl/shared/operations.hpp>

#include <utility>
#include <variant>
#include <vector>

namespace vorl {

Intrinsics evaluateClusters(Network& network, ClustersFile clusters, const std::string& name,
                            AccWeight gamma) {
    Intrinsics measures;
    std::visit(
        [&](auto& graph) {
            std::vector<Id> ids;
            ids.reserve(graph->nodes().size());
            for (const auto& node : graph->nodes()) ids.push_back(node.id);
            clusters.requireNodes(std::move(ids), name, network.labels);
            const MemoryFile file(clusters.strictText());
            clusters = {};  // room for the evaluation
            evaluateClusters(measures, *graph, file.name(), gamma);
        },
        network.graph);
    return measures;
}

}  // namespace vorl
