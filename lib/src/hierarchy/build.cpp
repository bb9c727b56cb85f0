// The driver of a build: from the nodes to the root and its score.
#include <vorl/hierarchy/cluster.hpp>
#include <vorl/hierarchy/hierarchy_impl.hpp>
#include <vorl/processing/validation.hpp>
#include <vorl/types/text.hpp>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vorl {

namespace {

/// The factor by which a root compression lowers gamma.
constexpr float COMPRESSION = 0.825f;

Reduction coreUnless(Reduction reduction, Reduction skip) {
    return (reduction & skip) == skip ? Reduction::NONE : reduction & Reduction::CORE_MASK;
}

/// Truncates toward zero to 32 bits as the processor does: what is out of range becomes the most
/// negative integer, which is its own absolute value.
std::int32_t truncateDelta(AccWeight delta) {
    constexpr AccWeight bound = 2147483648.0;
    if (!(delta > -bound - 1 && delta < bound)) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(delta);
}

}  // namespace

template <class LinksT>
std::shared_ptr<Hierarchy<LinksT>> cluster(Nodes<LinksT>& nodes, bool edges,
                                           const ClusterOptions& options) {
    if (!std::isfinite(options.gamma))
        throw std::invalid_argument("cluster(), gamma must be a finite number\n");
    const auto run = [&](auto hierarchy) -> std::shared_ptr<Hierarchy<LinksT>> {
        hierarchy->build(options.validation, options.rootMax, options.gainMarg, options.modtrace);
        return hierarchy;
    };
    if (edges)
        return run(std::make_shared<HierarchyImpl<false, LinksT>>(std::move(nodes), options));
    return run(std::make_shared<HierarchyImpl<true, LinksT>>(std::move(nodes), options));
}

template <bool NONSYMMETRIC, class LinksT>
HierarchyImpl<NONSYMMETRIC, LinksT>::HierarchyImpl(NodesT&& nodes, const ClusterOptions& opts)
    : m_gamma(opts.gamma),
      m_filterMarg(opts.filterMarg),
      m_reductionNodes(coreUnless(opts.reduction, Reduction::SKIP_NODES)),
      m_reductionClusters(coreUnless(opts.reduction, Reduction::SKIP_CLUSTERS)),
      m_reductionWeight((opts.reduction & Reduction::CRITERIA_WEIGHT) ==
                        Reduction::CRITERIA_WEIGHT),
      m_coarse(opts.speedup == Speedup::COARSE),
      m_exact(opts.speedup == Speedup::NONE) {
    VORL_ASSERT(!(m_filterMarg < 0 || m_filterMarg > 1),
                "HierarchyImpl(), filterMarg is out of the expected range");
    m_nodes.swap(nodes);
    if ((opts.reduction & Reduction::CORE_MASK) != Reduction::NONE && m_nodes.empty())
        throw std::invalid_argument(
            "HierarchyImpl(), nodes must be specified if the reduction the is not NONE");
    m_linksMarg = reducedLinksMarg(static_cast<Id>(m_nodes.size()), opts.reduction);
}

template <bool NONSYMMETRIC, class LinksT>
auto HierarchyImpl<NONSYMMETRIC, LinksT>::toSharedPtr() -> std::shared_ptr<Base> {
    return std::make_shared<HierarchyImpl>(std::move(*this));
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::build(Validation validation, Coupling rootMax,
                                                float gainMarg, bool modtrace) {
    if (m_nodes.empty()) return;

    // The initial weights need both directions of each link; what is created here is reported by
    // the validation.
    StructLinkErrors created(BACKLINKS_MESSAGE);
    if (NONSYMMETRIC && validation != Validation::NONE) detail::createBackLinks(m_nodes, created);

    initNodes();
    VORL_ASSERT(NONSYMMETRIC || m_score.nodesLinks % 2 == 0,
                "build(), the number of links should be even");
    traceStart();
    const bool mirrored =
        validation == Validation::NONE
            ? detail::isMirrored<NONSYMMETRIC>(m_nodes)
            : detail::validate<NONSYMMETRIC>(m_nodes, m_weight, m_score.nodesLinks,
                                             validation == Validation::SEVERE, &created);

    float qprev = -1;
    if (modtrace) {
        qprev = static_cast<float>(modularity(m_nodes.begin(), m_nodes.end()));
        VORL_TRACE("Initial state, Q: %G\n", qprev);
    }
    std::uint32_t wrapped = 0;
    allowTracks(mirrored);
    if (!buildFirstLevel(modtrace, qprev, wrapped)) return;

    std::uint32_t levsize = m_levels.back().fullsize;
    m_propagates.reserve(static_cast<std::size_t>(std::lround(static_cast<float>(levsize) / 1.5f)));
    for (bool compressed = false;; compressed = true) {
        std::uint32_t propnum = 0;
        const bool progress = buildLevels(compressed, gainMarg, modtrace, qprev, levsize, propnum);
        // The difference wraps around where more than rootMax items stand alone.
        const bool compress =
            progress && rootMax != 0 && propnum > Size{rootMax} - m_root.size() && propnum >= 2;
        if (!compress) break;
        leaveTracks();
        compressRoot(propnum, rootMax);
    }
    leaveTracks();
    formRoot();
    scoreRoot(wrapped);
    forgetPairs();
    m_marks.release();
    AccLinksT().swap(m_sums);
    AccLinksT().swap(m_newSums);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::initNodes() {
    m_weight = 0;
    m_score.nodesLinks = 0;
    Id overlong = 0;
    for (NodeT& node : m_nodes) {
        m_weight += initItem(node);
        m_score.nodesLinks += node.links.size();
        if (m_reductionNodes != Reduction::NONE && m_linksMarg != 0 &&
            m_linksMarg < node.links.size())
            ++overlong;
    }
    if (overlong != 0)
        reduceItems<NodeT>(m_nodes, overlong, m_reductionNodes,
                           "  > build(), links reduced for %u / %u / %lu nds\n");
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::traceStart() const {
    VORL_TRACE(
        "The clustering has been started\n"
        "Version: r-%s (%s), gamma: %G, speedup: %s, filterMarg: %G (%sabled), symmetric links: "
        "%u\n"
        "Input Network>  nodes: %u, links: %lu (both dir, undir: %lu), weight (both dir): %G\n",
        libBuild().rev().c_str(), to_string(libBuild().clustering).c_str(), m_gamma,
        m_exact    ? "NONE"
        : m_coarse ? "COARSE"
                   : "ORDERDEP",
        m_filterMarg, "dis", unsigned{!NONSYMMETRIC}, static_cast<std::uint32_t>(m_nodes.size()),
        m_score.nodesLinks, m_score.nodesLinks / 2, m_weight);
}

template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::buildFirstLevel(bool modtrace, float& qprev,
                                                          std::uint32_t& wrapped) {
    const auto nodesnum = static_cast<std::uint32_t>(m_nodes.size());
    if (!clusterLevel<NodeT>(m_nodes.begin(), m_nodes.end(), nodesnum)) {
        VORL_ASSERT(m_levels.empty(),
                    "build(), empty levels are expected when the nodes clustering is failed");
        m_score.modularity =
            qprev != -1 ? qprev : static_cast<float>(modularity(m_nodes.begin(), m_nodes.end()));
        traceResult(0, 0, "\n");
        return false;
    }
    const Level<LinksT>& level = m_levels.back();
    if (m_propnum + m_root.size() > nodesnum) {
        VORL_TRACE("  m_propnum: %u, stand-alone: %lu, nodesnum: %u, clsnum: %lu\n", m_propnum,
                   m_root.size(), nodesnum, level.clusters.size());
        VORL_ASSERT(false,
                    "build(), number of propagated items should not exceed the total number of "
                    "items here");
    }
    VORL_ASSERT(level.fullsize ==
                    level.clusters.size() + m_root.size() + m_propnum * Size{m_levels.size() >= 2},
                "build(), the size of the first level should match its items");
    VORL_TRACE("Initial nodes clustering is completed, %lu clusters\n", m_score.clusters);
    wrapped = static_cast<std::uint32_t>(m_root.size() + m_propnum);
    foldLevel<false>({});
    settleBounds();
    if (!std::isfinite(m_boundMin)) {
        leaveTracks();
        m_tracks.allowed = false;
    }
    if (modtrace) {
        ClustersT& clusters = m_levels.back().clusters;
        const auto q = static_cast<float>(modularity(clusters.begin(), clusters.end()));
        VORL_TRACE("Folding is completed, Q: %G, dQ%s: %G, %lu level, %lu clusters from %u nodes\n",
                   q, m_gamma < 0 ? "" : "(on DISTINCT gamma)", q - qprev, m_levels.size(),
                   m_score.clusters, nodesnum);
        qprev = q;
    } else {
        VORL_TRACE("Folding is completed, %lu level, %lu clusters formed\n", m_levels.size(),
                   m_score.clusters);
    }
    return true;
}

// Below 1e-6 a clearly negative gain may still tie with 0, and below 1e-12 of the total weight
// rounding may leave a gain undefined.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::settleBounds() {
    if constexpr (NodeT::LinkT::IS_WEIGHTED)
        for (const NodeT& node : m_nodes)
            for (const auto& ln : node.links)
                if (!(ln.weight >= 0)) return;
    AccWeight sum = 0;
    for (const ClusterT& cl : m_levels.back().clusters) {
        sum += cl.m_context->weight;
        if (!(cl.m_sweight >= 0)) return;
    }
    const bool agree = std::fabs(sum - m_weight) <= 1e-6 * m_weight;
    if (!agree || !(m_weight * std::max(1.f, m_gamma) < 1e24)) return;
    m_boundMin = std::max(1e-12 * m_weight, 1e-6);
    m_unit = 1 / m_weight;
}

/// Forms levels until one forms no cluster or a stop rule fires; after a compression of the root
/// the first pass works on the propagated items alone.
/// @return false if the levels made no progress, so that the root isn't compressed any more
template <bool NONSYMMETRIC, class LinksT>
bool HierarchyImpl<NONSYMMETRIC, LinksT>::buildLevels(bool compressed, float gainMarg,
                                                      bool modtrace, float& qprev,
                                                      std::uint32_t& levsize,
                                                      std::uint32_t& propnum) {
    const auto endLevels = [this] {
        for (ClusterT& cl : m_levels.back().clusters) m_propagates.push_back(&cl);
    };
    std::uint32_t smallest = ID_MAX;
    unsigned stuck = 0;
    for (bool empty = compressed;; empty = false) {
        ClustersT& items = m_levels.back().clusters;
        if (!clusterLevel<ClusterT>(empty ? items.end() : items.begin(), items.end(),
                                    empty ? 0 : static_cast<Id>(items.size())))
            return true;
        const Level<LinksT>& level = m_levels.back();
        propnum = m_propnum;
        if (propnum != carriedNum()) {
            VORL_TRACE(
                "  > build(), propnum: %u, m_propagates: %lu, lev: %lu, levsize: %u (cls: %lu, "
                "props: %lu)\n",
                propnum, carriedNum(), m_levels.size(), level.fullsize, level.clusters.size(),
                carriedNum());
            VORL_ASSERT(false, "build(), propnum validation failed");
        }
        VORL_ASSERT(level.fullsize == level.clusters.size() + propnum + m_root.size(),
                    "build(), the size of the level should match its items");
        foldLevel<true>(m_propagates);
        VORL_ASSERT(carriedNum() == propnum,
                    "build(), size validation of the  propagated items failed");

        const Size levels = m_levels.size();
        if (!modtrace) {
            VORL_TRACE(
                "Folding is completed, level: %lu, levcls: %u (cls: %lu, prop: %u, sa: %lu), "
                "clusters: %lu (delta: %u)\n",
                levels, level.fullsize, level.clusters.size(), propnum, m_root.size(),
                m_score.clusters, levsize - level.fullsize);
        } else {
            settleCarried();
            ClustersT& clusters = m_levels.back().clusters;
            const auto q = static_cast<float>(modularity(clusters.begin(), clusters.end()) +
                                              modularity(m_propagates.begin(), m_propagates.end()));
            const float dq = q - qprev;
            if (!(m_gamma < 0) && less(dq)) VORL_TRACE("WARNING build(), negative dQ: %G\n", dq);
            VORL_TRACE(
                "Folding is completed, Q: %G, dQ(on DISTINCT gamma): %G, level: %lu, levcls: %u "
                "(cls: %lu, prop: %u, sa: %lu), clusters: %lu (delta: %u)\n",
                q, dq, levels, level.fullsize, level.clusters.size(), propnum, m_root.size(),
                m_score.clusters, levsize - level.fullsize);
            if (!less(gainMarg, dq)) {
                VORL_TRACE("  Break by gainMarg: %G (dQ: %G)\n", gainMarg, dq);
                endLevels();
                return true;
            }
            qprev = q;
        }
        levsize = level.fullsize;

        // A long ring has as many clusters on each level as on the one below it, endlessly.
        if (level.fullsize < smallest) {
            smallest = level.fullsize;
            stuck = 0;
        } else if (++stuck == LEVELS_STUCK_MAX) {
            VORL_TRACE(
                "WARNING build(), no progress for 64 levels, the hierarchy ends at level %lu\n",
                levels);
            endLevels();
            return false;
        }
    }
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::compressRoot(std::uint32_t propnum, Coupling rootMax) {
    m_gammaRatio = COMPRESSION * m_gammaRatio;
    conductance<PropagatesT>({&m_propagates, &m_root});
    VORL_TRACE("  Compressing the root size: %lu (>%u), new gammaRatio: %G\n",
               propnum + m_root.size(), unsigned{rootMax}, m_gammaRatio);

    // The items are evaluated once more, on the new gamma; those without links can't cluster.
    const auto alone =
        std::stable_partition(m_propagates.begin(), m_propagates.end(),
                              [](const ClusterT* item) { return !item->links.empty(); });
    m_root.insert(m_root.end(), alone, m_propagates.end());
    m_propagates.erase(alone, m_propagates.end());
    for (ClusterT* item : m_propagates) {
        auto& ctx = *item->m_context;
        ctx.state = State::INTERLEVPROP;
        Mark& mark = m_marks.of(item);
        mark.flags = 0;
        mark.gmax = 0;
        ctx.cands.clear();
        ctx.gmax = 0;
        ctx.npartmcs = NPARTMCS_NONE;
        ctx.parts.reset();
    }
    m_propnum = 0;
    m_proplsnum = 0;
    m_quietLinks = 0;
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::formRoot() {
    if (!m_root.empty()) {
        VORL_TRACE(
            "WARNING build(), %lu standalone nodes/clusters are present (the input network is not "
            "a single connected component)\n",
            m_root.size());
        m_propagates.insert(m_propagates.end(), m_root.begin(), m_root.end());
    }
    m_root = std::move(m_propagates);
    m_propagates.clear();
    m_root.shrink_to_fit();

    AccWeight rootw = 0;
    for (const ClusterT* cl : m_root) rootw += cl->m_context->weight;
    const AccWeight delta = rootw - m_weight;
    const auto tolerance = detail::narrow((m_weight + rootw) * 0x1p-12);
    const std::int32_t whole = truncateDelta(delta);
    const bool lowest = whole == std::numeric_limits<std::int32_t>::min();
    const auto deviation = static_cast<float>(lowest || whole > 0 ? whole : -whole);
    if (less(tolerance, deviation)) {
        VORL_TRACE("  > build(), m_weight: %G, root weight: %G, delta: %G\n", m_weight, rootw,
                   m_weight - rootw);
        throw std::domain_error("build(), network weight validation failed\n");
    }
}

/// Callers may change the links that are left, those of the root.
template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::forgetPairs() {
    if constexpr (requires(AccLink<LinksT> ln) { ln.pair; })
        for (ClusterT* cl : m_root)
            for (auto& ln : cl->links) ln.pair = std::numeric_limits<AccWeight>::quiet_NaN();
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::scoreRoot(std::uint32_t wrapped) {
    Size singles = 0;
    for (const ClusterT* cl : m_root) {
        if (cl->des.size() != 1) continue;
        VORL_ASSERT(!cl->des.front()->descs(),
                    "build(), only a node can form the single-item cluster");
        ++singles;
    }
    m_score.gamma = m_gamma < 0 ? m_gamma : m_gamma * m_gammaRatio;
    m_score.modularity = detail::narrow(modularity(m_root.begin(), m_root.end()));
    traceResult(m_root.size() - singles, m_score.clusters - wrapped, "");

    AccWeight dgamma;
    if (m_root.size() > 2)
        dgamma = dynamicGamma(m_root);
    else if (m_root.size() == 2)
        dgamma = dynamicGamma(*m_root.front(), *m_root.back());
    else
        dgamma = vorl::dynamicGamma(m_root.front()->m_context->weight, m_root.front()->m_sweight);
    VORL_TRACE(", avg dyn gamma: %G, dynamic gamma: %G", avgdynGammaApx(m_root, true), dgamma);
    if (m_gammaRatio != 1) VORL_TRACE(" (dgr: %G)", m_gammaRatio * dgamma);
    AccWeight cond = 0;
    const AccWeight sgamma = staticGamma<typename Base::RootT>({&m_root}, &cond);
    m_score.egamma = detail::narrow(sgamma);
    m_score.conductance = detail::narrow(cond);
    VORL_TRACE(", static (Newman's) gamma: %G", sgamma);
    if (m_gammaRatio != 1)
        VORL_TRACE(" (sgr: %G), gamma ratio: %G", m_gammaRatio * sgamma, m_gammaRatio);
    VORL_TRACE(", conductance: %G\n", cond);
}

template <bool NONSYMMETRIC, class LinksT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::traceResult(Size rootClusters, Size formedClusters,
                                                      const char* end) const {
    VORL_TRACE(
        "Result>  Q: %G, root size: %lu (non-nodes: %lu), levels: %lu, clusters: %lu (non-nodes: "
        "%lu), nodes: %lu, weight (both dir): %G, node links (directed): %lu%s",
        m_score.modularity, m_root.size(), rootClusters, m_levels.size(), m_score.clusters,
        formedClusters, m_nodes.size(), m_weight, m_score.nodesLinks, end);
}

#define VORL_INSTANTIATE(NONSYM, LinksT) template class HierarchyImpl<NONSYM, LinksT>;
VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE

template VORL_API std::shared_ptr<Hierarchy<UnweightedLinks>> cluster(Nodes<UnweightedLinks>&, bool,
                                                                      const ClusterOptions&);
template VORL_API std::shared_ptr<Hierarchy<WeightedLinks>> cluster(Nodes<WeightedLinks>&, bool,
                                                                    const ClusterOptions&);

}  // namespace vorl
