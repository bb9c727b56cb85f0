#include "refinement.hpp"

#include "mixing.hpp"

#include <algorithm>
#include <span>
#include <utility>

namespace vorl::detail {

namespace {

constexpr unsigned CLASSES = 4;
/// How many items ahead memory is fetched.
constexpr std::size_t FETCHED = 3;
/// Rounds end when no more than one in so many items moves.
constexpr Size FEW = 1000;

struct Move {
    Id item;
    Id from;
    Id to;  // ID_NONE: a group of its own
};

/// Best moves of single items.
template <class WeightT>
class Mover {
public:
    Mover(const ItemNetwork<WeightT>& network, const Partitioned& partition,
          const Likelihood& likelihood, const std::vector<Worth>& worths)
        : m_network(network), m_partition(partition), m_likelihood(likelihood), m_worths(worths) {}

    /// Where the item is best off; the group that it is in unless another one is clearly better.
    Id best(Id item) {
        const ItemLinks<WeightT>& links = m_network.links;
        const std::vector<Holding>& groups = m_partition.groups;
        if (m_pull.size() < groups.size()) m_pull.resize(groups.size());
        const Size first = links.begin[item];
        const Size last = links.begin[item + Size{1}];
        if (m_touched.size() < last - first) m_touched.resize(last - first);
        // Without a branch, as the processor couldn't guess it.
        Size touched = 0;
        for (Size ln = first; ln < last; ++ln) {
            const Id group = m_partition.labels[links.dest[ln]];
            AccWeight& pull = m_pull[group];
            m_touched[touched] = group;
            touched += pull == 0;
            pull += static_cast<AccWeight>(links.weight[ln]);
        }

        const Id own = m_partition.labels[item];
        const Holding& self = m_network.items[item];
        Holding rest = groups[own] - self;
        rest.inner -= 2 * m_pull[own];
        const double leave = m_likelihood.value(rest) - m_worths[own].value;
        const double least = CLEAR * (1 + m_likelihood.scale() * self.total);
        Id to = own;
        double best = least;
        if (rest.nodes > 0 && leave + m_likelihood.value(self) > best) {
            best = leave + m_likelihood.value(self);
            to = ID_NONE;
        }
        for (const Id group : std::span(m_touched).first(touched)) {
            const AccWeight pull = std::exchange(m_pull[group], 0);
            const AccWeight inner = self.inner + 2 * pull;
            if (leave + m_worths[group].mostGain(inner, self.nodes) < best) continue;
            if (group == own || pull <= m_likelihood.expected(self.total * groups[group].total))
                continue;
            Holding both = groups[group] + self;
            both.inner += 2 * pull;
            const double gain = leave + (m_likelihood.value(both) - m_worths[group].value);
            if (gain > best || (gain == best && to != own && to != ID_NONE && group < to)) {
                best = gain;
                to = group;
            }
        }
        m_pull[own] = 0;
        return to;
    }

private:
    /// Less than this of what an item weighs is no gain.
    static constexpr double CLEAR = 0x1p-30;

    const ItemNetwork<WeightT>& m_network;
    const Partitioned& m_partition;
    const Likelihood& m_likelihood;
    const std::vector<Worth>& m_worths;
    std::vector<AccWeight> m_pull;  // of each group, 0 between two items
    std::vector<Id> m_touched;
};

/// Carries out moves that were decided at once.
/// @param touched gets the items whose best move may be another one now
/// @param active gets the same, as they may decide in the classes of this round still to come
template <class WeightT>
void carryOut(const ItemNetwork<WeightT>& network, Partitioned& partition, std::vector<Move>& moves,
              std::vector<char>& moving, std::vector<char>& touched, std::vector<char>& active,
              Workers& workers) {
    const ItemLinks<WeightT>& links = network.links;
    for (Move& move : moves) {
        if (move.to == ID_NONE) {
            move.to = static_cast<Id>(partition.groups.size());
            partition.groups.emplace_back();
        }
        partition.groups[move.from] -= network.items[move.item];
        partition.groups[move.to] += network.items[move.item];
        moving[move.item] = 1;
    }
    // A link between two items that move is met at both of its ends.
    const auto inner = [&](const Move& move, Id group) {
        AccWeight sum = 0;
        for (Size ln = links.begin[move.item]; ln < links.begin[move.item + Size{1}]; ++ln) {
            const Id other = links.dest[ln];
            if (partition.labels[other] == group)
                sum += (moving[other] ? 1 : 2) * static_cast<AccWeight>(links.weight[ln]);
        }
        return sum;
    };
    workers.share(moves.size(), 256, [&](Size first, Size last, unsigned) {
        for (Size i = first; i < last; ++i)
            if (const AccWeight sum = inner(moves[i], moves[i].from); sum > 0)
                addShared(partition.groups[moves[i].from].inner, -sum);
    });
    for (const Move& move : moves) partition.labels[move.item] = move.to;
    workers.share(moves.size(), 256, [&](Size first, Size last, unsigned) {
        for (Size i = first; i < last; ++i) {
            const Move& move = moves[i];
            if (const AccWeight sum = inner(move, move.to); sum > 0)
                addShared(partition.groups[move.to].inner, sum);
            std::atomic_ref<char>(touched[move.item]).store(1, std::memory_order_relaxed);
            for (Size ln = links.begin[move.item]; ln < links.begin[move.item + Size{1}]; ++ln)
                for (std::vector<char>* const all : {&touched, &active})
                    std::atomic_ref<char>((*all)[links.dest[ln]])
                        .store(1, std::memory_order_relaxed);
        }
    });
    for (const Move& move : moves) moving[move.item] = 0;
}

/// Leaves out groups that are empty.
void tidy(Partitioned& partition) {
    Labels number(partition.groups.size(), ID_NONE);
    std::vector<Holding> groups;
    for (Id& label : partition.labels) {
        if (number[label] == ID_NONE) {
            number[label] = static_cast<Id>(groups.size());
            groups.push_back(partition.groups[label]);
        }
        label = number[label];
    }
    partition.groups = std::move(groups);
}

}  // namespace

template <class WeightT>
Size refine(const ItemNetwork<WeightT>& network, Partitioned& partition, Likelihood& likelihood,
            unsigned rounds, Workers& workers, const Idle& idle, const Idle& asleep) {
    const Id size = network.size();
    std::vector<char> active(size, 1);
    if (!asleep.empty())
        for (Id i = 0; i < size; ++i) active[i] = !asleep[i];
    Size all = 0;
    std::vector<char> moving(size, 0);
    std::vector<Worth> worths;
    likelihood.estimate(partition.groups);
    for (unsigned round = 0; round < rounds; ++round) {
        std::vector<char> touched(size, 0);
        Size moved = 0;
        for (unsigned turn = 0; turn < CLASSES; ++turn) {
            worths.resize(partition.groups.size());
            workers.each(worths.size(),
                         [&](Size i) { worths[i] = likelihood.worth(partition.groups[i]); });
            std::vector<Move> moves;
            std::mutex mutex;
            std::vector<Mover<WeightT>> movers(
                workers.count(), Mover<WeightT>(network, partition, likelihood, worths));
            workers.share(size, 1024, [&](Size first, Size last, unsigned worker) {
                std::vector<Id> due;
                for (Size i = first; i < last; ++i) {
                    const Id item = static_cast<Id>(i);
                    if (!active[i] || mixed(item, round) % CLASSES != turn) continue;
                    if (idle.empty() || !idle[i]) due.push_back(item);
                }
                std::vector<Move> found;
                for (std::size_t i = 0; i < due.size(); ++i) {
                    if (i + FETCHED < due.size()) network.links.fetch(due[i + FETCHED]);
                    const Id own = partition.labels[due[i]];
                    const Id to = movers[worker].best(due[i]);
                    if (to != own) found.push_back({due[i], own, to});
                }
                if (found.empty()) return;
                const std::lock_guard lock(mutex);
                moves.insert(moves.end(), found.begin(), found.end());
            });
            std::sort(moves.begin(), moves.end(),
                      [](const Move& a, const Move& b) { return a.item < b.item; });
            carryOut(network, partition, moves, moving, touched, active, workers);
            moved += moves.size();
        }
        likelihood.estimate(partition.groups);
        active = std::move(touched);
        all += moved;
        if (moved * FEW <= size) break;
    }
    tidy(partition);
    return all;
}

template Size refine(const ItemNetwork<LinkWeight>&, Partitioned&, Likelihood&, unsigned, Workers&,
                     const Idle&, const Idle&);
template Size refine(const ItemNetwork<AccWeight>&, Partitioned&, Likelihood&, unsigned, Workers&,
                     const Idle&, const Idle&);

}  // namespace vorl::detail
