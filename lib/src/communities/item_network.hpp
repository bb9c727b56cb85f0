// The network that the steps of communities work on: nodes, or groups of them as items.
#pragma once

#include "workers.hpp"

#include <vorl/types/large_pages.hpp>
#include <vorl/types/numbers.hpp>

#include <algorithm>
#include <span>
#include <vector>

namespace vorl::detail {

/// The group of each item.
using Labels = std::vector<Id>;

/// What there is of each link.
template <class ValueT>
using OfLinks = std::vector<ValueT, LargePageAllocator<ValueT>>;

/// Links between items, each stored at both ends.
///
/// All weights lie on a grid so fine that it rounds away nothing but what is below 2^-52 of the
/// network's weight, and so coarse that every sum of them is exact: sums don't depend on their
/// order, and thereby not on threads.
template <class WeightT>
struct ItemLinks {
    std::vector<Size> begin;  // of each item's links, and the end of the last one's
    OfLinks<Id> dest;
    OfLinks<WeightT> weight;

    Id size() const { return static_cast<Id>(begin.size() - 1); }
    /// Asks for the first links of an item before they are needed.
    void fetch(Id item) const {
        const Size end = std::min(begin[item + Size{1}], begin[item] + 2 * LINE);
        for (Size ln = begin[item]; ln < end; ln += LINE) {
            __builtin_prefetch(&dest[ln]);
            __builtin_prefetch(&weight[ln]);
        }
    }

private:
    static constexpr Size LINE = 64 / sizeof(WeightT);
};

/// What an item holds.
struct Holding {
    AccWeight inner = 0;  // weight inside, both directions counted
    AccWeight total = 0;  // all weight of its nodes
    AccWeight nodes = 0;

    Holding& operator+=(const Holding& other) {
        inner += other.inner;
        total += other.total;
        nodes += other.nodes;
        return *this;
    }
    Holding& operator-=(const Holding& other) {
        inner -= other.inner;
        total -= other.total;
        nodes -= other.nodes;
        return *this;
    }
    friend Holding operator+(Holding a, const Holding& b) { return a += b; }
    friend Holding operator-(Holding a, const Holding& b) { return a -= b; }
};

/// Nodes have links of 32-bit weights, groups of 64-bit ones.
template <class WeightT>
struct ItemNetwork {
    ItemLinks<WeightT> links;
    std::vector<Holding> items;

    Id size() const { return links.size(); }
};

/// Numbers the labels through in the order in which they appear.
/// @return how many there are
Id compact(Labels& labels);

/// coarser[finer[i]] for each i.
Labels composed(const Labels& finer, const Labels& coarser);

/// Items by their label, ascending in each.
struct Grouping {
    std::vector<Id> begin;
    std::vector<Id> items;

    Grouping(const Labels& labels, Id count);
    std::span<const Id> operator[](Id group) const {
        return {items.data() + begin[group], items.data() + begin[group + 1]};
    }
};

/// Items that stay as they are; empty where there are none.
using Idle = std::vector<char>;

/// The network whose items are the groups.
/// @param idle groups that get no links and no holding
template <class WeightT>
ItemNetwork<AccWeight> folded(const ItemNetwork<WeightT>& network, const Labels& labels, Id count,
                              Workers& workers, const Idle& idle = {});

/// What each group holds.
template <class WeightT>
std::vector<Holding> holdings(const ItemNetwork<WeightT>& network, const Labels& labels, Id count,
                              Workers& workers);

extern template ItemNetwork<AccWeight> folded(const ItemNetwork<LinkWeight>&, const Labels&, Id,
                                              Workers&, const Idle&);
extern template ItemNetwork<AccWeight> folded(const ItemNetwork<AccWeight>&, const Labels&, Id,
                                              Workers&, const Idle&);
extern template std::vector<Holding> holdings(const ItemNetwork<LinkWeight>&, const Labels&, Id,
                                              Workers&);
extern template std::vector<Holding> holdings(const ItemNetwork<AccWeight>&, const Labels&, Id,
                                              Workers&);

}  // namespace vorl::detail
