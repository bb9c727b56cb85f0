// Reading and clustering of the bundled networks.
#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/types/trace.hpp>

#include <benchmark/benchmark.h>

#include <filesystem>

namespace {

using namespace vorl;

const char* const NAMES[] = {"karate.nse", "jazz.nse", "celegansneural.nsa", "netscience.nse",
                             "power.nse"};

std::shared_ptr<Graph<true>> read(const char* name) {
    InpOptions input;
    input.filename = std::string(VORL_DATA_DIR "/") + name;
    input.format = inpFileFmt(name);
    return NslParser(input).build<Graph<true>>();
}

void reading(benchmark::State& state) {
    ftrace = nullptr;
    const char* name = NAMES[state.range(0)];
    state.SetLabel(name);
    for (auto _ : state) benchmark::DoNotOptimize(read(name));
    const auto size = std::filesystem::file_size(std::string(VORL_DATA_DIR "/") + name);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

void clustering(benchmark::State& state) {
    ftrace = nullptr;
    const char* name = NAMES[state.range(0)];
    state.SetLabel(name);
    for (auto _ : state) {
        state.PauseTiming();
        const auto graph = read(name);
        state.ResumeTiming();
        benchmark::DoNotOptimize(graph->buildHierarchy());
    }
}

BENCHMARK(reading)->Name("bundled/reading")->DenseRange(0, std::size(NAMES) - 1);
BENCHMARK(clustering)->Name("bundled/clustering")->DenseRange(0, std::size(NAMES) - 1);

}  // namespace
