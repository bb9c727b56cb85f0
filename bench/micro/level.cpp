// The steps of a level: gain of pairs and groups, candidates, all of the first level, folding.
#include "support.hpp"

#include <benchmark/benchmark.h>

#include <optional>

namespace vorl::bench {
namespace {

using NodeT = FirstLevel::Engine::NodeT;

/// A benchmark of a step that uses its level up: each turn has a new one, made off the clock.
template <class PrepareT, class StepT>
void step(benchmark::State& state, PrepareT prepare, StepT run) {
    const Edges edges = planted(static_cast<Id>(state.range(0)));
    std::optional<FirstLevel> level;
    for (auto _ : state) {
        state.PauseTiming();
        level.emplace(edges);
        prepare(*level);
        state.ResumeTiming();
        run(*level);
        state.PauseTiming();
        level.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(edges.links.size()));
}

void formLevel(FirstLevel& level) {
    auto& nodes = level.hier.m_nodes;
    level.hier.clusterLevel<NodeT>(nodes.begin(), nodes.end(), static_cast<Id>(nodes.size()));
}

void gainOfPairs(benchmark::State& state, float gamma) {
    const FirstLevel level(planted(static_cast<Id>(state.range(0))), gamma);
    std::int64_t links = 0;
    for (auto _ : state)
        for (const NodeT& node : level.hier.m_nodes) {
            for (const auto& ln : node.links)
                benchmark::DoNotOptimize(level.hier.clusterGain(node, ln));
            links += static_cast<std::int64_t>(node.links.size());
        }
    state.SetItemsProcessed(links);
}

// Each node with up to 8 of its neighbours.
void gainOfGroups(benchmark::State& state) {
    FirstLevel level(planted(static_cast<Id>(state.range(0))));
    std::vector<std::vector<NodeT*>> groups;
    for (NodeT& node : level.hier.m_nodes) {
        auto& group = groups.emplace_back();
        for (const auto& ln : node.links)
            if (group.size() < 8) group.push_back(ln.dest);
        group.push_back(&node);
        std::sort(group.begin(), group.end());
    }
    for (auto _ : state)
        for (const auto& group : groups) benchmark::DoNotOptimize(level.hier.clusterGain(group, 1));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(groups.size()));
}

void candidates(benchmark::State& state) {
    step(
        state, [](FirstLevel&) {},
        [](FirstLevel& level) {
            auto& nodes = level.hier.m_nodes;
            level.hier.initCands(nodes.begin(), nodes.end(), level.clusters);
        });
}

void firstLevel(benchmark::State& state) {
    step(
        state, [](FirstLevel&) {}, formLevel);
}

void folding(benchmark::State& state) {
    step(state, formLevel, [](FirstLevel& level) { level.hier.foldLevel<false>({}); });
}

BENCHMARK_CAPTURE(gainOfPairs, dynamic, -1.f)->Name("gain/pairs, dynamic gamma")->Arg(30000);
BENCHMARK_CAPTURE(gainOfPairs, fixed, 1.f)->Name("gain/pairs, gamma 1")->Arg(30000);
BENCHMARK(gainOfGroups)->Name("gain/groups")->Arg(30000);
BENCHMARK(candidates)->Name("candidates")->Arg(1000)->Arg(30000);
BENCHMARK(firstLevel)->Name("first level")->Arg(1000)->Arg(30000);
BENCHMARK(folding)->Name("folding")->Arg(1000)->Arg(30000);

}  // namespace
}  // namespace vorl::bench
