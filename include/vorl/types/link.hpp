/// @file
/// Links between items, weighted or not, and the lists that hold them.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/numbers.hpp>
#include <vorl/types/search.hpp>

#include <concepts>
#include <type_traits>
#include <vector>

namespace vorl {

template <class LinksT>
class Node;
template <class LinksT>
class Cluster;

/// Links of one item: ascending by the address of `dest`, each destination at most once, weights
/// not negative. A self link is never a link but part of the item's self weight.
template <class LinkT>
using Links = std::vector<LinkT>;

/// Link of a node. An unweighted one is a single pointer and reads as the weight 1.
template <class WeightT, bool WEIGHTED>
struct VORL_API Link {
    static constexpr bool IS_WEIGHTED = false;
    static constexpr WeightT weight = 1;

    Node<Links<Link>>* dest;

    explicit Link(Node<Links<Link>>* dst, WeightT = 1) : dest(dst) {}
};

template <class WeightT>
struct VORL_API Link<WeightT, true> {
    static constexpr bool IS_WEIGHTED = true;

    Node<Links<Link>>* dest;
    WeightT weight;

    explicit Link(Node<Links<Link>>* dst, WeightT wgt = 1) : dest(dst), weight(wgt) {}
};

/// Links of a node of an unweighted network.
using UnweightedLinks = Links<Link<LinkWeight, false>>;
/// Links of a node of a weighted network.
using WeightedLinks = Links<Link<LinkWeight, true>>;

/// What the engine is compiled for: the link list of an unweighted or of a weighted network.
template <class LinksT>
concept LinkList = std::same_as<LinksT, UnweightedLinks> || std::same_as<LinksT, WeightedLinks>;

namespace detail {

/// What a link of a cluster knows of its back link, which in a weighted network may differ.
template <class LinksT>
struct PairWeight {};
template <>
struct PairWeight<WeightedLinks> {
    /// The weight of a pair in both directions, NaN until folding has set it.
    AccWeight pair = std::numeric_limits<AccWeight>::quiet_NaN();
};

}  // namespace detail

/// Link of a cluster: always weighted, since folding sums the links of the descendants.
template <class LinksT>
struct AccLink : detail::PairWeight<LinksT> {
    static constexpr bool IS_WEIGHTED = true;

    Cluster<LinksT>* dest;
    AccWeight weight;

    explicit AccLink(Cluster<LinksT>* dst, AccWeight wgt = 1) : dest(dst), weight(wgt) {}
};

/// A link as a caller or a file gives it, before any node exists.
template <bool WEIGHTED>
struct VORL_API InpLink {
    static constexpr bool IS_WEIGHTED = false;
    static constexpr LinkWeight weight = 1;

    Id id;

    explicit InpLink(Id dst, LinkWeight = 1) : id(dst) {}
};

template <>
struct VORL_API InpLink<true> {
    static constexpr bool IS_WEIGHTED = true;

    Id id;
    LinkWeight weight;

    explicit InpLink(Id dst, LinkWeight wgt = 1) : id(dst), weight(wgt) {}
};

/// The two ends of a link in an error report.
struct LinkSrcDstId {
    Id sid = ID_NONE;
    Id did = ID_NONE;
};

/// Accumulates a weight into an ordered list of a cluster's links.
///
/// The destination is sought from `hint` on; destinations between two hints must ascend, and one
/// below the element at `hint` is inserted right there.
/// @return the position behind the touched link, the hint for the next call.
template <class LinksT>
typename Links<AccLink<LinksT>>::iterator addLink(Links<AccLink<LinksT>>& links,
                                                  typename Links<AccLink<LinksT>>::iterator hint,
                                                  Cluster<LinksT>* dest, AccWeight weight) {
    auto it = findDest(hint, links.end(), dest);
    if (it != links.end() && it->dest == dest)
        it->weight += weight;
    else
        it = links.emplace(it, dest, weight);
    return ++it;
}

}  // namespace vorl
