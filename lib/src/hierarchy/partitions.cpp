// Partitions: the best chains of an item, joined with those of its neighbours.
#include <vorl/hierarchy/hierarchy_impl.hpp>

#include <algorithm>
#include <stdexcept>

namespace vorl {

template <bool NONSYMMETRIC, class LinksT>
template <class IItemXT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::initNonfilterParts(IItemXT first, IItemXT last) {
    for (; first != last; ++first) {
        m_report.advance();
        auto& el = detail::itemAt(first);
        using ItemT = std::remove_reference_t<decltype(el)>;
        Context<ItemT>& ectx = *el.m_context;
        if (xpropagated(ectx.state) || ectx.cands.size() < 2) continue;
        if (ectx.parts) {
            VORL_TRACE("initNonfilterParts(), #%u  parts: %u, aparts: %u\n", el.id, 1u, 0u);
            throw std::logic_error("initNonfilterParts(), .parts should not be formed yet\n");
        }
        Chains<ItemT> chains;
        mcandsChains(chains, el);
        if (chains.empty()) continue;
        ectx.parts = std::make_unique<Partitions<ItemT>>();
        maxChainsGain(chains, ectx.parts.get());
    }
}

namespace {

/// A back partition, while it is counted how much of a partition it shares.
template <class ItemT>
class PartMatch
    : public GroupMatch<Partition<ItemT>, typename std::vector<ItemT*>::const_iterator> {
public:
    std::uint32_t matched = 0;
    std::uint32_t minsize;

    PartMatch(Partition<ItemT>& back, std::size_t size)
        : GroupMatch<Partition<ItemT>, typename std::vector<ItemT*>::const_iterator>(
              back.items.begin(), back.items.end(), &back),
          minsize(static_cast<std::uint32_t>(std::min(size, back.items.size()))) {}

    enum class Outcome { OPEN, AGREED, FAILED };

    /// Counts an item of the partition; half of the smaller partition must be common.
    Outcome count(const ItemT* item) {
        VORL_ASSERT(this->iel != this->end, "clusterPart(), invalid initial index of cpam");
        if (*this->iel != item) this->iel = findItem(this->iel, this->end, item);
        if (this->iel != this->end && *this->iel == item) {
            ++this->iel;
            ++matched;
        }
        if (2 * matched >= minsize) return Outcome::AGREED;
        return this->iel == this->end ? Outcome::FAILED : Outcome::OPEN;
    }
};

}  // namespace

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::clusterPart(ItemT&, Partition<ItemT>& part) {
    if (part.items.empty()) return;
    using MatchT = PartMatch<ItemT>;
    std::vector<MatchT> backs;
    for (ItemT* item : part.items) {
        VORL_ASSERT(item->m_context->parts,
                    "clusterPart(), parts items should have ordinary back part(s)");
        for (Partition<ItemT>& back : *item->m_context->parts)
            if (!back.owner || back.owner != part.owner)
                backs.emplace_back(back, part.items.size());
    }
    if (backs.empty()) return;

    PartitionPtrs<ItemT> agreed;
    const auto accept = [&](Partition<ItemT>& back) {
        PartCluster<ItemT>* scl = back.owner;
        if (!scl) {
            agreed.push_back(&back);
        } else if (!part.owner) {
            part.owner = scl;
            scl->items.push_back(&part);
        } else if (scl != part.owner) {
            mergePartClusters(*part.owner, *scl);
        }
    };
    for (const ItemT* item : part.items) {
        if (backs.empty()) break;
        auto open = backs.begin();
        for (auto back = backs.begin(); back != backs.end(); ++back) {
            const auto outcome = back->count(item);
            if (outcome == MatchT::Outcome::AGREED) accept(*back->group);
            if (outcome != MatchT::Outcome::OPEN) continue;
            if (open != back) *open = *back;
            ++open;
        }
        backs.erase(open, backs.end());
    }
    if (!part.owner) PartCluster<ItemT>::create(part);
    VORL_ASSERT(part.owner, "clusterPart(), part owner should be defined");
    if (!agreed.empty()) extendPartCluster(*part.owner, agreed);
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::mergePartClusters(PartCluster<ItemT>& dcl,
                                                            PartCluster<ItemT>& scl) {
    dcl.items.reserve(dcl.items.size() + scl.items.size() + 1);
    for (Partition<ItemT>* part : scl.items) {
        part->owner = &dcl;
        dcl.items.push_back(part);
    }
    scl.items.clear();
    VORL_ASSERT(scl.holder && scl.holder->owner == &scl,
                "mergePartClusters(), part cluster holder is invalid");
    scl.holder->owner = &dcl;
    dcl.items.push_back(scl.holder);
    scl.holder = nullptr;
    delete &scl;
}

template <bool NONSYMMETRIC, class LinksT>
template <class ItemT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::extendPartCluster(PartCluster<ItemT>& pcl,
                                                            PartitionPtrs<ItemT>& parts) {
    pcl.items.reserve(pcl.items.size() + parts.size());
    for (Partition<ItemT>* part : parts) {
        VORL_ASSERT(!part->owner,
                    "extendPartCluster(), partitions in matches should not have an owner");
        part->owner = &pcl;
        pcl.items.push_back(part);
    }
}

template <bool NONSYMMETRIC, class LinksT>
template <class IItemXT>
void HierarchyImpl<NONSYMMETRIC, LinksT>::dropPartClusters(IItemXT first, IItemXT last) {
    for (; first != last; ++first) {
        auto& ectx = *detail::itemAt(first).m_context;
        if (!ectx.parts) continue;
        for (auto& part : *ectx.parts)
            if (part.owner && part.owner->holder == &part) delete part.owner;
    }
}

#define VORL_INSTANTIATE_ITER(NONSYM, LinksT, IterT)                               \
    template void HierarchyImpl<NONSYM, LinksT>::initNonfilterParts(IterT, IterT); \
    template void HierarchyImpl<NONSYM, LinksT>::dropPartClusters(IterT, IterT);
#define VORL_INSTANTIATE(NONSYM, LinksT)                                                          \
    VORL_INSTANTIATE_ITER(NONSYM, LinksT, Nodes<LinksT>::iterator)                                \
    VORL_INSTANTIATE_ITER(NONSYM, LinksT, Clusters<LinksT>::iterator)                             \
    VORL_INSTANTIATE_ITER(NONSYM, LinksT, std::vector<Cluster<LinksT>*>::iterator)                \
    template void HierarchyImpl<NONSYM, LinksT>::clusterPart(Node<LinksT>&,                       \
                                                             Partition<Node<LinksT>>&);           \
    template void HierarchyImpl<NONSYM, LinksT>::clusterPart(Cluster<LinksT>&,                    \
                                                             Partition<Cluster<LinksT>>&);        \
    template void HierarchyImpl<NONSYM, LinksT>::extendPartCluster(PartCluster<Node<LinksT>>&,    \
                                                                   PartitionPtrs<Node<LinksT>>&); \
    template void HierarchyImpl<NONSYM, LinksT>::extendPartCluster(                               \
        PartCluster<Cluster<LinksT>>&, PartitionPtrs<Cluster<LinksT>>&);

VORL_FOR_ENGINES(VORL_INSTANTIATE)

#undef VORL_INSTANTIATE_ITER
#undef VORL_INSTANTIATE

}  // namespace vorl
