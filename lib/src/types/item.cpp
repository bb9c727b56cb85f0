#include <vorl/types/item.hpp>

#include <vorl/processing/weights.hpp>
#include <vorl/types/cluster_ids.hpp>

#include <stdexcept>
#include <utility>

namespace vorl {

namespace {

/// Where the calling thread counts the clusters of a scope, null outside of any.
template <class LinksT>
thread_local Id* scopeIds = nullptr;

}  // namespace

template <class ClusterT>
Owner<ClusterT>::Owner(ClusterT* cluster, Size num)
    : dest(cluster), numac(static_cast<std::uint16_t>(num)) {
    if (num > 65534)
        throw std::overflow_error("Owner(), number of active candidates is overflowed\n");
}

template <class LinksT>
NodeI<LinksT>::NodeI(Id ident) : id(ident) {
    if (ident >= ID_MAX) throw std::overflow_error("NodeI(), overflow of id\n");
}

template <class LinksT>
NodeI<LinksT>::~NodeI() = default;

template <class LinksT>
auto NodeI<LinksT>::dsccs() const -> const DescsT& {
    const DescsT* des = descs();
    VORL_ASSERT(des, "dsccs(), a node has no descendants");
    return *des;
}

template <class LinksT>
Node<LinksT>::Node(Id ident, Size reserve) : NodeI<LinksT>(ident) {
    links.reserve(reserve);
}

template <class LinksT>
Node<LinksT>::Node(Node&&) noexcept = default;

template <class LinksT>
Node<LinksT>::~Node() = default;

template <class LinksT>
AccWeight Node<LinksT>::weight() const {
    return m_sweight;
}

template <class LinksT>
void Node<LinksT>::addWeight(AccWeight weight) {
    m_sweight = detail::narrow(m_sweight + weight);
}

template <class LinksT>
AccWeight Node<LinksT>::ctxWeight(bool defined) const {
    if (m_context) return m_context->weight;
    if (defined) return WEIGHT_NONE;
    return detail::linksWeightLoose(*this) + m_sweight;
}

template <class LinksT>
auto Node<LinksT>::descs() const -> const DescsT* {
    return nullptr;
}

template <class LinksT>
AccWeight Node<LinksT>::nnodes() const {
    return 1;
}

template <class LinksT>
void Node<LinksT>::tidy() {
    if (!links.empty()) LinksT().swap(links);
    m_context.reset();
}

template <class LinksT>
Cluster<LinksT>::Cluster(LevelNum lev, Id ident, Size reserve) : NodeI<LinksT>(ident), levnum(lev) {
    links.reserve(reserve);
}

template <class LinksT>
Cluster<LinksT>::Cluster(LevelNum lev, Size reserve)
    : Cluster(lev, scopeIds<LinksT> ? (*scopeIds<LinksT>)++ : m_uid++, reserve) {}

template <class LinksT>
Cluster<LinksT>::Cluster(Cluster&&) noexcept = default;

template <class LinksT>
Cluster<LinksT>::~Cluster() = default;

template <class LinksT>
AccWeight Cluster<LinksT>::weight() const {
    return m_sweight;
}

template <class LinksT>
void Cluster<LinksT>::addWeight(AccWeight weight) {
    m_sweight += weight;
}

template <class LinksT>
AccWeight Cluster<LinksT>::ctxWeight(bool defined) const {
    if (m_context) return m_context->weight;
    return defined ? WEIGHT_NONE : m_tweight;
}

template <class LinksT>
auto Cluster<LinksT>::descs() const -> const DescsT* {
    return &des;
}

template <class LinksT>
AccWeight Cluster<LinksT>::nnodes() const {
    return m_nnodes;
}

template <class LinksT>
void Cluster<LinksT>::tidy() {
    if (!links.empty()) Links<LinkT>().swap(links);
    if (m_context) m_tweight = detail::narrow(m_context->weight);
    m_context.reset();
}

template <class LinksT>
ClusterIdsScope<LinksT>::ClusterIdsScope() noexcept
    : m_former(std::exchange(scopeIds<LinksT>, &m_next)) {}

template <class LinksT>
ClusterIdsScope<LinksT>::~ClusterIdsScope() {
    scopeIds<LinksT> = m_former;
}

#define VORL_INSTANTIATE(LinksT)                     \
    template struct VORL_API Owner<Cluster<LinksT>>; \
    template class VORL_API NodeI<LinksT>;           \
    template class VORL_API Node<LinksT>;            \
    template class VORL_API Cluster<LinksT>;         \
    template class VORL_API ClusterIdsScope<LinksT>;

VORL_INSTANTIATE(UnweightedLinks)
VORL_INSTANTIATE(WeightedLinks)

#undef VORL_INSTANTIATE

}  // namespace vorl
