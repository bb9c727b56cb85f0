#include "item_network.hpp"

#include <algorithm>

namespace vorl::detail {

Id compact(Labels& labels) {
    Id last = 0;
    for (const Id label : labels) last = std::max(last, label);
    std::vector<Id> number(labels.empty() ? 0 : last + Size{1}, ID_NONE);
    Id count = 0;
    for (Id& label : labels) {
        if (number[label] == ID_NONE) number[label] = count++;
        label = number[label];
    }
    return count;
}

Labels composed(const Labels& finer, const Labels& coarser) {
    Labels labels(finer.size());
    for (std::size_t i = 0; i < finer.size(); ++i) labels[i] = coarser[finer[i]];
    return labels;
}

Grouping::Grouping(const Labels& labels, Id count) : begin(count + Size{1}), items(labels.size()) {
    for (const Id label : labels) ++begin[label + Size{1}];
    for (Size group = 0; group < count; ++group) begin[group + 1] += begin[group];
    std::vector<Id> next(begin.begin(), begin.end() - 1);
    for (Id i = 0; i < labels.size(); ++i) items[next[labels[i]]++] = i;
}

namespace {

/// How many items ahead memory is fetched, for those of a group lie all over it.
constexpr Size AHEAD = 4;

/// Links of a range of groups, until all lie in one list.
struct Folded {
    Size first;
    std::vector<Size> degree;
    OfLinks<Id> dest;
    OfLinks<AccWeight> weight;
};

}  // namespace

template <class WeightT>
ItemNetwork<AccWeight> folded(const ItemNetwork<WeightT>& network, const Labels& labels, Id count,
                              Workers& workers, const Idle& idle) {
    const ItemLinks<WeightT>& links = network.links;
    const Grouping groups(labels, count);
    ItemNetwork<AccWeight> result;
    result.items.resize(count);

    std::vector<Folded> parts;
    std::mutex mutex;
    // What a worker keeps from group to group: weights by group, all 0 in between.
    std::vector<std::vector<AccWeight>> sums(workers.count());
    workers.share(count, std::max<Size>(64, count / 256),
                  [&](Size first, Size last, unsigned worker) {
                      std::vector<AccWeight>& sum = sums[worker];
                      sum.resize(count);
                      std::vector<Id> touched;
                      Folded part{first, {}, {}, {}};
                      Size most = 0;
                      for (Size at = groups.begin[first]; at < groups.begin[last]; ++at) {
                          const Id item = groups.items[at];
                          most += links.begin[item + Size{1}] - links.begin[item];
                      }
                      part.dest.reserve(most);
                      part.weight.reserve(most);
                      for (Size group = first; group < last; ++group) {
                          if (!idle.empty() && idle[group]) {
                              part.degree.push_back(0);
                              continue;
                          }
                          Holding& holding = result.items[group];
                          Size met = 0;
                          for (Size at = groups.begin[group]; at < groups.begin[group + 1]; ++at) {
                              const Id item = groups.items[at];
                              if (at + 2 * AHEAD < groups.items.size()) {
                                  const Id far = groups.items[at + 2 * AHEAD];
                                  __builtin_prefetch(&links.begin[far]);
                                  __builtin_prefetch(&network.items[far]);
                                  const Size near = links.begin[groups.items[at + AHEAD]];
                                  __builtin_prefetch(links.dest.data() + near);
                                  __builtin_prefetch(links.weight.data() + near);
                              }
                              holding += network.items[item];
                              const Size from = links.begin[item];
                              const Size to = links.begin[item + Size{1}];
                              if (touched.size() < met + (to - from))
                                  touched.resize(2 * (met + (to - from)));
                              // Without a branch, as the processor couldn't guess it.
                              for (Size ln = from; ln < to; ++ln) {
                                  const Id other = labels[links.dest[ln]];
                                  touched[met] = other;
                                  met += sum[other] == 0;
                                  sum[other] += static_cast<AccWeight>(links.weight[ln]);
                              }
                          }
                          holding.inner += sum[group];
                          const Size former = part.dest.size();
                          for (const Id other : std::span(touched).first(met)) {
                              if (other != group) {
                                  part.dest.push_back(other);
                                  part.weight.push_back(sum[other]);
                              }
                              sum[other] = 0;
                          }
                          part.degree.push_back(part.dest.size() - former);
                      }
                      const std::lock_guard lock(mutex);
                      parts.push_back(std::move(part));
                  });
    sums.clear();

    std::sort(parts.begin(), parts.end(),
              [](const Folded& a, const Folded& b) { return a.first < b.first; });
    result.links.begin.reserve(count + Size{1});
    result.links.begin.push_back(0);
    for (const Folded& part : parts)
        for (const Size degree : part.degree)
            result.links.begin.push_back(result.links.begin.back() + degree);
    if (parts.size() == 1) {
        result.links.dest = std::move(parts.front().dest);
        result.links.weight = std::move(parts.front().weight);
        return result;
    }
    result.links.dest.resize(result.links.begin.back());
    result.links.weight.resize(result.links.begin.back());
    workers.share(parts.size(), 1, [&](Size first, Size last, unsigned) {
        for (Folded& part : std::span(parts).subspan(first, last - first)) {
            const Size to = result.links.begin[part.first];
            std::copy(part.dest.begin(), part.dest.end(), result.links.dest.data() + to);
            std::copy(part.weight.begin(), part.weight.end(), result.links.weight.data() + to);
            part = Folded{};
        }
    });
    return result;
}

template <class WeightT>
std::vector<Holding> holdings(const ItemNetwork<WeightT>& network, const Labels& labels, Id count,
                              Workers& workers) {
    const ItemLinks<WeightT>& links = network.links;
    std::vector<AccWeight> inner(network.size());
    workers.each(network.size(), [&](Size i) {
        AccWeight sum = network.items[i].inner;
        for (Size ln = links.begin[i]; ln < links.begin[i + 1]; ++ln)
            sum +=
                labels[links.dest[ln]] == labels[i] ? static_cast<AccWeight>(links.weight[ln]) : 0;
        inner[i] = sum;
    });
    std::vector<Holding> groups(count);
    for (Id i = 0; i < network.size(); ++i)
        groups[labels[i]] += {inner[i], network.items[i].total, network.items[i].nodes};
    return groups;
}

template ItemNetwork<AccWeight> folded(const ItemNetwork<LinkWeight>&, const Labels&, Id, Workers&,
                                       const Idle&);
template ItemNetwork<AccWeight> folded(const ItemNetwork<AccWeight>&, const Labels&, Id, Workers&,
                                       const Idle&);
template std::vector<Holding> holdings(const ItemNetwork<LinkWeight>&, const Labels&, Id, Workers&);
template std::vector<Holding> holdings(const ItemNetwork<AccWeight>&, const Labels&, Id, Workers&);

}  // namespace vorl::detail
