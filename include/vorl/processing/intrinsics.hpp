/// @file
/// Measures of a flat set of clusters.
#pragma once

#include <vorl/types/flags.hpp>
#include <vorl/types/item.hpp>

namespace vorl {

/// Which measures are asked for, and their values.
struct Intrinsics {
    float cdn = 0;     ///< mean conductance of the clusters, in [0, 1]
    float mod = -1;    ///< modularity at the given gamma
    float gamma = 0;   ///< resolution estimated from the clusters by the log-ratio rule
    float sgmod = -1;  ///< modularity at the estimated gamma
    IntrinsicsFlags flags = IntrinsicsFlags::NONE;

    explicit Intrinsics(IntrinsicsFlags measures = IntrinsicsFlags::NONE) : flags(measures) {}

    /// Whether a measure is asked for.
    bool defined() const { return flags != IntrinsicsFlags::NONE; }
};

/// Measures clusters that need no hierarchy, such as those of a file.
///
/// A cluster may hold a link to itself, which stands for each of its inner links once: it is moved
/// into the cluster's self weight, counted twice. (Clusters as `loadClusters` leaves them hold
/// both directions of an inner link, and no link to nodes of no cluster; `evaluateClusters`
/// measures those as they lie in the network.) A second call finds no self links, and counts the
/// weight that the first one moved. Measures that aren't asked for keep their values.
///
/// Modularity: M. E. J. Newman, M. Girvan, Finding and evaluating community structure in networks,
/// Phys. Rev. E 69, 026113 (2004), with the resolution of J. Reichardt, S. Bornholdt, Statistical
/// mechanics of community detection, Phys. Rev. E 74, 016110 (2006). Conductance: R. Kannan,
/// S. Vempala, A. Vetta, On clusterings: good, bad and spectral, J. ACM 51, 497 (2004).
///
/// @param[in,out] intr which measures are asked for, and takes them
/// @param[in,out] cls the clusters
/// @param weight total weight of the network, both directions of each link counted
/// @param gamma resolution of `mod`
/// @throws std::invalid_argument without clusters, with a weight that isn't positive or with a
///     negative gamma
template <bool NONSYMMETRIC, class LinksT>
VORL_API void intrinsicMeasures(Intrinsics& intr, Clusters<LinksT>& cls, AccWeight weight,
                                AccWeight gamma = 1);

}  // namespace vorl
