#include <vorl/processing/reduction.hpp>

#include <algorithm>

namespace vorl {

template <Item ItemT>
bool droppableLinks(std::vector<ItemT*>& drops, const ItemT& el,
                    std::vector<RdsLink<ItemT>>& rlinks, Id linksMarg, Reduction reduction) {
    std::stable_sort(rlinks.begin(), rlinks.end(), cmpObjsWeight<RdsLink<ItemT>>);
    const auto n = static_cast<Id>(rlinks.size());
    const float wmarg = 0.5f * rlinks.back().weight;
    Id limit = n - linksMarg;

    // The weight that the top links protect.
    AccWeight wsum = 2 * AccWeight{wmarg};
    if (reduction != Reduction::ACCURATE)
        for (Id i = 1; i < linksMarg; ++i)
            wsum += detail::topLinkCoef(reduction, i, n) * rlinks[n - 1 - i].weight;
    if (!less(rlinks.front().weight, std::min(wmarg, rlinks[limit].weight))) return false;

    Id pos = 0;
    AccWeight acc = 0;
    const auto scan = [&] {
        while (less(rlinks[pos].weight, wmarg) && pos != limit && less(acc, wsum))
            acc += rlinks[pos++].weight;
    };
    if (reduction == Reduction::ACCURATE) {
        scan();
    } else if (limit != 0) {
        for (Id count = linksMarg;;) {
            scan();
            if (less(acc, wsum) || pos == limit) break;
            --limit;
            if (rlinks[limit].dest != &el)
                wsum += detail::topLinkCoef(reduction, count++, n) * rlinks[limit].weight;
            if (limit == pos) break;
        }
    }

    // A run of equal weights is dropped or kept as a whole.
    const LinkWeight tie = rlinks[pos].weight;
    while (pos != 0 && equal(rlinks[pos].weight, tie)) --pos;
    if (pos != 0 || !equal(rlinks.front().weight, tie))
        for (Id i = 0; i <= pos; ++i) drops.push_back(rlinks[i].dest);
    std::sort(drops.begin(), drops.end(), cmpBase<ItemT, ItemT>);
    return true;
}

template <Item ItemT>
Id reduceLinks(RdsCands<ItemT>& rcands, Size& erased) {
    std::size_t unreduced = 0;
    for (auto& [el, drops] : rcands) {
        std::vector<ItemT*> agreed;
        for (ItemT* dest : drops) {
            const auto* others = rcands.find(dest);
            if (others && holds(*others, el)) agreed.push_back(dest);
        }
        if (agreed.empty()) {
            drops.clear();
            ++unreduced;
            continue;
        }
        auto& links = el->links;
        auto ln = findDest(links.begin(), links.end(), agreed.front());
        // Nodes are reduced ahead of the validation, so that a destination may still be repeated.
        while (ln != links.begin() && std::prev(ln)->dest == agreed.front()) --ln;
        auto next = agreed.begin();
        auto kept = ln;
        for (; next != agreed.end(); ++ln) {
            if (ln->dest != *next) {
                *kept++ = *ln;
                continue;
            }
            const AccWeight half = 0.5 * static_cast<AccWeight>(ln->weight);
            el->addWeight(half);
            ln->dest->addWeight(half);
            ++next;
        }
        links.erase(std::move(ln, links.end(), kept), links.end());
        if (agreed.size() >= 2) links.shrink_to_fit();
        erased += agreed.size();
        drops = std::move(agreed);
    }
    return static_cast<Id>(rcands.size() - unreduced);
}

#define VORL_INSTANTIATE(ItemT)                                                                    \
    template bool droppableLinks(std::vector<ItemT*>&, const ItemT&, std::vector<RdsLink<ItemT>>&, \
                                 Id, Reduction);                                                   \
    template Id reduceLinks(RdsCands<ItemT>&, Size&);

VORL_INSTANTIATE(Node<UnweightedLinks>)
VORL_INSTANTIATE(Node<WeightedLinks>)
VORL_INSTANTIATE(Cluster<UnweightedLinks>)
VORL_INSTANTIATE(Cluster<WeightedLinks>)

#undef VORL_INSTANTIATE

}  // namespace vorl
