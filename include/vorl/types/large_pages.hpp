/// @file
/// Large blocks of memory on large pages.
#pragma once

#include <vorl/types/export.hpp>

#include <cstddef>
#include <new>

namespace vorl {

namespace detail {

/// Blocks of at least so many bytes ask for large pages, and begin at one.
inline constexpr std::size_t LARGE_PAGE = std::size_t{1} << 21;

/// Asks the system for large pages behind some memory; it is but a hint, which it may pass over.
VORL_API void adviseLargePages(void* begin, std::size_t bytes);

/// Gives the system back whole large pages of memory whose contents aren't needed any more.
VORL_API void returnLargePages(void* begin, std::size_t bytes);

/// Gives the system back what was freed piece by piece and the allocator keeps for later.
VORL_API void returnFreedMemory();

}  // namespace detail

/// Allocator of long arrays that are walked in no order, which large pages make faster.
///
/// Numbers that get no value are left as they come, so that a long array isn't written twice, and
/// its pages are taken by the thread that writes them first.
template <class T>
struct LargePageAllocator {
    using value_type = T;

    LargePageAllocator() = default;
    template <class U>
    LargePageAllocator(const LargePageAllocator<U>&) {}

    T* allocate(std::size_t count) {
        const std::size_t bytes = count * sizeof(T);
        if (!isLarge(bytes)) return static_cast<T*>(::operator new(bytes));
        void* const block = ::operator new (bytes, std::align_val_t{detail::LARGE_PAGE});
        detail::adviseLargePages(block, bytes);
        return static_cast<T*>(block);
    }
    void deallocate(T* block, std::size_t count) noexcept {
        if (isLarge(count * sizeof(T)))
            ::operator delete (block, std::align_val_t{detail::LARGE_PAGE});
        else
            ::operator delete(block);
    }

    template <class U>
    void construct(U* place) {
        ::new (static_cast<void*>(place)) U;
    }

    template <class U>
    bool operator==(const LargePageAllocator<U>&) const {
        return true;
    }

private:
    static bool isLarge(std::size_t bytes) { return bytes >= 2 * detail::LARGE_PAGE; }
};

}  // namespace vorl
