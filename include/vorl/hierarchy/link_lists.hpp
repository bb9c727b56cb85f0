/// @file
/// The links of clusters while levels are tracked.
#pragma once

#include <vorl/types/large_pages.hpp>
#include <vorl/types/numbers.hpp>

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace vorl {

/// Where a link between clusters leads while levels are tracked.
struct TrackedEnd {
    /// In place of a seat: the link was taken out of its list.
    static constexpr std::uint32_t GONE = 0xFFFFFFFF;

    std::uint32_t seat;
    std::uint32_t mate;  ///< place of the back link in the list of that seat

    bool isGone() const { return seat == GONE; }
};

/// A link between clusters while levels are tracked.
template <bool NONSYMMETRIC>
struct TrackedLink : TrackedEnd {
    AccWeight weight;

    /// Weight of both directions.
    AccWeight pair() const { return 2 * weight; }
    void setPair(AccWeight) {}
};

template <>
struct TrackedLink<true> : TrackedEnd {
    AccWeight weight;
    AccWeight both = 0;

    AccWeight pair() const { return both; }
    void setPair(AccWeight back) { both = weight + back; }
};

/// A list of links for each seat, all in one block.
///
/// A link that is taken out leaves a hole, since other links tell places in the list; the next one
/// that comes fills it. A list that outgrows its room moves to the end of the block, and when that
/// is full all lists move together. Neither touches what the links tell, which are places in lists.
template <class LinkT>
class LinkLists {
public:
    using Seat = std::uint32_t;
    using Place = std::uint32_t;

    std::span<LinkT> operator[](Seat seat) {
        const List& list = m_lists[seat];
        return {m_links.data() + list.begin, list.size};
    }
    std::span<const LinkT> operator[](Seat seat) const {
        const List& list = m_lists[seat];
        return {m_links.data() + list.begin, list.size};
    }
    LinkT& at(Seat seat, Place place) { return m_links[m_lists[seat].begin + place]; }
    const LinkT& at(Seat seat, Place place) const { return m_links[m_lists[seat].begin + place]; }
    /// The link the other way.
    LinkT& mate(const LinkT& ln) { return at(ln.seat, ln.mate); }
    const LinkT& mate(const LinkT& ln) const { return at(ln.seat, ln.mate); }

    /// Number of links of a list.
    Size count(Seat seat) const { return m_lists[seat].size - m_lists[seat].gone; }
    /// Whether there are so many holes that they are worth to be closed.
    bool isHoley(Seat seat) const { return m_lists[seat].gone > m_lists[seat].size / 8 + 1; }

    void reserveSeats(Size seats) {
        m_lists.reserve(seats);
        m_order.reserve(2 * seats);
    }
    /// Makes room for so many links, and for some more that come later.
    void reserveLinks(Size links) {
        m_links.reserve(withSlack(links));
        m_limit = m_links.capacity();
    }
    /// The room that is left for links follows from those that are there now.
    void limitRoom() { m_limit = std::min(m_links.capacity(), withSlack(m_links.size())); }
    /// The next seat, its list being empty.
    void addSeat() { m_lists.emplace_back(); }
    /// Appends a link; all lists may move.
    LinkT& append(Seat seat) {
        const std::size_t size = m_lists[seat].size;
        if (size == m_lists[seat].room) reserve(seat, size + size / 8 + 1);
        return at(seat, m_lists[seat].size++);
    }
    /// Makes room for so many links, holes included, until lists move again; all of them may.
    void reserve(Seat seat, std::size_t links);
    /// Makes room for so many links in addition to those that are there.
    void reserveMore(Seat seat, std::size_t links) { reserve(seat, count(seat) + links); }
    void clear(Seat seat) { m_lists[seat] = {}; }
    void remove(Seat seat, Place place) {
        List& list = m_lists[seat];
        LinkT& link = m_links[list.begin + place];
        link.seat = LinkT::GONE;
        link.mate = std::exchange(list.hole, place);
        ++list.gone;
    }
    /// A place for a link: a hole if there is one.
    Place newPlace(Seat seat);
    /// Fills the holes of a list with its last links.
    void closeHoles(Seat seat);

private:
    struct List {
        std::uint64_t begin = 0;
        Place size = 0;  ///< with the holes
        Place room = 0;
        Place gone = 0;  ///< number of holes
        Place hole = 0;  ///< the place of one, which tells the next as its mate
    };

    static std::size_t withSlack(std::size_t links) { return links + links / 4 + 1; }
    void compact();

    std::vector<List, LargePageAllocator<List>> m_lists;
    std::vector<LinkT, LargePageAllocator<LinkT>> m_links;
    std::vector<Seat> m_order;  ///< whose list came to the end of the block, one after the other
    std::size_t m_limit = 0;    ///< beyond so many links all lists are moved together first
};

template <class LinkT>
void LinkLists<LinkT>::reserve(Seat seat, std::size_t links) {
    List& list = m_lists[seat];
    if (links <= list.room) return;
    const auto end = [&] { return list.begin + list.room == m_links.size(); };
    const auto more = [&] { return end() ? links - list.room : links; };
    if (m_links.size() + more() > m_limit) {
        compact();
        const std::size_t needed = m_links.size() + more();
        if (needed > m_links.capacity()) m_links.reserve(needed * 9 / 8);
        // A look at all lists should pay.
        const std::size_t wanted = needed + std::max(needed / 2, m_lists.size());
        m_limit = std::min(wanted, m_links.capacity());
        detail::returnLargePages(m_links.data() + m_limit,
                                 (m_links.capacity() - m_limit) * sizeof(LinkT));
    }
    const bool stays = list.room != 0 && end();
    const std::size_t to = m_links.size();
    m_links.resize(to + more());
    if (!stays) {
        std::copy_n(m_links.begin() + static_cast<std::ptrdiff_t>(list.begin), list.size,
                    m_links.begin() + static_cast<std::ptrdiff_t>(to));
        list.begin = to;
        m_order.push_back(seat);
    }
    list.room = static_cast<Place>(links);
}

template <class LinkT>
void LinkLists<LinkT>::compact() {
    // Of a list that moved several times the last place is the one that it has.
    std::vector<bool> seen(m_lists.size());
    auto order = m_order.end();
    for (auto it = m_order.end(); it != m_order.begin();) {
        const Seat seat = *--it;
        if (!seen[seat] && m_lists[seat].room != 0) *--order = seat;
        seen[seat] = true;
    }
    m_order.erase(m_order.begin(), order);
    std::size_t to = 0;
    for (const Seat seat : m_order) {
        List& list = m_lists[seat];
        const auto from = m_links.begin() + static_cast<std::ptrdiff_t>(list.begin);
        std::copy(from, from + list.size, m_links.begin() + static_cast<std::ptrdiff_t>(to));
        list.begin = to;
        list.room = list.size;
        to += list.size;
    }
    m_links.resize(to);
}

template <class LinkT>
auto LinkLists<LinkT>::newPlace(Seat seat) -> Place {
    List& list = m_lists[seat];
    if (list.gone == 0) {
        append(seat);
        return list.size - 1;
    }
    --list.gone;
    return std::exchange(list.hole, at(seat, list.hole).mate);
}

template <class LinkT>
void LinkLists<LinkT>::closeHoles(Seat seat) {
    List& list = m_lists[seat];
    LinkT* const links = m_links.data() + list.begin;
    Place size = list.size;
    const auto dropGone = [&] {
        while (size != 0 && links[size - 1].isGone()) --size;
    };
    for (; list.gone != 0; --list.gone) {
        const Place place = std::exchange(list.hole, links[list.hole].mate);
        dropGone();
        if (place >= size) continue;
        links[place] = links[--size];
        mate(links[place]).mate = place;
    }
    dropGone();
    list.size = size;
}

}  // namespace vorl
