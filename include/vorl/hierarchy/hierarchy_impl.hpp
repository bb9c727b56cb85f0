/// @file
/// The build of a hierarchy: its state, and the steps of a level.
#pragma once

#include <vorl/hierarchy/chains.hpp>
#include <vorl/hierarchy/cluster_marks.hpp>
#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/hierarchy/tracks.hpp>
#include <vorl/processing/gamma.hpp>
#include <vorl/processing/reduction.hpp>
#include <vorl/processing/weights.hpp>
#include <vorl/types/options.hpp>
#include <vorl/types/progress.hpp>

#include <initializer_list>
#include <type_traits>
#include <vector>

namespace vorl {

/// Pointers to vectors of items: one measure can run over several of them without joining them.
template <class ItemsT>
using Ilistptrc = std::initializer_list<const ItemsT*>;

namespace detail {

/// The item at a position in a list of items or in a vector of pointers to items.
template <class IterT>
auto& itemAt(IterT it) {
    if constexpr (std::is_pointer_v<typename std::iterator_traits<IterT>::value_type>)
        return **it;
    else
        return *it;
}

/// The item's entry for an owner, by a linear scan; the item must have it.
template <class LinksT>
const Owner<Cluster<LinksT>>& ownerEntry(
    const NodeI<LinksT>& item, const Cluster<LinksT>& owner,
    const char* text = "ownerEntry(), the owner should be among the item's owners") {
    auto it = item.owners.begin();
    while (it != item.owners.end() && cmpBase(it->dest, &owner)) ++it;
    VORL_ASSERT(it != item.owners.end() && it->dest == &owner, text);
    return *it;
}

}  // namespace detail

/// Builds a hierarchy level by level.
///
/// On each level every item finds its mutual candidates, items whose candidates are candidates of
/// each other form partitions, partitions that agree and groups of candidates form clusters, and
/// what finds no partner is propagated past the level. Folding then turns the clusters into the
/// items of the next level. There is no random step.
///
/// Made by `cluster`; callers see it as a `Hierarchy`. Everything is public for the tests.
///
/// @tparam NONSYMMETRIC whether the two directions of a link may differ in weight
/// @tparam LinksT the link list of the nodes
template <bool NONSYMMETRIC, class LinksT>
class HierarchyImpl final : public Hierarchy<LinksT> {
public:
    using Base = Hierarchy<LinksT>;
    using typename Base::ClustersT;
    using typename Base::ClusterT;
    using typename Base::NodesT;
    using typename Base::NodeT;
    using PropagatesT = std::vector<ClusterT*>;
    using DesClusters = std::vector<ClusterT*>;
    using MarksT = ClusterMarks<LinksT>;
    using Mark = typename MarksT::Mark;
    using Weights = typename MarksT::Weights;
    using TracksT = Tracks<NONSYMMETRIC, LinksT>;
    using Seat = typename TracksT::Seat;
    using Best = typename TracksT::Best;
    using TrackedLinkT = typename TracksT::LinkT;
    using TrackedSum = typename TracksT::Sum;
    using Bounds = typename TracksT::Bounds;
    using Reach = typename TracksT::Reach;
    using Search = typename TracksT::Search;
    using AccLinksT = Links<AccLink<LinksT>>;
    template <class ItemT>
    using Items = std::vector<ItemT>;
    /// Where the items of a level live.
    template <class ItemT>
    using StoredItems = std::conditional_t<IS_NODE<ItemT>, NodesT, ClustersT>;
    template <class ItemT>
    using IStored = typename StoredItems<ItemT>::iterator;

    using Base::m_levels;
    using Base::m_nodes;
    using Base::m_root;
    using Base::m_score;

    AccWeight m_weight = 0;  ///< total weight of the network, both directions counted
    float m_gamma;           ///< the resolution asked for; negative means dynamic
    float m_gammaRatio = 1;  ///< multiplier of gamma, shrunk by root compression
    float m_filterMarg;
    std::uint32_t m_propnum = 0;    ///< number of items propagated on the current level
    PropagatesT m_propagates;       ///< clusters carried up past the current level
    Size m_proplsnum = 0;           ///< number of links of the propagated items
    Reduction m_reductionNodes;     ///< core value of the reduction in force for nodes
    Reduction m_reductionClusters;  ///< core value of the reduction in force for clusters
    bool m_reductionWeight;         ///< nodes are reduced by weight and not by gain
    std::uint32_t m_linksMarg;      ///< link count above which links are reduced; 0 means never
    bool m_coarse;
    bool m_exact;
    ArenaAllocator<ClusterT> m_arena;  ///< of the clusters of all levels
    /// Marks of the clusters above the node level, kept in step with their states and owners.
    MarksT m_marks{m_arena.arena()};
    /// The least weight of a pair that bounds its gain, infinite where none does.
    AccWeight m_boundMin = std::numeric_limits<AccWeight>::infinity();
    AccWeight m_unit = 0;                          ///< 1 / m_weight, for bounds of gains
    Size m_quietLinks = 0;                         ///< number of links of the quiet clusters
    std::vector<const AccLink<LinksT>*> m_active;  ///< scratch memory of `visitActive`
    AccLinksT m_sums;                 ///< scratch memory of folding: links to what stays on
    AccLinksT m_newSums;              ///< the same, links to the clusters of the level
    std::vector<std::size_t> m_runs;  ///< where the links of each descendant begin in m_sums
    TracksT m_tracks;
    /// From this level on levels touch only what changed. Results don't depend on it; tests compare
    /// with literal levels.
    Size m_trackFrom = 1;
    /// But where more of the members are shared, since of those no seat can be taken over.
    AccWeight m_sharedMax = 0.5;
    ProgressReporter m_report;

    /// Takes the nodes over; the argument is left empty.
    /// @throws std::invalid_argument if a reduction is asked for without nodes
    HierarchyImpl(NodesT&& nodes, const ClusterOptions& opts);
    HierarchyImpl(HierarchyImpl&&) noexcept = default;

    std::shared_ptr<Base> toSharedPtr() override;
    AccWeight weight() const override { return m_weight; }
    bool edges() const override { return !NONSYMMETRIC; }

    /// Turns the nodes into the levels, the root and the score.
    void build(Validation validation, Coupling rootMax, float gainMarg, bool modtrace);

    /// @name Level pass
    /// @{

    /// Forms one level from a range of items and the propagated ones.
    /// @return true if a level was added
    template <Item ItemT>
    bool clusterLevel(IStored<ItemT> first, IStored<ItemT> last, Id itemsNum);

    /// Makes the context of a node, or makes or renews that of a cluster.
    /// @return total weight of the item
    /// @throws std::overflow_error if the weight overflows
    AccWeight initItem(NodeT& el);
    AccWeight initItem(ClusterT& el);

    /// The part of a cluster's self weight that comes from inside its descendants.
    AccWeight subSelfWeight(const ClusterT& el) const;
    /// @}

    /// @name Gain: change of the modularity, times the total weight, if items became one cluster
    /// @{

    /// Gain of an item and the destination of its link.
    /// @throws std::overflow_error if a term overflows
    template <class ItemT>
    AccWeight clusterGain(const ItemT& el, const typename ItemT::LinkT& ln) const;
    /// Gain of a group, ascending by address, at a gamma that includes the ratio.
    template <class ItemT>
    AccWeight clusterGain(const Items<ItemT*>& group, AccWeight gamma) const;
    /// Gain of an item with a group of at least 2 of its candidates.
    /// @param el the item
    /// @param group the candidates, ascending by address
    /// @param[out] cgamma the gamma in force, may be null
    template <class ItemT>
    AccWeight emcandsGain(ItemT& el, const Candidates<ItemT*>& group, AccWeight* cgamma) const;
    /// @}

    /// @name Candidates: the neighbours with which both ends gain the most
    /// @{
    template <class IItemXT>
    void initCands(IItemXT first, IItemXT last, ClustersT& cls);
    template <class ItemT>
    void defineItemCands(ItemT& el, ClustersT& cls);
    /// The best gain of an item while candidates are sought; that of a cluster lies beside its
    /// mark and goes to the context when all are found.
    template <class ItemT>
    AccWeight& gmaxOf(ItemT& item) {
        if constexpr (IS_NODE<ItemT>)
            return item.m_context->gmax;
        else
            return m_marks.of(item).gmax;
    }
    /// Hands the best gains of a range of clusters to their contexts.
    template <class IItemXT>
    void settleGmax(IItemXT first, IItemXT last);
    /// @}

    /// @name Chains: groups of an item's candidates that are candidates of each other
    /// @{

    /// Appends the chains of an item.
    /// @return whether the item has candidates
    template <class ItemT>
    bool mcandsChains(Chains<ItemT>& chains, const ItemT& el) const;
    /// @}

    /// @name Partitions: the best chains of an item, joined with those of its neighbours
    /// @{
    template <class IItemXT>
    void initNonfilterParts(IItemXT first, IItemXT last);
    template <class ItemT>
    void clusterPart(ItemT& el, Partition<ItemT>& part);
    /// Moves scl into dcl and deletes scl.
    template <class ItemT>
    void mergePartClusters(PartCluster<ItemT>& dcl, PartCluster<ItemT>& scl);
    /// Adds partitions without an owner.
    template <class ItemT>
    void extendPartCluster(PartCluster<ItemT>& pcl, PartitionPtrs<ItemT>& parts);
    /// Drops the part clusters of a range of items, while all partitions are alive.
    template <class IItemXT>
    void dropPartClusters(IItemXT first, IItemXT last);
    /// @}

    /// @name Raw clustering: pairs, groups and partitions become clusters
    /// @{
    template <class IItemXT>
    void rawCluster(IItemXT first, IItemXT last, ClustersT& cls);
    template <class ItemT>
    void clusterPair(ClustersT& cls, ItemT& el, ItemT& cand);
    template <class ItemT>
    void clusterNonparts(ClustersT& cls, ItemT& el, Candidates<ItemT*>& group, bool);
    /// @}

    /// @name Propagation: items that find no partner on this level
    /// @{
    template <class ItemT>
    void propagate(ItemT& el, ClustersT& cls);
    template <class ItemT>
    void standalone(ItemT& el, ClustersT& cls);
    template <class IItemXT>
    void propagateConvert(IItemXT first, IItemXT last, ClustersT& cls);
    template <class IItemXT>
    void initPropnomCands(IItemXT first, IItemXT last, ClustersT& cls);
    template <class ItemT>
    void defineIlevpropItemCands(ItemT& el, ClustersT& cls);
    /// @}

    /// Settles how items divide among their owners, by the candidates that lie in each of them.
    template <class IItemXT>
    void membershipTidy(IItemXT first, IItemXT last);

    /// @name Folding: the clusters of a level become the items of the next one
    /// @{
    template <bool CLUSTERS>
    void foldLevel(const PropagatesT& propagates);
    /// Flags the descendants of clusters, which the links of others are then moved away from.
    void markAbsorbed(const ClustersT& clusters);
    template <bool CLUSTERS>
    void accLinks(ClusterT& cl);
    void accLinksProp(ClusterT& cl, Id& furpropnum, Size& furproplsnum, const DesClusters* props);
    /// @}

    /// @name Link reduction
    /// @{

    /// Enters the droppable links of an item with more than `linksMarg` links.
    /// @throws std::domain_error by weight on nodes of unweighted links
    template <bool BYWEIGHT, class ItemT>
    void reductionCands(RdsCands<ItemT>& rcands, ItemT& el, Id linksMarg, Reduction reduction,
                        std::vector<RdsLink<ItemT>>& rlinks);
    /// Drops the links on which both ends agree.
    /// @return the number of items that lost links
    template <class ItemT>
    Id reduceLinks(RdsCands<ItemT>& rcands);
    /// @}

    /// @name Measures
    /// @{

    /// Generalised modularity of a range, with the total weight as the denominator.
    ///
    /// M. E. J. Newman, M. Girvan, Finding and evaluating community structure in networks, Phys.
    /// Rev. E 69, 026113 (2004), https://doi.org/10.1103/PhysRevE.69.026113; the resolution after
    /// J. Reichardt, S. Bornholdt, Statistical mechanics of community detection, Phys. Rev. E 74,
    /// 016110 (2006), https://doi.org/10.1103/PhysRevE.74.016110
    ///
    /// @param first the first item
    /// @param last the end of the range
    /// @param gamma the resolution; WEIGHT_NONE means that of the build
    template <class IItemXT>
    AccWeight modularity(IItemXT first, IItemXT last, AccWeight gamma = WEIGHT_NONE);

    /// Mean conductance of the items, 1 for fewer than two.
    ///
    /// R. Kannan, S. Vempala, A. Vetta, On clusterings: good, bad and spectral, J. ACM 51, 497
    /// (2004), https://doi.org/10.1145/990308.990313
    template <class ItemsT>
    AccWeight conductance(Ilistptrc<ItemsT> items) const;

    /// The resolution at which the items would be the best partition.
    /// @param items the lists of items
    /// @param[out] conductance their conductance, may be null; left as it is where the gamma is 1
    ///     for want of inner or outer weight
    template <class ItemsT>
    AccWeight staticGamma(Ilistptrc<ItemsT> items, AccWeight* conductance = nullptr) const;

    template <class ItemT>
    requires(!std::is_pointer_v<ItemT>) AccWeight dynamicGamma(const ItemT& a, const ItemT& b)
    const {
        return vorl::dynamicGamma(m_weight, a.m_context->weight, a.m_sweight, b.m_context->weight,
                                  b.m_sweight);
    }
    /// Of a group of at least 3 items.
    template <class ItemT>
    AccWeight dynamicGamma(const Items<ItemT*>& items) const;
    /// Mean of the items' dynamic gammas, weighted by their weights.
    AccWeight avgdynGammaApx(const Items<ClusterT*>& items, bool) const;
    /// @}

private:
    /// The share of its best gain below which an offer would not tie, 1 - 2^-26.5.
    static constexpr AccWeight OFFER = 0.9999999894632878;

    /// An item learns at once the best that it has been offered, a hair below the gain, such that
    /// its own equal gain ties with the value. Candidates thus don't depend on the order of the
    /// visits, but where gains nearly tie.
    static void offer(AccWeight& gmax, AccWeight gain) {
        const AccWeight value = OFFER * gain;
        if (less(gmax, value)) gmax = value;
    }

    /// What a gain below is below a best gain, too, whatever the tolerance makes of it; 0 where the
    /// best gain is so small that others tie with it.
    static AccWeight lostBelow(AccWeight gmax) { return gmax >= 1e-6 ? gmax * (1 - 0x1p-20) : 0; }
    /// Whether a pair's weight, which its gain isn't above, is below a best gain for certain.
    bool isLight(AccWeight pair, AccWeight gmax) const {
        return pair < lostBelow(gmax) && pair >= m_boundMin;
    }
    /// Whether the gain of an item and the destination of its link is for certain below 0 or below
    /// the best gains of both, as far as bounds tell that are cheaper than the gain.
    template <class ItemT>
    bool isOutbid(ItemT& el, const typename ItemT::LinkT& ln);
    /// Settles whether the weights of pairs are bounds of gains: where no gain may leave the range
    /// of 32 bits, no weight is negative, and the sum of the weights is the total weight.
    void settleBounds();

    /// What the weight of a pair isn't above, infinity where that isn't at hand.
    static AccWeight pairBound(const AccLink<LinksT>& ln) {
        if constexpr (!NONSYMMETRIC)
            return 2 * ln.weight;
        else if constexpr (requires { ln.pair; })
            return ln.pair;
        else
            return std::numeric_limits<AccWeight>::infinity();
    }

    /// The largest number of levels in a row without a smaller one.
    static constexpr unsigned LEVELS_STUCK_MAX = 64;

    /// Whether an item takes no further part in the level.
    template <class ItemT>
    bool isPropagated(const ItemT& item) {
        if constexpr (IS_NODE<ItemT>)
            return xpropagated(item.m_context->state);
        else
            return m_marks.of(item).is(MarksT::PROPAGATED);
    }
    /// Takes an item out of the level.
    template <class ItemT>
    void setPropagated(ItemT& item) {
        item.m_context->state |= State::PROPAGATED;
        if constexpr (!IS_NODE<ItemT>) m_marks.of(item).set(MarksT::PROPAGATED);
    }

    /// The total weight of an item and the weight inside.
    template <class ItemT>
    typename MarksT::Weights weightsOf(const ItemT& item) const {
        if constexpr (IS_NODE<ItemT>)
            return {item.m_context->weight, item.m_sweight};
        else
            return m_marks.weights(item);
    }

    /// @name Parts of folding
    /// @{

    /// Adds to the sum of the links to a destination.
    void accumulate(AccLinksT& sums, ClusterT* dest, AccWeight weight);
    /// Divides a link to an absorbed item among the item's owners.
    /// @param text what is told where the shares don't add up
    template <class ItemT>
    void accumulateOwners(const ItemT& item, AccWeight weight, AccWeight share, const char* text);
    /// Appends the sums of links to the clusters of the level, which lie above all others.
    void appendNewSums(ClusterT& cl);
    /// Tells the links between the clusters of the level and others the weights of their pairs.
    void pairLinks(ClustersT& clusters);
    /// @}

    /// @name Levels that touch only what changed, see `Tracks`
    /// @{
    /// Tells whether there may be any.
    /// @param mirrored whether the nodes' links have back links, of edges with the same weights
    void allowTracks(bool mirrored);
    /// Begins with them while a level is folded: gives all clusters their seats, unless they are to
    /// stay literal.
    /// @return whether levels are tracked from now on
    bool startTracks();
    /// Moves the links of a cluster to its seat, but for that to itself; in the order of the seats.
    void trackLinks(ClusterT& item);
    void trackAllLinks();
    /// Tells the links the weights of their pairs.
    void pairTracked();
    /// Ends the folding that tracked levels begin with.
    void seatFolded();
    /// Gives all clusters their links back and ends with tracked levels.
    void leaveTracks();
    /// Finds the candidates of a level.
    /// @param[out] news the clusters of the level below that have candidates
    /// @param[out] props the carried ones
    /// @return false if the level has to be made literally
    bool trackedCands(IStored<ClusterT> first, IStored<ClusterT> last, PropagatesT& news,
                      PropagatesT& props, ClustersT& cls);
    /// Prepares what takes part for a literal level.
    void beginLiterally(IStored<ClusterT> first, IStored<ClusterT> last);
    /// The gain with a neighbour, as the cluster on a seat finds it.
    AccWeight trackedGain(Seat seat, Seat dest, AccWeight pair) const;
    Bounds gainBounds(const Weights& a, const Weights& b, AccWeight pair) const;
    /// Bounds for a cluster with all that are light beside it.
    Reach reachOf(const Weights& cl) const;
    /// Finds what takes part in the level and which of it has to seek its best neighbour.
    void activate(IStored<ClusterT> first, IStored<ClusterT> last);
    /// Holds the gain of a neighbour, of which the cluster that has grown is the best one, against
    /// those that the neighbour has with all others.
    void holdAgainstRest(const TrackedLinkT& ln, const Search& search);
    /// Finds the best neighbours of a cluster of the level below, and what else takes part by it.
    void introduce(Seat seat);
    Search beginSearch(Seat seat);
    /// Holds the gain of a link against those found so far.
    void consider(const TrackedLinkT& ln, Search& search);
    /// The same, unless bounds tell that it isn't near the best one.
    void weigh(const TrackedLinkT& ln, Search& search);
    /// @return false if gains are so near to 0, or of so many ties, that the best neighbours can't
    /// be
    ///     told
    bool conclude(const Search& search);
    void unsettle(Seat seat);
    void followChanges();
    /// Finds the best neighbours of a cluster.
    /// @return false if they can't be told
    bool settle(Seat seat);
    /// Finds those of all clusters that may have mutual candidates anew.
    /// @return false if they can't be told
    bool settleAll();
    /// The same of one, if they haven't been sought on the level.
    bool refresh(Seat seat);
    /// Calls for each neighbour that reaches the best gain.
    template <class VisitT>
    void visitBest(Seat seat, VisitT visit);
    bool isBestOf(Seat seat, Seat other);
    /// Whether the candidates of a cluster, or the value of its best gain, may depend on the order
    /// of the visits.
    bool dependsOnOrder(Seat seat);
    /// @name The visits of a literal level, as far as they tell what has mutual candidates
    /// @{

    /// Begins a round of visits: finds what clusters that find their candidates literally may be
    /// offered.
    void beginVisits();
    void takeOut(Seat seat);
    /// Finds the candidates of a cluster.
    /// @return whether there are any
    bool define(Seat seat);
    /// @return whether the cluster has mutual candidates
    bool visit(Seat seat);
    /// Visits the clusters of the level below.
    /// @param[out] news those that have mutual candidates
    void visitNew(IStored<ClusterT> first, IStored<ClusterT> last, PropagatesT& news);
    /// Finds which visits of carried clusters the candidates of others may depend on: of what finds
    /// its candidates literally but hasn't been asked for them yet, of what may be out of the level
    /// by then, and so on; and of what asks for the candidates of one of these first. Where more
    /// has to find its candidates literally, that is listed and a new round needed.
    /// @return false if the best neighbours of one can't be told
    bool findVisits(std::vector<Seat>& visits);
    void visitCarried(const std::vector<Seat>& visits);
    /// Makes all these visits.
    /// @return false if the best neighbours of one can't be told
    bool visitAll(IStored<ClusterT> first, IStored<ClusterT> last, PropagatesT& news);
    /// @}

    /// Hands the mutual candidates to the contexts.
    void settleMutual(PropagatesT& props);
    /// Takes the absorbed clusters out of `m_propagates`.
    void settleCarried();
    Size carriedNum() const { return m_propagates.size() - m_tracks.absorbed; }

    template <class ItemT>
    Size linksNum(const ItemT& item) {
        if constexpr (!IS_NODE<ItemT>)
            if (m_tracks.on) return m_tracks.links.count(m_marks.seat(&item));
        return item.links.size();
    }
    /// Gives a cluster its links as a literal level has them, for the level.
    /// @param role what these lead to, 0 for all
    void writeLinks(ClusterT& item, std::uint8_t role = 0);
    void dropWritten();
    /// Puts a cluster on a seat.
    void seatCluster(ClusterT& cl, Seat seat);
    void foldTracked();
    /// Chooses the seats of the new clusters, and tells the others whose links these take over.
    void assignRoles(const ClustersT& clusters, const std::vector<Seat>& absorbed);
    /// Adds the links of the members to those on the seat of the new cluster.
    void joinLinks(ClusterT& cl);
    /// Enters the sums of a new cluster as its links; leaves it that to itself.
    void enterSums(ClusterT& cl);
    /// The sum of the links of the new cluster to a seat.
    TrackedSum& sumOf(Seat seat);
    /// Calls for each seat that links to a seat lead to after folding, with the number of parts
    /// that they are divided into and that of those that lead there.
    template <class VisitT>
    void visitHeirs(Seat seat, VisitT visit);
    /// Adds what was collected of a member's links to what new clusters are made of.
    /// @param[in,out] exact whether all sums so far are, so that their order doesn't count
    void addTerms(AccWeight share, bool& exact);
    void setLink(Seat seat, std::uint32_t place, Seat dest, std::uint32_t mate, AccWeight weight,
                 AccWeight back);
    /// `linksWeight` of a new cluster.
    AccWeight trackedWeight(const ClusterT& cl);
    void settleLeft(const ClustersT& clusters);
    void noteLeft(ClusterT& item);
    /// Whether folding looks for absorbed clusters in long lists, and whether in one of these.
    bool sortsAbsorbed(Id members) const;
    static bool seeksAbsorbed(std::size_t links, std::size_t absorbed);
    /// @}

    /// Calls for what a walk over the links of some items ahead will touch, but for items that will
    /// be passed over: the item, then its links and its context, then the marks of its neighbours.
    template <class IterT, class PassT>
    void prefetchItems(IterT at, IterT last, PassT isPassed) const;

    /// Visits the links of an item to those that take part in the level; a visit may take its own
    /// destination out of it, but none of the others.
    template <class ItemT, class VisitT>
    void visitActive(ItemT& el, VisitT visit);

    /// `clusterGain` of two items by their weights and that of the pair.
    /// @param ids tells the ids of both for an error
    template <class IdsT>
    AccWeight pairGain(const Weights& a, const Weights& b, AccWeight w12, IdsT ids) const;

    template <class ItemT>
    void raiseGmax(ItemT& item, AccWeight gain);
    template <class ItemT>
    void markOneCand(ItemT& el);
    template <class ItemT>
    void filterCands(ItemT& el, ClustersT& cls);
    template <class ItemT>
    void rawClusterItem(ItemT& el, ClustersT& cls);
    template <class ItemT>
    bool prefersPairs(ItemT& el);
    template <class ItemT>
    void clusterPairs(ItemT& el, ClustersT& cls);
    template <class ItemT>
    void clusterGroup(ItemT& el, ClustersT& cls);
    template <class ItemT>
    void joinItem(ItemT& item, ClusterT& cl);
    template <class ItemT>
    void wrapNode(ItemT& el, ClustersT& cls);
    template <class ItemT>
    void countShares(ItemT& el);
    template <class ItemT>
    void reduceItems(StoredItems<ItemT>& items, Id overlong, Reduction reduction,
                     const char* message);

    void initNodes();
    void traceStart() const;
    bool buildFirstLevel(bool modtrace, float& qprev, std::uint32_t& wrapped);
    bool buildLevels(bool compressed, float gainMarg, bool modtrace, float& qprev,
                     std::uint32_t& levsize, std::uint32_t& propnum);
    void compressRoot(std::uint32_t propnum, Coupling rootMax);
    void formRoot();
    void scoreRoot(std::uint32_t wrapped);
    void forgetPairs();
    void traceResult(Size rootClusters, Size formedClusters, const char* end) const;
};

}  // namespace vorl

#include <vorl/hierarchy/hierarchy_inline.hpp>

/// Instantiates something for the four engines.
#define VORL_FOR_ENGINES(INSTANTIATE)           \
    INSTANTIATE(false, ::vorl::UnweightedLinks) \
    INSTANTIATE(false, ::vorl::WeightedLinks)   \
    INSTANTIATE(true, ::vorl::UnweightedLinks)  \
    INSTANTIATE(true, ::vorl::WeightedLinks)
