// Reading of link lists and assembly of networks.
#include "support.hpp"

#include <vorl/fileio/parser_nsl.hpp>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <fstream>
#include <numeric>
#include <random>

namespace vorl::bench {
namespace {

void write(const std::string& file, const Edges& edges, bool weighted) {
    std::ofstream out(file);
    out << "# Nodes: " << edges.nodesNum << ", Edges: " << edges.links.size()
        << ", Weighted: " << weighted << "\n";
    for (const auto& [src, dst] : edges.links) {
        out << src << " " << dst;
        if (weighted) out << " " << static_cast<float>(src % 97 + dst) / 8;
        out << "\n";
    }
}

template <bool WEIGHTED>
void readNetwork(benchmark::State& state) {
    ftrace = nullptr;
    const Folder folder;
    InpOptions options;
    options.filename = folder / "network.nse";
    options.format = FileFormat::NSE;
    const Edges edges = planted(static_cast<Id>(state.range(0)));
    write(options.filename, edges, WEIGHTED);
    for (auto _ : state)
        benchmark::DoNotOptimize(NslParser(options).build<Graph<WEIGHTED>>(WEIGHTED));
    const auto bytes = static_cast<std::int64_t>(std::filesystem::file_size(options.filename));
    state.SetBytesProcessed(state.iterations() * bytes);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(edges.links.size()));
}

void assembleNetwork(benchmark::State& state) {
    ftrace = nullptr;
    const Edges edges = planted(static_cast<Id>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(assemble(edges));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(edges.links.size()));
}

// One by one, as a program does that makes its links on the way.
void addLinksSingly(benchmark::State& state) {
    ftrace = nullptr;
    const Edges edges = planted(static_cast<Id>(state.range(0)));
    for (auto _ : state) {
        Graph<false> graph(edges.nodesNum);
        graph.addNodes(edges.nodesNum);
        for (const auto& [src, dst] : edges.links) graph.addLink<false>(src, dst);
        benchmark::DoNotOptimize(graph);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(edges.links.size()));
}

// A node with a link to each other one, which arrive by ascending ids or in random order.
template <bool RANDOM>
void assembleHub(benchmark::State& state) {
    ftrace = nullptr;
    const auto hub = static_cast<Id>(state.range(0));
    std::vector<Id> dests(hub);
    std::iota(dests.begin(), dests.end(), Id{0});
    if (RANDOM) std::shuffle(dests.begin(), dests.end(), std::mt19937_64(1));
    for (auto _ : state) {
        Graph<false> graph(hub + 1);
        graph.addNodes(hub + 1);
        for (const Id dst : dests) graph.addLink<true>(hub, dst);
        benchmark::DoNotOptimize(graph.node(hub)->links.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(readNetwork<false>)->Name("reading/unweighted")->Arg(1000)->Arg(30000);
BENCHMARK(readNetwork<true>)->Name("reading/weighted")->Arg(1000)->Arg(30000);
BENCHMARK(assembleNetwork)->Name("assembly/nodes")->Arg(1000)->Arg(30000);
BENCHMARK(addLinksSingly)->Name("assembly/links")->Arg(1000)->Arg(30000);
BENCHMARK(assembleHub<false>)
    ->Name("assembly/hub_ascending")
    ->Arg(3000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(assembleHub<true>)
    ->Name("assembly/hub_random")
    ->Arg(3000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vorl::bench
