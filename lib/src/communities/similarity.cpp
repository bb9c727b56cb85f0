#include "similarity.hpp"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vorl::detail {

Grid::Grid(AccWeight weight) {
    int exponent = 0;
    std::frexp(weight, &exponent);
    // Adding and taking off 2^e rounds to multiples of 2^(e - 52).
    m_shift = std::ldexp(1.0, std::min(exponent, 1023));
}

LinkWeight Grid::operator()(LinkWeight weight) const {
    const volatile AccWeight shifted = static_cast<AccWeight>(weight) + m_shift;
    return static_cast<LinkWeight>(shifted - m_shift);
}

namespace {

/// The links of each node that lead to one of higher degree, or of the same and a higher number.
struct Upward {
    std::vector<Size> begin;
    std::vector<Id> dest;
    std::vector<Id> triangles;

    Upward(const ItemLinks<LinkWeight>& links, Workers& workers) {
        const auto degree = [&](Id i) { return links.begin[i + Size{1}] - links.begin[i]; };
        const auto up = [&](Id i, Id j) {
            return degree(i) < degree(j) || (degree(i) == degree(j) && i < j);
        };
        begin.resize(links.begin.size());
        workers.each(links.size(), [&](Size i) {
            Size count = 0;
            for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln)
                count += up(static_cast<Id>(i), links.dest[ln]);
            begin[i + 1] = count;
        });
        for (Size i = 0; i < links.size(); ++i) begin[i + 1] += begin[i];
        dest.resize(begin.back());
        triangles.resize(begin.back());
        workers.each(links.size(), [&](Size i) {
            Size next = begin[i];
            for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln)
                if (up(static_cast<Id>(i), links.dest[ln])) dest[next++] = links.dest[ln];
        });
    }

    /// The place of the link from i to j, which is there.
    Size find(Id i, Id j) const {
        const auto first = dest.begin() + static_cast<std::ptrdiff_t>(begin[i]);
        const auto last = dest.begin() + static_cast<std::ptrdiff_t>(begin[i + Size{1}]);
        return static_cast<Size>(std::lower_bound(first, last, j) - dest.begin());
    }
};

/// Which nodes the one at hand has links to. That lies all over the memory, so a small table tells
/// nearly always that there is none.
struct Marks {
    static constexpr Id SLOTS = 1 << 14;

    std::vector<Id> place;  // of a node in the list of the one at hand and 1, or 0
    std::vector<Id> slots;  // whether any node of a slot is in the list

    explicit Marks(Size nodes) : place(nodes), slots(SLOTS) {}

    void set(Id node, Id number) {
        place[node] = number;
        slots[node % SLOTS] = number;
    }
    Id operator[](Id node) const { return slots[node % SLOTS] ? place[node] : 0; }
};

/// Counts the triangles of each link; with threads, several may count for one link.
template <bool THREADS>
void countTriangles(Upward& up, Workers& workers) {
    const auto count = [&](Size place, Id number) {
        if constexpr (THREADS)
            std::atomic_ref<Id>(up.triangles[place]).fetch_add(number, std::memory_order_relaxed);
        else
            up.triangles[place] += number;
    };
    const Size nodes = up.begin.size() - 1;
    std::vector<std::optional<Marks>> marks(workers.count());
    workers.share(nodes, 256, [&](Size first, Size last, unsigned worker) {
        if (!marks[worker]) marks[worker].emplace(nodes);
        Marks& mark = *marks[worker];
        for (Size i = first; i < last; ++i) {
            const Size from = up.begin[i];
            const Size to = up.begin[i + 1];
            if (to - from < 2) continue;
            for (Size ln = from; ln < to; ++ln) {
                mark.set(up.dest[ln], static_cast<Id>(ln - from + 1));
                __builtin_prefetch(up.dest.data() + up.begin[up.dest[ln]]);
            }
            for (Size ln = from; ln < to; ++ln) {
                const Id j = up.dest[ln];
                Id found = 0;
                for (Size far = up.begin[j]; far < up.begin[j + Size{1}]; ++far)
                    if (const Id third = mark[up.dest[far]]) {
                        ++found;
                        count(far, 1);
                        count(from + third - 1, 1);
                    }
                if (found) count(ln, found);
            }
            for (Size ln = from; ln < to; ++ln) mark.set(up.dest[ln], 0);
        }
    });
}

}  // namespace

std::vector<Id> sharedNeighbours(const ItemLinks<LinkWeight>& links, Workers& workers) {
    Upward up(links, workers);
    if (workers.count() > 1)
        countTriangles<true>(up, workers);
    else
        countTriangles<false>(up, workers);

    std::vector<Id> shared(links.dest.size());
    workers.each(links.size(), [&](Size i) {
        const Id node = static_cast<Id>(i);
        Size next = up.begin[i];
        for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln) {
            const Id other = links.dest[ln];
            const bool here = next < up.begin[i + 1] && up.dest[next] == other;
            shared[ln] = up.triangles[here ? next++ : up.find(other, node)];
        }
    });
    return shared;
}

SimilarLinks similar(const ItemLinks<LinkWeight>& links, const std::vector<Id>& shared,
                     Similarity similarity, Workers& workers) {
    const Id nodes = links.size();
    std::vector<char> shares(nodes);  // whether a node shares a neighbour with one of its own
    std::vector<LinkWeight> weight(links.dest.size());
    std::vector<AccWeight> largest(nodes);
    workers.each(nodes, [&](Size i) {
        const auto degree = static_cast<double>(links.begin[i + 1] - links.begin[i]);
        for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln) {
            const Id j = links.dest[ln];
            const double product =
                degree * static_cast<double>(links.begin[j + Size{1}] - links.begin[j]);
            double factor = shared[ln] + 1.0;
            if (similarity == Similarity::COSINE) factor /= std::sqrt(product);
            if (similarity == Similarity::MIXED) factor /= std::sqrt(std::sqrt(product));
            weight[ln] = static_cast<LinkWeight>(static_cast<double>(links.weight[ln]) * factor);
            largest[i] += static_cast<AccWeight>(weight[ln]);
            if (shared[ln]) shares[i] = 1;
        }
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
        return shared[ln] || !shares[i] || !shares[links.dest[ln]];
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
        for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln)
            if (matters(i, ln)) {
                kept.dest[next] = links.dest[ln];
                kept.weight[next++] = weight[ln];
            }
    });
    return result;
}

}  // namespace vorl::detail
