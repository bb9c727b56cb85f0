// Chains: groups of an item's candidates that are candidates of each other.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>

namespace vorl {

namespace {

/// `less` at 64-bit precision.
bool lessExact(AccWeight a, AccWeight b) {
    return 2 * (a - b) / (std::fabs(b) + std::fabs(a) + detail::ACCWEIGHT_EPS) +
               detail::ACCWEIGHT_EPS <
           0;
}

}  // namespace

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::mcandsChains(Chains<ItemT>& chains,
                                                       const ItemT& el) const {
    const Candidates<ItemT*>& cands = el.m_context->cands;
    // The 32-bit comparison lets a gain slightly below 0 pass.
    const auto gainOf = [](const Context<ItemT>& ctx) { return ctx.gmax < 0 ? 0 : ctx.gmax; };
    std::size_t walked = 0;
    for (auto id = cands.begin(); id != cands.end(); ++id) {
        m_report.check();
        ItemT* dest = *id;
        const Context<ItemT>& dctx = *dest->m_context;
        VORL_ASSERT(!xpropagated(dctx.state) && !dctx.cands.empty(),
                    "mcandsChains(), mcands can't be propagated and must have own mcands");
        auto ic = id + 1;
        auto idc = findItem(dctx.cands.begin(), dctx.cands.end(), dest);
        while (ic != cands.end() && idc != dctx.cands.end()) {
            if (*ic != *idc) {
                if (cmpBase(*ic, *idc))
                    ic = findItem(ic + 1, cands.end(), *idc);
                else
                    idc = findItem(idc + 1, dctx.cands.end(), *ic);
                continue;
            }
            ItemT* cand = *ic;
            ++ic;
            ++idc;
            const Context<ItemT>& cctx = *cand->m_context;
            if (cands.size() >= 3 && dctx.cands.size() >= 3 && cctx.cands.size() >= 3) {
                const auto chain =
                    std::find_if(chains.begin(), chains.end(),
                                 [cand](const Chain<ItemT>& ch) { return holds(ch.items, cand); });
                if (chain != chains.end() && holds(chain->items, dest)) continue;
            }
            extendChains(chains, dest, gainOf(dctx), cand, gainOf(cctx), 0);
        }
        ++walked;
    }
    VORL_ASSERT(walked == cands.size(),
                "mcandsChains(), el mcands traversing index verification failed");
    return !cands.empty();
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::extendChains(Chains<ItemT>& chains, ItemT* item1,
                                                       AccWeight gain1, ItemT* item2,
                                                       AccWeight gain2, AccWeight cdgain) const {
    if (cmpBase(item2, item1)) {
        std::swap(item1, item2);
        std::swap(gain1, gain2);
    }
    VORL_ASSERT(item1 && item2 && item1 != item2 && !lessExact(gain1, 0) && !lessExact(gain2, 0) &&
                    !lessExact(cdgain, 0),
                "extendChains(), items must be valid, unique, ordered and have non-negative gain");

    const auto chainOf = [&chains](const ItemT* item) {
        return std::find_if(chains.begin(), chains.end(),
                            [item](const Chain<ItemT>& chain) { return holds(chain.items, item); });
    };
    const auto chain1 = chainOf(item1);
    const auto chain2 = chainOf(item2);
    const auto insert = [cdgain](Chain<ItemT>& chain, ItemT* item, AccWeight gain) {
        chain.items.insert(insorted(chain.items, item, bsVal<ItemT, ItemT>), item);
        chain.gain += gain + cdgain;
    };
    if (chain1 == chains.end() && chain2 == chains.end()) {
        chains.emplace_back(ChainItems<ItemT*>{item1, item2}, gain1 + gain2 + cdgain);
    } else if (chain2 == chains.end()) {
        insert(*chain1, item2, gain2);
    } else if (chain1 == chains.end()) {
        insert(*chain2, item1, gain1);
    } else if (chain1 != chain2) {
        auto dest = chain1;
        auto src = chain2;
        if (dest->items.size() < src->items.size()) std::swap(dest, src);
        const auto middle = static_cast<std::ptrdiff_t>(dest->items.size());
        dest->items.insert(dest->items.end(), src->items.begin(), src->items.end());
        std::inplace_merge(dest->items.begin(), dest->items.begin() + middle, dest->items.end(),
                           cmpBase<ItemT, ItemT>);
        dest->gain += cdgain + src->gain;
        chains.erase(src);
    }
}

template <Item ItemT>
AccWeight maxChainsGain(Chains<ItemT>& chains, Partitions<ItemT>* parts) {
    AccWeight gmax = GAIN_NONE;
    for (Chain<ItemT>& chain : chains) {
        const Size n = 4 * chain.items.size();
        if (less(chain.gain, gmax, n)) continue;
        // A sum beyond the range of 32 bits compares with nothing.
        if (gmax == GAIN_NONE || less(gmax, chain.gain, n)) {
            gmax = chain.gain;
            if (parts) parts->clear();
        }
        if (parts) parts->emplace_back(std::move(chain.items));
    }
    VORL_ASSERT(!less(gmax), "maxChainsGain(), chains gain should be non-negative");
    return gmax;
}

#define VORL_INSTANTIATE_ITEM(NONSYM, LinksT, ItemT)                                               \
    template bool HierarchyImpl<NONSYM, LinksT>::mcandsChains(Chains<ItemT>&, const ItemT&) const; \
    template void HierarchyImpl<NONSYM, LinksT>::extendChains(Chains<ItemT>&, ItemT*, AccWeight,   \
                                                              ItemT*, AccWeight, AccWeight) const;
#define VORL_INSTANTIATE(NONSYM, LinksT)                \
    VORL_INSTANTIATE_ITEM(NONSYM, LinksT, Node<LinksT>) \
    VORL_INSTANTIATE_ITEM(NONSYM, LinksT, Cluster<LinksT>)

VORL_FOR_ENGINES(VORL_INSTANTIATE)

template AccWeight maxChainsGain(Chains<Node<UnweightedLinks>>&,
                                 Partitions<Node<UnweightedLinks>>*);
template AccWeight maxChainsGain(Chains<Node<WeightedLinks>>&, Partitions<Node<WeightedLinks>>*);
template AccWeight maxChainsGain(Chains<Cluster<UnweightedLinks>>&,
                                 Partitions<Cluster<UnweightedLinks>>*);
template AccWeight maxChainsGain(Chains<Cluster<WeightedLinks>>&,
                                 Partitions<Cluster<WeightedLinks>>*);

}  // namespace vorl
