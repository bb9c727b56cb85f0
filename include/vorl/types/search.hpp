/// @file
/// Order by address: comparison, search and insertion in ordered vectors.
#pragma once

#include <vorl/types/assert.hpp>
#include <vorl/types/numbers.hpp>

#include <functional>
#include <iterator>
#include <memory>

namespace vorl {

/// From this number of elements on a search is a bisection, below it a linear scan.
inline constexpr std::ptrdiff_t BISECTION_MIN = 11;

/// The strict order of items: ascending by address.
template <class T, class U>
bool cmpBase(const T* a, const U* b) {
    return std::less<const void*>()(a, b);
}

/// Three-way comparison of two addresses: -1, 0 or 1.
template <class T, class U>
int bsVal(const T* a, const U* b) {
    return cmpBase(a, b) ? -1 : cmpBase(b, a) ? 1 : 0;
}

/// Three-way comparison of an element's destination with an address.
template <class ObjT, class T>
int bsObjsDest(const ObjT& obj, const T* val) {
    return bsVal(obj.dest, val);
}

/// Three-way comparison of the destinations of two elements.
template <class ObjT>
int bsDest(const ObjT& a, const ObjT& b) {
    return bsVal(a.dest, b.dest);
}

/// Ascending order by weight, in which weights equal within the tolerance don't order each other.
template <class ObjT>
bool cmpObjsWeight(const ObjT& a, const ObjT& b) {
    return less(a.weight, b.weight);
}

/// Bisection over a sorted range with a three-way cmp(element, val).
/// @return the matching element, or the place where val belongs.
template <class IterT, class T, class CmpT>
IterT binary_ifind(IterT first, IterT last, const T& val, CmpT cmp) {
    for (;;) {
        const IterT probe = first + (last - first) / 2;
        if (probe == last) return last;
        const int order = cmp(*probe, val);
        if (order == 0) return probe;
        if (order > 0)
            last = probe;
        else
            first = probe + 1;
    }
}

/// The first element that isn't below val, by the threshold rule: a linear scan of fewer than
/// BISECTION_MIN elements, else a bisection.
template <class IterT, class T, class CmpT>
IterT findPlace(IterT first, IterT last, const T& val, CmpT cmp) {
    if (last - first >= BISECTION_MIN) return binary_ifind(first, last, val, cmp);
    while (first != last && cmp(*first, val) < 0) ++first;
    return first;
}

/// The place of an address in a range of links or owners ordered by `dest`.
template <class IterT, class T>
IterT findDest(IterT first, IterT last, const T* dest) {
    using ObjT = typename std::iterator_traits<IterT>::value_type;
    return findPlace(first, last, dest,
                     [](const ObjT& obj, const T* val) { return bsObjsDest(obj, val); });
}

/// The place of an address in an ordered range of item pointers.
template <class IterT, class T>
IterT findItem(IterT first, IterT last, const T* item) {
    using PtrT = typename std::iterator_traits<IterT>::value_type;
    return findPlace(first, last, item,
                     [](const PtrT& el, const T* val) { return bsVal(el, val); });
}

/// Whether an ordered vector of item pointers holds the item.
template <class ItemsT, class T>
bool holds(const ItemsT& items, const T* item) {
    const auto it = findItem(items.begin(), items.end(), item);
    return it != items.end() && bsVal(*it, item) == 0;
}

/// The position at which el belongs in the sorted vector; el must not be there yet.
template <class VecT, class T, class CmpT>
auto insorted(VecT& els, const T& el, CmpT cmp) {
    auto first = els.begin();
    if (first == els.end()) return first;
    const int front = cmp(*first, el);
    if (front < 0) first = findPlace(first + 1, els.end(), el, cmp);
    VORL_ASSERT(first == els.end() || cmp(*first, el) != 0, "insorted(), elements must be unique");
    return first;
}

/// `insorted` for short lists: a linear scan only.
template <class VecT, class T, class CmpT>
auto insortedLight(VecT& els, const T& el, CmpT cmp) {
    auto it = els.begin();
    while (it != els.end() && cmp(*it, el) < 0) ++it;
    VORL_ASSERT(it == els.end() || cmp(*it, el) != 0, "insortedLight(), elements must be unique");
    return it;
}

/// Keeps the items that share the best gain: a better one replaces them, a tie within the
/// tolerance joins them, and `best` stays at the first value of the tie.
template <class ItemsT, class ItemT>
void accBest(ItemsT& items, AccWeight& best, ItemT item, AccWeight gain, Size n) {
    if (less(gain, best, n)) return;
    if (less(best, gain, n)) {
        best = gain;
        items.clear();
    }
    items.push_back(item);
}

}  // namespace vorl
