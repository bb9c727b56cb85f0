/// @file
/// How alike two clusterings of the same nodes are.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/numbers.hpp>

#include <optional>
#include <span>
#include <vector>

namespace vorl {

/// Clusters over the nodes 0 to n - 1, by cluster and by node. A node may be in any number of
/// clusters, and each counts alike whatever its share.
class VORL_API Cover {
public:
    /// Clusters without members are left out.
    /// @param nodes     n, below 2^32
    /// @param clusters  members of each cluster, below n, none twice; below 2^32 in total
    Cover(Size nodes, const std::vector<std::vector<Id>>& clusters);
    /// As above, the clusters standing one behind the other.
    /// @param ends  where the members of each cluster end
    Cover(Size nodes, std::span<const std::size_t> ends, std::span<const Id> members);

    Size nodes() const { return m_nodes; }
    /// Nodes from this number on are in no cluster.
    Size clusteredNodes() const { return m_clusters.begins.size() - 1; }
    Size clusters() const { return m_members.begins.size() - 1; }
    /// Number of the nodes that are in a cluster, and in more than one.
    Size coveredNodes() const;
    Size sharedNodes() const;

    /// Members of a cluster, ascending.
    std::span<const Id> members(Id cluster) const { return m_members.list(cluster); }
    /// Clusters of a node, ascending.
    std::span<const Id> clustersOf(Id node) const {
        return node < clusteredNodes() ? m_clusters.list(node) : std::span<const Id>();
    }
    /// Whether each node is in exactly one cluster.
    bool isPartition() const;
    /// Number of pairs of nodes inside clusters, a pair counted once for each of its clusters.
    Size innerPairs() const;

private:
    struct Lists {
        std::vector<std::size_t> begins;  ///< and at the back the end of the last list
        std::vector<Id> items;

        std::span<const Id> list(std::size_t index) const {
            return {items.data() + begins[index], begins[index + 1] - begins[index]};
        }
    };

    static Lists transposed(const Lists& lists, Size count);

    Size m_nodes;
    Lists m_members;   ///< of each cluster
    Lists m_clusters;  ///< of each node up to the last one that is in a cluster
};

/// Where the omega index is exact, and how it is estimated elsewhere.
struct OmegaLimits {
    Size exactPairs = 100'000'000;  ///< inner pairs of the larger clustering
    Size samples = 5'000'000;       ///< pairs drawn from each clustering above that
};

/// Measures of likeness, all symmetric, and all but the last one 1 for equal clusterings.
struct Agreement {
    /// Mutual information of overlapping clusters over the larger entropy; 0 to 1.
    /// A. F. McDaid, D. Greene, N. Hurley, arXiv:1110.2515 (2011).
    double nmiMax = 0;
    /// 1 minus the mean of the normalised conditional entropies, which drops a pair of clusters
    /// that tell no more of each other than of the other's complement; 0 to 1.
    /// A. Lancichinetti, S. Fortunato, J. Kertesz, New J. Phys. 11, 033015 (2009),
    /// doi:10.1088/1367-2630/11/3/033015.
    double nmiLfk = 0;
    /// Mean over both clusterings of the mean of the best F1 score of each cluster; 0 to 1.
    /// J. Yang, J. Leskovec, WSDM (2013), doi:10.1145/2433396.2433471.
    double f1 = 0;
    /// Agreement on the number of clusters that each pair of nodes has in common, corrected for
    /// chance; 0 where it is that of chance. L. M. Collins, C. W. Dent, Multivar. Behav. Res. 23,
    /// 231 (1988), doi:10.1207/s15327906mbr2302_6.
    double omega = 0;
    Size omegaSamples = 0;  ///< pairs drawn from each clustering; 0 if omega is exact

    /// Adjusted Rand index; of partitions only. L. Hubert, P. Arabie, J. Classif. 2, 193 (1985),
    /// doi:10.1007/BF01908075.
    std::optional<double> ari;
    /// Mutual information over the mean of the entropies; of partitions only. L. Danon et al.,
    /// J. Stat. Mech. P09008 (2005), doi:10.1088/1742-5468/2005/09/P09008.
    std::optional<double> nmi;
    /// Variation of information in nats, from 0 for equal partitions up to the logarithm of the
    /// number of nodes; of partitions only. M. Meila, J. Multivar. Anal. 98, 873 (2007),
    /// doi:10.1016/j.jmva.2006.11.013.
    std::optional<double> vi;
};

/// Compares two clusterings of the same number of nodes, each with at least one cluster.
///
/// Time goes by the pairs of clusters that have a node in common, found node by node, the pairs
/// of a cluster and one that holds a quarter of all nodes, and the pairs that omega looks at.
/// Memory goes by the memberships. The same input gives the same result: sums run in the order of
/// the clusters, and the sample is drawn with a fixed seed.
VORL_API Agreement agreement(const Cover& first, const Cover& second,
                             const OmegaLimits& limits = {});

}  // namespace vorl
