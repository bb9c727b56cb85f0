// How alike the ends of a link are, by the neighbours that they share.
#pragma once

#include "item_network.hpp"

namespace vorl::detail {

/// By which power of the two degrees the number of shared neighbours is divided.
enum class Similarity {
    COSINE,  // 1/2
    MIXED,   // 1/4
    COMMON,  // 0
};

/// The number of neighbours that the ends of each link share.
///
/// Each triangle is found once, from its corner of the least degree, which takes the time of the
/// links times the root of their number at most (N. Chiba, T. Nishizeki, Arboricity and subgraph
/// listing algorithms, SIAM J. Comput. 14, 210, 1985).
/// @param links of each node those to nodes of higher degree come to stand last
OfLinks<Id> sharedNeighbours(ItemLinks<LinkWeight>& links, Workers& workers);

/// Links that weigh their weight times the similarity of their ends.
struct SimilarLinks {
    ItemNetwork<LinkWeight> network;  // the links that can matter; holdings are up to who uses it
    std::vector<AccWeight> total;     // of each node, over all its links
    AccWeight weight = 0;             // of all of them
};

/// Left out are links whose ends share nobody while both have a neighbour with whom they do.
SimilarLinks similar(const ItemLinks<LinkWeight>& links, const OfLinks<Id>& shared,
                     Similarity similarity, Workers& workers);

/// Rounds a weight to the grid on which sums of up to the given weight are exact.
class Grid {
public:
    explicit Grid(AccWeight weight);
    LinkWeight operator()(LinkWeight weight) const;

private:
    AccWeight m_shift;
};

}  // namespace vorl::detail
