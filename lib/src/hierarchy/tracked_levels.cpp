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
    const bool hasWeight = m_weight > 0 && std::isfinite(m_weight);
    if (!mirrored || !m_exact || reduces || !hasWeight) return;
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
    tracks.weights[seat] = m_marks.weights(cl);
    tracks.spots[seat].key = m_marks.key(&cl);
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::startTracks() {
    TracksT& tracks = m_tracks;
    if (!tracks.allowed || m_levels.size() < m_trackFrom) return false;
    ClustersT& clusters = m_levels.back().clusters;
    Size members = 0;
    Size shared = 0;
    for (const ClusterT& cl : clusters) {
        members += cl.des.size();
        shared += static_cast<Size>(
            std::count_if(cl.des.begin(), cl.des.end(),
                          [](const NodeI<LinksT>* item) { return item->owners.size() > 1; }));
    }
    if (static_cast<AccWeight>(shared) > m_sharedMax * static_cast<AccWeight>(members))
        return false;
    tracks.on = true;
    m_marks.track();
    PropagatesT items = m_propagates;
    for (ClusterT& cl : clusters) items.push_back(&cl);
    std::sort(items.begin(), items.end(), cmpBase<ClusterT, ClusterT>);
    tracks.reserveSeats(items.size() + items.size() / 32 + 1);
    for (ClusterT* item : items) seatCluster(*item, tracks.newSeat());
    return true;
}

// All lists ascend, so that the back links to a cluster come one after the other.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::trackLinks(ClusterT& item) {
    auto& lists = m_tracks.links;
    const Seat seat = m_marks.seat(&item);
    lists.reserve(seat, item.links.size());
    AccLinksT own;
    for (const auto& ln : item.links) {
        if (ln.dest == &item) {
            own.push_back(ln);
            continue;
        }
        TrackedLinkT& link = lists.append(seat);
        link.seat = m_marks.seat(ln.dest);
        link.mate = m_tracks.spots[link.seat].place++;
        link.weight = ln.weight;
    }
    item.links.swap(own);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::trackAllLinks() {
    const auto& seats = m_tracks.kept;
    const Size links =
        std::accumulate(seats.begin(), seats.end(), Size{0},
                        [](Size sum, const auto& kept) { return sum + kept.now->links.size(); });
    m_tracks.links.reserveLinks(links);
    // Both copies of all links at once would be the most memory that a build takes.
    const Size step = std::max(links / 16, (Size{1} << 22) / sizeof(TrackedLinkT));
    Size moved = 0;
    for (const auto& kept : seats) {
        if (moved >= step) {
            detail::returnFreedMemory();
            moved = 0;
        }
        moved += kept.now->links.size();
        trackLinks(*kept.now);
    }
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::pairTracked() {
    if constexpr (NONSYMMETRIC)
        for (Seat seat = 0; seat < m_tracks.kept.size(); ++seat)
            for (TrackedLinkT& link : m_tracks.links[seat])
                link.setPair(m_tracks.links.mate(link).weight);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::seatFolded() {
    TracksT& tracks = m_tracks;
    tracks.links.limitRoom();
    for (Seat seat = 0; seat < tracks.kept.size(); ++seat)
        tracks.weights[seat] = m_marks.weights(*tracks.kept[seat].now);
    for (ClusterT& cl : m_levels.back().clusters) AccLinksT().swap(cl.links);
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
void HierarchyImpl<NONSYMMETRIC, LinksT>::writeLinks(ClusterT& item, std::uint8_t role) {
    if (!item.links.empty()) return;
    const TracksT& tracks = m_tracks;
    const Seat seat = m_marks.seat(&item);
    if (role == 0) item.links.reserve(tracks.links.count(seat));
    for (const TrackedLinkT& link : tracks.links[seat]) {
        if (link.isGone() || (tracks.roles[link.seat] & role) != role) continue;
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
auto HierarchyImpl<NONSYMMETRIC, LinksT>::sumOf(Seat seat) -> TrackedSum& {
    TracksT& tracks = m_tracks;
    std::uint32_t& place = tracks.spots[seat].place;
    if (!(tracks.roles[seat] & TracksT::SUMMED)) {
        tracks.roles[seat] |= TracksT::SUMMED;
        place = static_cast<std::uint32_t>(tracks.sums.size());
        tracks.sums.emplace_back().seat = seat;
    }
    return tracks.sums[place];
}

template <bool NONSYMMETRIC, class LinksT>
template <class VisitT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::visitHeirs(Seat seat, VisitT visit) {
    const TracksT& tracks = m_tracks;
    if (!(tracks.roles[seat] & TracksT::ABSORBED)) return visit(seat, AccWeight{1}, AccWeight{1});
    const Seat heir = tracks.spots[seat].place;
    if (heir != TracksT::Spot::SHARED) return visit(heir, AccWeight{1}, AccWeight{1});
    const ClusterT& item = *tracks.kept[seat].now;
    for (const auto& owner : item.owners)
        visit(m_marks.seat(owner.dest), static_cast<AccWeight>(item.totac),
              static_cast<AccWeight>(owner.numac));
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::addTerms(AccWeight share, bool& exact) {
    TracksT& tracks = m_tracks;
    auto& terms = tracks.terms;
    exact = exact && std::all_of(terms.begin(), terms.end(), [&](const auto& term) {
                return (!(tracks.roles[term.seat] & TracksT::ABSORBED) ||
                        tracks.spots[term.seat].place != TracksT::Spot::SHARED) &&
                       tracks.isExact(term.weight * share);
            });
    if (!exact) tracks.sortTerms();
    for (const auto& term : terms)
        visitHeirs(term.seat, [&](Seat heir, AccWeight parts, AccWeight own) {
            sumOf(heir).weight += term.weight / parts * own * share;
        });
    terms.clear();
}

// The links of the member whose seat the new cluster takes over stay where they are, those to other
// such seats included. So of these only the sums that others add to are made anew.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::joinLinks(ClusterT& cl) {
    using Sum = typename TracksT::Sum;
    TracksT& tracks = m_tracks;
    auto& roles = tracks.roles;
    auto& sums = tracks.sums;
    const Seat own = m_marks.seat(&cl);
    const NodeI<LinksT>* const hub = tracks.kept[own].now;
    const auto seatOf = [this](const NodeI<LinksT>* item) {
        return m_marks.seat(static_cast<const ClusterT*>(item));
    };
    const auto enter = [this](Seat heir, AccWeight, AccWeight) { sumOf(heir); };
    sums.clear();
    bool exact = cl.links.empty();
    // Shared descendants with a self weight have linked their owners already.
    for (const auto& ln : cl.links) sumOf(m_marks.seat(ln.dest)).weight += ln.weight;
    AccLinksT().swap(cl.links);
    const auto callForMate = [&tracks](const TrackedLinkT& ln) {
        if (!(tracks.roles[ln.seat] & (TracksT::ABSORBED | TracksT::RENEWED)))
            __builtin_prefetch(&tracks.links.mate(ln));
    };
    for (const NodeI<LinksT>* item : cl.des) {
        if (item == hub) continue;
        for (const TrackedLinkT& ln : tracks.links[seatOf(item)]) {
            if (ln.isGone()) continue;
            callForMate(ln);
            visitHeirs(ln.seat, enter);
        }
    }
    const auto eachOwn = [&](unsigned role, auto visit) {
        const auto links = tracks.links[own];
        for (std::size_t i = 0; i < links.size(); ++i)
            if (!links[i].isGone() && (roles[links[i].seat] & role))
                visit(links[i], static_cast<std::uint32_t>(i));
    };
    eachOwn(TracksT::ABSORBED | TracksT::SUMMED, [&](const TrackedLinkT& ln, std::uint32_t) {
        if (roles[ln.seat] & TracksT::ABSORBED)
            visitHeirs(ln.seat, enter);
        else
            callForMate(ln);
    });
    for (const NodeI<LinksT>* item : cl.des) {
        const Seat seat = seatOf(item);
        const auto& entry =
            detail::ownerEntry(*item, cl, "joinLinks(), the owner should be among it's des owners");
        const AccWeight share =
            static_cast<AccWeight>(entry.numac) / static_cast<AccWeight>(item->totac);
        const bool isWhole = m_marks.of(static_cast<const ClusterT*>(item)).owner() != nullptr;
        const bool last = item->owners.back().dest == &cl;
        const auto addTerm = [&](const TrackedLinkT& ln) {
            tracks.terms.push_back({tracks.spots[ln.seat].key, ln.seat, ln.weight});
        };
        const auto addCarried = [&](const TrackedLinkT& ln) -> Sum& {
            Sum& sum = sums[tracks.spots[ln.seat].place];
            sum.weight += ln.weight * share;
            AccWeight back = tracks.links.mate(ln).weight;
            if (!isWhole) back = back / item->totac * entry.numac;
            sum.back += back;
            return sum;
        };
        if (item == hub) {
            eachOwn(TracksT::ABSORBED | TracksT::SUMMED,
                    [&](const TrackedLinkT& ln, std::uint32_t place) {
                        if (roles[ln.seat] & TracksT::ABSORBED) {
                            addTerm(ln);
                            tracks.links.remove(own, place);
                        } else if (roles[ln.seat] & TracksT::RENEWED) {
                            addTerm(ln);
                            sums[tracks.spots[ln.seat].place].own = place;
                        } else {
                            addCarried(ln).own = place;
                        }
                    });
        } else {
            for (const TrackedLinkT& ln : tracks.links[seat]) {
                if (ln.isGone()) continue;
                if (roles[ln.seat] & (TracksT::ABSORBED | TracksT::RENEWED)) {
                    addTerm(ln);
                    continue;
                }
                Sum& sum = addCarried(ln);
                if (!last) continue;
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
        addTerms(share, exact);
    }
    // A seat without a hub has those links that clusters joined before have entered.
    if (!hub)
        eachOwn(TracksT::SUMMED, [&](const TrackedLinkT& ln, std::uint32_t place) {
            sums[tracks.spots[ln.seat].place].own = place;
        });
    enterSums(cl);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::enterSums(ClusterT& cl) {
    using Sum = typename TracksT::Sum;
    TracksT& tracks = m_tracks;
    const auto& sums = tracks.sums;
    const Seat own = m_marks.seat(&cl);
    const auto further = std::count_if(sums.begin(), sums.end(),
                                       [](const Sum& sum) { return sum.own == Sum::NONE; });
    tracks.links.reserveMore(own, static_cast<std::size_t>(further));
    for (const Sum& sum : sums) {
        std::uint8_t& role = tracks.roles[sum.seat];
        role &= static_cast<std::uint8_t>(~TracksT::SUMMED);
        if (sum.seat == own) {
            cl.links.emplace_back(&cl, sum.weight);
            continue;
        }
        const bool isNew = role == TracksT::RENEWED;
        std::uint32_t place = sum.own;
        if (place == Sum::NONE) {
            place = tracks.links.newPlace(own);
            std::uint32_t mate = sum.mate;
            if (mate == Sum::NONE) {
                mate = tracks.links.newPlace(sum.seat);
                if (!isNew) ++tracks.carriedLinks;
            }
            setLink(sum.seat, mate, own, place, sum.back, sum.weight);
            setLink(own, place, sum.seat, mate, sum.weight, sum.back);
        } else {
            TrackedLinkT& ln = tracks.links.at(own, place);
            ln.weight = sum.weight;
            if (!isNew) {
                ln.setPair(sum.back);
                TrackedLinkT& back = tracks.links.mate(ln);
                back.weight = sum.back;
                back.setPair(sum.weight);
            }
            if (sum.mate != Sum::NONE) {
                tracks.links.remove(sum.seat, sum.mate);
                --tracks.carriedLinks;
            }
        }
        if (isNew) tracks.renewed.emplace_back(own, place);
        if (tracks.links.isHoley(sum.seat)) tracks.holey.push_back(sum.seat);
    }
    if (tracks.links.isHoley(own)) tracks.holey.push_back(own);
}

template <bool NONSYMMETRIC, class LinksT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::trackedWeight(const ClusterT& cl) {
    TracksT& tracks = m_tracks;
    const Seat seat = m_marks.seat(&cl);
    const auto links = tracks.links[seat];
    AccWeight sum = 0;
    bool exact = true;
    std::uint32_t& heaviest = tracks.kept[seat].heaviest;
    heaviest = static_cast<std::uint32_t>(links.size());
    AccWeight most = -1;
    for (std::size_t i = 0; i < links.size(); ++i) {
        if (links[i].isGone()) continue;
        const AccWeight pair = links[i].pair();
        sum += pair;
        exact = exact && tracks.isExact(pair);
        if (!(pair > most)) continue;
        most = pair;
        heaviest = static_cast<std::uint32_t>(i);
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
    if (detail::overflowed(sum))
        detail::throwOverflow("linksWeight(), overflow\n", 59,
                              "linksWeight(), #%u overflowed: %G\n", cl.id, sum);
    return sum / 2;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::assignRoles(const ClustersT& clusters,
                                                      const std::vector<Seat>& absorbed) {
    TracksT& tracks = m_tracks;
    for (const Seat seat : absorbed) {
        tracks.roles[seat] = TracksT::ABSORBED;
        if (tracks.kept[seat].order != 0) tracks.carriedLinks -= tracks.links.count(seat);
    }
    const auto ownerOf = [this](Seat seat) { return m_marks.of(m_tracks.kept[seat].now).owner(); };
    for (const ClusterT& cl : clusters) {
        Seat own = TracksT::NONE;
        for (const NodeI<LinksT>* item : cl.des) {
            const Seat seat = m_marks.seat(static_cast<const ClusterT*>(item));
            if (ownerOf(seat) &&
                (own == TracksT::NONE || tracks.links.count(seat) > tracks.links.count(own)))
                own = seat;
        }
        if (own == TracksT::NONE) own = tracks.newSeat();
        m_marks.seat(&cl) = own;
        tracks.roles[own] = TracksT::RENEWED;
    }
    // A seat that is taken over keeps its place for sums; the others tell where their links go.
    for (const Seat seat : absorbed) {
        if (tracks.roles[seat] == TracksT::RENEWED) continue;
        const ClusterT* owner = ownerOf(seat);
        tracks.spots[seat].place = owner ? m_marks.seat(owner) : TracksT::Spot::SHARED;
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
    std::vector<Seat> absorbed;
    eachMember([&](const ClusterT& item) { absorbed.push_back(m_marks.seat(&item)); });
    assignRoles(clusters, absorbed);
    m_report.begin("folding", clusters.size(), m_levels.size() - 1);
    for (ClusterT& cl : clusters) {
        m_report.advance();
        joinLinks(cl);
    }
    for (const auto& [seat, place] : tracks.renewed) {
        TrackedLinkT& ln = tracks.links.at(seat, place);
        ln.setPair(tracks.links.mate(ln).weight);
    }
    tracks.renewed.clear();
    for (const Seat seat : absorbed)
        if (tracks.roles[seat] == TracksT::ABSORBED) tracks.links.clear(seat);
    for (const Seat seat : tracks.holey) tracks.links.closeHoles(seat);
    tracks.holey.clear();
    for (const ClusterT& cl : clusters) tracks.spots[m_marks.seat(&cl)].key = m_marks.key(&cl);
    for (ClusterT& cl : clusters) initItem(cl);
    for (const Seat seat : absorbed) tracks.kept[seat].now = nullptr;
    for (ClusterT& cl : clusters) {
        AccLinksT().swap(cl.links);
        seatCluster(cl, m_marks.seat(&cl));
        tracks.roles[m_marks.seat(&cl)] = 0;
    }
    for (const Seat seat : absorbed) tracks.roles[seat] = 0;
    eachMember([](ClusterT& item) { item.tidy(); });
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                                     \
    template void HierarchyImpl<NONSYM, LinksT>::allowTracks(bool);                          \
    template bool HierarchyImpl<NONSYM, LinksT>::startTracks();                              \
    template void HierarchyImpl<NONSYM, LinksT>::trackLinks(Cluster<LinksT>&);               \
    template void HierarchyImpl<NONSYM, LinksT>::trackAllLinks();                            \
    template void HierarchyImpl<NONSYM, LinksT>::pairTracked();                              \
    template void HierarchyImpl<NONSYM, LinksT>::seatFolded();                               \
    template void HierarchyImpl<NONSYM, LinksT>::leaveTracks();                              \
    template void HierarchyImpl<NONSYM, LinksT>::settleCarried();                            \
    template void HierarchyImpl<NONSYM, LinksT>::writeLinks(Cluster<LinksT>&, std::uint8_t); \
    template void HierarchyImpl<NONSYM, LinksT>::beginLiterally(Clusters<LinksT>::iterator,  \
                                                                Clusters<LinksT>::iterator); \
    template void HierarchyImpl<NONSYM, LinksT>::noteLeft(Cluster<LinksT>&);                 \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::trackedWeight(const Cluster<LinksT>&); \
    template void HierarchyImpl<NONSYM, LinksT>::foldTracked();

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
