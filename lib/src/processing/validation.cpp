#include <vorl/processing/validation.hpp>

#include <vorl/types/progress.hpp>
#include <vorl/types/trace.hpp>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace vorl {

namespace {

/// Reports a missing back link of an edge, and refuses the network.
template <class NodeT, class IterT>
[[noreturn]] void refuseLink(const NodeT& node, const NodeT& dest, IterT place) {
    const bool atEnd = place == dest.links.end();
    VORL_TRACE("> validate(), #%u(%p) has no backlink from #%u(%p) [#%u(%p)] among %lu links: ",
               node.id, static_cast<const void*>(&node), dest.id, static_cast<const void*>(&dest),
               atEnd ? ID_NONE : place->dest->id,
               atEnd ? nullptr : static_cast<const void*>(place->dest), dest.links.size());
    for (const auto& ln : dest.links)
        VORL_TRACE(" %u(%p)", ln.dest->id, static_cast<const void*>(ln.dest));
    VORL_TRACE("\n");
    throw std::domain_error("validate(), backlinks should always exist for the symmetric links\n");
}

template <class ErrorsT>
ErrorsT& collector(std::optional<ErrorsT>& errors, const char* message) {
    if (!errors) errors.emplace(message);
    return *errors;
}

/// Whether it is shown without a search that all links are in order, have their back links and no
/// negative weight, and if asked for, that both ways weigh the same.
///
/// Where the nodes ascend, what leads back to the node at hand is in each list the next link that
/// hasn't been met. How many a node's list has met is counted in its `totac`, which nodes don't use
/// before the clustering.
template <bool SAME_WEIGHTS, class NodesT>
bool isSound(NodesT& nodes) {
    using NodeT = typename NodesT::value_type;
    constexpr std::size_t ahead = 8;
    Size met = 0;
    const auto meetLinks = [&met](const NodeT& node) {
        const NodeT* prev = nullptr;
        const std::size_t count = node.links.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (i + 2 * ahead < count) __builtin_prefetch(&node.links[i + 2 * ahead].dest->links);
            if (i + ahead < count) {
                const NodeT& next = *node.links[i + ahead].dest;
                __builtin_prefetch(next.links.data() + next.totac);
            }
            NodeT& dest = *node.links[i].dest;
            if (prev && !cmpBase(prev, &dest)) return false;
            prev = &dest;
            if (dest.totac >= dest.links.size()) return false;
            const auto& back = dest.links[dest.totac];
            if (back.dest != &node || dest.id == node.id || !(back.weight >= 0)) return false;
            if (SAME_WEIGHTS && back.weight != node.links[i].weight) return false;
            ++dest.totac;
            ++met;
        }
        return true;
    };
    if (!std::all_of(nodes.begin(), nodes.end(), [](const NodeT& nd) { return nd.totac == 0; }))
        return false;
    bool sound = true;
    const NodeT* prev = nullptr;
    for (auto it = nodes.begin(); sound && it != nodes.end(); prev = &*it++)
        sound = (!prev || cmpBase(prev, &*it)) && meetLinks(*it);

    // Where no link leads to a node of another network, the nodes have all that was counted.
    Size counted = 0;
    for (const NodeT& node : nodes) counted += node.totac;
    if (sound && counted == met) {
        for (NodeT& node : nodes) node.totac = 0;
        return true;
    }
    for (NodeT& node : nodes)
        for (auto& ln : node.links) {
            if (met == 0) return false;
            --met;
            --ln.dest->totac;
        }
    return false;
}

}  // namespace

template <bool NONSYMMETRIC, class NodesT>
bool detail::isMirrored(NodesT& nodes) {
    return isSound<!NONSYMMETRIC>(nodes);
}

template <bool NONSYMMETRIC, class NodesT>
bool detail::validate(NodesT& nodes, AccWeight& weight, Size& linksNum, bool severe,
                      const StructLinkErrors* created) {
    using NodeT = typename NodesT::value_type;
    using LinkT = typename NodeT::LinkT;
    if (!(created && created->defined()) && isSound<!NONSYMMETRIC>(nodes)) return true;
    std::optional<StructNodeErrors> selfErrors;
    std::optional<StructLinkErrors> duplErrors;
    std::optional<StructLinkErrors> backErrors;
    if (created && created->defined()) backErrors = *created;

    const ProgressReporter report;
    report.begin("checking links", nodes.size());
    for (NodeT& node : nodes) {
        report.advance();
        auto& links = node.links;
        if (severe)
            for (std::size_t i = 1; i < links.size(); ++i)
                VORL_ASSERT(!cmpBase(links[i].dest, links[i - 1].dest),
                            "validate(), node links should be sorted");
        const auto dropWeight = [&](AccWeight dropped) {
            weight -= dropped;
            if (node.m_context && node.m_context->weight != WEIGHT_NONE)
                node.m_context->weight -= dropped;
        };
        const std::size_t count = links.size();
        std::size_t kept = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (kept != i) links[kept] = links[i];
            const LinkT& ln = links[kept];
            if constexpr (LinkT::IS_WEIGHTED)
                VORL_ASSERT(ln.weight >= 0, "validate(), link weight should be non-negative");
            NodeT& dest = *ln.dest;
            if (dest.id == node.id) {
                collector(selfErrors, "> WARNING validate(), selflink is duplicated. Removed: ")
                    .add(node.id);
                dropWeight(ln.weight);
                continue;
            }
            if (i + 1 < count && !cmpBase(&dest, links[i + 1].dest)) {
                VORL_ASSERT(&dest == links[i + 1].dest, "validate(), the links should be ordered");
                collector(duplErrors,
                          "> WARNING validate(), links must have unique dest. Duplicates removed: ")
                    .add({node.id, dest.id});
                dropWeight(ln.weight);
                continue;
            }
            ++kept;
            const auto place = findDest(dest.links.begin(), dest.links.end(), &node);
            if (place != dest.links.end() && place->dest == &node) continue;
            if constexpr (NONSYMMETRIC) {
                collector(backErrors, BACKLINKS_MESSAGE).add({dest.id, node.id});
                dest.links.emplace(place, &node, LinkWeight{0});
                ++linksNum;
            } else {
                refuseLink(node, dest, place);
            }
        }
        if (kept != count) {
            linksNum -= count - kept;
            links.erase(links.begin() + static_cast<std::ptrdiff_t>(kept), links.end());
            links.shrink_to_fit();
        }
    }
    if (selfErrors) selfErrors->show();
    if (duplErrors) duplErrors->show();
    if (backErrors) backErrors->show();
    // Now all have back links.
    return NONSYMMETRIC || !LinkT::IS_WEIGHTED || isMirrored<NONSYMMETRIC>(nodes);
}

template <bool NONSYMMETRIC, class NodesT>
void validate(NodesT& nodes, AccWeight& weight, Size& linksNum, bool severe) {
    detail::validate<NONSYMMETRIC>(nodes, weight, linksNum, severe, nullptr);
}

// Back links are gathered first and merged list by list, so that a hub costs no more than a sort.
template <class NodesT>
void detail::createBackLinks(NodesT& nodes, StructLinkErrors& created) {
    using NodeT = typename NodesT::value_type;
    using LinkT = typename NodeT::LinkT;
    std::vector<std::pair<NodeT*, NodeT*>> missing;
    const ProgressReporter report;
    report.begin("looking for back links", nodes.size());
    for (NodeT& node : nodes) {
        report.advance();
        const NodeT* prev = nullptr;
        for (const auto& ln : node.links) {
            NodeT* dest = ln.dest;
            if (dest == std::exchange(prev, dest) || dest->id == node.id) continue;
            const auto place = findDest(dest->links.begin(), dest->links.end(), &node);
            if (place != dest->links.end() && place->dest == &node) continue;
            missing.emplace_back(dest, &node);
            created.add({dest->id, node.id});
        }
    }
    std::sort(missing.begin(), missing.end(), [](const auto& a, const auto& b) {
        return a.first == b.first ? cmpBase(a.second, b.second) : cmpBase(a.first, b.first);
    });
    for (auto it = missing.begin(); it != missing.end();) {
        report.check();
        auto& links = it->first->links;
        const auto last = std::find_if(it, missing.end(),
                                       [&](const auto& pair) { return pair.first != it->first; });
        const auto middle = static_cast<std::ptrdiff_t>(links.size());
        links.reserve(links.size() + static_cast<std::size_t>(last - it));
        for (; it != last; ++it) links.emplace_back(it->second, LinkWeight{0});
        std::inplace_merge(links.begin(), links.begin() + middle, links.end(),
                           [](const LinkT& a, const LinkT& b) { return cmpBase(a.dest, b.dest); });
    }
}

#define VORL_INSTANTIATE(LinksT)                                                     \
    template VORL_API void validate<false>(Nodes<LinksT>&, AccWeight&, Size&, bool); \
    template VORL_API void validate<true>(Nodes<LinksT>&, AccWeight&, Size&, bool);  \
    template bool detail::validate<false>(Nodes<LinksT>&, AccWeight&, Size&, bool,   \
                                          const StructLinkErrors*);                  \
    template bool detail::validate<true>(Nodes<LinksT>&, AccWeight&, Size&, bool,    \
                                         const StructLinkErrors*);                   \
    template bool detail::isMirrored<false>(Nodes<LinksT>&);                         \
    template bool detail::isMirrored<true>(Nodes<LinksT>&);                          \
    template void detail::createBackLinks(Nodes<LinksT>&, StructLinkErrors&);

VORL_INSTANTIATE(UnweightedLinks)
VORL_INSTANTIATE(WeightedLinks)

#undef VORL_INSTANTIATE

}  // namespace vorl
