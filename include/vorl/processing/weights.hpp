/// @file
/// Weights of a pair of items and of an item.
#pragma once

#include <vorl/types/item.hpp>
#include <vorl/types/trace.hpp>

#include <cstdarg>
#include <string>

namespace vorl {

namespace detail {

/// Throws std::overflow_error if the magnitude of a value is beyond the range of AccWeight, with
/// the formatted text or, if formatting fails, the fixed one.
[[noreturn]] VORL_API void throwOverflow(const char* fallback, std::size_t limit,
                                         const char* format, ...)
    __attribute__((format(printf, 3, 4)));

inline bool overflowed(AccWeight value) { return std::fabs(value) > ACCWEIGHT_MAX; }

/// The back link of `ln` in the list of its destination, or the end of that list.
template <class ItemT>
auto findBackLink(const ItemT& item, const typename ItemT::LinkT& ln) {
    const auto& back = ln.dest->links;
    const auto it = findDest(back.begin(), back.end(), &item);
    return it != back.end() && it->dest == &item ? it : back.end();
}

}  // namespace detail

/// Weight of the pair (item, ln.dest), counted in both directions.
///
/// For symmetric links that is twice the link's weight; else the link's weight plus that of its
/// back link, which must exist.
template <bool NONSYMMETRIC, Item ItemT>
AccWeight linkWeight(const ItemT* item, const typename ItemT::LinkT& ln) {
    VORL_ASSERT(item && ln.weight != WEIGHT_NONE && ln.dest,
                "linkWeight(), cl and link must be valid");
    if constexpr (NONSYMMETRIC) {
        if constexpr (requires { ln.pair; })
            if (!std::isnan(ln.pair)) return ln.pair;
        const auto back = detail::findBackLink(*item, ln);
        VORL_ASSERT(back != ln.dest->links.end(),
                    "linkWeight(), back links must always exists, INVERSE");
        return static_cast<AccWeight>(ln.weight) + static_cast<AccWeight>(back->weight);
    } else {
        return 2 * static_cast<AccWeight>(ln.weight);
    }
}

/// In-out weight of an item over all its links, the self weight excluded.
/// @throws std::overflow_error "linksWeight(), #%u overflowed: %G\n".
template <bool NONSYMMETRIC, Item ItemT>
AccWeight linksWeight(const ItemT& item) {
    AccWeight sum = 0;
    for (const auto& ln : item.links) {
        if constexpr (NONSYMMETRIC) {
            if constexpr (requires { ln.pair; }) {
                if (!std::isnan(ln.pair)) {
                    sum += ln.pair;
                    continue;
                }
            }
            if (detail::findBackLink(item, ln) == ln.dest->links.end()) {
                VORL_TRACE(
                    "  >>>> WARNING linksWeight(), #%u(%p, %lu owns) -> #%u (%p, %lu owns)  %lu "
                    "dest links does not contain scr:\n",
                    item.id, static_cast<const void*>(&item), item.owners.size(), ln.dest->id,
                    static_cast<const void*>(ln.dest), ln.dest->owners.size(),
                    ln.dest->links.size());
                VORL_ASSERT(false, "linksWeight(), back links must always exists, INVERSE");
            }
        }
        sum += linkWeight<NONSYMMETRIC>(&item, ln);
    }
    if (detail::overflowed(sum))
        detail::throwOverflow("linksWeight(), overflow\n", 59,
                              "linksWeight(), #%u overflowed: %G\n", item.id, sum);
    return sum / 2;
}

namespace detail {

/// `linksWeight` where back links may still be missing; they count as 0.
template <Item ItemT>
AccWeight linksWeightLoose(const ItemT& item) {
    AccWeight sum = 0;
    for (const auto& ln : item.links) {
        const auto back = findBackLink(item, ln);
        const AccWeight backWeight =
            back == ln.dest->links.end() ? 0 : static_cast<AccWeight>(back->weight);
        sum += static_cast<AccWeight>(ln.weight) + backWeight;
    }
    if (overflowed(sum))
        throwOverflow("linksWeight(), overflow\n", 59, "linksWeight(), #%u overflowed: %G\n",
                      item.id, sum);
    return sum / 2;
}

}  // namespace detail

}  // namespace vorl
