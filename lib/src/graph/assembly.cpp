// The logic of the network's assembly.
#include <vorl/graph.hpp>

#include "placing.hpp"

#include <vorl/processing/links_margin.hpp>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>

namespace vorl {

using detail::LateLinks;
using detail::placeLink;
using detail::storeLink;

namespace {

/// The number of entries that fit a map without rehashing.
template <class MapT>
Size mapCapacity(const MapT& map) {
    return static_cast<Size>(static_cast<float>(map.bucket_count()) * map.max_load_factor());
}

/// Stores the links of a node, after a reduction where that applies. `current` follows the ids
/// that are looked up.
template <bool DIRECTED, bool WEIGHTED>
bool storeLinks(Node<Links<Link<LinkWeight, WEIGHTED>>>* node,
                IdNodes<Links<Link<LinkWeight, WEIGHTED>>>& idnodes,
                const InpLinks<WEIGHTED>& links, bool sumdups, Reduction reduction, Id linksMarg,
                StructLinkErrors* errors, LateLinks<Links<Link<LinkWeight, WEIGHTED>>>& late,
                Id& current) {
    const InpLinks<WEIGHTED>* stored = &links;
    InpLinks<WEIGHTED> reduced;
    if constexpr (DIRECTED && WEIGHTED) {
        if (linksMarg != 0 && linksMarg < links.size()) {
            reduced = links;
            try {
                acsReduceLinks(*node, reduced, idnodes, reduction, linksMarg, sumdups, errors);
            } catch (const std::out_of_range&) {
                // Links are looked up from the front, and none is erased before all were found.
                const auto missing = std::find_if(
                    reduced.begin(), reduced.end(),
                    [&](const InpLink<WEIGHTED>& ln) { return !idnodes.contains(ln.id); });
                current = missing->id;
                throw;
            }
            stored = &reduced;
        }
    }
    bool arcs = false;
    if constexpr (DIRECTED) {
        for (const InpLink<WEIGHTED>& ln : *stored) {
            current = ln.id;
            arcs |= storeLink<true>(node, idnodes.at(ln.id), ln.weight, sumdups, errors, &late);
        }
    } else {
        // The other ends are strewn over the memory, so a few of them are fetched at a time.
        constexpr std::ptrdiff_t most = 32;
        std::array<Node<Links<Link<LinkWeight, WEIGHTED>>>*, most> dests;
        for (auto first = stored->begin(); first != stored->end();) {
            const auto last = first + std::min(most, stored->end() - first);
            auto end = dests.begin();
            for (auto it = first; it != last; ++it) {
                const auto found = idnodes.find(it->id);
                if (found == idnodes.end()) break;
                *end++ = found->second;
                __builtin_prefetch(&found->second->links);
            }
            std::for_each(dests.begin(), end, [](const auto* dest) {
                if (!dest->links.empty()) __builtin_prefetch(&dest->links.back());
            });
            for (auto dest = dests.begin(); dest != end; ++dest, ++first)
                storeLink<false>(node, *dest, first->weight, sumdups, errors, &late);
            if (first == last) continue;
            current = first->id;
            idnodes.at(current);  // throws
        }
    }
    return arcs;
}

template <bool DIRECTED, bool WEIGHTED>
bool storeNodeLinks(IdNodes<Links<Link<LinkWeight, WEIGHTED>>>& idnodes, Id id,
                    const InpLinks<WEIGHTED>& links, bool sumdups, Reduction reduction,
                    Id linksMarg, StructLinkErrors* errors,
                    LateLinks<Links<Link<LinkWeight, WEIGHTED>>>& late) {
    Id current = id;
    detail::requireWeights<WEIGHTED>("acsAddNodeLinks()", id, links);
    try {
        return storeLinks<DIRECTED, WEIGHTED>(idnodes.at(id), idnodes, links, sumdups, reduction,
                                              linksMarg, errors, late, current);
    } catch (const std::out_of_range& err) {
        detail::refuseLink(current, err.what());
    }
}

template <bool DIRECTED, bool WEIGHTED>
bool storeNodeAndLinks(Nodes<Links<Link<LinkWeight, WEIGHTED>>>& nodes,
                       IdNodes<Links<Link<LinkWeight, WEIGHTED>>>& idnodes, Id id,
                       const InpLinks<WEIGHTED>& links, bool shuffle, bool sumdups,
                       Reduction reduction, Id linksMarg, StructLinkErrors* errors,
                       LateLinks<Links<Link<LinkWeight, WEIGHTED>>>& late) {
    detail::requireWeights<WEIGHTED>("acsAddNodeAndLinks()", id, links);
    NodesIdsT ids;
    ids.reserve(links.size() + 1);
    ids.push_back(id);
    for (const InpLink<WEIGHTED>& ln : links) ids.push_back(ln.id);
    acsAddNodes(nodes, idnodes, ids, shuffle);
    return storeLinks<DIRECTED, WEIGHTED>(idnodes.at(id), idnodes, links, sumdups, reduction,
                                          linksMarg, errors, late, id);
}

/// Calls `store` with a place for late links, which is merged also where it throws.
template <class LinksT, class StoreT>
bool mergedAfter(StoreT store) {
    LateLinks<LinksT> late;
    try {
        const bool arcs = store(late);
        late.merge();
        return arcs;
    } catch (...) {
        late.merge();
        throw;
    }
}

}  // namespace

template <class LinksT>
typename IdNodes<LinksT>::iterator acsAddNode(Nodes<LinksT>& nodes, IdNodes<LinksT>& idnodes, Id id,
                                              StructNodeErrors* errors) {
    const auto it = idnodes.find(id);
    if (it != idnodes.end()) {
        if (errors) errors->add(id);
        return it;
    }
    nodes.emplace_back(id, Size{0});
    return idnodes.emplace(id, &nodes.back()).first;
}

template <class LinksT>
void acsAddNodes(Nodes<LinksT>& nodes, IdNodes<LinksT>& idnodes, const NodesIdsT& ids, bool shuffle,
                 StructNodeErrors* errors) {
    VORL_ASSERT(!ids.empty(), "acsAddNodes(), ids should be specified");
    if (mapCapacity(idnodes) < idnodes.size() + ids.size()) {
        Size present = 0;
        for (Id id : ids) present += idnodes.count(id);
        if (mapCapacity(idnodes) < idnodes.size() + present)
            idnodes.reserve(static_cast<Size>(static_cast<double>(present) +
                                              1.5 * static_cast<double>(ids.size())));
    }
    detail::eachNode(ids.begin(), ids.end(), shuffle,
                     [&](auto id) { acsAddNode(nodes, idnodes, *id, errors); });
}

template <class NodeT>
void insertLink(NodeT* src, NodeT* dst, LinkWeight weight, bool sumdups, StructLinkErrors* errors) {
    detail::requireWeight("insertLink()", src->id, dst->id, weight);
    placeLink<decltype(src->links)>(src, dst, weight, sumdups, errors, nullptr);
}

template <bool DIRECTED, bool WEIGHTED>
bool acsAddNodeLinks(IdNodes<Links<Link<LinkWeight, WEIGHTED>>>& idnodes, Id id,
                     const InpLinks<WEIGHTED>& links, bool sumdups, Reduction reduction,
                     Id linksMarg, StructLinkErrors* errors) {
    return mergedAfter<Links<Link<LinkWeight, WEIGHTED>>>([&](auto& late) {
        return storeNodeLinks<DIRECTED, WEIGHTED>(idnodes, id, links, sumdups, reduction, linksMarg,
                                                  errors, late);
    });
}

template <bool DIRECTED, bool WEIGHTED>
bool acsAddNodeAndLinks(Nodes<Links<Link<LinkWeight, WEIGHTED>>>& nodes,
                        IdNodes<Links<Link<LinkWeight, WEIGHTED>>>& idnodes, Id id,
                        const InpLinks<WEIGHTED>& links, bool shuffle, bool sumdups,
                        Reduction reduction, Id linksMarg, StructLinkErrors* errors) {
    return mergedAfter<Links<Link<LinkWeight, WEIGHTED>>>([&](auto& late) {
        return storeNodeAndLinks<DIRECTED, WEIGHTED>(nodes, idnodes, id, links, shuffle, sumdups,
                                                     reduction, linksMarg, errors, late);
    });
}

namespace {

template <bool WEIGHTED>
void checkReduction(Reduction reduction, Id nodesNum, const char* caller) {
    if (reduction == Reduction::NONE || (WEIGHTED && nodesNum != 0)) return;
    throw std::invalid_argument(std::string(caller) +
                                ", the reduction can be performed only for the weighed directed "
                                "links and requires predefined nodesNum");
}

Reduction inputReduction(Reduction reduction) {
    if ((reduction & Reduction::SKIP_NODES) != Reduction::NONE) return Reduction::NONE;
    return reduction & Reduction::CORE_MASK;
}

}  // namespace

template <bool LINKS_WEIGHTED>
Graph<LINKS_WEIGHTED>::Graph(Id nodesNum, bool shuffle, bool sumdups, Reduction reduction)
    : m_reduction(inputReduction(reduction)), m_shuffle(shuffle), m_sumdups(sumdups) {
    checkReduction<LINKS_WEIGHTED>(m_reduction, nodesNum, "Graph()");
    m_linksMarg = reducedLinksMarg(nodesNum, m_reduction);
    if (nodesNum != 0) m_idnodes.reserve(nodesNum);
}

template <bool LINKS_WEIGHTED>
Graph<LINKS_WEIGHTED>::Graph(Graph&& other) noexcept = default;

template <bool LINKS_WEIGHTED>
Graph<LINKS_WEIGHTED>::~Graph() = default;

template <bool LINKS_WEIGHTED>
auto Graph<LINKS_WEIGHTED>::toSharedPtr() -> std::shared_ptr<Graph> {
    return std::make_shared<Graph>(std::move(*this));
}

template <bool LINKS_WEIGHTED>
void Graph<LINKS_WEIGHTED>::reset(Id nodesNum, bool shuffle, bool sumdups, Reduction reduction) {
    reduction = inputReduction(reduction);
    checkReduction<LINKS_WEIGHTED>(reduction, nodesNum, "reset()");
    m_reduction = reduction;
    m_linksMarg = reducedLinksMarg(nodesNum, m_reduction);
    m_late.reset();
    m_idnodes.clear();
    m_unmapped = UnmappedT();
    m_nodes = NodesT();
    m_directed = false;
    if (nodesNum != 0) {
        const Size present = mapCapacity(m_idnodes);
        if (present < nodesNum || static_cast<double>(present) > 1.5 * nodesNum) {
            m_idnodes.rehash(0);
            m_idnodes.reserve(nodesNum);
        }
    }
    m_shuffle = shuffle;
    m_sumdups = sumdups;
}

template <bool LINKS_WEIGHTED>
auto Graph<LINKS_WEIGHTED>::nodes() -> NodesT& {
    show();
    return m_nodes;
}

template <bool LINKS_WEIGHTED>
auto Graph<LINKS_WEIGHTED>::node(Id id) -> NodeT* {
    show();
    return idNodes().at(id);
}

/// The map of ids, with the nodes that came without it.
template <bool LINKS_WEIGHTED>
auto Graph<LINKS_WEIGHTED>::idNodes() -> IdNodesT& {
    if (!m_unmapped.empty()) {
        if (mapCapacity(m_idnodes) < m_unmapped.size()) m_idnodes.reserve(m_unmapped.size());
        for (const auto& [id, node] : m_unmapped) m_idnodes.emplace(id, node);
        m_unmapped = UnmappedT();
    }
    return m_idnodes;
}

/// From now on each operation leaves the lists complete, as the caller may look at any of them.
template <bool LINKS_WEIGHTED>
void Graph<LINKS_WEIGHTED>::show() {
    mergeLate();
    m_shown = true;
}

template <bool LINKS_WEIGHTED>
void Graph<LINKS_WEIGHTED>::mergeLate() {
    if (m_late) m_late->merge();
    m_late.reset();
}

template <bool LINKS_WEIGHTED>
auto Graph<LINKS_WEIGHTED>::hierarchy() -> std::shared_ptr<HierarchyT> {
    if (!m_hierarchy) throw std::runtime_error("The hierarchy has not been constructed");
    return m_hierarchy;
}

template <bool LINKS_WEIGHTED>
auto Graph<LINKS_WEIGHTED>::buildHierarchy(const ClusterOptions& options)
    -> std::shared_ptr<HierarchyT> {
    show();  // the hierarchy holds the nodes from now on
    for (const auto& node : m_nodes) {
        detail::requireWeight("buildHierarchy()", node.id, node.id, detail::narrow(node.weight()));
        if constexpr (LINKS_WEIGHTED)
            for (const auto& ln : node.links)
                detail::requireWeight("buildHierarchy()", node.id, ln.dest->id, ln.weight);
    }
    m_hierarchy = cluster<LinksT>(m_nodes, !m_directed, options);
    return hierarchy();
}

template <bool LINKS_WEIGHTED>
void Graph<LINKS_WEIGHTED>::addNodes(Id nodesNum, Id firstId, StructNodeErrors* errors) {
    VORL_ASSERT(nodesNum != 0, "addNodes(), the number of nodes to instantiate must be positive");
    IdNodesT& idnodes = idNodes();
    if (mapCapacity(idnodes) < nodesNum + idnodes.size())
        idnodes.reserve(static_cast<Size>(1.5 * static_cast<double>(idnodes.size()) + nodesNum));
    detail::eachNode(firstId, firstId + nodesNum, m_shuffle,
                     [&](Id id) { acsAddNode<LinksT>(m_nodes, idnodes, id, errors); });
}

template <bool LINKS_WEIGHTED>
void Graph<LINKS_WEIGHTED>::addNodes(const NodesIdsT& ids, StructNodeErrors* errors) {
    acsAddNodes<LinksT>(m_nodes, idNodes(), ids, m_shuffle, errors);
}

template <bool LINKS_WEIGHTED>
template <bool DIRECTED>
void Graph<LINKS_WEIGHTED>::addLink(Id src, Id dst, LinkWeight weight, StructLinkErrors* errors) {
    detail::requireWeight("addLink()", src, dst, weight);
    NodeT* source;
    NodeT* dest;
    try {
        source = idNodes().at(src);
        if (m_linksMarg != 0 && !source->links.empty())
            throw std::domain_error(
                "addLink(), links can be added only ones for each node on graph reduction");
        dest = idNodes().at(dst);
    } catch (const std::out_of_range& err) {
        throw std::out_of_range("addLink(), the link with non-existent node is used: #" +
                                std::to_string(src) + "." + std::to_string(dst) + "\n" +
                                err.what());
    }
    m_directed |=
        storeLink<DIRECTED>(source, dest, weight, m_sumdups, errors, m_shown ? nullptr : &late());
}

template <bool LINKS_WEIGHTED>
template <bool DIRECTED>
void Graph<LINKS_WEIGHTED>::addNodeLinks(Id id, const InpLinksT& links, StructLinkErrors* errors) {
    m_directed |=
        m_shown ? acsAddNodeLinks<DIRECTED, LINKS_WEIGHTED>(idNodes(), id, links, m_sumdups,
                                                            m_reduction, m_linksMarg, errors)
                : storeNodeLinks<DIRECTED, LINKS_WEIGHTED>(
                      idNodes(), id, links, m_sumdups, m_reduction, m_linksMarg, errors, late());
}

template <bool LINKS_WEIGHTED>
template <bool DIRECTED>
void Graph<LINKS_WEIGHTED>::addNodeAndLinks(Id id, const InpLinksT& links,
                                            StructLinkErrors* errors) {
    m_directed |= m_shown ? acsAddNodeAndLinks<DIRECTED, LINKS_WEIGHTED>(
                                m_nodes, idNodes(), id, links, m_shuffle, m_sumdups, m_reduction,
                                m_linksMarg, errors)
                          : storeNodeAndLinks<DIRECTED, LINKS_WEIGHTED>(
                                m_nodes, idNodes(), id, links, m_shuffle, m_sumdups, m_reduction,
                                m_linksMarg, errors, late());
}

template <bool LINKS_WEIGHTED>
auto Graph<LINKS_WEIGHTED>::late() -> LateLinks<LinksT>& {
    if (!m_late) m_late = std::make_unique<LateLinks<LinksT>>();
    return *m_late;
}

template <bool LINKS_WEIGHTED>
auto Graph<LINKS_WEIGHTED>::release(IdNodesT* idnodes, bool* directed) -> std::shared_ptr<NodesT> {
    mergeLate();
    if (idnodes) *idnodes = std::move(idNodes());
    m_idnodes.clear();
    m_unmapped = UnmappedT();
    if (directed) *directed = m_directed;
    m_directed = false;
    m_reduction = Reduction::NONE;
    m_linksMarg = 0;
    auto nodes = std::make_shared<NodesT>(std::move(m_nodes));
    m_nodes = NodesT();
    return nodes;
}

#define VORL_INSTANTIATE_LINKS(LinksT)                                                           \
    template VORL_API IdNodes<LinksT>::iterator acsAddNode(Nodes<LinksT>&, IdNodes<LinksT>&, Id, \
                                                           StructNodeErrors*);                   \
    template VORL_API void acsAddNodes(Nodes<LinksT>&, IdNodes<LinksT>&, const NodesIdsT&, bool, \
                                       StructNodeErrors*);                                       \
    template VORL_API void insertLink(Node<LinksT>*, Node<LinksT>*, LinkWeight, bool,            \
                                      StructLinkErrors*);
#define VORL_INSTANTIATE_LINK(DIRECTED, WEIGHTED)                                               \
    template VORL_API bool acsAddNodeLinks<DIRECTED, WEIGHTED>(                                 \
        IdNodes<Links<Link<LinkWeight, WEIGHTED>>>&, Id, const InpLinks<WEIGHTED>&, bool,       \
        Reduction, Id, StructLinkErrors*);                                                      \
    template VORL_API bool acsAddNodeAndLinks<DIRECTED, WEIGHTED>(                              \
        Nodes<Links<Link<LinkWeight, WEIGHTED>>>&, IdNodes<Links<Link<LinkWeight, WEIGHTED>>>&, \
        Id, const InpLinks<WEIGHTED>&, bool, bool, Reduction, Id, StructLinkErrors*);           \
    template void Graph<WEIGHTED>::addLink<DIRECTED>(Id, Id, LinkWeight, StructLinkErrors*);    \
    template void Graph<WEIGHTED>::addNodeLinks<DIRECTED>(Id, const InpLinks<WEIGHTED>&,        \
                                                          StructLinkErrors*);                   \
    template void Graph<WEIGHTED>::addNodeAndLinks<DIRECTED>(Id, const InpLinks<WEIGHTED>&,     \
                                                             StructLinkErrors*);

VORL_INSTANTIATE_LINKS(UnweightedLinks)
VORL_INSTANTIATE_LINKS(WeightedLinks)
VORL_INSTANTIATE_LINK(false, false)
VORL_INSTANTIATE_LINK(false, true)
VORL_INSTANTIATE_LINK(true, false)
VORL_INSTANTIATE_LINK(true, true)

#undef VORL_INSTANTIATE_LINKS
#undef VORL_INSTANTIATE_LINK

template class Graph<false>;
template class Graph<true>;

}  // namespace vorl
