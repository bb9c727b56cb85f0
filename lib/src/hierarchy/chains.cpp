// Chains: groups of an item's candidates that are candidates of each other.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>
#include <optional>

namespace vorl {

namespace {

/// The chains of one item in the making. Its candidates go by their places in its list.
template <class ItemT>
class Joints {
public:
    using Place = std::uint32_t;

    explicit Joints(const Candidates<ItemT*>& cands)
        : m_cands(cands), m_ups(cands.size()), m_chains(cands.size()) {
        for (Place place = 0; place < m_ups.size(); ++place) m_ups[place] = place;
    }

    /// Joins two candidates, of which the first has the lower address.
    void join(Place low, AccWeight lowGain, Place high, AccWeight highGain) {
        VORL_ASSERT(low < high && !(lowGain < 0) && !(highGain < 0),
                    "extendChains(), items must be valid, unique, ordered and have non-negative "
                    "gain");
        const Place first = rootOf(low);
        const Place second = rootOf(high);
        if (first == second) return;
        const bool swapped = m_chains[first].size < m_chains[second].size;
        const Place dest = swapped ? second : first;
        const Place src = swapped ? first : second;
        Tally& chain = m_chains[dest];
        if (chain.size == 1) {
            chain.number = m_count++;
            chain.gain = lowGain + highGain;
        } else if (m_chains[src].size == 1) {
            chain.gain += swapped ? lowGain : highGain;
        } else {
            chain.gain += m_chains[src].gain;
        }
        chain.size += m_chains[src].size;
        m_ups[src] = dest;
        if (chain.size > m_cands.size() / 2) m_main = dest;
    }

    /// The candidates among which those are that may be in another chain than the one at the
    /// place. Where most are in one chain, few others are left to look at.
    const Candidates<ItemT*>& othersThan(Place place) {
        if (m_main == NONE || rootOf(place) != m_main) return m_cands;
        const std::size_t outside = m_cands.size() - m_chains[m_main].size;
        if (!m_listed || m_others.size() > 2 * outside) {
            m_listed = true;
            m_others.clear();
            for (Place other = 0; other < m_cands.size(); ++other)
                if (rootOf(other) != m_main) m_others.push_back(m_cands[other]);
        }
        return m_others;
    }

    /// Appends the chains in the order of their creation.
    void collect(Chains<ItemT>& chains) {
        std::vector<ChainItems<ItemT*>> items(m_count);
        std::vector<AccWeight> gains(m_count);
        for (Place place = 0; place < m_cands.size(); ++place) {
            const Tally& chain = m_chains[rootOf(place)];
            if (chain.size == 1) continue;
            if (items[chain.number].empty()) {
                items[chain.number].reserve(chain.size);
                gains[chain.number] = chain.gain;
            }
            items[chain.number].push_back(m_cands[place]);
        }
        for (std::size_t i = 0; i < items.size(); ++i)
            if (!items[i].empty()) chains.emplace_back(std::move(items[i]), gains[i]);
    }

private:
    struct Tally {
        AccWeight gain = 0;
        Place size = 1;
        Place number = 0;  ///< in the order of creation
    };
    static constexpr Place NONE = ~Place{0};

    Place rootOf(Place place) {
        while (m_ups[place] != place) place = m_ups[place] = m_ups[m_ups[place]];
        return place;
    }

    const Candidates<ItemT*>& m_cands;
    std::vector<Place> m_ups;  ///< towards the candidate that stands for the chain
    std::vector<Tally> m_chains;
    Place m_count = 0;
    Place m_main = NONE;  ///< of the chain that holds more than half of the candidates
    bool m_listed = false;
    Candidates<ItemT*> m_others;
};

}  // namespace

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::mcandsChains(Chains<ItemT>& chains,
                                                       const ItemT& el) const {
    using Place = typename Joints<ItemT>::Place;
    const Candidates<ItemT*>& cands = el.m_context->cands;
    // The 32-bit comparison lets a gain slightly below 0 pass.
    const auto gainOf = [](const ItemT& item) {
        const AccWeight gmax = item.m_context->gmax;
        return gmax < 0 ? 0 : gmax;
    };
    std::optional<Joints<ItemT>> joints;
    Place place = 0;
    for (; place < cands.size(); ++place) {
        m_report.check();
        ItemT* const dest = cands[place];
        const Context<ItemT>& dctx = *dest->m_context;
        VORL_ASSERT(!xpropagated(dctx.state) && !dctx.cands.empty(),
                    "mcandsChains(), mcands can't be propagated and must have own mcands");
        const Candidates<ItemT*>& others = joints ? joints->othersThan(place) : cands;
        const bool all = &others == &cands;
        auto ic = all ? others.begin() + place + 1 : findItem(others.begin(), others.end(), dest);
        if (ic == others.end()) continue;
        auto idc = findItem(dctx.cands.begin(), dctx.cands.end(), dest);
        while (ic != others.end() && idc != dctx.cands.end()) {
            if (*ic != *idc) {
                if (cmpBase(*ic, *idc))
                    ic = findItem(ic + 1, others.end(), *idc);
                else
                    idc = findItem(idc + 1, dctx.cands.end(), *ic);
                continue;
            }
            const auto found = all ? ic : findItem(cands.begin(), cands.end(), *ic);
            if (!joints) joints.emplace(cands);
            joints->join(place, gainOf(*dest), static_cast<Place>(found - cands.begin()),
                         gainOf(**ic));
            ++ic;
            ++idc;
        }
    }
    VORL_ASSERT(place == cands.size(),
                "mcandsChains(), el mcands traversing index verification failed");
    if (joints) joints->collect(chains);
    return !cands.empty();
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

#define VORL_INSTANTIATE_ITEM(NONSYM, LinksT, ItemT) \
    template bool HierarchyImpl<NONSYM, LinksT>::mcandsChains(Chains<ItemT>&, const ItemT&) const;
#define VORL_INSTANTIATE(NONSYM, LinksT)                \
    VORL_INSTANTIATE_ITEM(NONSYM, LinksT, Node<LinksT>) \
    VORL_INSTANTIATE_ITEM(NONSYM, LinksT, Cluster<LinksT>)

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE_ITEM
#undef VORL_INSTANTIATE

template AccWeight maxChainsGain(Chains<Node<UnweightedLinks>>&,
                                 Partitions<Node<UnweightedLinks>>*);
template AccWeight maxChainsGain(Chains<Node<WeightedLinks>>&, Partitions<Node<WeightedLinks>>*);
template AccWeight maxChainsGain(Chains<Cluster<UnweightedLinks>>&,
                                 Partitions<Cluster<UnweightedLinks>>*);
template AccWeight maxChainsGain(Chains<Cluster<WeightedLinks>>&,
                                 Partitions<Cluster<WeightedLinks>>*);

}  // namespace vorl
