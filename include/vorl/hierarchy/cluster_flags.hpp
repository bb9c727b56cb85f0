/// @file
/// Flags of clusters that lie apart from them.
#pragma once

#include <vorl/types/item.hpp>

#include <vector>

namespace vorl {

/// Flags of the clusters of one arena, a byte each. A walk over links thus touches a dense array
/// and neither the clusters nor their contexts, most of which it has no further use for.
template <class LinksT>
class ClusterFlags {
public:
    enum Flag : std::uint8_t {
        PROPAGATED = 1,  ///< takes no further part in the level, as its state tells
        ABSORBED = 2,    ///< has owners
        TOUCHED = 4,     ///< a neighbour was absorbed on the level that is being folded
        QUIET = 8        ///< carried past the level unchanged, and so on until it is touched
    };

    explicit ClusterFlags(std::shared_ptr<Arena> arena) : m_arena(std::move(arena)) {}

    std::uint8_t& of(const Cluster<LinksT>* cluster) {
        const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(cluster) - m_base;
        return offset < m_span ? m_bytes[offset >> SHIFT] : distant(cluster);
    }
    bool test(const Cluster<LinksT>* cluster, Flag flag) { return of(cluster) & flag; }
    void set(const Cluster<LinksT>* cluster, Flag flag) { of(cluster) |= flag; }
    void set(const Cluster<LinksT>* cluster, Flag flag, bool value) {
        std::uint8_t& flags = of(cluster);
        flags = static_cast<std::uint8_t>(value ? flags | flag : flags & ~flag);
    }

private:
    // No two clusters share a byte, since none is smaller than this.
    static constexpr unsigned SHIFT = 7;
    static_assert(sizeof(Cluster<LinksT>) >= 1u << SHIFT);

    /// Of clusters that were created since, or that lie beyond the arena's first range.
    std::uint8_t& distant(const Cluster<LinksT>* cluster) {
        const std::size_t index = m_arena->offset(cluster) >> SHIFT;
        if (index >= m_bytes.size()) {
            m_bytes.resize(std::max((m_arena->used() >> SHIFT) + 1, 2 * m_bytes.size()));
            m_base = m_arena->firstRange().begin;
            m_span = std::min(m_arena->firstRange().size, m_bytes.size() << SHIFT);
        }
        return m_bytes[index];
    }

    std::shared_ptr<Arena> m_arena;
    std::uintptr_t m_base = 0;
    std::size_t m_span = 0;  // bytes of the first range that have flags
    std::vector<std::uint8_t> m_bytes;
};

}  // namespace vorl
