/// @file
/// The numbering of clusters.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/numbers.hpp>

namespace vorl {

/// A source of ids for the clusters over links of one kind that the calling thread makes: from its
/// beginning to its end they are numbered from 0 on, as in a new process, whatever other threads
/// build meanwhile. Outside of such scopes, clusters of all threads count on together.
///
///     const vorl::ClusterIdsScope<vorl::WeightedLinks> ids;
///     const auto hierarchy = graph.buildHierarchy();
template <class LinksT>
class VORL_API ClusterIdsScope {
public:
    ClusterIdsScope() noexcept;
    ClusterIdsScope(const ClusterIdsScope&) = delete;
    ClusterIdsScope& operator=(const ClusterIdsScope&) = delete;
    ~ClusterIdsScope();

private:
    Id m_next = 0;
    Id* m_former;  // where the thread's former scope counts
};

}  // namespace vorl
