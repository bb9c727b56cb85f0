/// @file
/// Made networks for the benchmarks of single steps.
#pragma once

#include <vorl/graph.hpp>
#include <vorl/hierarchy/hierarchy_impl.hpp>
#include <vorl/types/trace.hpp>

#include <stdlib.h>
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorl::bench {

/// Edges of a network, each once, ascending by both ends.
struct Edges {
    Id nodesNum = 0;
    std::vector<std::pair<Id, Id>> links;
};

/// About 10 edges for each node, 7 of which stay in its community of 20 to 100 nodes.
inline Edges planted(Id nodes) {
    std::mt19937_64 random(1);
    const auto below = [&](Id bound) { return static_cast<Id>(random() % bound); };
    Edges edges;
    edges.nodesNum = nodes;
    for (Id first = 0; first < nodes;) {
        const Id size = std::min(nodes - first, 20 + below(81));
        for (Id node = first; node < first + size; ++node)
            for (int i = 0; i < 10; ++i) {
                const Id other = i < 7 ? first + below(size) : below(nodes);
                if (other != node) edges.links.push_back(std::minmax(node, other));
            }
        first += size;
    }
    std::sort(edges.links.begin(), edges.links.end());
    edges.links.erase(std::unique(edges.links.begin(), edges.links.end()), edges.links.end());
    return edges;
}

inline std::shared_ptr<Graph<false>> assemble(const Edges& edges) {
    auto graph = std::make_shared<Graph<false>>(edges.nodesNum);
    graph->addNodes(edges.nodesNum);
    InpLinks<false> links;
    for (auto it = edges.links.begin(); it != edges.links.end();) {
        links.clear();
        const Id src = it->first;
        for (; it != edges.links.end() && it->first == src; ++it) links.emplace_back(it->second);
        graph->addNodeLinks<false>(src, links);
    }
    return graph;
}

/// A hierarchy whose nodes are ready for the first level.
struct FirstLevel {
    using Engine = HierarchyImpl<false, UnweightedLinks>;

    Engine hier;
    Clusters<UnweightedLinks> clusters;  ///< of the level in the making

    explicit FirstLevel(const Edges& edges, float gamma = -1)
        : hier(std::move(*assemble(edges)->release()), ClusterOptions(gamma)),
          clusters(hier.m_arena) {
        ftrace = nullptr;
        for (auto& node : hier.m_nodes) hier.m_weight += hier.initItem(node);
    }
};

inline std::shared_ptr<Hierarchy<UnweightedLinks>> clustered(Id nodes) {
    ftrace = nullptr;
    return assemble(planted(nodes))->buildHierarchy();
}

/// A folder that goes with the object.
class Folder {
public:
    Folder() : m_path(std::filesystem::temp_directory_path() / "vorl-bench-XXXXXX") {
        std::string name = m_path.string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no folder for the files: " + name);
        m_path = name;
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { std::filesystem::remove_all(m_path); }

    std::string operator/(const char* name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

}  // namespace vorl::bench
