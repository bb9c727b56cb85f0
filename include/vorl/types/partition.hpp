/// @file
/// Partitions of an item's candidates, and the part clusters that join them.
#pragma once

#include <vorl/types/numbers.hpp>

#include <utility>
#include <vector>

namespace vorl {

template <class ItemT>
struct PartCluster;

/// One group of candidates of one item.
template <class ItemT>
struct Partition {
    PartCluster<ItemT>* owner = nullptr;  ///< the part cluster that the partition has joined
    std::vector<ItemT*> items;            ///< ascending by address

    explicit Partition(std::vector<ItemT*>&& els) : items(std::move(els)) {}
    Partition(Partition&& other) noexcept
        : owner(std::exchange(other.owner, nullptr)), items(std::move(other.items)) {}
    Partition& operator=(Partition&&) = delete;
    /// Ends the part cluster that it holds, or leaves the one that it has joined.
    ~Partition();
};

/// The partitions of one item; a list that exists holds at least one.
template <class ItemT>
using Partitions = std::vector<Partition<ItemT>>;

template <class ItemT>
using PartitionPtrs = std::vector<Partition<ItemT>*>;

/// A cluster in the making: partitions of several items that agree with each other.
///
/// It is owned by the partition that holds it, at whose item the cluster will be made.
template <class ItemT>
struct PartCluster {
    using PartItemsT = std::vector<ItemT*>;

    Partition<ItemT>* holder;
    PartitionPtrs<ItemT> items;  ///< the other partitions, not owned

    PartCluster(const PartCluster&) = delete;
    PartCluster& operator=(const PartCluster&) = delete;
    ~PartCluster();

    /// Makes a part cluster owned by the holder.
    /// @throws std::invalid_argument if the holder has an owner already.
    static PartCluster* create(Partition<ItemT>& holder);

    /// The union of the partitions' items, ascending by address; there must be other partitions.
    explicit operator PartItemsT() const;

private:
    explicit PartCluster(Partition<ItemT>& part);
};

/// A cursor over a sorted group in a merging walk.
template <class GroupT, class IterT>
class GroupMatch {
public:
    IterT iel;
    IterT end;
    GroupT* group;

    GroupMatch(IterT first, IterT last, GroupT* grp) : iel(first), end(last), group(grp) {}
    GroupMatch(const GroupMatch&) = default;
    GroupMatch& operator=(const GroupMatch&) = default;
    virtual ~GroupMatch() = default;
};

}  // namespace vorl
