/// @file
/// A hierarchy whose nodes are ready for the steps of a level, one step at a time.
#pragma once

#include "support/networks.hpp"
#include "support/trace.hpp"

#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <string>
#include <vector>

namespace vorl::test {

/// Network of edges with weights.
inline TestNetwork edges(Id nodes, const std::vector<TestLink>& links,
                         const std::vector<std::pair<Id, float>>& selfs = {}) {
    TestNetwork network("by hand", nodes);
    network.weighted = true;
    for (const TestLink& ln : links) network.add(ln.src, ln.dst, ln.weight);
    network.selfs = selfs;
    return network;
}

template <bool NONSYMMETRIC = false>
struct Bench {
    using HierT = HierarchyImpl<NONSYMMETRIC, WeightedLinks>;
    using NodeT = Node<WeightedLinks>;
    using ClusterT = Cluster<WeightedLinks>;
    using IdsT = std::vector<Id>;

    HierT hier;
    Clusters<WeightedLinks> cls;  ///< of the level in the making
    std::vector<NodeT*> nodes;

    explicit Bench(const TestNetwork& network, const ClusterOptions& options = ClusterOptions(1))
        : hier(makeNodes<WeightedLinks>(network), options), cls(hier.m_arena) {
        ftrace = nullptr;
        for (NodeT& node : hier.m_nodes) {
            nodes.push_back(&node);
            hier.m_weight += hier.initItem(node);
        }
    }

    AccWeight gain(Id src, Id dst) {
        const auto& links = nodes[src]->links;
        return hier.clusterGain(*nodes[src], *findDest(links.begin(), links.end(), nodes[dst]));
    }
    std::vector<NodeT*> group(const IdsT& ids) const {
        std::vector<NodeT*> items;
        for (Id id : ids) items.push_back(nodes[id]);
        return items;
    }
    Context<NodeT>& ctx(Id id) { return *nodes[id]->m_context; }
    IdsT cands(Id id) { return idsOf(ctx(id).cands); }

    void initCands() { hier.initCands(hier.m_nodes.begin(), hier.m_nodes.end(), cls); }
    void initParts() { hier.initNonfilterParts(hier.m_nodes.begin(), hier.m_nodes.end()); }
    void rawCluster() { hier.rawCluster(hier.m_nodes.begin(), hier.m_nodes.end(), cls); }
    void convert() { hier.propagateConvert(hier.m_nodes.begin(), hier.m_nodes.end(), cls); }
    void tidy() { hier.membershipTidy(hier.m_nodes.begin(), hier.m_nodes.end()); }
    bool clusterLevel() {
        return hier.template clusterLevel<NodeT>(hier.m_nodes.begin(), hier.m_nodes.end(),
                                                 static_cast<Id>(hier.m_nodes.size()));
    }

    /// Candidates set by hand, as mutual ones.
    void join(Id a, Id b, AccWeight gmax = 1) {
        for (const auto& [el, cand] : {std::pair(a, b), std::pair(b, a)}) {
            auto& items = ctx(el).cands;
            items.insert(insorted(items, nodes[cand], bsVal<NodeT, NodeT>), nodes[cand]);
            ctx(el).gmax = gmax;
        }
    }
    /// A cluster of nodes, with the numbers of their active candidates.
    ClusterT& own(const std::vector<std::pair<Id, Size>>& members) {
        ClusterT& cl = cls.emplace_back(LevelNum{0}, Size{0});
        for (const auto& [id, numac] : members) {
            cl.des.push_back(nodes[id]);
            nodes[id]->owners.emplace_back(&cl, numac);
            nodes[id]->totac += static_cast<std::uint32_t>(numac);
        }
        return cl;
    }
    /// Members of the clusters made so far.
    std::vector<IdsT> formed() const { return membersOf(cls); }

    template <class ListT>
    static std::vector<IdsT> membersOf(const ListT& clusters) {
        std::vector<IdsT> result;
        for (const auto& cl : clusters) result.push_back(idsOf(cl.des));
        return result;
    }
    template <class ItemsT>
    static IdsT idsOf(const ItemsT& items) {
        IdsT ids;
        for (const auto* item : items) ids.push_back(item->id);
        return ids;
    }
};

/// A cluster above the node level, its links and its context set by hand.
struct Upper {
    using ClusterT = Cluster<WeightedLinks>;

    HierarchyImpl<false, WeightedLinks>& hier;
    std::vector<ClusterT*> items;

    explicit Upper(HierarchyImpl<false, WeightedLinks>& impl, Id count) : hier(impl) {
        Clusters<WeightedLinks> clusters(hier.m_arena);
        for (Id i = 0; i < count; ++i) {
            ClusterT& cl = clusters.emplace_back(LevelNum{0}, i, 0);
            cl.des.push_back(&hier.m_nodes.front());
            cl.m_context = std::make_unique<Context<ClusterT>>();
            cl.m_context->weight = 0;
            hier.m_marks.weights(cl).total = 0;
            items.push_back(&cl);
        }
        hier.m_levels.emplace_back(count, std::move(clusters));
    }
    void link(Id a, Id b, AccWeight weight) {
        for (const auto& [src, dst] : {std::pair(a, b), std::pair(b, a)}) {
            auto& links = items[src]->links;
            addLink(links, links.begin(), items[dst], weight);
            items[src]->m_context->weight += weight;
            hier.m_marks.weights(*items[src]).total += weight;
            hier.m_weight += weight;
        }
    }
};

}  // namespace vorl::test
