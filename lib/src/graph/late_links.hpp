// Links that wait beside the long lists that they belong in.
#pragma once

#include <vorl/types/item.hpp>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace vorl::detail {

/// Collects the links that arrive out of order for long lists, since an insertion in the middle
/// takes time by the list's length, and merges them now and then.
///
/// The last link of a list never waits, nor does a link have a waiting one of the same destination,
/// so a repeat is known at once.
template <class LinksT>
class LateLinks {
public:
    using NodeT = Node<LinksT>;
    using LinkT = typename NodeT::LinkT;

    /// Length from which on an insertion is dearer than the wait.
    static constexpr Size LIST_MIN = 2048;

    /// Adds a link unless one to the destination waits already.
    /// @param dst before the last destination of the list, and not in it
    /// @return the weight of the waiting link of that destination, null if there was none
    LinkWeight* add(NodeT* src, NodeT* dst, LinkWeight weight) {
        Waiting& waiting = m_waiting[src];
        const auto [it, added] = waiting.emplace(dst, weight);
        if (!added) return &it->second;
        // All merges of a list together take time in proportion to its length.
        if (waiting.size() > src->links.size() / 8) merge(src->links, waiting);
        return nullptr;
    }

    /// Puts all links into their lists.
    /// @throws std::bad_alloc and keeps those that are left
    void merge() {
        for (auto& [src, waiting] : m_waiting) merge(src->links, waiting);
        m_waiting.clear();
    }

private:
    using Waiting = std::unordered_map<NodeT*, LinkWeight>;

    static void merge(LinksT& links, Waiting& waiting) {
        if (links.capacity() - links.size() < waiting.size())
            links.reserve(std::max(links.size() + waiting.size(), 2 * links.size()));
        const auto size = static_cast<std::ptrdiff_t>(links.size());
        for (const auto& [dst, weight] : waiting) links.emplace_back(dst, weight);
        waiting.clear();
        const auto before = [](const LinkT& a, const LinkT& b) { return cmpBase(a.dest, b.dest); };
        std::sort(links.begin() + size, links.end(), before);
        std::inplace_merge(links.begin(), links.begin() + size, links.end(), before);
    }

    std::unordered_map<NodeT*, Waiting> m_waiting;
};

}  // namespace vorl::detail
