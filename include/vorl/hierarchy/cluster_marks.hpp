/// @file
/// What the walks over links need to know of a destination, apart from the cluster itself.
#pragma once

#include <vorl/types/item.hpp>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

namespace vorl {

/// Marks of the clusters of one arena, in the order of their addresses. A walk over links thus
/// touches a dense array and neither the clusters nor their contexts, most of which it has no
/// further use for.
template <class LinksT>
class ClusterMarks {
public:
    using ClusterT = Cluster<LinksT>;

    /// What a gain takes of a cluster.
    struct Weights {
        AccWeight total = WEIGHT_NONE;  ///< the in-out weight, that of the context
        AccWeight self = 0;             ///< the weight inside
    };

    enum Flag : std::uint8_t {
        PROPAGATED = 1,  ///< takes no further part in the level, as its state tells
        ABSORBED = 2,    ///< has owners
        TOUCHED = 4,     ///< a neighbour was absorbed on the level that is being folded
        QUIET = 8,       ///< carried past the level unchanged, and so on until it is touched
        ONE_CAND = 16    ///< has one candidate; valid only while candidates are sought
    };

    struct Mark {
        /// Of an absorbed cluster: the owner, if there is just one; of another cluster while a
        /// level is folded: the next of its links to a cluster of the level, see `pairLinks`; and
        /// while candidates are sought: the candidate, if there is just one.
        void* aim = nullptr;
        AccWeight gmax = GAIN_NONE;  ///< the best gain, while candidates are sought
        std::uint32_t place = 0;     ///< where the links to this cluster are summed
        std::uint8_t flags = 0;

        ClusterT* owner() const { return static_cast<ClusterT*>(aim); }
        AccLink<LinksT>* back() const { return static_cast<AccLink<LinksT>*>(aim); }
        bool is(Flag flag) const { return flags & flag; }
        void set(Flag flag) { flags |= flag; }
        void set(Flag flag, bool value) {
            flags = static_cast<std::uint8_t>(value ? flags | flag : flags & ~flag);
        }
    };

    explicit ClusterMarks(std::shared_ptr<Arena> arena) : m_arena(std::move(arena)) {}

    Mark& of(const ClusterT* cluster) {
        const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(cluster) - m_base;
        return offset < m_span ? m_marks[offset >> SHIFT] : distant(cluster);
    }
    Mark& of(const ClusterT& cluster) { return of(&cluster); }
    /// A copy of the weights of a cluster, or the place for it.
    Weights& weights(const ClusterT& cluster) {
        of(cluster);
        return m_weights[index(&cluster)];
    }
    const Weights& weights(const ClusterT& cluster) const { return m_weights[index(&cluster)]; }

    /// Ascends with the address.
    std::uint32_t key(const ClusterT* cluster) const {
        return static_cast<std::uint32_t>(index(cluster));
    }
    /// The seat of a cluster, if `track` was called, see `Tracks`.
    std::uint32_t& seat(const ClusterT* cluster) { return m_seats[index(cluster)]; }
    /// From now on there is a `seat` of each cluster.
    void track() {
        m_tracked = true;
        m_seats.extend(m_marks.size());
    }

    /// Makes marks of all clusters created so far, so that references to marks stay valid.
    void cover() {
        const std::size_t count = (m_arena->used() >> SHIFT) + 1;
        if (count <= m_marks.size()) return;
        m_marks.extend(std::max(count, m_marks.size() * 9 / 8));
        m_weights.extend(m_marks.size());
        if (m_tracked) m_seats.extend(m_marks.size());
        m_base = m_arena->firstRange().begin;
        m_span = std::min(m_arena->firstRange().size, m_marks.size() << SHIFT);
    }
    /// Frees all marks.
    void release() {
        m_marks = {};
        m_weights = {};
        m_seats = {};
        m_tracked = false;
        m_span = 0;
    }
    /// Calls for the mark of a cluster ahead of its use.
    void prefetch(const ClusterT* cluster) const {
        const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(cluster) - m_base;
        if (offset < m_span) __builtin_prefetch(&m_marks[offset >> SHIFT]);
    }
    void prefetchWeights(const ClusterT* cluster) const {
        const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(cluster) - m_base;
        if (offset < m_span) __builtin_prefetch(&m_weights[offset >> SHIFT]);
    }

private:
    /// An array that grows, where the system can do so without a second copy.
    template <class T>
    class Array {
    public:
        static_assert(std::is_trivially_copyable_v<T>);

        std::size_t size() const { return m_size; }
        T& operator[](std::size_t place) { return m_data.get()[place]; }
        const T& operator[](std::size_t place) const { return m_data.get()[place]; }

        /// @param size not less than the present one
        void extend(std::size_t size) {
            void* const data = std::realloc(m_data.get(), size * sizeof(T));
            if (!data) throw std::bad_alloc();
            static_cast<void>(m_data.release());
            m_data.reset(static_cast<T*>(data));
            std::uninitialized_value_construct(m_data.get() + m_size, m_data.get() + size);
            m_size = size;
        }

    private:
        struct Free {
            void operator()(T* data) const { std::free(data); }
        };

        std::unique_ptr<T, Free> m_data;
        std::size_t m_size = 0;
    };

    // No two clusters share a mark, since none is smaller than this.
    static constexpr unsigned SHIFT = 7;
    static_assert(sizeof(ClusterT) >= 1u << SHIFT);

    std::size_t index(const ClusterT* cluster) const {
        const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(cluster) - m_base;
        return (offset < m_span ? offset : m_arena->offset(cluster)) >> SHIFT;
    }
    /// Of clusters that were created since, or that lie beyond the arena's first range.
    Mark& distant(const ClusterT* cluster) {
        const std::size_t place = m_arena->offset(cluster) >> SHIFT;
        if (place >= m_marks.size()) cover();
        return m_marks[place];
    }

    std::shared_ptr<Arena> m_arena;
    std::uintptr_t m_base = 0;
    std::size_t m_span = 0;  // bytes of the first range that have marks
    Array<Mark> m_marks;
    Array<Weights> m_weights;
    Array<std::uint32_t> m_seats;
    bool m_tracked = false;
};

}  // namespace vorl
