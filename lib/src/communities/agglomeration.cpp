#include "agglomeration.hpp"

#include "mixing.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace vorl::detail {

namespace {

/// What each item points to: the neighbour with the best gain above 0, or itself. Among equal ones
/// it is left to a hash, since by number all items of a regular network would point one way, and
/// to the number among equal hashes.
/// @param gain of an item and the number of one of its links
/// @param told what items point to that needn't be sought, ID_NONE for the others; empty for all
template <class WeightT, class GainT>
Labels pointers(const ItemLinks<WeightT>& links, std::uint32_t round, Workers& workers,
                const GainT& gain, const Labels& told = {}) {
    Labels aims(links.size());
    const auto rank = [round](Id item) { return std::pair(mixed(item, round), ~item); };
    const auto aimOf = [&](Id item) {
        if (!told.empty() && told[item] != ID_NONE) return told[item];
        Id aim = item;
        double best = 0;
        for (Size ln = links.begin[item]; ln < links.begin[item + Size{1}]; ++ln) {
            const double value = gain(item, ln);
            const Id other = links.dest[ln];
            if (value > best || (value == best && aim != item && rank(other) > rank(aim))) {
                best = value;
                aim = other;
            }
        }
        return aim;
    };
    // Groups may be few and have many links each.
    workers.share(links.size(), 128, [&](Size first, Size last, unsigned) {
        for (Size i = first; i < last; ++i) aims[i] = aimOf(static_cast<Id>(i));
    });
    return aims;
}

/// Numbers what hangs together by pointers, in the order of the least items.
Id connected(Labels& aims) {
    const auto size = static_cast<Id>(aims.size());
    Labels parent(size);
    for (Id i = 0; i < size; ++i) parent[i] = i;
    const auto find = [&](Id i) {
        while (parent[i] != i) i = parent[i] = parent[parent[i]];
        return i;
    };
    for (Id i = 0; i < size; ++i) {
        const Id a = find(i);
        const Id b = find(aims[i]);
        if (a != b) parent[std::max(a, b)] = std::min(a, b);
    }
    for (Id i = 0; i < size; ++i) aims[i] = find(i);
    return compact(aims);
}

/// What is left of a gain that rounding alone may have made.
constexpr double ROUNDING = 1 + 0x1p-40;

/// A round of merging; takes its step unless nothing merges.
bool take(Merges& merges, Labels aims) {
    const auto size = static_cast<Id>(aims.size());
    const Id count = connected(aims);
    if (count == size) return false;
    merges.steps.push_back(std::move(aims));
    merges.counts.push_back(count);
    return true;
}

/// A round of merging inside groups.
/// @param idle groups whose items merge into one at once
template <class WeightT>
bool mergeInside(Merges& merges, const ItemNetwork<WeightT>& network, const Labels& groups,
                 const std::vector<AccWeight>& groupWeight, Workers& workers,
                 const Idle& idle = {}) {
    const auto round = static_cast<std::uint32_t>(merges.steps.size());
    std::vector<AccWeight> totals(network.size());
    workers.each(totals.size(), [&](Size i) { totals[i] = network.items[i].total; });
    const auto gain = [&](Id item, Size ln) -> double {
        const Id other = network.links.dest[ln];
        const auto weight = static_cast<AccWeight>(network.links.weight[ln]);
        // In a group without weight it is no number.
        const double expected = totals[item] * totals[other] / groupWeight[groups[item]];
        const bool gains = (groups[item] == groups[other]) & (weight > expected * ROUNDING);
        return gains ? weight - expected : 0;
    };
    Labels told(idle.empty() ? 0 : network.size(), ID_NONE);
    Labels leader(idle.size(), ID_NONE);
    for (Id i = 0; i < told.size(); ++i)
        if (const Id group = groups[i]; idle[group]) {
            if (leader[group] == ID_NONE) leader[group] = i;
            told[i] = leader[group];
        }
    return take(merges, pointers(network.links, round, workers, gain, told));
}

}  // namespace

Merges mergeSimilar(SimilarLinks& similar, const Labels& groups, Id count, Workers& workers,
                    const Idle& idle) {
    ItemNetwork<LinkWeight>& first = similar.network;
    std::vector<AccWeight> groupWeight(count);
    if (count == 1) {
        workers.each(first.size(), [&](Size i) { first.items[i].total = similar.total[i]; });
        groupWeight[0] = similar.weight;
    } else {
        workers.each(first.size(), [&](Size i) {
            AccWeight sum = 0;
            if (idle.empty() || !idle[groups[i]])
                for (Size ln = first.links.begin[i]; ln < first.links.begin[i + 1]; ++ln)
                    sum += groups[first.links.dest[ln]] == groups[i]
                               ? static_cast<AccWeight>(first.links.weight[ln])
                               : 0;
            first.items[i].total = sum;
        });
        for (Id i = 0; i < first.size(); ++i) groupWeight[groups[i]] += first.items[i].total;
    }

    Merges merges;
    if (!mergeInside(merges, first, groups, groupWeight, workers, idle)) return merges;
    const auto coarser = [&](const Labels& former) {
        Labels result(merges.counts.back());
        for (std::size_t i = 0; i < former.size(); ++i) result[merges.steps.back()[i]] = former[i];
        return result;
    };
    Labels current = coarser(groups);
    // Links between groups don't matter, so those of idle ones have none that does.
    Idle whole(idle.empty() ? 0 : current.size());
    for (std::size_t i = 0; i < whole.size(); ++i) whole[i] = idle[current[i]];
    ItemNetwork<AccWeight> network =
        folded(first, merges.steps.back(), merges.counts.back(), workers, whole);
    while (mergeInside(merges, network, current, groupWeight, workers)) {
        current = coarser(current);
        network = folded(network, merges.steps.back(), merges.counts.back(), workers);
    }
    return merges;
}

Merges mergeLikely(ItemNetwork<AccWeight> network, const Likelihood& likelihood, Workers& workers) {
    Merges merges;
    for (;;) {
        std::vector<double> value(network.size());
        workers.each(network.size(),
                     [&](Size i) { value[i] = likelihood.value(network.items[i]); });
        const auto gain = [&](Id item, Size ln) -> double {
            const Id other = network.links.dest[ln];
            const AccWeight weight = network.links.weight[ln];
            const Holding& a = network.items[item];
            const Holding& b = network.items[other];
            if (weight <= likelihood.expected(a.total * b.total)) return 0;
            Holding both = a + b;
            both.inner += 2 * weight;
            return likelihood.value(both) - (value[item] + value[other]);
        };
        const auto round = static_cast<std::uint32_t>(merges.steps.size());
        if (!take(merges, pointers(network.links, round, workers, gain))) return merges;
        network = folded(network, merges.steps.back(), merges.counts.back(), workers);
    }
}

Labels likeliestCut(const Merges& merges, const std::vector<Holding>& base,
                    const std::vector<std::vector<Holding>>& heights,
                    const Likelihood& likelihood) {
    std::vector<double> best(base.size());
    for (std::size_t i = 0; i < base.size(); ++i) best[i] = likelihood.value(base[i]);
    std::vector<std::vector<char>> whole(merges.steps.size());
    for (std::size_t step = 0; step < merges.steps.size(); ++step) {
        const std::vector<Holding>& items = heights[step];
        std::vector<double> parts(items.size());
        for (std::size_t i = 0; i < best.size(); ++i) parts[merges.steps[step][i]] += best[i];
        whole[step].resize(items.size());
        for (std::size_t i = 0; i < items.size(); ++i) {
            const double value = likelihood.value(items[i]);
            whole[step][i] = value >= parts[i];
            parts[i] = std::max(value, parts[i]);
        }
        best = std::move(parts);
    }

    // From the top down, what lies in a part has its number.
    Id count = 0;
    Labels part(best.size(), ID_NONE);
    for (std::size_t step = merges.steps.size(); step-- > 0;) {
        for (std::size_t i = 0; i < part.size(); ++i)
            if (part[i] == ID_NONE && whole[step][i]) part[i] = count++;
        Labels finer(merges.steps[step].size());
        for (std::size_t i = 0; i < finer.size(); ++i) finer[i] = part[merges.steps[step][i]];
        part = std::move(finer);
    }
    for (Id& label : part)
        if (label == ID_NONE) label = count++;
    compact(part);
    return part;
}

}  // namespace vorl::detail
