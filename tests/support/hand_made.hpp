/// @file
/// A hierarchy made by hand, level by level.
#pragma once

#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace vorl::test {

struct HandMade {
    using HierT = HierarchyImpl<false, UnweightedLinks>;
    using ItemT = NodeI<UnweightedLinks>;
    using NodeT = Node<UnweightedLinks>;
    using ClusterT = Cluster<UnweightedLinks>;
    using MembersT = std::initializer_list<std::pair<ItemT*, Size>>;

    HierT hier;

    /// With the nodes 0 to nodes - 1.
    explicit HandMade(Id nodes) : hier(makeNodes(nodes), ClusterOptions()) {}

    NodeT& node(Id place) { return *std::next(hier.m_nodes.begin(), place); }

    /// Opens a level.
    void level(Id fullsize) {
        hier.m_levels.emplace_back(fullsize, Clusters<UnweightedLinks>(hier.m_arena));
    }

    /// A cluster of the open level, made of items with their numbers of active candidates.
    ClusterT& cluster(Id id, MembersT members, AccWeight weight = 0, AccWeight nnodes = 0) {
        const auto levnum = static_cast<LevelNum>(hier.m_levels.size() - 1);
        ClusterT& cl = hier.m_levels.back().clusters.emplace_back(levnum, id, Size{0});
        cl.m_sweight = weight;
        cl.m_nnodes = nnodes;
        for (const auto& [item, numac] : members) {
            cl.des.push_back(item);
            auto& owners = item->owners;
            owners.emplace(findDest(owners.begin(), owners.end(), &cl), &cl, numac);
            item->totac += static_cast<std::uint32_t>(numac);
        }
        std::sort(cl.des.begin(), cl.des.end(), cmpBase<ItemT, ItemT>);
        return cl;
    }

    /// Makes a root of the clusters that have no owners.
    void close() {
        for (auto& el : hier.m_levels)
            for (ClusterT& cl : el.clusters) {
                ++hier.m_score.clusters;
                if (cl.owners.empty()) hier.m_root.push_back(&cl);
            }
    }

private:
    static Nodes<UnweightedLinks> makeNodes(Id count) {
        Nodes<UnweightedLinks> nodes;
        for (Id id = 0; id < count; ++id) nodes.emplace_back(id);
        return nodes;
    }
};

}  // namespace vorl::test
