// Unfolding of clusters into nodes, and the files of a hierarchy.
#include "support.hpp"

#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/printer_cnl.hpp>
#include <vorl/fileio/printer_rhb.hpp>

#include <benchmark/benchmark.h>

#include <cstdio>

namespace vorl::bench {
namespace {

void unwrapRoot(benchmark::State& state) {
    const auto hier = clustered(static_cast<Id>(state.range(0)));
    for (auto _ : state)
        for (const auto* cl : hier->root()) benchmark::DoNotOptimize(hier->unwrap(*cl));
}

void unwrapAll(benchmark::State& state) {
    const auto hier = clustered(static_cast<Id>(state.range(0)));
    std::int64_t clusters = 0;
    for (auto _ : state)
        for (const auto& level : hier->levels()) {
            for (const auto& cl : level.clusters) benchmark::DoNotOptimize(hier->unwrap(cl));
            clusters += static_cast<std::int64_t>(level.clusters.size());
        }
    state.SetItemsProcessed(clusters);
}

/// Writes to a file in memory or on disk, as the folder of temporary files is.
template <class WriteT>
void writing(benchmark::State& state, WriteT write) {
    const auto hier = clustered(static_cast<Id>(state.range(0)));
    const Folder folder;
    const std::string file = folder / "clusters.cnl";
    for (auto _ : state) write(*hier, file);
    const auto bytes = static_cast<std::int64_t>(std::filesystem::file_size(file));
    state.SetBytesProcessed(state.iterations() * bytes);
}

void clusters(benchmark::State& state, ClsOutFmt structure) {
    writing(state, [structure](const Hierarchy<UnweightedLinks>& hier, const std::string& file) {
        FileWrappers files;
        files.emplace_back(std::fopen(file.c_str(), "w"));
        CnlPrinter<UnweightedLinks>(hier).output(
            files, static_cast<ClsOutFmtBase>(toMask(structure) | toMask(ClsOutFmt::EXTENDED)));
    });
}

void description(benchmark::State& state) {
    writing(state, [](const Hierarchy<UnweightedLinks>& hier, const std::string& file) {
        FileWrapper out(std::fopen(file.c_str(), "w"));
        RhbPrinter<UnweightedLinks>(hier).output(out);
    });
}

BENCHMARK(unwrapRoot)->Name("unwrap/root")->Arg(1000)->Arg(10000);
BENCHMARK(unwrapAll)->Name("unwrap/all clusters")->Arg(1000)->Arg(10000);
BENCHMARK_CAPTURE(clusters, root, ClsOutFmt::ROOT)->Name("output/root")->Arg(1000)->Arg(10000);
BENCHMARK_CAPTURE(clusters, all, ClsOutFmt::ALLCLS)
    ->Name("output/all clusters")
    ->Arg(1000)
    ->Arg(10000);
BENCHMARK(description)->Name("output/hierarchy")->Arg(1000)->Arg(10000);

}  // namespace
}  // namespace vorl::bench
