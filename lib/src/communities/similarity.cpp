#include "similarity.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

namespace vorl::detail {

Grid::Grid(AccWeight weight) {
    int exponent = 0;
    std::frexp(weight, &exponent);
    // Adding and taking off 2^e rounds to multiples of 2^(e - 52).
    m_shift = std::ldexp(1.0, std::min(exponent, 1023));
}

LinkWeight Grid::operator()(LinkWeight weight) const {
    return static_cast<LinkWeight>((static_cast<AccWeight>(weight) + m_shift) - m_shift);
}

namespace {

/// Places of the links of a node that lead to one of higher degree, or of the same and a higher
/// number.
struct Upward {
    Size first;
    Size last;
};

/// Puts the links that lead upward behind the others of each node, and leaves their order else.
std::vector<Upward> sortUpward(ItemLinks<LinkWeight>& links, Workers& workers) {
    std::vector<Upward> upward(links.size());
    workers.share(links.size(), Workers::GRAIN, [&](Size first, Size last, unsigned) {
        std::vector<std::pair<Id, LinkWeight>> up;
        for (Size i = first; i < last; ++i) {
            const Size degree = links.begin[i + 1] - links.begin[i];
            if (up.size() < degree) up.resize(degree);
            Size next = links.begin[i];
            Size count = 0;
            // Without a branch, as the processor couldn't guess it.
            for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln) {
                const Id other = links.dest[ln];
                const LinkWeight weight = links.weight[ln];
                const Size far = links.begin[other + Size{1}] - links.begin[other];
                const bool rises = (degree < far) | ((degree == far) & (i < other));
                up[count] = {other, weight};
                links.dest[next] = other;
                links.weight[next] = weight;
                count += rises;
                next += !rises;
            }
            upward[i] = {next, links.begin[i + 1]};
            for (const auto& [other, weight] : std::span(up).first(count)) {
                links.dest[next] = other;
                links.weight[next++] = weight;
            }
        }
    });
    return upward;
}

/// Which nodes the one at hand has links to. That lies all over the memory, so a small table tells
/// nearly always that there is none.
struct Marks {
    static constexpr Id SLOTS = 1 << 14;

    std::vector<Id> place;            // of a node in the list of the one at hand and 1, or 0
    std::vector<std::uint8_t> slots;  // whether any node of a slot is in the list
    std::vector<Size> found;
    std::vector<Id> triangles;  // of each link of the list

    explicit Marks(Size nodes) : place(nodes), slots(SLOTS) {}

    void set(Id node, Id number) {
        place[node] = number;
        slots[node % SLOTS] = number != 0;
    }
    /// Finds those links of a range that lead to one of the nodes, and may find others.
    std::span<const Size> candidates(const OfLinks<Id>& dest, Size first, Size last) {
        if (found.size() < last - first) found.resize(last - first);
        // Without a branch, as the processor couldn't guess it.
        Size count = 0;
        for (Size ln = first; ln < last; ++ln) {
            found[count] = ln;
            count += slots[dest[ln] % SLOTS];
        }
        return {found.data(), count};
    }
};

/// Counts the triangles of each upward link; with threads, several may count for one link.
template <bool THREADS>
void countTriangles(const ItemLinks<LinkWeight>& links, const std::vector<Upward>& upward,
                    OfLinks<Id>& triangles, Workers& workers) {
    const auto count = [&](Size place, Id number) {
        if constexpr (THREADS)
            std::atomic_ref<Id>(triangles[place]).fetch_add(number, std::memory_order_relaxed);
        else
            triangles[place] += number;
    };
    std::vector<std::optional<Marks>> marks(workers.count());
    workers.share(links.size(), 256, [&](Size first, Size last, unsigned worker) {
        if (!marks[worker]) marks[worker].emplace(links.size());
        Marks& mark = *marks[worker];
        for (Size i = first; i < last; ++i) {
            const auto [from, to] = upward[i];
            // What the next ones lead to is fetched in two steps.
            if (i + 2 < last)
                for (Size ln = upward[i + 2].first; ln < upward[i + 2].last; ++ln)
                    __builtin_prefetch(&upward[links.dest[ln]]);
            if (i + 1 < last)
                for (Size ln = upward[i + 1].first; ln < upward[i + 1].last; ++ln)
                    __builtin_prefetch(links.dest.data() + upward[links.dest[ln]].first);
            if (to - from < 2) continue;
            mark.triangles.assign(to - from, 0);
            for (Size ln = from; ln < to; ++ln)
                mark.set(links.dest[ln], static_cast<Id>(ln - from + 1));
            for (Size ln = from; ln < to; ++ln) {
                const auto [farFirst, farLast] = upward[links.dest[ln]];
                for (const Size far : mark.candidates(links.dest, farFirst, farLast))
                    if (const Id third = mark.place[links.dest[far]]) {
                        ++mark.triangles[ln - from];
                        ++mark.triangles[third - 1];
                        count(far, 1);
                    }
            }
            for (Size ln = from; ln < to; ++ln) {
                if (const Id number = mark.triangles[ln - from]) count(ln, number);
                mark.set(links.dest[ln], 0);
            }
        }
    });
}

}  // namespace

OfLinks<Id> sharedNeighbours(ItemLinks<LinkWeight>& links, Workers& workers) {
    const std::vector<Upward> upward = sortUpward(links, workers);
    OfLinks<Id> shared(links.dest.size());
    workers.each(shared.size(), [&](Size ln) { shared[ln] = 0; });
    if (workers.count() > 1)
        countTriangles<true>(links, upward, shared, workers);
    else
        countTriangles<false>(links, upward, shared, workers);

    // The other links have the number of their way back, in the order in which those come. Each
    // part of the nodes is for one thread, which looks at all ways.
    std::vector<Size> next(links.begin.begin(), links.begin.end() - 1);
    const Size parts = workers.count();
    workers.share(parts, 1, [&](Size firstPart, Size lastPart, unsigned) {
        const Size least = links.size() * firstPart / parts;
        const Size end = links.size() * lastPart / parts;
        for (Size i = 0; i < links.size(); ++i)
            for (Size ln = upward[i].first; ln < upward[i].last; ++ln)
                if (const Id other = links.dest[ln]; other >= least && other < end)
                    shared[next[other]++] = shared[ln];
    });
    return shared;
}

SimilarLinks similar(const ItemLinks<LinkWeight>& links, const OfLinks<Id>& shared,
                     Similarity similarity, Workers& workers) {
    const Id nodes = links.size();
    std::vector<char> shares(nodes);  // whether a node shares a neighbour with one of its own
    OfLinks<LinkWeight> weight(links.dest.size());
    std::vector<AccWeight> largest(nodes);
    workers.each(nodes, [&](Size i) {
        const auto degree = static_cast<double>(links.begin[i + 1] - links.begin[i]);
        AccWeight sum = 0;
        Id most = 0;
        for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln) {
            const Id j = links.dest[ln];
            const double product =
                degree * static_cast<double>(links.begin[j + Size{1}] - links.begin[j]);
            double factor = shared[ln] + 1.0;
            if (similarity == Similarity::COSINE) factor /= std::sqrt(product);
            if (similarity == Similarity::MIXED) factor /= std::sqrt(std::sqrt(product));
            weight[ln] = static_cast<LinkWeight>(static_cast<double>(links.weight[ln]) * factor);
            sum += static_cast<AccWeight>(weight[ln]);
            most |= shared[ln];
        }
        largest[i] = sum;
        shares[i] = most != 0;
    });

    SimilarLinks result;
    AccWeight whole = 0;
    for (const AccWeight sum : largest) whole += sum;
    const Grid grid(whole);
    result.total.resize(nodes);
    result.network.items.resize(nodes);
    ItemLinks<LinkWeight>& kept = result.network.links;
    kept.begin.resize(nodes + Size{1});
    const auto matters = [&](Size i, Size ln) {
        const bool bothShare = (shares[i] & shares[links.dest[ln]]) != 0;
        return Size{shared[ln] != 0 || !bothShare};
    };
    workers.each(nodes, [&](Size i) {
        AccWeight sum = 0;
        Size count = 0;
        for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln) {
            weight[ln] = grid(weight[ln]);
            sum += static_cast<AccWeight>(weight[ln]);
            count += matters(i, ln);
        }
        result.total[i] = sum;
        kept.begin[i + 1] = count;
    });
    for (Size i = 0; i < nodes; ++i) {
        kept.begin[i + 1] += kept.begin[i];
        result.weight += result.total[i];
    }
    kept.dest.resize(kept.begin.back());
    kept.weight.resize(kept.begin.back());
    workers.each(nodes, [&](Size i) {
        Size next = kept.begin[i];
        for (Size ln = links.begin[i]; next < kept.begin[i + 1]; ++ln) {
            kept.dest[next] = links.dest[ln];
            kept.weight[next] = weight[ln];
            next += matters(i, ln);
        }
    });
    return result;
}

}  // namespace vorl::detail
