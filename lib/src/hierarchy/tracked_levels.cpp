// Levels that touch only what changed: their beginning and end, literal ones among them, and their
// folding.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>
#include <cmath>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::isMirrored(ClustersT& clusters) {
    for (ClusterT& cl : clusters) m_marks.of(cl).place = 0;
    for (ClusterT& cl : clusters)
        for (const auto& ln : cl.links) {
            const auto& backs = ln.dest->links;
            std::uint32_t& place = m_marks.of(ln.dest).place;
            if (place >= backs.size() || backs[place].dest != &cl) return false;
            const AccWeight weight = backs[place++].weight;
            if (!NONSYMMETRIC && !(std::fabs(weight - ln.weight) <= 1e-9 * weight)) return false;
        }
    return true;
}

// Speed-ups and reductions depend on the order of visits.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::allowTracks(Validation validation) {
    const bool reduces = m_reductionClusters != Reduction::NONE && m_linksMarg != 0;
    if (!m_exact || reduces || !std::isfinite(m_boundMin)) return;
    // Nobody has looked at the weights of back links, and without a validation at nothing.
    const bool known =
        validation != Validation::NONE && (NONSYMMETRIC || !NodeT::LinkT::IS_WEIGHTED);
    m_tracks.allowed = known || isMirrored(m_levels.back().clusters);
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
    tracks.bests.reserve(seats);
    tracks.spots.reserve(seats);
    tracks.kept.reserve(seats);
    for (ClusterT* item : items) seatCluster(*item, tracks.newSeat());
    // All lists ascend, so that the back links to a cluster come one after the other.
    for (ClusterT* item : items) m_marks.of(item).place = 0;
    for (ClusterT* item : items) {
        auto& kept = tracks.kept[m_marks.seat(item)];
        kept.links.reserve(item->links.size());
        for (const auto& ln : item->links) {
            TrackedLinkT& link = kept.links.emplace_back();
            link.seat = m_marks.seat(ln.dest);
            link.mate = m_marks.of(ln.dest).place++;
            link.weight = ln.weight;
        }
        AccLinksT().swap(item->links);
        kept.run = static_cast<std::uint32_t>(kept.links.size());
        kept.bound = TracksT::Spot::ABSORBED;
    }
    const std::uint32_t bound = tracks.spots.empty() ? 0 : tracks.spots.back().key + 1;
    for (auto& kept : tracks.kept) {
        kept.bound = bound;
        for (TrackedLinkT& link : kept.links)
            link.setPair(tracks.kept[link.seat].links[link.mate].weight);
    }
    for (ClusterT* item : m_propagates) {
        const Seat seat = m_marks.seat(item);
        tracks.kept[seat].order = ++tracks.carried;
        tracks.carriedLinks += tracks.linksNum(seat);
        if (!item->m_context->cands.empty()) tracks.held.push_back(item);
    }
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::leaveTracks() {
    if (!m_tracks.on) return;
    settleCarried();
    dropWritten();
    for (auto& kept : m_tracks.kept) {
        if (!kept.now) continue;
        writeLinks(*kept.now);
        std::vector<TrackedLinkT>().swap(kept.links);
    }
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
    item.links.reserve(tracks.linksNum(seat));
    for (const TrackedLinkT& link : tracks.kept[seat].links) {
        if (link.seat == TracksT::GONE) continue;
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
            m_proplsnum += tracks.linksNum(seat);
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
        for (const TrackedLinkT& ln : tracks.kept[seat].links) {
            if (ln.seat == TracksT::GONE) continue;
            const ClusterT* dest = tracks.kept[ln.seat].now;
            if (m_marks.of(dest).is(MarksT::ABSORBED) && (!last || cmpBase(last, dest)))
                last = dest;
        }
        if (!last && sorted && seeksAbsorbed(tracks.linksNum(seat), absorbed.size()))
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
    TrackedLinkT& link = m_tracks.kept[seat].links[place];
    link.seat = dest;
    link.mate = mate;
    link.weight = weight;
    link.setPair(back);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::addNewSums(AccWeight share) {
    auto& terms = m_tracks.terms;
    std::sort(terms.begin(), terms.end(),
              [](const auto& a, const auto& b) { return a.key < b.key; });
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
        if (isWhole(item) && (!hub || tracks.linksNum(seatOf(item)) > tracks.linksNum(seatOf(hub))))
            hub = item;
    const Seat own = hub ? seatOf(hub) : tracks.newSeat();
    auto& spots = tracks.spots;
    auto& sums = tracks.sums;
    sums.clear();
    m_newSums.clear();
    // Shared descendants with a self weight have linked their owners already.
    for (const auto& ln : cl.links) accumulate(m_newSums, ln.dest, ln.weight);
    AccLinksT().swap(cl.links);
    for (const NodeI<LinksT>* item : cl.des) {
        if (item == hub) continue;
        for (const TrackedLinkT& ln : tracks.kept[seatOf(item)].links) {
            if (ln.seat == TracksT::GONE || spots[ln.seat].place != Spot::FREE) continue;
            spots[ln.seat].place = static_cast<std::uint32_t>(sums.size());
            sums.emplace_back().seat = ln.seat;
        }
    }
    for (const NodeI<LinksT>* item : cl.des) {
        const Seat seat = seatOf(item);
        auto& links = tracks.kept[seat].links;
        const std::size_t count = links.size();
        const auto& entry =
            detail::ownerEntry(*item, cl, "joinLinks(), the owner should be among it's des owners");
        const AccWeight share =
            static_cast<AccWeight>(entry.numac) / static_cast<AccWeight>(item->totac);
        const bool last = item->owners.back().dest == &cl;
        for (std::size_t i = 0; i < count; ++i) {
            if (i + TracksT::AHEAD < count && links[i + TracksT::AHEAD].seat != TracksT::GONE)
                __builtin_prefetch(&spots[links[i + TracksT::AHEAD].seat]);
            const TrackedLinkT& ln = links[i];
            if (ln.seat == TracksT::GONE) continue;
            const Spot& spot = spots[ln.seat];
            if (spot.place == Spot::FREE) continue;
            if (spot.place == Spot::ABSORBED) {
                tracks.terms.push_back({spot.key, ln.seat, ln.weight});
                if (item == hub) tracks.remove(seat, static_cast<std::uint32_t>(i));
                continue;
            }
            Sum& sum = sums[spot.place];
            sum.weight += ln.weight * share;
            AccWeight back = tracks.kept[ln.seat].links[ln.mate].weight;
            if (!isWhole(item)) back = back / item->totac * entry.numac;
            sum.back += back;
            if (item == hub) {
                sum.own = static_cast<std::uint32_t>(i);
            } else if (last) {
                if (sum.mate == Sum::NONE) {
                    sum.mate = ln.mate;
                } else {
                    tracks.remove(ln.seat, ln.mate);
                    --tracks.carriedLinks;
                }
                Seat& aim = tracks.bests[ln.seat].aim;
                if (aim == seat) aim = own;
            }
        }
        addNewSums(share);
    }
    auto& links = tracks.kept[own].links;
    const auto further = static_cast<std::size_t>(std::count_if(
        sums.begin(), sums.end(), [](const Sum& sum) { return sum.own == Sum::NONE; }));
    if (links.size() + further > links.capacity() + tracks.kept[own].gone)
        links.reserve(links.size() + further);
    for (const Sum& sum : sums) {
        spots[sum.seat].place = Spot::FREE;
        auto& others = tracks.kept[sum.seat];
        if (sum.own != Sum::NONE) {
            TrackedLinkT& ln = links[sum.own];
            ln.weight = sum.weight;
            ln.setPair(sum.back);
            TrackedLinkT& back = others.links[ln.mate];
            back.weight = sum.back;
            back.setPair(sum.weight);
            if (sum.mate != Sum::NONE) {
                tracks.remove(sum.seat, sum.mate);
                --tracks.carriedLinks;
            }
        } else {
            const std::uint32_t place = tracks.newPlace(own, sum.seat);
            std::uint32_t mate = sum.mate;
            if (mate == Sum::NONE) {
                // The new cluster's key isn't known yet, but is above all others.
                mate = static_cast<std::uint32_t>(others.links.size());
                others.links.emplace_back();
                ++tracks.carriedLinks;
            }
            setLink(sum.seat, mate, own, place, sum.back, sum.weight);
            setLink(own, place, sum.seat, mate, sum.weight, sum.back);
        }
        if (others.gone > others.links.size() / 8 + 1) tracks.holey.push_back(sum.seat);
    }
    if (tracks.kept[own].gone > links.size() / 8 + 1) tracks.holey.push_back(own);
    m_marks.seat(&cl) = own;
    appendNewSums(cl);
}

template <bool NONSYMMETRIC, class LinksT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::trackedWeight(const ClusterT& cl) {
    TracksT& tracks = m_tracks;
    const Seat seat = m_marks.seat(&cl);
    const auto& kept = tracks.kept[seat];
    const AccWeight coarse = tracks.coarse;
    AccWeight sum = 0;
    bool exact = true;
    for (const TrackedLinkT& ln : kept.links) {
        if (ln.seat == TracksT::GONE) continue;
        const AccWeight pair = ln.pair();
        sum += pair;
        exact = exact && (pair + coarse) - coarse == pair;
    }
    if (!exact) {
        auto& terms = tracks.terms;
        const auto isLate = [&](std::size_t i, std::uint32_t key) {
            return i >= kept.run || key >= kept.bound;
        };
        for (std::size_t i = 0; i < kept.links.size(); ++i) {
            const TrackedLinkT& ln = kept.links[i];
            if (ln.seat == TracksT::GONE) continue;
            const std::uint32_t key = tracks.spots[ln.seat].key;
            if (isLate(i, key)) terms.push_back({key, ln.seat, ln.pair()});
        }
        std::sort(terms.begin(), terms.end(),
                  [](const auto& a, const auto& b) { return a.key < b.key; });
        sum = 0;
        auto term = terms.begin();
        for (std::size_t i = 0; i < kept.run; ++i) {
            const TrackedLinkT& ln = kept.links[i];
            if (ln.seat == TracksT::GONE) continue;
            const std::uint32_t key = tracks.spots[ln.seat].key;
            if (isLate(i, key)) continue;
            for (; term != terms.end() && term->key < key; ++term) sum += term->weight;
            sum += ln.pair();
        }
        for (; term != terms.end(); ++term) sum += term->weight;
        if (kept.links.size() >= TracksT::SHORT && terms.size() > kept.links.size() / 4)
            tracks.tangled.push_back(seat);
        terms.clear();
    }
    for (const auto& ln : cl.links) sum += linkWeight<NONSYMMETRIC>(&cl, ln);
    if (detail::overflowed(sum))
        detail::throwOverflow("linksWeight(), overflow\n", 59,
                              "linksWeight(), #%u overflowed: %G\n", cl.id, sum);
    return sum / 2;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::linkNew(ClustersT& clusters) {
    TracksT& tracks = m_tracks;
    for (const ClusterT& cl : clusters) {
        const Seat seat = m_marks.seat(&cl);
        tracks.spots[seat].place = static_cast<std::uint32_t>(tracks.kept[seat].links.size());
    }
    for (const ClusterT& cl : clusters)
        for (const auto& ln : cl.links) {
            const Seat dest = m_marks.seat(ln.dest);
            const Seat seat = m_marks.seat(&cl);
            auto& links = tracks.kept[seat].links;
            links.emplace_back();
            setLink(seat, static_cast<std::uint32_t>(links.size() - 1), dest,
                    tracks.spots[dest].place++, ln.weight, 0);
        }
    for (ClusterT& cl : clusters) {
        const Seat seat = m_marks.seat(&cl);
        tracks.spots[seat].place = TracksT::Spot::FREE;
        auto& links = tracks.kept[seat].links;
        for (std::size_t i = links.size() - cl.links.size(); i < links.size(); ++i)
            links[i].setPair(tracks.kept[links[i].seat].links[links[i].mate].weight);
        AccLinksT().swap(cl.links);
    }
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::closeHoles(Seat seat) {
    TracksT& tracks = m_tracks;
    auto& kept = tracks.kept[seat];
    if (kept.gone == 0) return;
    std::uint32_t place = 0;
    std::uint32_t run = 0;
    for (std::uint32_t i = 0; i < kept.links.size(); ++i) {
        if (i == kept.run) run = place;
        const TrackedLinkT& ln = kept.links[i];
        if (ln.seat == TracksT::GONE) continue;
        if (place != i) {
            tracks.kept[ln.seat].links[ln.mate].mate = place;
            kept.links[place] = ln;
        }
        ++place;
    }
    kept.run = kept.run >= kept.links.size() ? place : run;
    kept.links.erase(kept.links.begin() + place, kept.links.end());
    if (kept.links.capacity() > kept.links.size() * 9 / 8 + 1) kept.links.shrink_to_fit();
    kept.gone = 0;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::orderLinks(Seat seat) {
    TracksT& tracks = m_tracks;
    auto& kept = tracks.kept[seat];
    if (!kept.now) return;
    auto& ordered = tracks.ordered;
    ordered.clear();
    for (const TrackedLinkT& ln : kept.links)
        if (ln.seat != TracksT::GONE) ordered.push_back(ln);
    std::sort(ordered.begin(), ordered.end(), [&tracks](const auto& a, const auto& b) {
        return tracks.spots[a.seat].key < tracks.spots[b.seat].key;
    });
    kept.links.assign(ordered.begin(), ordered.end());
    if (kept.links.capacity() > kept.links.size() * 9 / 8 + 1) kept.links.shrink_to_fit();
    kept.gone = 0;
    kept.run = static_cast<std::uint32_t>(kept.links.size());
    kept.bound = ordered.empty() ? 0 : tracks.spots[ordered.back().seat].key + 1;
    for (std::uint32_t i = 0; i < kept.run; ++i)
        tracks.kept[kept.links[i].seat].links[kept.links[i].mate].mate = i;
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
        if (tracks.kept[seat].order != 0) tracks.carriedLinks -= tracks.linksNum(seat);
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
        if (!tracks.kept[seat].now) std::vector<TrackedLinkT>().swap(tracks.kept[seat].links);
    linkNew(clusters);
    eachMember([](ClusterT& item) { item.tidy(); });
    for (const Seat seat : tracks.holey) closeHoles(seat);
    for (const Seat seat : tracks.tangled) orderLinks(seat);
    tracks.holey.clear();
    tracks.tangled.clear();
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                                     \
    template void HierarchyImpl<NONSYM, LinksT>::allowTracks(Validation);                    \
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
