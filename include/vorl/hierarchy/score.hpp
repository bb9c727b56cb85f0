/// @file
/// The score of a hierarchy.
#pragma once

#include <vorl/types/numbers.hpp>

namespace vorl {

struct HierScore {
    float modularity = 0;   ///< modularity of the finished root
    float gamma = 1;        ///< the resolution used; a negative (dynamic) gamma stays as it is
    float egamma = 1;       ///< the resolution estimated from the root by the log-ratio rule
    float conductance = 0;  ///< mean conductance of the root
    Size nodesLinks = 0;    ///< number of link records of the nodes, each direction counted
    Size clusters = 0;      ///< number of clusters formed
};

}  // namespace vorl
