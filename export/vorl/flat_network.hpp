/// @file
/// A network whose links lie in flat arrays.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/item.hpp>
#include <vorl/types/numbers.hpp>

#include <span>
#include <vector>

namespace vorl {

class FlatNetwork;

namespace detail {
class LinkGatherer;
FlatNetwork loadFlat(LinkGatherer& links, std::vector<Id> ids, bool directed, Size& distinct);
}  // namespace detail

/// A network without directions: the weights of all links of a pair, both ways, are added up.
///
/// Nodes are numbered by ascending id, and the neighbours of each ascend. It depends on the order
/// of the links only where 32-bit sums of repeated ones do.
class VORL_API FlatNetwork {
public:
    FlatNetwork() = default;

    /// @param nodes the nodes of a `Graph`; links that lead elsewhere are none of the network's
    /// @param directed whether a link is stored at its source alone
    /// @throws std::invalid_argument if a weight is negative or no number
    template <class LinksT>
    explicit FlatNetwork(const Nodes<LinksT>& nodes, bool directed);

    /// The network of the pairs (sources[i], destinations[i]). A pair of equal ends is a self link.
    /// @param weights one for each pair, or none: all weigh 1
    /// @param nodes further nodes, such as isolated ones
    /// @throws std::invalid_argument if the lengths differ, an id is ID_NONE, or a weight is
    ///     negative or no number
    static FlatNetwork ofPairs(std::span<const Id> sources, std::span<const Id> destinations,
                               std::span<const LinkWeight> weights = {},
                               std::span<const Id> nodes = {});

    Size size() const { return ids.size(); }
    Size degree(Id node) const { return begin[node + 1] - begin[node]; }

    std::vector<Id> ids;             ///< ascending
    std::vector<Size> begin{0};      ///< of each node's links, and the end of the last one's
    std::vector<Id> neighbour;       ///< numbers of nodes, ascending for each node
    std::vector<LinkWeight> weight;  ///< of each link, above 0
    std::vector<AccWeight> self;     ///< twice the weight of each node's self link

private:
    enum class Repeats { ADDED, DROPPED };

    friend FlatNetwork detail::loadFlat(detail::LinkGatherer& links, std::vector<Id> ids,
                                        bool directed, Size& distinct);

    template <class VisitT>
    void assemble(bool bothWays, Repeats repeats, bool weighted, VisitT visit);
};

}  // namespace vorl
