/// @file
/// Memory whose addresses ascend in the order of allocation.
#pragma once

#include <vorl/types/export.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vorl {

/// Hands out memory at ascending addresses, and frees all of it at once.
///
/// Every ordered list of the engine is sorted by address. Items that live in one arena are
/// therefore sorted by their creation, whatever the system's allocator does, which is what makes
/// results reproducible. Address space is reserved first and committed in growing steps; where a
/// range is full a further one above it is reserved, and where the process may not reserve much,
/// smaller ranges are taken.
class VORL_API Arena {
public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena();

    /// Memory above all that was handed out before, filled with zeros.
    /// @throws std::bad_alloc if the system has no more memory or address space.
    void* allocate(std::size_t size, std::size_t alignment) {
        const std::uintptr_t begin = (m_next + alignment - 1) & ~(alignment - 1);
        if (begin + size > m_committed) return grow(size, alignment);
        m_next = begin + size;
        return reinterpret_cast<void*>(begin);
    }

    /// A range of address space.
    struct Range {
        std::uintptr_t begin;
        std::size_t size;    ///< bytes that may be handed out of it
        std::size_t before;  ///< bytes of the ranges below it
    };

    /// The place of handed-out memory when all ranges are thought one behind the other.
    std::size_t offset(const void* place) const;
    /// Where the next allocation goes, in the same measure.
    std::size_t used() const {
        return m_ranges.empty() ? 0 : m_ranges.back().before + (m_next - m_ranges.back().begin);
    }
    /// The first range; there must be one.
    const Range& firstRange() const { return m_ranges.front(); }

    /// Limits the size of the ranges to reserve, in bytes; for tests.
    void rangeLimit(std::size_t bytes) { m_rangeSize = bytes; }

private:
    void* grow(std::size_t size, std::size_t alignment);
    void reserve(std::size_t least);
    bool commit(std::uintptr_t end);

    std::uintptr_t m_next = 0;       // first free address
    std::uintptr_t m_committed = 0;  // end of the usable memory
    std::uintptr_t m_end = 0;        // end of the present range
    std::size_t m_rangeSize = std::size_t{1} << 36;
    std::size_t m_step = std::size_t{1} << 16;
    std::vector<Range> m_ranges;
};

/// Allocator of the linked lists that hold items; lists that share an arena may exchange cells.
template <class T>
class VORL_API ArenaAllocator {
public:
    using value_type = T;
    using propagate_on_container_copy_assignment = std::true_type;
    using propagate_on_container_move_assignment = std::true_type;
    using propagate_on_container_swap = std::true_type;
    using is_always_equal = std::false_type;

    ArenaAllocator() : m_arena(std::make_shared<Arena>()) {}
    explicit ArenaAllocator(std::shared_ptr<Arena> arena) : m_arena(std::move(arena)) {}
    // A moved-from list stays usable, hence a move shares the arena as a copy does.
    ArenaAllocator(const ArenaAllocator&) = default;
    ArenaAllocator& operator=(const ArenaAllocator&) = default;
    template <class U>
    ArenaAllocator(const ArenaAllocator<U>& other) : m_arena(other.arena()) {}

    T* allocate(std::size_t count) {
        return static_cast<T*>(m_arena->allocate(count * sizeof(T), alignof(T)));
    }
    void deallocate(T*, std::size_t) noexcept {}  // the arena frees all at once

    const std::shared_ptr<Arena>& arena() const { return m_arena; }

    template <class U>
    bool operator==(const ArenaAllocator<U>& other) const {
        return m_arena == other.arena();
    }

private:
    std::shared_ptr<Arena> m_arena;
};

}  // namespace vorl
