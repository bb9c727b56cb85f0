// The mutual candidates of a level by the best gains that are kept.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
template <class VisitT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::visitBest(Seat seat, VisitT visit) {
    const Seat aim = m_tracks.bests[seat].aim;
    if (aim < TracksT::SEATS_MAX)
        visit(aim);
    else if (aim == TracksT::SEVERAL)
        for (const Seat tie : m_tracks.ties[m_tracks.kept[seat].ties]) visit(tie);
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::isBestOf(Seat seat, Seat other) {
    const Seat aim = m_tracks.bests[other].aim;
    if (aim != TracksT::SEVERAL) return aim == seat;
    const auto& ties = m_tracks.ties[m_tracks.kept[other].ties];
    return std::find(ties.begin(), ties.end(), seat) != ties.end();
}

// What has to seek its best neighbours makes these seek theirs, see `Tracks`; so all that may have
// mutual candidates is in the list in the end.
template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::settleAll() {
    TracksT& tracks = m_tracks;
    const auto ask = [&](Seat seat) {
        if (!tracks.isSought(seat) && tracks.bests[seat].aim != TracksT::UNSETTLED) unsettle(seat);
    };
    for (std::size_t i = 0; i < tracks.unsettled.size(); ++i) {
        m_report.check();
        const Seat seat = tracks.unsettled[i];
        if (!refresh(seat)) return false;
        if (const auto* doubt = tracks.doubtOf(seat))
            for (const Seat other : doubt->others) ask(other);
        visitBest(seat, ask);
    }
    return true;
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::replay(IStored<ClusterT> first, IStored<ClusterT> last,
                                                 PropagatesT& news) {
    TracksT& tracks = m_tracks;
    const std::uint32_t level = tracks.level;
    bool sure = true;
    std::vector<Seat> asked;  // by one in doubt, and perhaps not by a literal level
    const auto isOut = [&](Seat seat) { return tracks.kept[seat].out == level; };
    const auto isUnsure = [&](Seat seat) {
        const auto* doubt = tracks.doubtOf(seat);
        return doubt && doubt->isBest;
    };
    const auto takeOut = [&](Seat seat) {
        auto& kept = tracks.kept[seat];
        kept.out = level;
        if (kept.order == 0) tracks.leaving.push_back(kept.now);
    };
    // A first visit asks for the candidates that are left then.
    const auto define = [&](Seat seat) {
        auto& kept = tracks.kept[seat];
        if (kept.defined == level) return true;
        bool any = false;
        bool all = true;
        visitBest(seat, [&](Seat dest) {
            const bool out = isOut(dest);
            any = any || !out;
            all = all && !out;
        });
        if (const auto* doubt = tracks.doubtOf(seat))
            sure = sure && (doubt->isBest ? any == all
                                          : any || std::all_of(doubt->others.begin(),
                                                               doubt->others.end(), isOut));
        if (any)
            kept.defined = level;
        else
            takeOut(seat);
        return any;
    };
    tracks.leaving.clear();
    for (; first != last && sure; ++first) {
        const Seat seat = m_marks.seat(&*first);
        if (tracks.links.count(seat) == 0) {
            tracks.leaving.push_back(&*first);
            continue;
        }
        if (isOut(seat) || !define(seat)) continue;
        bool mutual = false;
        visitBest(seat, [&](Seat dest) {
            if (isOut(dest)) return;
            if (isUnsure(seat) && tracks.kept[dest].defined != level) asked.push_back(dest);
            if (define(dest) && isBestOf(seat, dest)) mutual = true;
        });
        if (mutual)
            news.push_back(&*first);
        else
            takeOut(seat);
    }
    // What has a best neighbour that stays in may be asked at any time.
    const auto staysIn = [&](Seat seat) {
        bool any = false;
        visitBest(seat, [&](Seat dest) { any = any || !isOut(dest); });
        return any && !isUnsure(seat);
    };
    sure = sure && std::all_of(asked.begin(), asked.end(), staysIn);
    if (!sure) news.clear();
    return sure;
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::areSettled(const PropagatesT& entered,
                                                     const PropagatesT& mixed) {
    const TracksT& tracks = m_tracks;
    // Which of the tying gains a literal level keeps depends on what is out by then. Of two that
    // have but each other for candidates nobody asks for it.
    for (const ClusterT* item : mixed) {
        const auto& own = item->m_context->cands;
        if (own.size() > 1 || own.front()->m_context->cands.size() > 1) return false;
    }
    // A cluster in doubt may ask for what it has for its best, and so tell when that offers its
    // gains to clusters in ties.
    const auto isInTies = [&](Seat seat) {
        return tracks.kept[seat].now->m_context->cands.size() > 1;
    };
    const auto offersTies = [&](const TrackedLinkT& ln) {
        return !ln.isGone() && isInTies(ln.seat) &&
               !(trackedGain(ln.seat, tracks.links.mate(ln)) < tracks.gains[ln.seat] * NEAR);
    };
    // Two that have no other candidate may be in doubt about each other.
    const auto mayHave = [&](Seat seat, Seat other) {
        const auto* doubt = tracks.doubtOf(seat);
        return isBestOf(other, seat) ||
               (doubt && std::find(doubt->others.begin(), doubt->others.end(), other) !=
                             doubt->others.end());
    };
    std::vector<Seat> asked;
    for (const auto& doubt : tracks.doubts) {
        if (!doubt.isBest && !tracks.kept[doubt.seat].now->m_context->cands.empty()) continue;
        for (const Seat dest : doubt.others)
            if (mayHave(dest, doubt.seat)) return false;
        asked.insert(asked.end(), doubt.others.begin(), doubt.others.end());
    }
    if (std::none_of(entered.begin(), entered.end(),
                     [](const ClusterT* item) { return item->m_context->cands.size() > 1; }))
        return true;
    std::sort(asked.begin(), asked.end());
    asked.erase(std::unique(asked.begin(), asked.end()), asked.end());
    return std::none_of(asked.begin(), asked.end(), [&](Seat seat) {
        const auto links = tracks.links[seat];
        return isInTies(seat) || std::any_of(links.begin(), links.end(), offersTies);
    });
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::settleMutual(PropagatesT& props) {
    TracksT& tracks = m_tracks;
    std::vector<Seat> cands;
    PropagatesT entered;
    PropagatesT mixed;
    const auto enter = [&](Seat seat) {
        cands.clear();
        visitBest(seat, [&](Seat dest) {
            if (isBestOf(seat, dest)) cands.push_back(dest);
        });
        if (cands.empty()) return;
        auto& kept = tracks.kept[seat];
        auto& ctx = *kept.now->m_context;
        if (!ctx.cands.empty()) return;
        for (const Seat cand : cands) ctx.cands.push_back(tracks.kept[cand].now);
        entered.push_back(kept.now);
        if (tracks.bests[seat].aim == TracksT::SEVERAL && kept.mixed &&
            cands.size() != tracks.ties[kept.ties].size())
            mixed.push_back(kept.now);
        ctx.gmax = tracks.gains[seat];
        ctx.npartmcs = NPARTMCS_NONE;
        if (kept.order == 0) return;
        ctx.state = State::INTERLEVPROP;
        m_marks.of(kept.now).set(MarksT::PROPAGATED, false);
        props.push_back(kept.now);
    };
    for (const Seat seat : tracks.unsettled) {
        enter(seat);
        visitBest(seat, [&](Seat dest) {
            if (isBestOf(seat, dest)) enter(dest);
        });
    }
    const auto isAroundSettled = [this](ClusterT* item) {
        return !isInChains(*item) || settleAround(m_marks.seat(item));
    };
    if (!std::all_of(entered.begin(), entered.end(), isAroundSettled) ||
        !areSettled(entered, mixed)) {
        for (ClusterT* item : entered) item->m_context->cands.clear();
        props.clear();
        return false;
    }
    // Groups of candidates are judged by the links among them.
    for (ClusterT* item : entered) {
        if (item->m_context->cands.size() < 2) continue;
        writeLinks(*item);
        for (ClusterT* cand : item->m_context->cands) writeLinks(*cand);
    }
    std::sort(props.begin(), props.end(), [&](const ClusterT* a, const ClusterT* b) {
        return tracks.kept[m_marks.seat(a)].order < tracks.kept[m_marks.seat(b)].order;
    });
    m_propnum -= static_cast<std::uint32_t>(props.size());
    for (const ClusterT* item : props) m_proplsnum -= linksNum(*item);
    return true;
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::trackedCands(IStored<ClusterT> first,
                                                       IStored<ClusterT> last, PropagatesT& news,
                                                       PropagatesT& props, ClustersT& cls) {
    TracksT& tracks = m_tracks;
    activate(first, last);
    if (!tracks.held.empty() || !tracks.sure) return false;
    followChanges();
    if (!settleAll() || !replay(first, last, news)) return false;
    m_propnum = static_cast<std::uint32_t>(carriedNum());
    m_proplsnum = tracks.carriedLinks;
    if (!settleMutual(props)) {
        news.clear();
        return false;
    }
    settleChainGains();
    for (ClusterT* item : tracks.leaving) {
        if (linksNum(*item) == 0)
            standalone(*item, cls);
        else
            propagate(*item, cls);
    }
    return true;
}

// When the neighbours are visited depends on what they have for their best.
template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::settleAround(Seat seat) {
    TracksT& tracks = m_tracks;
    const std::size_t doubts = tracks.doubts.size();
    bool sure = true;
    const auto settleNeighbours = [&](Seat of) {
        for (const auto& ln : tracks.links[of])
            if (!ln.isGone() && tracks.takesPart(ln.seat)) sure = refresh(ln.seat) && sure;
    };
    settleNeighbours(seat);
    for (const auto& ln : tracks.links[seat])
        if (!ln.isGone() && tracks.takesPart(ln.seat) &&
            !(trackedGain(seat, ln) < tracks.gains[seat] * NEAR))
            settleNeighbours(ln.seat);
    for (std::size_t i = doubts; i < tracks.doubts.size(); ++i) {
        const auto others = tracks.doubts[i].others;
        for (const Seat other : others) sure = refresh(other) && sure;
    }
    return sure;
}

template <bool NONSYMMETRIC, class LinksT>
std::pair<Size, Size> HierarchyImpl<NONSYMMETRIC, LinksT>::definition(Seat seat) {
    const TracksT& tracks = m_tracks;
    const auto visitOf = [&](Seat cl) -> Size {
        const std::uint32_t order = tracks.kept[cl].order;
        // Clusters of the level below come first, and ascend.
        return order == 0 || order > tracks.carriedBefore ? tracks.spots[cl].key
                                                          : (Size{1} << 63) + order;
    };
    std::pair<Size, Size> found(visitOf(seat), 0);
    for (const auto& ln : tracks.links[seat]) {
        if (ln.isGone() || !tracks.takesPart(ln.seat) || !isBestOf(seat, ln.seat)) continue;
        Size place = 0;
        Size own = 0;
        visitBest(ln.seat, [&](Seat dest) {
            ++place;
            if (dest == seat) own = place;
        });
        found = std::min(found, {visitOf(ln.seat), own});
    }
    return found;
}

template <bool NONSYMMETRIC, class LinksT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::literalGmax(Seat seat) {
    struct Event {
        std::pair<Size, Size> when;
        AccWeight gain;
        bool own;
    };
    settleAround(seat);
    const TracksT& tracks = m_tracks;
    std::vector<std::pair<const TrackedLinkT*, AccWeight>> offers;
    for (const auto& ln : tracks.links[seat]) {
        if (ln.isGone() || !tracks.takesPart(ln.seat)) continue;
        const AccWeight gain = trackedGain(seat, ln);
        if (!(gain < tracks.gains[seat] * NEAR)) offers.emplace_back(&ln, gain);
    }
    std::sort(offers.begin(), offers.end(), [&tracks](const auto& a, const auto& b) {
        return tracks.spots[a.first->seat].key < tracks.spots[b.first->seat].key;
    });
    std::vector<Event> events;
    AccWeight top = GAIN_NONE;
    for (const auto& [ln, gain] : offers) {
        // The first of those that tie, but for a lower bound of the best gain.
        if (less(top, gain)) top = gain;
        const AccWeight back = trackedGain(ln->seat, tracks.links.mate(*ln));
        events.push_back({definition(ln->seat), back, false});
    }
    events.push_back({definition(seat), top, true});
    std::sort(events.begin(), events.end(),
              [](const Event& a, const Event& b) { return a.when < b.when; });
    const std::uint32_t order = tracks.kept[seat].order;
    const bool isNew = order == 0 || order > tracks.carriedBefore;
    AccWeight gmax = isNew ? AccWeight{GAIN_NONE} : 0;
    for (const Event& event : events) {
        const AccWeight gain = event.own ? event.gain : OFFER * event.gain;
        if (less(gmax, gain)) gmax = gain;
    }
    return gmax;
}

// All that has mutual candidates had to look for its best ones, and so is in the list.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::settleChainGains() {
    for (const Seat seat : m_tracks.unsettled) {
        ClusterT& item = *m_tracks.kept[seat].now;
        if (m_tracks.bests[seat].aim == TracksT::SEVERAL && isInChains(item))
            item.m_context->gmax = literalGmax(seat);
    }
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                                        \
    template bool HierarchyImpl<NONSYM, LinksT>::trackedCands(                                  \
        Clusters<LinksT>::iterator, Clusters<LinksT>::iterator, std::vector<Cluster<LinksT>*>&, \
        std::vector<Cluster<LinksT>*>&, Clusters<LinksT>&);                                     \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::literalGmax(std::uint32_t);

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
