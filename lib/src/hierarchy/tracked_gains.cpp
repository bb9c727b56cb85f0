// The best gains of clusters, kept from level to level.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>
#include <cmath>

namespace vorl {

namespace {

/// More than rounding can make of a bound.
constexpr AccWeight SLACK = 0x1p-18;
constexpr AccWeight INFINITE = std::numeric_limits<AccWeight>::infinity();

/// The least gain of an item of some weight that is clearly above 0, and not only by rounding.
AccWeight clearGain(AccWeight weight) { return std::max(1e-6, 0x1p-20 * weight); }
/// The largest one that is clearly below.
AccWeight clearLoss(AccWeight weight) { return -std::max(1e-9, 0x1p-40 * weight); }

}  // namespace

template <bool NONSYMMETRIC, class LinksT>
auto HierarchyImpl<NONSYMMETRIC, LinksT>::gainBounds(const Weights& a, const Weights& b,
                                                     AccWeight pair) const -> Bounds {
    if (!(pair >= m_boundMin)) return {-INFINITE, INFINITE};
    const auto [w1, s1] = a;
    const auto [w2, s2] = b;
    const AccWeight expected = 2 * w1 * w2 * m_unit * m_gammaRatio;
    const auto bounds = [&](AccWeight low, AccWeight high) -> Bounds {
        return {pair - expected * high * (1 + SLACK), pair - expected * low * (1 - SLACK)};
    };
    if (!(m_gamma < 0)) return bounds(m_gamma, m_gamma);
    if (s1 == 0 && s2 == 0) return bounds(1, 1);
    const AccWeight s = s1 + s2;
    const AccWeight w = w1 + w2;
    const AccWeight out = (1 - w2 * m_unit) * (w1 - s1) + (1 - w1 * m_unit) * (w2 - s2);
    const AccWeight t = w + out;
    // Nothing is said where rounding could matter, or where the total would be raised.
    if (!(out > 1e-4 * t) || t * m_unit > 1 - 1e-6) return {-INFINITE, pair};
    // x1 = s t / w^2, x2 = (t - s) t / (t^2 - w^2), by one division
    const AccWeight ww = w * w;
    const AccWeight rest = out * (t + w);
    const AccWeight unit = t / (ww * rest);
    const AccWeight mean = std::sqrt(s * (t - s) * t * unit);
    const AccWeight sum = (s * rest + (t - s) * ww) * unit;
    return bounds(mean, (2 * mean + sum / 2) / 3);
}

// The same by intervals: the other weighs between 0 and a small part of the cluster.
template <bool NONSYMMETRIC, class LinksT>
auto HierarchyImpl<NONSYMMETRIC, LinksT>::reachOf(const Weights& cl) const -> Reach {
    const auto [w, s] = cl;
    const AccWeight unit = 2 * w * m_unit * m_gammaRatio;
    if (!(m_gamma < 0))
        return {INFINITE, unit * m_gamma * (1 - SLACK), unit * m_gamma * (1 + SLACK)};
    constexpr AccWeight part = 0x1p-6;
    const AccWeight more = part * w * (1 + SLACK);
    const AccWeight outLow = (1 - more * m_unit) * (w - s);
    const AccWeight outHigh = w - s + more;
    const AccWeight totalLow = w + outLow;
    const AccWeight totalHigh = w + more + outHigh;
    if (!(s > 0) || !(outLow > 1e-4 * totalHigh) || totalHigh * m_unit > 1 - 1e-6)
        return {-1, 0, 0};
    const AccWeight inHigh = s + more;
    const AccWeight wHigh = w + more;
    const AccWeight x1Low = s * totalLow / (wHigh * wHigh);
    const AccWeight x1High = inHigh * totalHigh / (w * w);
    const AccWeight x2Low = (totalLow - inHigh) * totalLow / (outHigh * (totalHigh + wHigh));
    const AccWeight x2High = (totalHigh - s) * totalHigh / (outLow * (totalLow + w));
    const AccWeight low = x2Low > 0 ? std::sqrt(x1Low * x2Low) : 0;
    const AccWeight high = (2 * std::sqrt(x1High * x2High) + (x1High + x2High) / 2) / 3;
    return {part * w, unit * low * (1 - SLACK), unit * high * (1 + SLACK)};
}

template <bool NONSYMMETRIC, class LinksT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::trackedGain(Seat seat, Seat dest,
                                                           AccWeight pair) const {
    return pairGain(m_tracks.weights[seat], m_tracks.weights[dest], pair, [&] {
        return std::pair(m_tracks.kept[seat].now->id, m_tracks.kept[dest].now->id);
    });
}

template <bool NONSYMMETRIC, class LinksT>
auto HierarchyImpl<NONSYMMETRIC, LinksT>::beginSearch(Seat seat) -> Search {
    m_tracks.near.clear();
    const Weights weights = m_tracks.weights[seat];
    return {.seat = seat,
            .weights = weights,
            .reach = reachOf(weights),
            .loss = clearLoss(weights.total)};
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::consider(const TrackedLinkT& ln, Search& search) {
    const AccWeight gain = trackedGain(search.seat, ln.seat, ln.pair());
    if (std::isnan(gain)) search.sure = false;
    if (gain >= search.lost()) m_tracks.near.push_back({gain, ln.pair(), ln.seat});
    if (gain > search.top) {
        if (search.top > 0) search.rest = std::max(search.rest, search.top);
        search.top = gain;
    } else {
        search.rest = std::max(search.rest, gain);
    }
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::weigh(const TrackedLinkT& ln, Search& search) {
    const AccWeight pair = ln.pair();
    const Weights& other = m_tracks.weights[ln.seat];
    AccWeight high = INFINITE;
    if (pair >= m_boundMin && other.total <= search.reach.limit)
        high = pair - other.total * search.reach.low;
    if (!(high < search.lost())) high = gainBounds(search.weights, other, pair).high;
    if (high < search.lost())
        search.rest = std::max(search.rest, high);
    else
        consider(ln, search);
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::conclude(const Search& search) {
    TracksT& tracks = m_tracks;
    const Seat seat = search.seat;
    Best& best = tracks.bests[seat];
    AccWeight& bestGain = tracks.gains[seat];
    const AccWeight total = search.weights.total;
    auto& near = tracks.near;
    const AccWeight top = search.top;
    best.aim = TracksT::NONE;
    bestGain = 0;
    if (!search.sure) return false;
    if (!(top >= clearGain(total))) return std::max(top, search.rest) <= search.loss;
    std::erase_if(near, [&search](const auto& tie) { return tie.gain < search.lost(); });
    bestGain = top;
    if (near.size() == 1) {
        best.aim = near.front().seat;
        best.rest = search.rest;
        return true;
    }
    // Neighbours see their gains with other rounding.
    const auto offerOf = [total](AccWeight gain) { return OFFER * gain - 0x1p-48 * total; };
    // What ties with a value that stays, be it a gain or an offer, may stay in place of others.
    AccWeight low = offerOf(top);
    for (bool lowers = true; lowers;) {
        lowers = false;
        for (const auto& tie : near) {
            if (less(tie.gain, low) || offerOf(tie.gain) >= low) continue;
            low = offerOf(tie.gain);
            lowers = true;
        }
    }
    if (!less(search.lost(), low)) return false;
    std::erase_if(near, [low](const auto& tie) { return less(tie.gain, low); });
    for (auto& tie : near) tie.key = tracks.spots[tie.seat].key;
    std::sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.key < b.key; });
    best.aim = TracksT::SEVERAL;
    auto& kept = tracks.kept[seat];
    kept.doubtful = std::any_of(near.begin(), near.end(), [top](const auto& tie) {
        return detail::narrow(tie.gain) != detail::narrow(top);
    });
    kept.ties = static_cast<std::uint32_t>(tracks.ties.size());
    tracks.ties.push_back(near);
    return true;
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::settle(Seat seat) {
    const TracksT& tracks = m_tracks;
    const auto links = tracks.links[seat];
    const std::size_t count = links.size();
    Search search = beginSearch(seat);
    // The heaviest link first, since its gain rules most others out.
    std::size_t heaviest = count;
    for (std::size_t i = 0; i < count; ++i) {
        if (i + TracksT::AHEAD < count && !links[i + TracksT::AHEAD].isGone())
            __builtin_prefetch(&tracks.bests[links[i + TracksT::AHEAD].seat]);
        const auto& ln = links[i];
        if (!ln.isGone() && (heaviest == count || ln.pair() > links[heaviest].pair()) &&
            tracks.takesPart(ln.seat))
            heaviest = i;
    }
    if (heaviest != count) consider(links[heaviest], search);
    for (std::size_t i = 0; i < count; ++i) {
        const auto& ln = links[i];
        if (!ln.isGone() && i != heaviest && !search.rulesOut(ln.pair()) &&
            tracks.takesPart(ln.seat))
            weigh(ln, search);
    }
    return conclude(search);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::unsettle(Seat seat) {
    m_tracks.bests[seat].aim = TracksT::UNSETTLED;
    m_tracks.unsettled.push_back(seat);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::holdAgainstRest(const TrackedLinkT& ln,
                                                          const Search& search) {
    TracksT& tracks = m_tracks;
    const Seat seat = ln.seat;
    const AccWeight pair = ln.pair();
    const Weights& weights = tracks.weights[seat];
    AccWeight& gain = tracks.gains[seat];
    const auto isClear = [&] {
        return gain >= clearGain(weights.total) && gain * TracksT::NEAR > tracks.bests[seat].rest;
    };
    if (pair >= m_boundMin && weights.total <= search.reach.limit) {
        gain = pair - weights.total * search.reach.high;
        if (isClear()) return;
    }
    gain = gainBounds(search.weights, weights, pair).low;
    if (isClear()) return;
    gain = trackedGain(seat, search.seat, pair);
    if (!isClear()) unsettle(seat);
}

// All neighbours of a new cluster take part, so that they are found in the walk for its best ones.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::introduce(Seat seat) {
    TracksT& tracks = m_tracks;
    const std::uint32_t level = tracks.level;
    const auto links = tracks.links[seat];
    const std::size_t count = links.size();
    Search search = beginSearch(seat);
    // The heaviest link first, since its gain rules most others out.
    const std::size_t heaviest = tracks.kept[seat].heaviest;
    if (heaviest < count) consider(links[heaviest], search);
    for (std::size_t i = 0; i < count; ++i) {
        if (i + TracksT::AHEAD < count && !links[i + TracksT::AHEAD].isGone())
            __builtin_prefetch(&tracks.bests[links[i + TracksT::AHEAD].seat]);
        const auto& ln = links[i];
        if (ln.isGone()) continue;
        Best& best = tracks.bests[ln.seat];
        if (best.part >> 1 != level) {
            const bool isWoken = (best.part >> 1) + 1 != level;
            if (isWoken || best.aim == TracksT::UNKNOWN || best.aim == TracksT::SEVERAL)
                unsettle(ln.seat);
            best.part = 2 * level;
            tracks.active.push_back(ln.seat);
        }
        if (best.aim == seat && best.part == 2 * level) holdAgainstRest(ln, search);
        if (i != heaviest && !search.rulesOut(ln.pair())) weigh(ln, search);
    }
    if (!conclude(search)) tracks.sure = false;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::activate(IStored<ClusterT> first,
                                                   IStored<ClusterT> last) {
    TracksT& tracks = m_tracks;
    ++tracks.level;
    tracks.formerly.swap(tracks.active);
    for (auto* list : {&tracks.active, &tracks.unsettled}) list->clear();
    tracks.ties.clear();
    tracks.literally.clear();
    tracks.sure = true;
    for (auto it = first; it != last; ++it) {
        const Seat seat = m_marks.seat(&*it);
        tracks.bests[seat].part = 2 * tracks.level + 1;
        unsettle(seat);
        tracks.active.push_back(seat);
    }
    for (auto it = first; it != last; ++it) {
        m_report.advance();
        introduce(m_marks.seat(&*it));
    }
}

// What no longer takes part is the best of none.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::followChanges() {
    TracksT& tracks = m_tracks;
    for (std::size_t i = 0; i < tracks.formerly.size(); ++i) {
        if (i + TracksT::AHEAD < tracks.formerly.size())
            __builtin_prefetch(&tracks.bests[tracks.formerly[i + TracksT::AHEAD]]);
        const Seat seat = tracks.formerly[i];
        if (tracks.takesPart(seat) || !tracks.kept[seat].now) continue;
        for (const auto& ln : tracks.links[seat])
            if (!ln.isGone() && tracks.takesPart(ln.seat) && tracks.bests[ln.seat].aim == seat)
                unsettle(ln.seat);
    }
    for (const ClusterT* item : tracks.left) {
        const Seat seat = m_marks.seat(item);
        if (tracks.bests[seat].part == 2 * tracks.level &&
            tracks.bests[seat].aim != TracksT::UNSETTLED)
            unsettle(seat);
    }
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::refresh(Seat seat) {
    if (m_tracks.isSought(seat)) return true;
    m_tracks.kept[seat].sought = m_tracks.level;
    return settle(seat);
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                                        \
    template void HierarchyImpl<NONSYM, LinksT>::activate(Clusters<LinksT>::iterator,           \
                                                          Clusters<LinksT>::iterator);          \
    template void HierarchyImpl<NONSYM, LinksT>::followChanges();                               \
    template void HierarchyImpl<NONSYM, LinksT>::unsettle(std::uint32_t);                       \
    template bool HierarchyImpl<NONSYM, LinksT>::settle(std::uint32_t);                         \
    template bool HierarchyImpl<NONSYM, LinksT>::refresh(std::uint32_t);                        \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::trackedGain(std::uint32_t, std::uint32_t, \
                                                                  AccWeight) const;

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
