#include "search.hpp"

#include "agglomeration.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vorl::detail {

const std::array<Start, MOST_STARTS> STARTS{{{Similarity::COSINE, Density::OWN},
                                             {Similarity::COSINE, Density::COMMON},
                                             {Similarity::COMMON, Density::OWN},
                                             {Similarity::COMMON, Density::COMMON},
                                             {Similarity::MIXED, Density::OWN},
                                             {Similarity::MIXED, Density::COMMON}}};

std::string Start::name() const {
    const char* const names[] = {"cosine", "mixed", "common neighbours"};
    return std::string(names[static_cast<int>(similarity)]) +
           (density == Density::OWN ? ", own densities" : ", one density");
}

namespace {

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Rounds of moves with groups, and with single nodes.
constexpr unsigned GROUP_MOVES = 4;
constexpr unsigned NODE_MOVES = 10;
/// Rounds of the whole, which is never reached but by chance of a hard network.
constexpr unsigned ROUNDS = 12;
/// A round that saves no more than this share of the whole was the last one.
constexpr double LITTLE = 1e-4;
/// A group that shares this much with a piece of the last split is settled.
constexpr double SETTLED = 0.95;
/// Heights with more than this share of the items below them aren't worth moves of their own.
constexpr double NEARLY_ALL = 0.8;

/// Gives idle items the links that the others have to them.
void mirror(ItemLinks<AccWeight>& links, const Idle& idle) {
    ItemLinks<AccWeight> both;
    std::vector<Size> degree(idle.size());
    if (std::none_of(idle.begin(), idle.end(), [](char is) { return is; })) return;
    for (Id i = 0; i < links.size(); ++i) {
        degree[i] += links.begin[i + Size{1}] - links.begin[i];
        for (Size ln = links.begin[i]; ln < links.begin[i + Size{1}]; ++ln)
            if (idle[links.dest[ln]]) ++degree[links.dest[ln]];
    }
    both.begin.assign(1, 0);
    for (const Size count : degree) both.begin.push_back(both.begin.back() + count);
    both.dest.resize(both.begin.back());
    both.weight.resize(both.begin.back());
    std::vector<Size> next(both.begin.begin(), both.begin.end() - 1);
    const auto put = [&](Id from, Id to, AccWeight weight) {
        both.dest[next[from]] = to;
        both.weight[next[from]++] = weight;
    };
    for (Id i = 0; i < links.size(); ++i)
        for (Size ln = links.begin[i]; ln < links.begin[i + Size{1}]; ++ln) {
            put(i, links.dest[ln], links.weight[ln]);
            if (idle[links.dest[ln]]) put(links.dest[ln], i, links.weight[ln]);
        }
    links = std::move(both);
}

/// One search.
class Search {
public:
    Search(const ItemNetwork<LinkWeight>& network, const Start& start, AccWeight weight,
           double scale, Clock& clock, Workers& workers)
        : m_network(network),
          m_clock(clock),
          m_workers(workers),
          m_weight(weight),
          m_scale(scale),
          m_start(start),
          m_likelihood(start.density, weight, network.size(), scale) {}

    Found run(const OfLinks<Id>& shared) {
        SimilarLinks similarLinks = similar(m_network.links, shared, m_start.similarity, m_workers);
        m_clock.book("similarity");
        m_partition.labels.assign(m_network.size(), 0);
        const Merges merges = mergeSimilar(similarLinks, m_partition.labels, 1, m_workers);
        for (Id i = 0; i < m_network.size(); ++i) m_partition.labels[i] = i;
        for (const Labels& step : merges.steps)
            m_partition.labels = composed(m_partition.labels, step);
        m_partition.groups =
            holdings(m_network, m_partition.labels,
                     merges.counts.empty() ? m_network.size() : merges.counts.back(), m_workers);
        m_likelihood.estimate(m_partition.groups);
        m_clock.book("agglomeration");

        refine(m_network, m_partition, m_likelihood, NODE_MOVES, m_workers);
        Found best{m_start, m_partition, describe(m_partition), m_likelihood, 0};
        m_settled.assign(m_partition.groups.size(), 0);
        for (unsigned round = 1; round <= ROUNDS; ++round) {
            const Idle asleep = split(similarLinks);
            refine(m_network, m_partition, m_likelihood, NODE_MOVES, m_workers, {}, asleep);
            m_clock.book("refinement");
            const Description description = describe(m_partition);
            const double saved = description.saving() - best.description.saving();
            if (round > 1 && saved <= 0) break;
            best = {m_start, m_partition, description, m_likelihood, round};
            if (round > 1 && saved <= LITTLE * description.saving()) break;
            if (!settle()) break;
        }
        return best;
    }

private:
    Description describe(const Partitioned& partition) const {
        return detail::describe(m_start.density, m_weight, m_scale, partition.groups);
    }

    Idle split(SimilarLinks& similarLinks);
    void merge(const ItemNetwork<AccWeight>& base, Partitioned& parts);
    bool settle();

    const ItemNetwork<LinkWeight>& m_network;
    Clock& m_clock;
    Workers& m_workers;
    AccWeight m_weight;
    double m_scale;
    Start m_start;
    Likelihood m_likelihood;
    Partitioned m_partition;
    Labels m_pieces;              // the part that the last split put each node in
    std::vector<char> m_settled;  // groups that the last split made and that hardly changed since
};

/// Splits groups where that is likelier, moves the pieces of each height, and merges groups.
/// @return the nodes that needn't be looked at again
Idle Search::split(SimilarLinks& similarLinks) {
    Idle asleep(m_network.size());
    for (Id i = 0; i < m_network.size(); ++i) asleep[i] = m_settled[m_partition.labels[i]];
    Merges merges = mergeSimilar(similarLinks, m_partition.labels,
                                 static_cast<Id>(m_partition.groups.size()), m_workers, m_settled);
    m_pieces = m_partition.labels;
    if (merges.steps.empty()) return asleep;
    // The first merges are the base: single nodes leave a group by moves of their own.
    const Labels first = std::move(merges.steps.front());
    Idle idle(merges.counts.front());
    for (Id i = 0; i < m_network.size(); ++i) idle[first[i]] = asleep[i];
    ItemNetwork<AccWeight> base = folded(m_network, first, merges.counts.front(), m_workers, idle);
    for (Id i = 0; i < m_network.size(); ++i)
        if (asleep[i]) base.items[first[i]] = m_partition.groups[m_partition.labels[i]];
    mirror(base.links, idle);
    merges.steps.erase(merges.steps.begin());
    merges.counts.erase(merges.counts.begin());
    // The last step leads to the groups.
    Labels pieces(base.size());
    for (Id i = 0; i < base.size(); ++i) pieces[i] = i;
    std::vector<Labels> heights;  // pieces after each step, by item of the base
    for (const Labels& step : merges.steps) heights.push_back(pieces = composed(pieces, step));
    Labels last(merges.counts.empty() ? base.size() : merges.counts.back());
    for (Id i = 0; i < m_network.size(); ++i) last[pieces[first[i]]] = m_partition.labels[i];
    heights.push_back(composed(pieces, last));
    merges.steps.push_back(std::move(last));
    merges.counts.push_back(static_cast<Id>(m_partition.groups.size()));

    std::vector<std::vector<Holding>> held;
    for (std::size_t i = 0; i + 1 < heights.size(); ++i)
        held.push_back(holdings(base, heights[i], merges.counts[i], m_workers));
    held.push_back(m_partition.groups);
    Partitioned parts;
    parts.labels = likeliestCut(merges, base.items, held, m_likelihood);
    const Id count = 1 + *std::max_element(parts.labels.begin(), parts.labels.end());
    parts.groups = holdings(base, parts.labels, count, m_workers);
    m_likelihood.estimate(parts.groups);
    m_pieces = composed(first, parts.labels);
    m_clock.book("splitting");

    // Pieces of each height as far as they lie in one part, from fine to coarse.
    struct Height {
        Labels step;  // from the pieces of the finer height
        ItemNetwork<AccWeight> network;
        Idle idle;
    };
    std::vector<Height> coarser;
    const auto finest = [&]() -> const ItemNetwork<AccWeight>& {
        return coarser.empty() ? base : coarser.back().network;
    };
    Labels inPart = parts.labels;  // the part of each piece of the finest height so far
    Labels place(base.size());     // the piece of each item of the base
    for (Id i = 0; i < base.size(); ++i) place[i] = i;
    for (std::size_t i = 0; i + 1 < heights.size(); ++i) {
        // A piece with several parts is left apart as the pieces below it that have one.
        std::vector<Id> partOf(merges.counts[i], ID_NONE);
        std::vector<char> broken(merges.counts[i], 0);
        for (Id item = 0; item < base.size(); ++item) {
            Id& part = partOf[heights[i][item]];
            if (part == ID_NONE) part = parts.labels[item];
            if (part != parts.labels[item]) broken[heights[i][item]] = 1;
        }
        Labels step(finest().size());
        for (Id item = 0; item < base.size(); ++item) {
            const Id piece = heights[i][item];
            step[place[item]] = broken[piece] ? merges.counts[i] + place[item] : piece;
        }
        const Id pieceCount = compact(step);
        if (pieceCount > NEARLY_ALL * finest().size()) continue;
        Labels next(pieceCount);
        for (std::size_t piece = 0; piece < step.size(); ++piece) next[step[piece]] = inPart[piece];
        inPart = std::move(next);
        place = composed(place, step);
        Idle still(pieceCount);
        for (Id item = 0; item < base.size(); ++item) still[place[item]] = idle[item];
        ItemNetwork<AccWeight> network = folded(finest(), step, pieceCount, m_workers);
        coarser.push_back({std::move(step), std::move(network), std::move(still)});
    }

    parts.labels = std::move(inPart);
    while (!coarser.empty()) {
        const Height& height = coarser.back();
        refine(height.network, parts, m_likelihood, GROUP_MOVES, m_workers, height.idle);
        parts.labels = composed(height.step, parts.labels);
        coarser.pop_back();
    }
    refine(base, parts, m_likelihood, GROUP_MOVES, m_workers, idle);
    m_clock.book("refinement");
    merge(base, parts);
    m_partition.labels = composed(first, parts.labels);
    m_partition.groups = std::move(parts.groups);
    m_clock.book("merging");
    return asleep;
}

/// Merges groups where that is likelier.
void Search::merge(const ItemNetwork<AccWeight>& base, Partitioned& parts) {
    const auto count = static_cast<Id>(parts.groups.size());
    const ItemNetwork<AccWeight> groups = folded(base, parts.labels, count, m_workers);
    const Merges merges = mergeLikely(groups, m_likelihood, m_workers);
    if (merges.steps.empty()) return;
    std::vector<std::vector<Holding>> held;
    Labels pieces(count);
    for (Id i = 0; i < count; ++i) pieces[i] = i;
    for (std::size_t i = 0; i < merges.steps.size(); ++i) {
        pieces = composed(pieces, merges.steps[i]);
        held.push_back(holdings(groups, pieces, merges.counts[i], m_workers));
    }
    const Labels merged = likeliestCut(merges, groups.items, held, m_likelihood);
    const Id left = 1 + *std::max_element(merged.begin(), merged.end());
    parts.groups = holdings(groups, merged, left, m_workers);
    parts.labels = composed(parts.labels, merged);
    m_likelihood.estimate(parts.groups);
}

/// Finds the groups that a further split wouldn't change.
/// @return whether there are others
bool Search::settle() {
    const auto count = static_cast<Id>(m_partition.groups.size());
    Id pieces = 0;
    for (const Id piece : m_pieces) pieces = std::max(pieces, piece + 1);
    std::vector<Id> size(pieces);
    Labels piece(count, ID_NONE);  // of the group's first node
    std::vector<Id> together(count);
    for (Id i = 0; i < m_network.size(); ++i) {
        const Id group = m_partition.labels[i];
        if (piece[group] == ID_NONE) piece[group] = m_pieces[i];
        together[group] += piece[group] == m_pieces[i];
        ++size[m_pieces[i]];
    }
    m_settled.assign(count, 0);
    bool all = true;
    for (Id group = 0; group < count; ++group) {
        const double larger = std::max<double>(size[piece[group]], m_partition.groups[group].nodes);
        m_settled[group] = together[group] >= SETTLED * larger;
        all = all && m_settled[group];
    }
    return !all;
}

}  // namespace

Clock::Clock() : m_last(now()) {}

void Clock::book(const char* step) {
    const double time = now();
    auto found = std::find_if(m_seconds.begin(), m_seconds.end(),
                              [&](const auto& entry) { return entry.first == step; });
    if (found == m_seconds.end()) found = m_seconds.insert(found, {step, 0});
    found->second += time - m_last;
    m_last = time;
}

Found search(const ItemNetwork<LinkWeight>& network, const OfLinks<Id>& shared, const Start& start,
             AccWeight weight, double scale, Clock& clock, Workers& workers) {
    return Search(network, start, weight, scale, clock, workers).run(shared);
}

}  // namespace vorl::detail
