/// @file
/// Chains: groups of an item's mutual candidates that are candidates of each other.
#pragma once

#include <vorl/types/item.hpp>

#include <utility>
#include <vector>

namespace vorl {

/// Items of a chain, ascending by address.
template <class ItemPtrT>
using ChainItems = std::vector<ItemPtrT>;

/// A connected component of at least two mutual candidates of an item.
template <class ItemT>
struct Chain {
    ChainItems<ItemT*> items;
    AccWeight gain;  ///< sum of the best gains of the items

    Chain(ChainItems<ItemT*>&& els, AccWeight gn) : items(std::move(els)), gain(gn) {
        VORL_ASSERT(items.size() >= 2 && cmpBase(items.front(), items.back()) && !less(gain),
                    "Chain(), attributes initialization validation failed");
    }
};

/// Disjoint chains of one item, in the order of their creation.
template <class ItemT>
using Chains = std::vector<Chain<ItemT>>;

/// The largest gain of the chains; those that reach it within the tolerance move into `parts`, if
/// that isn't null. There must be a chain.
template <Item ItemT>
AccWeight maxChainsGain(Chains<ItemT>& chains, Partitions<ItemT>* parts);

/// The number of items that two ordered vectors share, counted up to the limit.
template <class ItemsT, class ElemsT>
unsigned matches(const ItemsT& a, const ElemsT& b, unsigned limit) {
    if (a.size() > b.size()) return matches(b, a, limit);
    unsigned count = 0;
    auto ib = b.begin();
    for (const auto* item : a) {
        if (count >= limit || ib == b.end()) break;
        ib = findItem(ib, b.end(), item);
        if (ib != b.end() && bsVal(*ib, item) == 0) {
            ++count;
            ++ib;
        }
    }
    return count;
}

}  // namespace vorl
