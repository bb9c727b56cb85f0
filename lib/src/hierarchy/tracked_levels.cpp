// Levels that touch only what changed: their beginning and end, literal ones among them, and their
// folding.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vorl {

// Speed-ups and reductions depend on the order of visits.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::allowTracks(bool mirrored) {
    const bool reduces = m_reductionClusters != Reduction::NONE && m_linksMarg != 0;
    if (!mirrored || !m_exact || reduces || !std::isfinite(m_boundMin)) return;
    m_tracks.allowed = true;
    // Below 2^53 units every sum of multiples of the unit is exact.
    const int unit = std::ilogb(m_weight) + 3 - 52;
    m_tracks.coarse = std::ldexp(1.5, unit + 52);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::seatCluster(ClusterT& cl, Seat seat) {
    TracksT& tracks = m_tracks;
    m_marks.seat(&cl) = seat;
    auto& kept = tracks.kept[seat];
    kept.now = &cl;
    kept.order = 0;
    const Weights& weights = m_marks.weights(cl);
    tracks.bests[seat].total = weights.total;
    tracks.spots[seat] = {m_marks.key(&cl), TracksT::Spot::FREE, weights.self};
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::startTracks() {
    TracksT& tracks = m_tracks;
    if (tracks.on || !tracks.allowed) return;
    ClustersT& clusters = m_levels.back().clusters;
    Size news = 0;
    for (const ClusterT& cl : clusters) news += cl.links.size();
    if (!(static_cast<AccWeight>(tracks.touchedLinks) >=
          m_trackFrom * static_cast<AccWeight>(news)))
        return;
    tracks.on = true;
    m_marks.cover();
    m_marks.track();
    PropagatesT items = m_propagates;
    for (ClusterT& cl : clusters) items.push_back(&cl);
    std::sort(items.begin(), items.end(), cmpBase<ClusterT, ClusterT>);
    const Size seats = items.size() + items.size() / 32 + 1;
    const Size links =
        std::accumulate(items.begin(), items.end(), Size{0},
                        [](Size sum, const ClusterT* item) { return sum + item->links.size(); });
    tracks.bests.reserve(seats);
    tracks.spots.reserve(seats);
    tracks.kept.reserve(seats);
    tracks.links.reserveAll(seats, links);
    for (ClusterT* item : items) seatCluster(*item, tracks.newSeat());
    // All lists ascend, so that the back links to a cluster come one after the other.
    for (ClusterT* item : items) m_marks.of(item).place = 0;
    // Both copies of all links at once would be the most memory that a build takes.
    const Size step = std::max(links / 16, (Size{1} << 22) / sizeof(TrackedLinkT));
    Size moved = 0;
    for (ClusterT* item : items) {
        if (moved >= step) {
            detail::returnFreedMemory();
            moved = 0;
        }
        moved += item->links.size();
        const Seat seat = m_marks.seat(item);
        tracks.links.reserve(seat, item->links.size());
        for (const auto& ln : item->links) {
            TrackedLinkT& link = tracks.links.append(seat);
            link.seat = m_marks.seat(ln.dest);
            link.mate = m_marks.of(ln.dest).place++;
            link.weight = ln.weight;
        }
        AccLinksT().swap(item->links);
    }
    for (Seat seat = 0; seat < tracks.kept.size(); ++seat)
        for (TrackedLinkT& link : tracks.links[seat]) link.setPair(tracks.links.mate(link).weight);
    for (ClusterT* item : m_propagates) {
        const Seat seat = m_marks.seat(item);
        tracks.kept[seat].order = ++tracks.carried;
        tracks.carriedLinks += tracks.links.count(seat);
        if (!item->m_context->cands.empty()) tracks.held.push_back(item);
    }
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::leaveTracks() {
    if (!m_tracks.on) return;
    settleCarried();
    dropWritten();
    for (auto& kept : m_tracks.kept)
        if (kept.now) writeLinks(*kept.now);
    TracksT none;
    none.allowed = m_tracks.allowed;
    none.coarse = m_tracks.coarse;
    m_tracks = std::move(none);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::settleCarried() {
    if (m_tracks.absorbed == 0) return;
    std::erase_if(m_propagates,
                  [this](const ClusterT* item) { return m_marks.of(item).is(MarksT::ABSORBED); });
    m_tracks.absorbed = 0;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::writeLinks(ClusterT& item) {
    if (!item.links.empty()) return;
    const TracksT& tracks = m_tracks;
    const Seat seat = m_marks.seat(&item);
    item.links.reserve(tracks.links.count(seat));
    for (const TrackedLinkT& link : tracks.links[seat]) {
        if (link.isGone()) continue;
        auto& ln = item.links.emplace_back(tracks.kept[link.seat].now, link.weight);
        if constexpr (NONSYMMETRIC && requires { ln.pair; }) ln.pair = link.pair();
    }
    const auto byDest = [](const auto& a, const auto& b) { return cmpBase(a.dest, b.dest); };
    if (!std::is_sorted(item.links.begin(), item.links.end(), byDest))
        std::sort(item.links.begin(), item.links.end(), byDest);
    m_tracks.written.push_back(&item);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::dropWritten() {
    for (ClusterT* item : m_tracks.written) AccLinksT().swap(item->links);
    m_tracks.written.clear();
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::beginLiterally(IStored<ClusterT> first,
                                                         IStored<ClusterT> last) {
    TracksT& tracks = m_tracks;
    settleCarried();
    for (ClusterT* item : tracks.held) {
        const Seat seat = m_marks.seat(item);
        if (tracks.takesPart(seat)) continue;
        tracks.active.push_back(seat);
        tracks.bests[seat].part = 2 * tracks.level;
    }
    m_propnum = 0;
    m_proplsnum = 0;
    for (ClusterT* item : m_propagates) {
        const Seat seat = m_marks.seat(item);
        const bool takesPart = tracks.takesPart(seat);
        Mark& mark = m_marks.of(item);
        tracks.bests[seat].aim = TracksT::UNKNOWN;
        mark.set(MarksT::PROPAGATED, !takesPart);
        if (!takesPart) {
            ++m_propnum;
            m_proplsnum += tracks.links.count(seat);
            continue;
        }
        writeLinks(*item);
        mark.set(MarksT::ONE_CAND, false);
        auto& ctx = *item->m_context;
        ctx.state = State::INTERLEVPROP;
        ctx.npartmcs = NPARTMCS_NONE;
        if (ctx.cands.empty()) ctx.gmax = 0;
        mark.gmax = ctx.gmax;
    }
    for (; first != last; ++first) {
        tracks.bests[m_marks.seat(&*first)].aim = TracksT::UNKNOWN;
        writeLinks(*first);
    }
    tracks.held.clear();
}

// What clustering left over keeps those candidates that lie below the last absorbed neighbour. What
// has none keeps those below the last absorbed cluster at all, or none, as folding looks for it.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::settleLeft(const ClustersT& clusters) {
    TracksT& tracks = m_tracks;
    if (tracks.left.empty()) return;
    Size members = 0;
    std::vector<const NodeI<LinksT>*> absorbed;
    for (const ClusterT& cl : clusters) {
        members += cl.des.size();
        absorbed.insert(absorbed.end(), cl.des.begin(), cl.des.end());
    }
    std::sort(absorbed.begin(), absorbed.end());
    absorbed.erase(std::unique(absorbed.begin(), absorbed.end()), absorbed.end());
    const bool sorted = sortsAbsorbed(static_cast<Id>(members));
    for (ClusterT* item : tracks.left) {
        const Seat seat = m_marks.seat(item);
        auto& ctx = *item->m_context;
        const NodeI<LinksT>* last = nullptr;
        for (const TrackedLinkT& ln : tracks.links[seat]) {
            if (ln.isGone()) continue;
            const ClusterT* dest = tracks.kept[ln.seat].now;
            if (m_marks.of(dest).is(MarksT::ABSORBED) && (!last || cmpBase(last, dest)))
                last = dest;
        }
        if (!last && sorted && seeksAbsorbed(tracks.links.count(seat), absorbed.size()))
            last = absorbed.back();
        std::erase_if(ctx.cands, [&](const ClusterT* cand) {
            return m_marks.of(cand).is(MarksT::ABSORBED) || cmpBase(last, cand);
        });
        if (ctx.cands.empty()) continue;
        if (tracks.tracked) ctx.gmax = literalGmax(seat);
        tracks.held.push_back(item);
    }
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::noteLeft(ClusterT& item) {
    if (item.owners.empty() && !item.m_context->cands.empty()) m_tracks.left.push_back(&item);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::setLink(Seat seat, std::uint32_t place, Seat dest,
                                                  std::uint32_t mate, AccWeight weight,
                                                  AccWeight back) {
    TrackedLinkT& link = m_tracks.links.at(seat, place);
    link.seat = dest;
    link.mate = mate;
    link.weight = weight;
    link.setPair(back);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::addNewSums(AccWeight share, bool& exact) {
    auto& terms = m_tracks.terms;
    exact = exact && std::all_of(terms.begin(), terms.end(), [this, share](const auto& term) {
                return m_marks.of(m_tracks.kept[term.seat].now).aim &&
                       m_tracks.isExact(term.weight * share);
            });
    if (!exact) m_tracks.sortTerms();
    for (const auto& term : terms) {
        const ClusterT& dest = *m_tracks.kept[term.seat].now;
        const Mark& mark = m_marks.of(dest);
        if (mark.aim)
            accumulate(m_newSums, mark.owner(), term.weight * share);
        else
            accumulateOwners(dest, term.weight, share, "joinLinks(), totac validation failed");
    }
    terms.clear();
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::joinLinks(ClusterT& cl) {
    using Spot = typename TracksT::Spot;
    using Sum = typename TracksT::Sum;
    TracksT& tracks = m_tracks;
    const auto seatOf = [this](const NodeI<LinksT>* item) {
        return m_marks.seat(static_cast<const ClusterT*>(item));
    };
    const auto isWhole = [this](const NodeI<LinksT>* item) {
        return m_marks.of(static_cast<const ClusterT*>(item)).aim != nullptr;
    };
    const NodeI<LinksT>* hub = nullptr;
    for (const NodeI<LinksT>* item : cl.des)
        if (isWhole(item) &&
            (!hub || tracks.links.count(seatOf(item)) > tracks.links.count(seatOf(hub))))
            hub = item;
    const Seat own = hub ? seatOf(hub) : tracks.newSeat();
    auto& spots = tracks.spots;
    auto& sums = tracks.sums;
    sums.clear();
    m_newSums.clear();
    bool exact = cl.links.empty();
    // Shared descendants with a self weight have linked their owners already.
    for (const auto& ln : cl.links) accumulate(m_newSums, ln.dest, ln.weight);
    AccLinksT().swap(cl.links);
    for (const NodeI<LinksT>* item : cl.des) {
        if (item == hub) continue;
        for (const TrackedLinkT& ln : tracks.links[seatOf(item)]) {
            if (ln.isGone() || spots[ln.seat].place != Spot::FREE) continue;
            spots[ln.seat].place = static_cast<std::uint32_t>(sums.size());
            sums.emplace_back().seat = ln.seat;
        }
    }
    for (const NodeI<LinksT>* item : cl.des) {
        const Seat seat = seatOf(item);
        const auto links = tracks.links[seat];
        const std::size_t count = links.size();
        const auto& entry =
            detail::ownerEntry(*item, cl, "joinLinks(), the owner should be among it's des owners");
        const AccWeight share =
            static_cast<AccWeight>(entry.numac) / static_cast<AccWeight>(item->totac);
        const bool last = item->owners.back().dest == &cl;
        for (std::size_t i = 0; i < count; ++i) {
            if (i + TracksT::AHEAD < count && !links[i + TracksT::AHEAD].isGone())
                __builtin_prefetch(&spots[links[i + TracksT::AHEAD].seat]);
            const TrackedLinkT& ln = links[i];
            if (ln.isGone()) continue;
            const Spot& spot = spots[ln.seat];
            if (spot.place == Spot::FREE) continue;
            if (spot.place == Spot::ABSORBED) {
                tracks.terms.push_back({spot.key, ln.seat, ln.weight});
                if (item == hub) tracks.links.remove(seat, static_cast<std::uint32_t>(i));
                continue;
            }
            Sum& sum = sums[spot.place];
            sum.weight += ln.weight * share;
            AccWeight back = tracks.links.mate(ln).weight;
            if (!isWhole(item)) back = back / item->totac * entry.numac;
            sum.back += back;
            if (item == hub) {
                sum.own = static_cast<std::uint32_t>(i);
            } else if (last) {
                if (sum.mate == Sum::NONE) {
                    sum.mate = ln.mate;
                } else {
                    tracks.links.remove(ln.seat, ln.mate);
                    --tracks.carriedLinks;
                }
                Seat& aim = tracks.bests[ln.seat].aim;
                if (aim == seat) aim = own;
            }
        }
        addNewSums(share, exact);
    }
    const auto further = std::count_if(sums.begin(), sums.end(),
                                       [](const Sum& sum) { return sum.own == Sum::NONE; });
    tracks.links.reserveMore(own, static_cast<std::size_t>(further) + m_newSums.size());
    for (const Sum& sum : sums) {
        spots[sum.seat].place = Spot::FREE;
        if (sum.own != Sum::NONE) {
            TrackedLinkT& ln = tracks.links.at(own, sum.own);
            ln.weight = sum.weight;
            ln.setPair(sum.back);
            TrackedLinkT& back = tracks.links.mate(ln);
            back.weight = sum.back;
            back.setPair(sum.weight);
            if (sum.mate != Sum::NONE) {
                tracks.links.remove(sum.seat, sum.mate);
                --tracks.carriedLinks;
            }
        } else {
            const std::uint32_t place = tracks.links.newPlace(own);
            std::uint32_t mate = sum.mate;
            if (mate == Sum::NONE) {
                mate = tracks.links.newPlace(sum.seat);
                ++tracks.carriedLinks;
            }
            setLink(sum.seat, mate, own, place, sum.back, sum.weight);
            setLink(own, place, sum.seat, mate, sum.weight, sum.back);
        }
        if (tracks.links.isHoley(sum.seat)) tracks.holey.push_back(sum.seat);
    }
    if (tracks.links.isHoley(own)) tracks.holey.push_back(own);
    m_marks.seat(&cl) = own;
    appendNewSums(cl);
}

template <bool NONSYMMETRIC, class LinksT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::trackedWeight(const ClusterT& cl) {
    TracksT& tracks = m_tracks;
    const Seat seat = m_marks.seat(&cl);
    const auto links = tracks.links[seat];
    AccWeight sum = 0;
    bool exact = true;
    for (const TrackedLinkT& ln : links) {
        if (ln.isGone()) continue;
        const AccWeight pair = ln.pair();
        sum += pair;
        exact = exact && tracks.isExact(pair);
    }
    if (!exact) {
        auto& terms = tracks.terms;
        for (const TrackedLinkT& ln : links)
            if (!ln.isGone()) terms.push_back({tracks.spots[ln.seat].key, ln.seat, ln.pair()});
        tracks.sortTerms();
        sum = 0;
        for (const auto& term : terms) sum += term.weight;
        terms.clear();
    }
    for (const auto& ln : cl.links) sum += linkWeight<NONSYMMETRIC>(&cl, ln);
    if (detail::overflowed(sum))
        detail::throwOverflow("linksWeight(), overflow\n", 59,
                              "linksWeight(), #%u overflowed: %G\n", cl.id, sum);
    return sum / 2;
}

// The links of each ascend, so that the back links to a cluster come one after the other.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::linkNew(ClustersT& clusters) {
    TracksT& tracks = m_tracks;
    auto& links = tracks.links;
    auto& places = tracks.places;
    places.clear();
    for (const ClusterT& cl : clusters) {
        const Seat seat = m_marks.seat(&cl);
        tracks.spots[seat].place = static_cast<std::uint32_t>(places.size());
        for (const auto& ln : cl.links) {
            const std::uint32_t place = links.newPlace(seat);
            links.at(seat, place).seat = m_marks.seat(ln.dest);
            links.at(seat, place).weight = ln.weight;
            places.push_back(place);
        }
    }
    auto place = places.begin();
    for (ClusterT& cl : clusters) {
        for (const auto& ln : cl.links) {
            const Seat dest = m_marks.seat(ln.dest);
            TrackedLinkT& link = links.at(m_marks.seat(&cl), *place++);
            link.mate = places[tracks.spots[dest].place++];
            link.setPair(links.mate(link).weight);
        }
    }
    for (ClusterT& cl : clusters) {
        tracks.spots[m_marks.seat(&cl)].place = TracksT::Spot::FREE;
        AccLinksT().swap(cl.links);
    }
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::foldTracked() {
    TracksT& tracks = m_tracks;
    ClustersT& clusters = m_levels.back().clusters;
    m_marks.cover();
    dropWritten();
    markAbsorbed(clusters);
    settleLeft(clusters);
    const auto eachMember = [&](auto visit) {
        for (ClusterT& cl : clusters)
            for (NodeI<LinksT>* el : cl.des)
                if (el->owners.front().dest == &cl) visit(*static_cast<ClusterT*>(el));
    };
    std::vector<Seat> seats;
    eachMember([&](ClusterT& item) {
        const Seat seat = m_marks.seat(&item);
        seats.push_back(seat);
        tracks.spots[seat].place = TracksT::Spot::ABSORBED;
        if (tracks.kept[seat].order != 0) tracks.carriedLinks -= tracks.links.count(seat);
    });
    m_report.begin("folding", clusters.size(), m_levels.size() - 1);
    for (ClusterT& cl : clusters) {
        m_report.advance();
        joinLinks(cl);
    }
    pairLinks(clusters);
    for (ClusterT& cl : clusters) initItem(cl);
    for (const Seat seat : seats) tracks.kept[seat].now = nullptr;
    for (ClusterT& cl : clusters) seatCluster(cl, m_marks.seat(&cl));
    for (const Seat seat : seats)
        if (!tracks.kept[seat].now) tracks.links.clear(seat);
    linkNew(clusters);
    eachMember([](ClusterT& item) { item.tidy(); });
    for (const Seat seat : tracks.holey) tracks.links.closeHoles(seat);
    tracks.holey.clear();
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                                     \
    template void HierarchyImpl<NONSYM, LinksT>::allowTracks(bool);                          \
    template void HierarchyImpl<NONSYM, LinksT>::startTracks();                              \
    template void HierarchyImpl<NONSYM, LinksT>::leaveTracks();                              \
    template void HierarchyImpl<NONSYM, LinksT>::settleCarried();                            \
    template void HierarchyImpl<NONSYM, LinksT>::writeLinks(Cluster<LinksT>&);               \
    template void HierarchyImpl<NONSYM, LinksT>::beginLiterally(Clusters<LinksT>::iterator,  \
                                                                Clusters<LinksT>::iterator); \
    template void HierarchyImpl<NONSYM, LinksT>::noteLeft(Cluster<LinksT>&);                 \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::trackedWeight(const Cluster<LinksT>&); \
    template void HierarchyImpl<NONSYM, LinksT>::foldTracked();

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
