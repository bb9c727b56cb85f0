#include <vorl/types/arena.hpp>
#include <vorl/types/large_pages.hpp>

#include <sys/mman.h>

#include <algorithm>
#include <new>

namespace vorl {

namespace {

constexpr std::size_t PAGE = 1 << 12;
constexpr std::size_t STEP_MAX = std::size_t{1} << 26;
constexpr std::size_t RANGE_MIN = std::size_t{1} << 16;

std::size_t pages(std::size_t size) { return (size + PAGE - 1) & ~(PAGE - 1); }

/// Address space without memory, at the hint or above; null where the system has none.
void* reserveAbove(std::uintptr_t hint, std::size_t size) {
    void* range = mmap(reinterpret_cast<void*>(hint), size, PROT_NONE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (range == MAP_FAILED) return nullptr;
    if (reinterpret_cast<std::uintptr_t>(range) >= hint) return range;
    munmap(range, size);
    return nullptr;
}

}  // namespace

Arena::~Arena() {
    for (const Range& range : m_ranges) munmap(reinterpret_cast<void*>(range.begin), range.size);
}

std::size_t Arena::offset(const void* place) const {
    const auto address = reinterpret_cast<std::uintptr_t>(place);
    auto range = m_ranges.rbegin();
    while (address < range->begin) ++range;
    return range->before + (address - range->begin);
}

void* Arena::grow(std::size_t size, std::size_t alignment) {
    const auto place = [&] { return (m_next + alignment - 1) & ~(alignment - 1); };
    if (m_next == 0 || place() + size > m_end || !commit(place() + size)) {
        reserve(size + alignment);
        if (!commit(place() + size)) throw std::bad_alloc();
    }
    const std::uintptr_t begin = place();
    m_next = begin + size;
    return reinterpret_cast<void*>(begin);
}

void Arena::reserve(std::size_t least) {
    least = pages(std::max(least, RANGE_MIN));
    m_ranges.reserve(m_ranges.size() + 1);
    // A further range must lie above the last one. The system places a first one below other
    // mappings, so that the space above may be taken: step upward until there is room.
    for (std::size_t size = std::max(pages(m_rangeSize), least);;
         size = std::max(size / 4, least)) {
        for (std::uintptr_t hint = m_end, tries = 0; tries < 4096; ++tries) {
            if (void* range = reserveAbove(hint, size)) {
                const auto begin = reinterpret_cast<std::uintptr_t>(range);
                // Where space is short a part of it is left for all others.
                if (const std::size_t own = std::max(pages(size / 8), least);
                    size < m_rangeSize && own < size) {
                    munmap(reinterpret_cast<void*>(begin + own), size - own);
                    size = own;
                }
                const std::size_t before =
                    m_ranges.empty() ? 0 : m_ranges.back().before + m_ranges.back().size;
                m_ranges.push_back({begin, size, before});
                m_next = m_committed = begin;
                m_end = begin + size;
                return;
            }
            if (m_end == 0) break;
            hint += std::size_t{1} << 34;
        }
        if (size == least) throw std::bad_alloc();
    }
}

bool Arena::commit(std::uintptr_t end) {
    if (end <= m_committed) return true;
    const auto commitTo = [this](std::uintptr_t to) {
        if (mprotect(reinterpret_cast<void*>(m_committed), to - m_committed,
                     PROT_READ | PROT_WRITE) != 0)
            return false;
        // Much memory that is walked in no order is reached faster through large pages.
        if (to - m_committed >= detail::LARGE_PAGE)
            detail::adviseLargePages(reinterpret_cast<void*>(m_committed), to - m_committed);
        m_committed = to;
        return true;
    };
    const std::uintptr_t least = std::min<std::uintptr_t>(pages(end), m_end);
    const std::uintptr_t ample = std::min<std::uintptr_t>(pages(end) + m_step, m_end);
    m_step = std::min(2 * m_step, STEP_MAX);
    return commitTo(ample) || commitTo(least);
}

}  // namespace vorl
