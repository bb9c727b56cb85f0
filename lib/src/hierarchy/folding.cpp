// Folding: the clusters of a level become the items of the next one.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>
#include <cmath>

namespace vorl {

namespace {

constexpr const char* TOTAC_FAULT = "accLinks(), totac validation failed";

template <class LinksT>
bool byDest(const AccLink<LinksT>& a, const AccLink<LinksT>& b) {
    return cmpBase(a.dest, b.dest);
}

}  // namespace

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::appendNewSums(ClusterT& cl) {
    auto& links = cl.links;
    std::sort(m_newSums.begin(), m_newSums.end(), byDest<LinksT>);
    links.reserve(links.size() + m_newSums.size());
    links.insert(links.end(), m_newSums.begin(), m_newSums.end());
    m_marks.of(cl).aim = links.data() + (links.size() - m_newSums.size());
}

// Each list is ascending, and the clusters of the level are walked ascending too. So what leads
// back to the cluster at hand is, in the list of its destination, the next link to a cluster of
// the level, and no link need be sought.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::pairLinks(ClustersT& clusters) {
    if constexpr (NONSYMMETRIC && requires(AccLink<LinksT> ln) { ln.pair; }) {
        constexpr std::size_t ahead = 8;
        for (ClusterT& cl : clusters) {
            m_report.check();
            const std::size_t count = cl.links.size();
            for (std::size_t i = 0; i < count; ++i) {
                if (i + 2 * ahead < count) m_marks.prefetch(cl.links[i + 2 * ahead].dest);
                if (i + ahead < count) __builtin_prefetch(m_marks.of(cl.links[i + ahead].dest).aim);
                auto& ln = cl.links[i];
                Mark& mark = m_marks.of(ln.dest);
                AccLink<LinksT>* back = mark.back();
                VORL_ASSERT(back->dest == &cl,
                            "linkWeight(), back links must always exists, INVERSE");
                ln.pair = back->pair = ln.weight + back->weight;
                mark.aim = back + 1;
            }
        }
    }
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::accumulate(AccLinksT& sums, ClusterT* dest,
                                                     AccWeight weight) {
    Mark& mark = m_marks.of(dest);
    if (mark.place < sums.size() && sums[mark.place].dest == dest) {
        sums[mark.place].weight += weight;
        return;
    }
    mark.place = static_cast<std::uint32_t>(sums.size());
    sums.emplace_back(dest, weight);
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::accumulateOwners(const ItemT& item, AccWeight weight,
                                                           AccWeight share, const char* text) {
    std::uint32_t totac = 0;
    for (const auto& owner : item.owners) {
        accumulate(m_newSums, owner.dest, weight / item.totac * owner.numac * share);
        totac += owner.numac;
    }
    VORL_ASSERT(totac == item.totac, text);
}

template <bool NONSYMMETRIC, class LinksT>
template <bool CLUSTERS>
void HierarchyImpl<NONSYMMETRIC, LinksT>::accLinks(ClusterT& cl) {
    using DesT = std::conditional_t<CLUSTERS, ClusterT, NodeT>;
    VORL_ASSERT(
        !cl.des.empty() && (cl.des.front()->descs() != nullptr) == CLUSTERS,
        "accLinks(), el des should not be empty and should correspond to the CLUSTERS flag");
    // The links to what stays on come in as many ascending runs as there are descendants; those to
    // the clusters of the level, all of which lie above, come in no order.
    constexpr std::size_t ahead = 8;
    m_sums.clear();
    m_newSums.clear();
    m_runs.clear();
    // Shared descendants with a self weight have linked their owners already.
    for (const auto& ln : cl.links) accumulate(m_newSums, ln.dest, ln.weight);
    cl.links.clear();
    for (const NodeI<LinksT>* item : cl.des) {
        const DesT& dc = static_cast<const DesT&>(*item);
        const auto& entry =
            detail::ownerEntry(dc, cl, "accLinks(), the owner should be among it's des owners");
        const AccWeight share =
            static_cast<AccWeight>(entry.numac) / static_cast<AccWeight>(dc.totac);
        const std::size_t count = dc.links.size();
        m_runs.push_back(m_sums.size());
        for (std::size_t i = 0; i < count; ++i) {
            const auto& ln = dc.links[i];
            const AccWeight weight = ln.weight;
            if constexpr (CLUSTERS) {
                if (i + ahead < count) m_marks.prefetch(dc.links[i + ahead].dest);
                Mark& mark = m_marks.of(ln.dest);
                if (!mark.is(MarksT::ABSORBED)) {
                    mark.set(MarksT::TOUCHED);
                    accumulate(m_sums, ln.dest, weight * share);
                } else if (mark.aim) {
                    accumulate(m_newSums, mark.owner(), weight * share);
                } else {
                    accumulateOwners(*ln.dest, weight, share, TOTAC_FAULT);
                }
            } else {
                if (i + 2 * ahead < count)
                    __builtin_prefetch(&dc.links[i + 2 * ahead].dest->owners);
                if (i + ahead < count) __builtin_prefetch(dc.links[i + ahead].dest->owners.data());
                VORL_ASSERT(!ln.dest->owners.empty(),
                            "accLinks(), a cluster is expected, which always have desc");
                accumulateOwners(*ln.dest, weight, share, TOTAC_FAULT);
            }
        }
    }
    cl.links.reserve(m_sums.size() + m_newSums.size());
    if (m_runs.size() == 2) {
        const auto middle = m_sums.begin() + static_cast<std::ptrdiff_t>(m_runs[1]);
        std::merge(m_sums.begin(), middle, middle, m_sums.end(), std::back_inserter(cl.links),
                   byDest<LinksT>);
    } else {
        if (m_runs.size() > 2) std::sort(m_sums.begin(), m_sums.end(), byDest<LinksT>);
        cl.links.assign(m_sums.begin(), m_sums.end());
    }
    appendNewSums(cl);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::markAbsorbed(const ClustersT& clusters) {
    for (const ClusterT& cl : clusters) {
        for (const NodeI<LinksT>* item : cl.des) {
            Mark& mark = m_marks.of(static_cast<const ClusterT*>(item));
            mark.set(MarksT::ABSORBED);
            const bool whole =
                item->owners.size() == 1 && item->totac == 1 && item->owners.front().numac == 1;
            mark.aim = whole ? item->owners.front().dest : nullptr;
        }
    }
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::sortsAbsorbed(Id members) const {
    return members != 0 && m_propnum != 0 && m_proplsnum / m_propnum >= members &&
           m_propnum >= static_cast<double>(8 * members) * std::log2(static_cast<double>(members));
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::seeksAbsorbed(std::size_t links, std::size_t absorbed) {
    const auto count = static_cast<double>(links);
    return count >= std::log2(count) * static_cast<double>(absorbed) * 0.5 + 8.0;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::accLinksProp(ClusterT& cl, Id& furpropnum,
                                                       Size& furproplsnum,
                                                       const DesClusters* props) {
    VORL_ASSERT(cl.owners.empty(), "accLinksProp(), propagated nodes can't have owners");
    auto& links = cl.links;
    auto& cands = cl.m_context->cands;
    const auto goFurther = [&] {
        cl.m_context->state |= State::FURTHERPROP | State::PROPAGATED;
        cl.m_context->gmax = GAIN_NONE;
        ++furpropnum;
        furproplsnum += links.size();
        m_marks.of(cl).set(MarksT::QUIET);
        m_quietLinks += links.size();
    };
    Mark& mark = m_marks.of(cl);
    if (mark.is(MarksT::QUIET)) m_quietLinks -= links.size();
    const bool touched = mark.is(MarksT::TOUCHED);
    mark.flags = 0;
    if (!props && !touched) {  // no link leads to an absorbed item
        cands.clear();
        goFurther();
        return;
    }

    // Where the first link to an absorbed item may stand.
    auto ln = links.begin();
    if (props && seeksAbsorbed(links.size(), props->size())) {
        for (const ClusterT* absorbed : *props) {
            ln = binary_ifind(ln, links.end(), absorbed, bsObjsDest<AccLink<LinksT>, ClusterT>);
            if (ln == links.end() || ln->dest == absorbed) break;
        }
    }

    auto icand = cands.begin();
    m_newSums.clear();
    auto wcand = icand;
    if (!cands.empty() && ln != links.begin() && ln == links.end()) {
        wcand = cands.end();
    } else {
        if (!cands.empty() && ln != links.begin())
            icand = findItem(cands.begin(), cands.end(), ln->dest);
        wcand = icand;
        auto wlink = ln;
        constexpr std::ptrdiff_t ahead = 8;
        for (; ln != links.end(); ++ln) {
            if (links.end() - ln > ahead) m_marks.prefetch(ln[ahead].dest);
            const ClusterT* dest = ln->dest;
            const Mark& end = m_marks.of(dest);
            if (!end.is(MarksT::ABSORBED)) {
                if (wlink != ln) *wlink = *ln;
                ++wlink;
                continue;
            }
            for (; icand != cands.end() && !cmpBase(dest, *icand); ++icand) {
                if (*icand != dest) *wcand++ = *icand;
            }
            if (end.aim)
                accumulate(m_newSums, end.owner(), ln->weight);
            else
                accumulateOwners(*dest, ln->weight, 1, "accLinksProp(),  totac validation failed");
        }
        links.erase(wlink, links.end());
    }

    const bool unchanged = m_newSums.empty();
    if (links.capacity() > (links.size() + m_newSums.size()) * 5 / 4 + 4) links.shrink_to_fit();
    appendNewSums(cl);

    // Every candidate behind the last absorbed link goes as well.
    cands.erase(wcand, cands.end());
    if (!cands.empty()) return;
    cl.m_context->gmax = 0;
    if (unchanged) goFurther();
}

template <bool NONSYMMETRIC, class LinksT>
template <bool CLUSTERS>
void HierarchyImpl<NONSYMMETRIC, LinksT>::foldLevel(const PropagatesT& propagates) {
    if constexpr (CLUSTERS)
        if (m_tracks.on) return foldTracked();
    ClustersT& clusters = m_levels.back().clusters;
    m_marks.cover();
    if constexpr (CLUSTERS) markAbsorbed(clusters);
    const bool tracked = startTracks();
    // Of the nodes nothing is carried past the level, so that lists are complete in their order.
    if (!CLUSTERS && tracked) m_tracks.links.reserveLinks(m_score.nodesLinks);
    Id desnum = 0;
    Id rdsnum = 0;
    m_report.begin("folding", clusters.size() + propagates.size(), m_levels.size() - 1);
    for (ClusterT& cl : clusters) {
        m_report.advance();
        accLinks<CLUSTERS>(cl);
        if (!CLUSTERS && tracked) trackLinks(cl);
        if constexpr (CLUSTERS) desnum += static_cast<Id>(cl.des.size());
        if (m_reductionClusters != Reduction::NONE && m_linksMarg != 0 &&
            cl.links.size() > m_linksMarg)
            ++rdsnum;
    }

    Id furpropnum = 0;
    Size furproplsnum = 0;
    if (CLUSTERS && !propagates.empty()) {
        VORL_ASSERT(m_proplsnum != 0,
                    "foldLevel(), proplsnum should be defined for non-empty props");
        // A sorted list of all descendants pays where many items with many links are propagated.
        DesClusters absorbed;
        const bool sorted = sortsAbsorbed(desnum);
        if (sorted) {
            absorbed.reserve(desnum);
            for (const ClusterT& cl : clusters)
                for (NodeI<LinksT>* item : cl.des) absorbed.push_back(static_cast<ClusterT*>(item));
            std::sort(absorbed.begin(), absorbed.end(), cmpBase<ClusterT, ClusterT>);
            absorbed.erase(std::unique(absorbed.begin(), absorbed.end()), absorbed.end());
        }
        // Few items change on a level, while many may be carried past it.
        const auto isQuiet = [this](const ClusterT* item) {
            const Mark& mark = m_marks.of(item);
            return mark.is(MarksT::QUIET) && !mark.is(MarksT::TOUCHED);
        };
        Id quiet = 0;
        for (auto it = propagates.begin(); it != propagates.end(); ++it) {
            m_report.advance();
            prefetchItems(it, propagates.end(), isQuiet);
            if (isQuiet(*it)) {
                ++quiet;
                continue;
            }
            accLinksProp(**it, furpropnum, furproplsnum, sorted ? &absorbed : nullptr);
            initItem(**it);
        }
        furpropnum += quiet;
        furproplsnum = m_quietLinks;
        VORL_ASSERT(furpropnum <= m_propnum, "foldLevel(), furpropnum is invalid");
    }

    if (!tracked) {
        pairLinks(clusters);
    } else {
        if constexpr (CLUSTERS) trackAllLinks();
        pairTracked();
    }
    for (ClusterT& cl : clusters) initItem(cl);
    if (tracked) seatFolded();
    // Only now: the new clusters have read their descendants' weights.
    if constexpr (CLUSTERS)
        for (ClusterT& cl : clusters)
            for (NodeI<LinksT>* item : cl.des) item->tidy();
    if (rdsnum != 0)
        reduceItems<ClusterT>(clusters, rdsnum, m_reductionClusters,
                              "  >> foldLevel(), links reduced for %u / %u / %lu cls\n");
    m_propnum = furpropnum;
    m_proplsnum = furproplsnum;
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                                    \
    template bool HierarchyImpl<NONSYM, LinksT>::sortsAbsorbed(Id) const;                   \
    template bool HierarchyImpl<NONSYM, LinksT>::seeksAbsorbed(std::size_t, std::size_t);   \
    template void HierarchyImpl<NONSYM, LinksT>::pairLinks(Clusters<LinksT>&);              \
    template void HierarchyImpl<NONSYM, LinksT>::appendNewSums(Cluster<LinksT>&);           \
    template void HierarchyImpl<NONSYM, LinksT>::accumulate(Links<AccLink<LinksT>>&,        \
                                                            Cluster<LinksT>*, AccWeight);   \
    template void HierarchyImpl<NONSYM, LinksT>::accumulateOwners(                          \
        const Cluster<LinksT>&, AccWeight, AccWeight, const char*);                         \
    template void HierarchyImpl<NONSYM, LinksT>::foldLevel<false>(const PropagatesT&);      \
    template void HierarchyImpl<NONSYM, LinksT>::foldLevel<true>(const PropagatesT&);       \
    template void HierarchyImpl<NONSYM, LinksT>::accLinks<false>(Cluster<LinksT>&);         \
    template void HierarchyImpl<NONSYM, LinksT>::accLinks<true>(Cluster<LinksT>&);          \
    template void HierarchyImpl<NONSYM, LinksT>::markAbsorbed(const Clusters<LinksT>&);     \
    template void HierarchyImpl<NONSYM, LinksT>::accLinksProp(Cluster<LinksT>&, Id&, Size&, \
                                                              const DesClusters*);

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
