#include <vorl/types/partition.hpp>

#include <vorl/types/item.hpp>
#include <vorl/types/trace.hpp>

#include <algorithm>
#include <stdexcept>

namespace vorl {

template <class ItemT>
Partition<ItemT>::~Partition() {
    if (!owner) return;
    if (!owner->holder)
        VORL_TRACE("~Partition() owner %p does not have a holder from part %p ",
                   static_cast<const void*>(owner), static_cast<const void*>(this));
    VORL_ASSERT(owner->holder,
                "~Partition(), either owner should not exist or it should have a holder\n");
    if (owner->holder == this)
        delete owner;
    else  // a member may go before its holder: the part cluster must not look at it afterwards
        std::erase(owner->items, this);
}

template <class ItemT>
PartCluster<ItemT>::PartCluster(Partition<ItemT>& part) : holder(&part) {
    if (part.owner)
        throw std::invalid_argument("PartCluster(), part owner of the holder should be empty\n");
    part.owner = this;
}

template <class ItemT>
PartCluster<ItemT>::~PartCluster() {
    for (Partition<ItemT>* part : items) {
        VORL_ASSERT(part->owner == this, "~PartCluster(), items should have this owner");
        part->owner = nullptr;
    }
    if (holder && holder->owner == this) holder->owner = nullptr;
}

template <class ItemT>
PartCluster<ItemT>* PartCluster<ItemT>::create(Partition<ItemT>& holder) {
    return new PartCluster(holder);
}

template <class ItemT>
PartCluster<ItemT>::operator PartItemsT() const {
    VORL_ASSERT(!holder->items.empty(), "PartitionT(), items of this holder were already moved");
    VORL_ASSERT(!items.empty(), "PartitionT(), other partitions are expected");

    using MatchT = GroupMatch<const Partition<ItemT>, typename PartItemsT::const_iterator>;
    std::vector<MatchT> cursors;
    cursors.reserve(items.size() + 1);
    const auto append = [&cursors](const Partition<ItemT>& part) {
        cursors.emplace_back(part.items.begin(), part.items.end(), &part);
    };
    append(*holder);
    for (const Partition<ItemT>* part : items) append(*part);

    // A heap of the cursors by their current item; equal items come out one after another.
    const auto above = [](const MatchT& a, const MatchT& b) { return cmpBase(*b.iel, *a.iel); };
    std::erase_if(cursors, [](const MatchT& match) { return match.iel == match.end; });
    std::make_heap(cursors.begin(), cursors.end(), above);
    PartItemsT result;
    while (!cursors.empty()) {
        std::pop_heap(cursors.begin(), cursors.end(), above);
        MatchT& match = cursors.back();
        if (result.empty() || result.back() != *match.iel) result.push_back(*match.iel);
        if (++match.iel == match.end)
            cursors.pop_back();
        else
            std::push_heap(cursors.begin(), cursors.end(), above);
    }
    return result;
}

#define VORL_INSTANTIATE(ItemT)       \
    template struct Partition<ItemT>; \
    template struct PartCluster<ItemT>;

VORL_INSTANTIATE(Node<UnweightedLinks>)
VORL_INSTANTIATE(Node<WeightedLinks>)
VORL_INSTANTIATE(Cluster<UnweightedLinks>)
VORL_INSTANTIATE(Cluster<WeightedLinks>)

#undef VORL_INSTANTIATE

}  // namespace vorl
