/// @file
/// What clustering of a network is going to take.
#pragma once

#include <vorl/flat_network.hpp>
#include <vorl/types/export.hpp>
#include <vorl/types/numbers.hpp>

namespace vorl {

struct ClusterEstimate {
    Size memory = 0;     ///< bytes of a process at the peak, with reading
    double seconds = 0;  ///< of one core, without reading; a few times more or less, too
};

/// Memory is told by the numbers of nodes and links. For the time, and for the memory of networks
/// so regular that there are more clusters than nodes, a part of the network around its first node
/// is clustered, which takes about a second, or some seconds where many gains tie; of small
/// networks the whole. Where gains tie, the memory may be three times as much, or half.
/// @param network without regard of directions
/// @param directed whether it has directions
/// @param weighted whether its links have weights of their own
/// @throws Cancelled if the progress that the calling thread listens with says so
VORL_API ClusterEstimate estimateClustering(const FlatNetwork& network, bool directed,
                                            bool weighted);

}  // namespace vorl
