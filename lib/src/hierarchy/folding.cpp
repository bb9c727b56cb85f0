// Folding: the clusters of a level become the items of the next one.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>
#include <cmath>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
template <bool CLUSTERS>
void HierarchyImpl<NONSYMMETRIC, LinksT>::accLinks(ClusterT& cl) {
    using DesT = std::conditional_t<CLUSTERS, ClusterT, NodeT>;
    VORL_ASSERT(
        !cl.des.empty() && (cl.des.front()->descs() != nullptr) == CLUSTERS,
        "accLinks(), el des should not be empty and should correspond to the CLUSTERS flag");
    const Size ends = static_cast<const DesT*>(cl.des.front())->links.size() +
                      static_cast<const DesT*>(cl.des.back())->links.size();
    cl.links.reserve(static_cast<Size>(std::sqrt(static_cast<double>(ends * cl.des.size()))));
    for (const NodeI<LinksT>* item : cl.des) {
        const DesT& dc = static_cast<const DesT&>(*item);
        const AccWeight share = static_cast<AccWeight>(detail::ownerEntry(dc, cl).numac) /
                                static_cast<AccWeight>(dc.totac);
        for (const auto& ln : dc.links) {
            DesT& dest = *ln.dest;
            const AccWeight weight = ln.weight;
            if constexpr (CLUSTERS) {
                if (!m_flags.test(&dest, ClusterFlags<LinksT>::ABSORBED)) {
                    if (cl.links.empty() || cmpBase(cl.links.back().dest, &dest))
                        cl.links.emplace_back(&dest, weight * share);
                    else
                        addLink(cl.links, cl.links.begin(), &dest, weight * share);
                    continue;
                }
            } else {
                VORL_ASSERT(!dest.owners.empty(),
                            "accLinks(), a cluster is expected, which always have desc");
            }
            auto hint = cl.links.begin();
            std::uint32_t totac = 0;
            for (const auto& owner : dest.owners) {
                hint =
                    addLink(cl.links, hint, owner.dest, weight / dest.totac * owner.numac * share);
                totac += owner.numac;
            }
            VORL_ASSERT(totac == dest.totac, "accLinks(), totac validation failed");
        }
    }
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::markAbsorbed(const ClustersT& clusters) {
    for (const ClusterT& cl : clusters)
        for (const NodeI<LinksT>* item : cl.des)
            m_flags.set(static_cast<const ClusterT*>(item), ClusterFlags<LinksT>::ABSORBED);
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
        m_flags.set(&cl, ClusterFlags<LinksT>::QUIET);
        m_quietLinks += links.size();
    };
    std::uint8_t& flags = m_flags.of(&cl);
    if (flags & ClusterFlags<LinksT>::QUIET) m_quietLinks -= links.size();
    const bool touched = flags & ClusterFlags<LinksT>::TOUCHED;
    flags = 0;
    if (!props && !touched) {  // no link leads to an absorbed item
        cands.clear();
        goFurther();
        return;
    }

    // Where the first link to an absorbed item may stand.
    auto ln = links.begin();
    const auto linksNum = static_cast<double>(links.size());
    if (props && linksNum >= std::log2(linksNum) * static_cast<double>(props->size()) * 0.5 + 8.0) {
        for (const ClusterT* absorbed : *props) {
            ln = binary_ifind(ln, links.end(), absorbed, bsObjsDest<AccLink<LinksT>, ClusterT>);
            if (ln == links.end() || ln->dest == absorbed) break;
        }
    }

    auto icand = cands.begin();
    Links<AccLink<LinksT>> newLinks;
    auto wcand = icand;
    if (!cands.empty() && ln != links.begin() && ln == links.end()) {
        wcand = cands.end();
    } else {
        if (!cands.empty() && ln != links.begin())
            icand = findItem(cands.begin(), cands.end(), ln->dest);
        wcand = icand;
        auto wlink = ln;
        for (; ln != links.end(); ++ln) {
            const ClusterT* dest = ln->dest;
            if (!m_flags.test(dest, ClusterFlags<LinksT>::ABSORBED)) {
                if (wlink != ln) *wlink = *ln;
                ++wlink;
                continue;
            }
            for (; icand != cands.end() && !cmpBase(dest, *icand); ++icand) {
                if (*icand != dest) *wcand++ = *icand;
            }
            auto hint = newLinks.begin();
            std::uint32_t totac = 0;
            for (const auto& owner : dest->owners) {
                hint = addLink(newLinks, hint, owner.dest, ln->weight / dest->totac * owner.numac);
                totac += owner.numac;
            }
            VORL_ASSERT(totac == dest->totac, "accLinksProp(),  totac validation failed");
        }
        links.erase(wlink, links.end());
    }

    const bool unchanged = newLinks.empty();
    if (links.empty()) {
        links = std::move(newLinks);
    } else {
        std::size_t place = 0;
        for (const auto& link : newLinks) {
            if (cmpBase(links.back().dest, link.dest)) {
                links.push_back(link);
                continue;
            }
            const auto from = links.begin() + static_cast<std::ptrdiff_t>(place);
            const auto it = links.insert(findDest(from, links.end(), link.dest), link);
            place = static_cast<std::size_t>(it - links.begin());
        }
    }

    // Every candidate behind the last absorbed link goes as well.
    cands.erase(wcand, cands.end());
    if (!cands.empty()) return;
    cl.m_context->gmax = 0;
    if (unchanged) goFurther();
    links.shrink_to_fit();
}

template <bool NONSYMMETRIC, class LinksT>
template <bool CLUSTERS>
void HierarchyImpl<NONSYMMETRIC, LinksT>::foldLevel(const PropagatesT& propagates) {
    ClustersT& clusters = m_levels.back().clusters;
    if constexpr (CLUSTERS) markAbsorbed(clusters);
    Id desnum = 0;
    Id rdsnum = 0;
    for (ClusterT& cl : clusters) {
        accLinks<CLUSTERS>(cl);
        cl.links.shrink_to_fit();
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
        const bool sorted =
            desnum != 0 && m_proplsnum / m_propnum >= desnum &&
            m_propnum >= static_cast<double>(8 * desnum) * std::log2(static_cast<double>(desnum));
        if (sorted) {
            absorbed.reserve(desnum);
            for (const ClusterT& cl : clusters)
                for (NodeI<LinksT>* item : cl.des) absorbed.push_back(static_cast<ClusterT*>(item));
            std::sort(absorbed.begin(), absorbed.end(), cmpBase<ClusterT, ClusterT>);
            absorbed.erase(std::unique(absorbed.begin(), absorbed.end()), absorbed.end());
        }
        // Few items change on a level, while many may be carried past it.
        for (const ClusterT& cl : clusters)
            for (const NodeI<LinksT>* item : cl.des)
                for (const auto& ln : static_cast<const ClusterT*>(item)->links)
                    m_flags.set(ln.dest, ClusterFlags<LinksT>::TOUCHED);
        Id quiet = 0;
        for (ClusterT* item : propagates) {
            constexpr auto mask = ClusterFlags<LinksT>::QUIET | ClusterFlags<LinksT>::TOUCHED;
            if ((m_flags.of(item) & mask) == ClusterFlags<LinksT>::QUIET) {
                ++quiet;
                continue;
            }
            accLinksProp(*item, furpropnum, furproplsnum, sorted ? &absorbed : nullptr);
            initItem(*item);
        }
        furpropnum += quiet;
        furproplsnum = m_quietLinks;
        VORL_ASSERT(furpropnum <= m_propnum, "foldLevel(), furpropnum is invalid");
    }

    for (ClusterT& cl : clusters) initItem(cl);
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
    template void HierarchyImpl<NONSYM, LinksT>::foldLevel<false>(const PropagatesT&);      \
    template void HierarchyImpl<NONSYM, LinksT>::foldLevel<true>(const PropagatesT&);       \
    template void HierarchyImpl<NONSYM, LinksT>::accLinks<false>(Cluster<LinksT>&);         \
    template void HierarchyImpl<NONSYM, LinksT>::accLinks<true>(Cluster<LinksT>&);          \
    template void HierarchyImpl<NONSYM, LinksT>::markAbsorbed(const Clusters<LinksT>&);     \
    template void HierarchyImpl<NONSYM, LinksT>::accLinksProp(Cluster<LinksT>&, Id&, Size&, \
                                                              const DesClusters*);

VORL_FOR_ENGINES(VORL_INSTANTIATE)

}  // namespace vorl
