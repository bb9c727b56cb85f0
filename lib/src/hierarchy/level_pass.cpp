// One pass of the engine: the order of the clustering steps, and the initialisation of items.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>
#include <stdexcept>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
template <Item ItemT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::clusterLevel(IStored<ItemT> first, IStored<ItemT> last,
                                                       Id itemsNum) {
    constexpr bool clsproc = !IS_NODE<ItemT>;
    VORL_ASSERT(clsproc || m_propagates.empty(),
                "clusterLevel(), propagated items should not exist for the Nodes");
    ClustersT cls(m_arena);
    PropagatesT props;  // the carried clusters that are treated
    PropagatesT news;   // what is treated of the others, if that isn't all
    const auto total = static_cast<std::uint32_t>(itemsNum + m_root.size() + carriedNum());
    const auto nothingLeft = [&] { return m_root.size() + m_propnum == total; };
    const auto refuse = [&] {
        if constexpr (!clsproc) {
            // The wrapping clusters go, so nothing may refer to them.
            for (auto it = first; it != last; ++it) {
                it->owners.clear();
                it->totac = 0;
            }
        }
        return false;
    };

    const auto begin = [&](const char* stage) {
        m_report.begin(stage, itemsNum + props.size(), m_levels.size());
    };
    begin("candidates");
    const bool tracked = [&] {
        if constexpr (clsproc)
            return m_tracks.on && trackedCands(first, last, news, props, cls);
        else
            return false;
    }();
    const auto each = [&](auto step) {
        if (tracked)
            step(news.begin(), news.end());
        else
            step(first, last);
        if constexpr (clsproc) step(props.begin(), props.end());
    };
    if (!tracked) {
        if constexpr (clsproc)
            if (m_tracks.on) beginLiterally(first, last);
        // Only the items that are carried over now are treated, however m_propagates grows below.
        std::copy_if(m_propagates.begin(), m_propagates.end(), std::back_inserter(props),
                     [this](const ClusterT* item) { return !isPropagated(*item); });
        initCands(first, last, cls);
        if constexpr (clsproc) initPropnomCands(props.begin(), props.end(), cls);
    }
    if (nothingLeft()) return refuse();
    if (!tracked) {
        // What goes on being propagated takes no part in the steps below.
        std::erase_if(props, [this](const ClusterT* item) { return isPropagated(*item); });
        if constexpr (clsproc) each([&](auto from, auto to) { settleGmax(from, to); });
    }

    begin("chains");
    each([&](auto from, auto to) { initNonfilterParts(from, to); });
    begin("clusters");
    each([&](auto from, auto to) { rawCluster(from, to, cls); });
    each([&](auto from, auto to) { propagateConvert(from, to, cls); });
    each([&](auto from, auto to) { dropPartClusters(from, to); });
    if (nothingLeft()) return refuse();

    each([&](auto from, auto to) { membershipTidy(from, to); });
    VORL_TRACE("  > clusterLevel() [%lu tot cls]  %lu cls, %u(%lu csz) prop and %lu sa of %u nds\n",
               m_score.clusters, cls.size(), m_propnum, carriedNum(), m_root.size(), total);
    if (cls.empty() || nothingLeft()) return refuse();

    if constexpr (clsproc) {
        if (m_tracks.on) {
            m_tracks.left.clear();
            each([&](auto from, auto to) {
                for (; from != to; ++from) noteLeft(detail::itemAt(from));
            });
        }
    }
    if (tracked)
        m_tracks.absorbed += static_cast<Size>(
            std::count_if(props.begin(), props.end(),
                          [this](const ClusterT* item) { return !isPropagated(*item); }));
    else
        std::erase_if(m_propagates, [this](const ClusterT* item) { return !isPropagated(*item); });
    VORL_ASSERT(!clsproc || m_propnum == carriedNum(),
                "clusterLevel(): invalid number of the propagated items");
    m_score.clusters += cls.size();
    const auto fullsize = static_cast<Id>(cls.size() + m_root.size() + carriedNum());
    m_levels.emplace_back(fullsize, std::move(cls));
    if (m_levels.size() > LEVEL_MAX - 1)
        throw std::overflow_error("clusterLevel(), overflow of the number of levels\n");
    return true;
}

template <bool NONSYMMETRIC, class LinksT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::initItem(NodeT& el) {
    VORL_ASSERT(!el.m_context, "initItem(), el context should not be defined yet for the nodes");
    el.m_context = std::make_unique<Context<NodeT>>();
    const AccWeight weight = linksWeight<NONSYMMETRIC>(el) + el.m_sweight;
    el.m_context->weight = weight;
    if (detail::overflowed(weight))
        detail::throwOverflow("initItem(), total weight of the item is overflowed\n", 159,
                              "initItem(), #%u weight overflowed: %G\n", el.id, weight);
    return weight;
}

template <bool NONSYMMETRIC, class LinksT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::initItem(ClusterT& el) {
    if (el.m_context) {
        VORL_ASSERT(xpropagated(el.m_context->state),
                    "initItem(), only propagated clusters can have defined context");
        el.m_context->tidysmart();
        Mark& mark = m_marks.of(el);
        mark.set(MarksT::PROPAGATED, xpropagated(el.m_context->state));
        mark.gmax = el.m_context->gmax;
        // What a cluster is made of doesn't change any more.
        if (el.m_context->weight != WEIGHT_NONE) return el.m_context->weight;
    } else {
        el.m_context = std::make_unique<Context<ClusterT>>();
        m_marks.of(el).gmax = GAIN_NONE;
    }
    el.m_nnodes = 0;
    for (const NodeI<LinksT>* item : el.des) {
        if (item->owners.size() == 1) {
            el.m_nnodes += item->nnodes();
        } else {
            const AccWeight share =
                static_cast<AccWeight>(detail::ownerEntry(*item, el).numac) / item->totac;
            el.m_nnodes += item->nnodes() * share;
        }
    }

    // Folding leaves the weight inside the cluster as a link to itself.
    AccWeight selflw = 0;
    const auto self = findDest(el.links.begin(), el.links.end(), &el);
    if (self != el.links.end() && self->dest == &el) {
        selflw = self->weight;
        if (detail::overflowed(selflw))
            detail::throwOverflow("initItem(), selfweight of the link is overflowed\n", 159,
                                  "initItem(), #%u self weight overflowed: %G\n", el.id, selflw);
        el.links.erase(self);
    }
    el.m_sweight += selflw + subSelfWeight(el);
    const AccWeight links = m_tracks.on ? trackedWeight(el) : linksWeight<NONSYMMETRIC>(el);
    const AccWeight weight = el.m_sweight + links;
    el.m_context->weight = weight;
    m_marks.weights(el) = {weight, el.m_sweight};
    if (detail::overflowed(weight))
        detail::throwOverflow("initItem(), total weight of the item is overflowed\n", 159,
                              "initItem(), #%u weight overflowed: %G\n", el.id, weight);
    return weight;
}

template <bool NONSYMMETRIC, class LinksT>
AccWeight HierarchyImpl<NONSYMMETRIC, LinksT>::subSelfWeight(const ClusterT& el) const {
    VORL_ASSERT(el.m_sweight == 0 && el.owners.empty() && !el.des.empty(),
                "subSelfWeight(), self weight and owners should not be defined for el here");
    AccWeight sum = 0;
    for (const NodeI<LinksT>* item : el.des) {
        if (item->owners.size() == 1) {
            sum += item->weight();
            continue;
        }
        // A shared descendant gives its self weight by the square of the share.
        const std::uint32_t numac = detail::ownerEntry(*item, el).numac;
        const auto totac2 = static_cast<AccWeight>(std::uint64_t{item->totac} * item->totac);
        sum += item->weight() / totac2 * (numac * numac);
    }
    if (detail::overflowed(sum))
        detail::throwOverflow("subSelfWeight(), overflow\n", 159,
                              "subSelfWeight(), #%u overflowed: %G\n", el.id, sum);
    return sum;
}

#define VORL_INSTANTIATE(NONSYM, LinksT)                                          \
    template bool HierarchyImpl<NONSYM, LinksT>::clusterLevel<Node<LinksT>>(      \
        Nodes<LinksT>::iterator, Nodes<LinksT>::iterator, Id);                    \
    template bool HierarchyImpl<NONSYM, LinksT>::clusterLevel<Cluster<LinksT>>(   \
        Clusters<LinksT>::iterator, Clusters<LinksT>::iterator, Id);              \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::initItem(Node<LinksT>&);    \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::initItem(Cluster<LinksT>&); \
    template AccWeight HierarchyImpl<NONSYM, LinksT>::subSelfWeight(const Cluster<LinksT>&) const;

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

}  // namespace vorl
