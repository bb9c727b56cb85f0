/// @file
/// What is kept from one level to the next, so that a level touches only what changed.
#pragma once

#include <vorl/hierarchy/cluster_marks.hpp>
#include <vorl/hierarchy/link_lists.hpp>
#include <vorl/types/item.hpp>

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>
#include <vector>

namespace vorl {

/// State of the levels that touch only what changed.
///
/// A cluster lives on a seat. A new cluster takes over the seat of that whole member which has most
/// links, and with it the links, those to other such seats included: only those of the other
/// members are moved. So a hub that takes in one cluster after the other costs what those have of
/// links, but for a look over its own. What a cluster is made of never changes, so neither does the
/// gain of two clusters; hence each seat keeps its best neighbour, and on a level only those are
/// sought that may make new candidates. All else is made as if each cluster looked at all of its
/// links; the results agree to the bit.
///
/// 1. What takes part in a level are the clusters of the level below and their neighbours: of what
///    is carried, folding leaves out all that no link leads from to an absorbed cluster.
/// 2. A visit offers its gain to the neighbour, too, so that whatever the order of the visits, a
///    cluster comes to know the largest of its gains with all that take part. Its candidates are
///    those of them that reach it. What is taken out of the level early is no candidate any more,
///    but its offer stands; so a cluster may be left with none.
/// 3. Where the largest gain is clear, by more than rounding and the tolerance of comparisons could
///    make of it, and where all that reach it are the same 32-bit number, the candidates don't
///    depend on the order of the visits. Where gains nearly tie they do: what ties with a value
///    doesn't take its place, so that of a row of such gains and offers those stay that come
///    first. So do the last bits of the best gains, by which groups of candidates are judged. The
///    few clusters that this is true of find their candidates literally, while the visits of a
///    literal level are gone through: all those of the clusters of the level below, which also
///    tell what is propagated in which order, but of the carried ones only those that matter. The
///    candidates of a cluster that nobody has asked for by then depend on which of its best
///    neighbours are out, so these are in question as well, and so on; but two that are the only
///    best ones of each other are never out. Of other visits the first counts that asks for the
///    candidates; it isn't left out either, since what has the cluster for its best is out only if
///    that is.
/// 4. Only two that have each other for their best become candidates of each other, so what a
///    cluster knows isn't kept up with all that is new. It knows the best neighbour that it found
///    when it last looked, and a bound of its gains with all others that took part then. New
///    clusters have to look, and what takes part again, or with several best ones, or with one that
///    takes part no more, or that grew and no longer gains clearly more than the bound; so does
///    what clustering left over. All others have none of those that they knew for a candidate but
///    the best one. What has to look makes its best neighbours look, too. So of two that have each
///    other for their best both look: for if neither did, take the one that had to last. It knew
///    the other. Was that its best, the other had to look as well, and they would be candidates
///    since then; was it not, it still isn't, also if it looked since without having to.
/// 5. Bounds of gains are bounds of the dynamic gamma: the logarithmic mean L of two numbers lies
///    between the geometric mean G and (2G + A) / 3 with the arithmetic mean A. For with x = G e^u
///    and y = G e^-u, L / G = sinh u / u = sum of u^2k / (2k+1)!, while the other two are 1 and
///    (2 + cosh u) / 3 = 1 + sum over k > 0 of u^2k / (3 (2k)!), and 2k + 1 >= 3. For the many
///    light neighbours of a new cluster these bounds are made once, by intervals.
/// 6. Sums of more than two terms depend on their order, so they are made as literal folding makes
///    them: member by member, and total weights by the order of the clusters, unless every term,
///    and what it is added to, is a multiple of a unit so large that no sum is rounded.
template <bool NONSYMMETRIC, class LinksT>
struct Tracks {
    using ClusterT = Cluster<LinksT>;
    using Weights = typename ClusterMarks<LinksT>::Weights;
    using Seat = std::uint32_t;
    using LinkT = TrackedLink<NONSYMMETRIC>;

    /// In place of a seat.
    enum Special : Seat {
        SEATS_MAX = 0xFFFFFFF0,
        UNKNOWN,    ///< the best neighbour has to be sought
        UNSETTLED,  ///< it is sought on this level
        NONE,       ///< there is none
        SEVERAL     ///< see `ties`: there are several, or candidates are found literally
    };

    /// The share of the best gain from which on others may tie with it.
    static constexpr AccWeight NEAR = 1 - 0x1p-20;

    struct Bounds {
        AccWeight low;
        AccWeight high;
    };
    /// What a new cluster and those that are light beside it are expected to be linked by, for each
    /// unit of weight of the latter.
    struct Reach {
        AccWeight limit;  ///< the largest total weight that it holds for
        AccWeight low;
        AccWeight high;
    };
    /// The search of one cluster for its best gain; those near it are listed in the tracks.
    struct Search {
        Seat seat;
        Weights weights;
        Reach reach;
        AccWeight loss;  ///< what is below is less than 0 for certain
        AccWeight top = -std::numeric_limits<AccWeight>::infinity();
        AccWeight rest = -std::numeric_limits<AccWeight>::infinity();  ///< the others aren't above
        bool sure = true;

        AccWeight lost() const { return top > 0 ? top * NEAR : loss; }
        /// Whether a pair's weight tells that its gain is neither near the best nor above the rest.
        bool rulesOut(AccWeight pair) const { return pair <= rest && pair < lost(); }
    };

    /// So many links ahead what they lead to is called for.
    static constexpr std::size_t AHEAD = 16;

    /// What a seat knows of its gains; of most ends of its links a walk touches no more than that.
    struct Best {
        std::uint32_t part = 0;  ///< twice the last level that it took part in, 1 more if new there
        Seat aim = UNKNOWN;      ///< the neighbour with the best gain
        AccWeight rest = 0;      ///< the bound of the gains with all others that took part then
    };

    /// What a seat is while a level is folded, or its groups of candidates are found.
    enum Role : std::uint8_t {
        ABSORBED = 1,  ///< its links move to the seats of the owners
        RENEWED = 2,   ///< that of a new cluster
        SUMMED = 4,    ///< links to it are being summed
        GROUPED = 8    ///< it has several candidates, or is one of them
    };

    /// What folding needs of the end of a link, apart from the role.
    struct Spot {
        static constexpr std::uint32_t SHARED = 0xFFFFFFFF;

        std::uint32_t key = 0;  ///< ascends with the address of the cluster
        /// Of the sum, or the seat that the only owner of what is absorbed has; while lists are
        /// made first, the number of links to the cluster so far.
        std::uint32_t place = 0;
    };

    /// The rest.
    struct Kept {
        ClusterT* now = nullptr;    ///< the cluster on the seat, null if there is none any more
        std::uint32_t order = 0;    ///< among the carried clusters; 0 for one of the level below
        std::uint32_t sought = 0;   ///< the last level on which its best neighbours were sought
        std::uint32_t literal = 0;  ///< the last level on which it finds its candidates literally
        std::uint32_t defined = 0;  ///< the last round in which its candidates were found
        std::uint32_t out = 0;      ///< the last round in which it was taken out of the level
        std::uint32_t inQuestion = 0;  ///< the last round in which its visit was found to matter
        std::uint32_t ties = 0;        ///< which of the lists of ties is that of the cluster
        std::uint32_t offers = 0;      ///< the place of its first offer if it made one on the level
        std::uint32_t heaviest = 0;    ///< the place of the heaviest link of a new cluster
        bool doubtful = false;         ///< some of its best neighbours may be no candidates
    };

    /// Links of a new cluster to a seat, being summed; to those of new clusters one way only.
    struct Sum {
        static constexpr std::uint32_t NONE = 0xFFFFFFFF;

        Seat seat;
        std::uint32_t own = NONE;   ///< the place of a link that the new cluster took over
        std::uint32_t mate = NONE;  ///< the place of a back link that has to be led anew
        AccWeight weight = 0;
        AccWeight back = 0;
    };

    /// A link to what new clusters are made of, or a term of a total weight.
    struct Term {
        std::uint32_t key;
        Seat seat;
        AccWeight weight;
    };

    /// A neighbour with which the gain is near the best one.
    struct Tie {
        AccWeight gain;
        AccWeight pair;  ///< the weight of their links
        Seat seat;
        std::uint32_t key = 0;  ///< that of its spot
    };

    /// What a cluster offers to one whose candidates are found literally.
    struct Offer {
        Seat from;
        Seat to;
        AccWeight gain;
    };

    bool allowed = false;
    bool on = false;
    bool sure = true;         ///< the best neighbours of all new clusters could be told
    AccWeight coarse = 0;     ///< adding it to a weight leaves multiples of the unit of exact sums
    std::uint32_t level = 1;  ///< number of the level in the making
    std::uint32_t round = 0;  ///< number of the last round of visits
    std::uint32_t carried = 0;  ///< numbers given to carried clusters so far
    Size absorbed = 0;          ///< entries of `m_propagates` that are carried no further
    Size carriedLinks = 0;      ///< number of links of the carried clusters
    std::vector<Best, LargePageAllocator<Best>> bests;
    /// What the gain with the best neighbour isn't below; where candidates are found literally, the
    /// best gain so far, be it an offer.
    std::vector<AccWeight> gains;
    std::vector<Weights, LargePageAllocator<Weights>> weights;
    std::vector<Spot, LargePageAllocator<Spot>> spots;
    std::vector<Kept, LargePageAllocator<Kept>> kept;
    std::vector<std::uint8_t> roles;
    LinkLists<LinkT> links;
    std::vector<Seat> active;            ///< what takes part in the level
    std::vector<Seat> formerly;          ///< what took part in the one before
    std::vector<Seat> unsettled;         ///< what seeks its best neighbour anew
    std::vector<Seat> literally;         ///< what finds its candidates literally
    std::vector<Offer> offers;           ///< what these may be offered, by those who do so
    std::vector<ClusterT*> leaving;      ///< what was of the level below and finds no candidate
    std::vector<Seat> holey;             ///< lists of links with many holes
    std::vector<ClusterT*> written;      ///< clusters that have their links as a literal level does
    std::vector<ClusterT*> left;         ///< what has candidates but found no cluster
    std::vector<ClusterT*> held;         ///< what keeps its candidates for the next level
    std::vector<std::vector<Tie>> ties;  ///< ascend with the keys
    std::vector<Tie> near;               ///< those of the search
    std::vector<Sum> sums;
    std::vector<Term> terms;
    std::vector<Term> sorted;                             ///< scratch memory of `sortTerms`
    std::vector<std::pair<Seat, std::uint32_t>> renewed;  ///< links between new clusters

    /// Whether a weight is a multiple of the unit of exact sums.
    bool isExact(AccWeight weight) const { return (weight + coarse) - coarse == weight; }
    bool takesPart(Seat seat) const { return bests[seat].part >> 1 == level; }
    /// Whether it is one of the level below.
    bool isNew(Seat seat) const { return bests[seat].part == 2 * level + 1; }
    /// Whether its best neighbours were sought on the level.
    bool isSought(Seat seat) const { return isNew(seat) || kept[seat].sought == level; }
    void reserveSeats(Size seats) {
        bests.reserve(seats);
        gains.reserve(seats);
        weights.reserve(seats);
        spots.reserve(seats);
        kept.reserve(seats);
        roles.reserve(seats);
        links.reserveSeats(seats);
    }
    Seat newSeat() {
        bests.emplace_back();
        gains.emplace_back();
        weights.emplace_back();
        spots.emplace_back();
        kept.emplace_back();
        roles.emplace_back();
        links.addSeat();
        return static_cast<Seat>(kept.size() - 1);
    }
    /// Puts the terms in the order of their keys.
    void sortTerms();
    bool isLiteral(Seat seat) const { return kept[seat].literal == level; }
    bool isDoubtful(Seat seat) const { return bests[seat].aim == SEVERAL && kept[seat].doubtful; }
    bool isOut(Seat seat) const { return kept[seat].out == round; }
    bool isInQuestion(Seat seat) const { return kept[seat].inQuestion == round; }
};

// Long lists are sorted digit by digit, from the last one on.
template <bool NONSYMMETRIC, class LinksT>
void Tracks<NONSYMMETRIC, LinksT>::sortTerms() {
    constexpr std::size_t few = 128;
    if (terms.size() < few) {
        std::sort(terms.begin(), terms.end(),
                  [](const Term& a, const Term& b) { return a.key < b.key; });
        return;
    }
    std::uint32_t used = 0;
    for (const Term& term : terms) used |= term.key;
    sorted.resize(terms.size());
    constexpr unsigned bits = 8;
    for (unsigned shift = 0; shift < 32 && used >> shift != 0; shift += bits) {
        const auto digit = [shift](const Term& term) { return term.key >> shift & 0xFF; };
        std::array<std::size_t, 1 << bits> begins{};
        for (const Term& term : terms) ++begins[digit(term)];
        std::exclusive_scan(begins.begin(), begins.end(), begins.begin(), std::size_t{0});
        for (const Term& term : terms) sorted[begins[digit(term)]++] = term;
        terms.swap(sorted);
    }
}

}  // namespace vorl
