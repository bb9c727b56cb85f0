#include <vorl/types/large_pages.hpp>

#include <malloc.h>
#include <sys/mman.h>

#include <cstdint>

namespace vorl::detail {

void adviseLargePages(void* begin, std::size_t bytes) { madvise(begin, bytes, MADV_HUGEPAGE); }

void returnLargePages(void* begin, std::size_t bytes) {
    const auto from = reinterpret_cast<std::uintptr_t>(begin);
    const std::uintptr_t first = (from + LARGE_PAGE - 1) & ~(LARGE_PAGE - 1);
    const std::uintptr_t last = (from + bytes) & ~(LARGE_PAGE - 1);
    if (first < last) madvise(reinterpret_cast<void*>(first), last - first, MADV_DONTNEED);
}

void returnFreedMemory() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

}  // namespace vorl::detail
