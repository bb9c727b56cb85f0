/// @file
/// The margin of link reduction.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/flags.hpp>
#include <vorl/types/numbers.hpp>

namespace vorl {

/// The number of links that a reduced item keeps at least; 0 means that nothing is reduced.
/// It grows with the natural logarithm of the number of nodes.
VORL_API Id reducedLinksMarg(Id nodesNum, Reduction reduction);

namespace detail {

/// Coefficient of the i-th top link among n links in the weight that the top links protect.
double topLinkCoef(Reduction core, Id i, Id n);

}  // namespace detail

}  // namespace vorl
