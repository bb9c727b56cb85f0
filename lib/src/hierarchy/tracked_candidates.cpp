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
        for (const auto& tie : m_tracks.ties[m_tracks.kept[seat].ties]) visit(tie.seat);
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::isBestOf(Seat seat, Seat other) {
    const Seat aim = m_tracks.bests[other].aim;
    if (aim != TracksT::SEVERAL) return aim == seat;
    const auto& ties = m_tracks.ties[m_tracks.kept[other].ties];
    const std::uint32_t key = m_tracks.spots[seat].key;
    const auto tie = std::lower_bound(ties.begin(), ties.end(), key,
                                      [](const auto& a, std::uint32_t k) { return a.key < k; });
    return tie != ties.end() && tie->key == key;
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
        visitBest(seat, ask);
    }
    return true;
}

// Of two that have but each other for candidates nobody asks for the value of their gain.
template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::dependsOnOrder(Seat seat) {
    const TracksT& tracks = m_tracks;
    if (tracks.isDoubtful(seat)) return true;
    std::size_t mutual = 0;
    bool isGrouped = false;
    visitBest(seat, [&](Seat dest) {
        if (!isBestOf(seat, dest)) return;
        ++mutual;
        isGrouped = isGrouped || tracks.bests[dest].aim == TracksT::SEVERAL;
    });
    return mutual > 1 || isGrouped;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::beginVisits() {
    TracksT& tracks = m_tracks;
    ++tracks.round;
    tracks.offers.clear();
    for (const Seat seat : tracks.literally) {
        auto& kept = tracks.kept[seat];
        auto& best = tracks.bests[seat];
        // Visits of a round before may have replaced its best neighbours.
        if (tracks.isLiteral(seat)) settle(seat);
        kept.literal = tracks.level;
        if (best.aim != TracksT::SEVERAL) {
            const auto links = tracks.links[seat];
            const auto ln = std::find_if(links.begin(), links.end(),
                                         [&](const auto& link) { return link.seat == best.aim; });
            kept.ties = static_cast<std::uint32_t>(tracks.ties.size());
            kept.doubtful = false;
            tracks.ties.push_back(
                {{tracks.gains[seat], ln->pair(), best.aim, tracks.spots[best.aim].key}});
            best.aim = TracksT::SEVERAL;
        }
        for (const auto& tie : tracks.ties[kept.ties])
            tracks.offers.push_back({tie.seat, seat, trackedGain(tie.seat, seat, tie.pair)});
        tracks.gains[seat] = 0;
    }
    auto& offers = tracks.offers;
    std::sort(offers.begin(), offers.end(),
              [](const auto& a, const auto& b) { return a.from < b.from; });
    for (std::size_t i = offers.size(); i-- != 0;)
        tracks.kept[offers[i].from].offers = static_cast<std::uint32_t>(i);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::takeOut(Seat seat) {
    auto& kept = m_tracks.kept[seat];
    kept.out = m_tracks.round;
    if (kept.order == 0) m_tracks.leaving.push_back(kept.now);
}

// A first visit asks for the candidates that are left then.
template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::define(Seat seat) {
    TracksT& tracks = m_tracks;
    auto& kept = tracks.kept[seat];
    if (kept.defined == tracks.round) return true;
    bool any = false;
    if (tracks.isLiteral(seat)) {
        std::vector<typename TracksT::Tie> cands;
        for (const auto& tie : tracks.ties[kept.ties])
            if (!tracks.isOut(tie.seat)) accBest(cands, tracks.gains[seat], tie, tie.gain, 1);
        any = !cands.empty();
        tracks.ties[kept.ties] = std::move(cands);
    } else {
        visitBest(seat, [&](Seat dest) { any = any || !tracks.isOut(dest); });
    }
    for (std::size_t i = kept.offers; i < tracks.offers.size(); ++i) {
        const auto& made = tracks.offers[i];
        if (made.from != seat) break;
        offer(tracks.gains[made.to], made.gain);
    }
    kept.defined = tracks.round;
    if (!any) takeOut(seat);
    return any;
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::visit(Seat seat) {
    const TracksT& tracks = m_tracks;
    if (tracks.isOut(seat) || !define(seat)) return false;
    bool mutual = false;
    visitBest(seat, [&](Seat dest) {
        if (!tracks.isOut(dest) && define(dest) && isBestOf(seat, dest)) mutual = true;
    });
    if (!mutual) takeOut(seat);
    return mutual;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::visitNew(IStored<ClusterT> first, IStored<ClusterT> last,
                                                   PropagatesT& news) {
    TracksT& tracks = m_tracks;
    tracks.leaving.clear();
    news.clear();
    for (; first != last; ++first) {
        const Seat seat = m_marks.seat(&*first);
        if (tracks.links.count(seat) == 0)
            tracks.leaving.push_back(&*first);
        else if (visit(seat))
            news.push_back(&*first);
    }
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::findVisits(std::vector<Seat>& visits) {
    TracksT& tracks = m_tracks;
    const auto isCarried = [&](Seat seat) {
        return tracks.kept[seat].order != 0 && !tracks.isOut(seat);
    };
    const auto isDefined = [&](Seat seat) { return tracks.kept[seat].defined == tracks.round; };
    visits.clear();
    const auto join = [&](Seat seat) {
        if (!isCarried(seat) || tracks.isInQuestion(seat)) return;
        tracks.kept[seat].inQuestion = tracks.round;
        visits.push_back(seat);
    };
    // What can't have mutual candidates may be in doubt all the same.
    const auto seek = [&](Seat seat) {
        if (!refresh(seat)) return false;
        if (tracks.isDoubtful(seat) && !tracks.isLiteral(seat)) {
            tracks.literally.push_back(seat);
            tracks.kept[seat].literal = tracks.level;
            join(seat);
        }
        return true;
    };
    for (const Seat seat : tracks.literally)
        if (!isDefined(seat)) join(seat);
    std::vector<Seat> askers;
    for (std::size_t i = 0; i < visits.size(); ++i) {
        m_report.check();
        const Seat seat = visits[i];
        if (!seek(seat)) return false;
        if (!isDefined(seat)) {
            Seat first = seat;
            for (const TrackedLinkT& ln : tracks.links[seat]) {
                if (ln.isGone() || !tracks.takesPart(ln.seat) || !isCarried(ln.seat)) continue;
                if (tracks.kept[ln.seat].order >= tracks.kept[first].order) continue;
                if (!seek(ln.seat)) return false;
                // Whom one in doubt asks for candidates isn't known before its visit.
                const bool isOpen = tracks.isDoubtful(ln.seat) && !isDefined(ln.seat);
                if (!isOpen && isBestOf(seat, ln.seat)) first = ln.seat;
            }
            if (first != seat) askers.push_back(first);
        }
        const Seat aim = tracks.bests[seat].aim;
        if (aim < TracksT::SEATS_MAX) {
            if (!seek(aim)) return false;
            // Neither of the two is ever out.
            if (tracks.bests[aim].aim == seat) continue;
        }
        visitBest(seat, join);
    }
    for (const Seat seat : askers)
        if (!tracks.isInQuestion(seat)) visits.push_back(seat);
    std::sort(visits.begin(), visits.end(),
              [&](Seat a, Seat b) { return tracks.kept[a].order < tracks.kept[b].order; });
    return true;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::visitCarried(const std::vector<Seat>& visits) {
    const TracksT& tracks = m_tracks;
    for (const Seat seat : visits) {
        if (tracks.isInQuestion(seat))
            visit(seat);
        else
            visitBest(seat, [&](Seat dest) {
                if (tracks.isInQuestion(dest) && !tracks.isOut(dest)) define(dest);
            });
    }
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::visitAll(IStored<ClusterT> first, IStored<ClusterT> last,
                                                   PropagatesT& news) {
    auto& literally = m_tracks.literally;
    for (const Seat seat : m_tracks.unsettled)
        if (dependsOnOrder(seat)) literally.push_back(seat);
    std::vector<Seat> visits;
    for (std::size_t known = literally.size();; known = literally.size()) {
        beginVisits();
        visitNew(first, last, news);
        if (!findVisits(visits)) return false;
        if (literally.size() == known) break;
    }
    visitCarried(visits);
    return true;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::settleMutual(PropagatesT& props) {
    TracksT& tracks = m_tracks;
    std::vector<Seat> cands;
    PropagatesT groups;
    for (const Seat seat : tracks.unsettled) {
        cands.clear();
        visitBest(seat, [&](Seat dest) {
            if (isBestOf(seat, dest)) cands.push_back(dest);
        });
        if (cands.empty()) continue;
        auto& kept = tracks.kept[seat];
        auto& ctx = *kept.now->m_context;
        for (const Seat cand : cands) ctx.cands.push_back(tracks.kept[cand].now);
        if (cands.size() > 1) groups.push_back(kept.now);
        ctx.gmax = tracks.gains[seat];
        ctx.npartmcs = NPARTMCS_NONE;
        if (kept.order == 0) continue;
        ctx.state = State::INTERLEVPROP;
        m_marks.of(kept.now).set(MarksT::PROPAGATED, false);
        props.push_back(kept.now);
    }
    // Groups of candidates are judged by the links among them.
    const auto eachGrouped = [&](auto step) {
        for (ClusterT* item : groups) {
            step(*item);
            for (ClusterT* cand : item->m_context->cands) step(*cand);
        }
    };
    eachGrouped(
        [&](const ClusterT& item) { tracks.roles[m_marks.seat(&item)] = TracksT::GROUPED; });
    eachGrouped([&](ClusterT& item) { writeLinks(item, TracksT::GROUPED); });
    eachGrouped([&](const ClusterT& item) { tracks.roles[m_marks.seat(&item)] = 0; });
    std::sort(props.begin(), props.end(), [&](const ClusterT* a, const ClusterT* b) {
        return tracks.kept[m_marks.seat(a)].order < tracks.kept[m_marks.seat(b)].order;
    });
    m_propnum -= static_cast<std::uint32_t>(props.size());
    for (const ClusterT* item : props) m_proplsnum -= linksNum(*item);
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::trackedCands(IStored<ClusterT> first,
                                                       IStored<ClusterT> last, PropagatesT& news,
                                                       PropagatesT& props, ClustersT& cls) {
    TracksT& tracks = m_tracks;
    activate(first, last);
    if (!tracks.held.empty() || !tracks.sure) return false;
    followChanges();
    if (!settleAll() || !visitAll(first, last, news)) return false;
    m_propnum = static_cast<std::uint32_t>(carriedNum());
    m_proplsnum = tracks.carriedLinks;
    settleMutual(props);
    for (ClusterT* item : tracks.leaving) {
        if (linksNum(*item) == 0)
            standalone(*item, cls);
        else
            propagate(*item, cls);
    }
    return true;
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                                        \
    template bool HierarchyImpl<NONSYM, LinksT>::trackedCands(                                  \
        Clusters<LinksT>::iterator, Clusters<LinksT>::iterator, std::vector<Cluster<LinksT>*>&, \
        std::vector<Cluster<LinksT>*>&, Clusters<LinksT>&);

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
