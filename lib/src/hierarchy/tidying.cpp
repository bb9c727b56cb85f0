// Membership tidying: what an item's memberships are worth.
#include <vorl/hierarchy/hierarchy_impl.hpp>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::countShares(ItemT& el) {
    using IterT = typename ItemT::OwnersT::const_iterator;
    using MCOwnersMatch = GroupMatch<ItemT, IterT>;

    std::vector<MCOwnersMatch> matches;
    matches.reserve(el.m_context->cands.size());
    for (ItemT* cand : el.m_context->cands)
        matches.emplace_back(cand->owners.begin(), cand->owners.end(), cand);
    for (auto& owner : el.owners) {
        for (MCOwnersMatch& match : matches) {
            while (match.iel != match.end && cmpBase(match.iel->dest, owner.dest)) ++match.iel;
            if (match.iel != match.end && match.iel->dest == owner.dest) ++owner.numac;
        }
        el.totac += owner.numac;
    }
}

template <bool NONSYMMETRIC, class LinksT>
template <class IItemXT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::membershipTidy(IItemXT first, IItemXT last) {
    for (; first != last; ++first) {
        m_report.check();
        auto& el = detail::itemAt(first);
        VORL_ASSERT(el.m_context, "membershipTidy(), el context must be defined");
        auto& ectx = *el.m_context;
        ectx.parts.reset();
        if (xpropagated(ectx.state) || ectx.cands.size() == 1) {
            VORL_ASSERT(el.owners.size() <= 1,
                        "membershipTidy(), propagated and single clusterable items must contain "
                        "<= 1 owner");
            if (el.owners.empty()) continue;
        }
        if (el.owners.size() == 1) {
            el.totac = 1;
            el.owners.front().numac = 1;
            continue;
        }
        VORL_ASSERT(!el.owners.empty(), "membershipTidy(), el owners must exist here");
        countShares(el);

        // The self weight of a shared item becomes links between its owners.
        auto& owners = el.owners;
        for (auto oi = owners.begin(); oi != owners.end() - 1; ++oi) {
            const AccWeight unit = static_cast<AccWeight>(el.m_sweight) /
                                   static_cast<AccWeight>(std::uint64_t{el.totac} * el.totac);
            auto hint = oi->dest->links.begin();
            for (auto oj = oi + 1; oj != owners.end(); ++oj) {
                const AccWeight weight = std::uint32_t{oi->numac} * oj->numac * unit;
                hint = addLink(oi->dest->links, hint, oj->dest, weight);
                addLink(oj->dest->links, oj->dest->links.begin(), oi->dest, weight);
            }
        }
    }
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                                     \
    template void HierarchyImpl<NONSYM, LinksT>::membershipTidy(Nodes<LinksT>::iterator,     \
                                                                Nodes<LinksT>::iterator);    \
    template void HierarchyImpl<NONSYM, LinksT>::membershipTidy(Clusters<LinksT>::iterator,  \
                                                                Clusters<LinksT>::iterator); \
    template void HierarchyImpl<NONSYM, LinksT>::membershipTidy(                             \
        std::vector<Cluster<LinksT>*>::iterator, std::vector<Cluster<LinksT>*>::iterator);

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
