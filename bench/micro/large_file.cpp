// Reading of a file of ten million edges, beside a plain read of its bytes and a count of its
// lines.
#include "support.hpp"

#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/fileio/parser_rcg.hpp>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>
#include <fstream>

namespace vorl::bench {
namespace {

constexpr Id NODES = 1'030'000;
constexpr std::size_t EDGES = 10'000'000;

template <FileFormat FORMAT>
std::string largeFile() {
    static const Folder folder;
    static const std::string file = [] {
        const std::string name = folder / (FORMAT == FileFormat::RCG ? "large.rcg" : "large.nse");
        Edges edges = planted(NODES);
        edges.links.resize(std::min(edges.links.size(), EDGES));
        std::ofstream out(name);
        if constexpr (FORMAT == FileFormat::NSE) {
            out << "# Nodes: " << NODES << ", Edges: " << edges.links.size() << "\n";
            for (const auto& [src, dst] : edges.links) out << src << " " << dst << "\n";
        } else {
            out << "/Graph weighted:0 validated:1\n/Nodes " << NODES << " 0\n/Edges\n";
            Id last = ID_NONE;
            for (const auto& [src, dst] : edges.links) {
                if (src != last) out << (last == ID_NONE ? "" : "\n") << src << ">";
                out << " " << dst;
                last = src;
            }
            out << "\n";
        }
        return name;
    }();
    return file;
}

void setBytes(benchmark::State& state, const std::string& file) {
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(file));
    state.SetBytesProcessed(state.iterations() * size);
}

template <FileFormat FORMAT>
void network(benchmark::State& state) {
    ftrace = nullptr;
    InpOptions options;
    options.filename = largeFile<FORMAT>();
    options.format = FORMAT;
    for (auto _ : state) {
        std::shared_ptr<Graph<false>> graph;
        if constexpr (FORMAT == FileFormat::NSE)
            graph = NslParser(options).build<Graph<false>>(false);
        else
            graph = RcgParser(options).build<Graph<false>>();
        if (graph->nodes().size() != NODES) state.SkipWithError("nodes are missing");
    }
    setBytes(state, options.filename);
}

/// Hands the file over in blocks, as `wc` reads it.
template <class BlockT>
void readBlocks(const std::string& file, BlockT block) {
    const int descriptor = open(file.c_str(), O_RDONLY);
    std::vector<char> buffer(std::size_t{1} << 18);
    for (ssize_t got; (got = read(descriptor, buffer.data(), buffer.size())) > 0;)
        block(buffer.data(), static_cast<std::size_t>(got));
    close(descriptor);
}

template <FileFormat FORMAT>
void raw(benchmark::State& state) {
    const std::string file = largeFile<FORMAT>();
    for (auto _ : state)
        readBlocks(file, [](const char* data, std::size_t) { benchmark::DoNotOptimize(*data); });
    setBytes(state, file);
}

template <FileFormat FORMAT>
void lines(benchmark::State& state) {
    const std::string file = largeFile<FORMAT>();
    for (auto _ : state) {
        std::size_t count = 0;
        readBlocks(file, [&](const char* data, std::size_t size) {
            count += static_cast<std::size_t>(std::count(data, data + size, '\n'));
        });
        benchmark::DoNotOptimize(count);
    }
    setBytes(state, file);
}

BENCHMARK(raw<FileFormat::NSE>)->Name("large/nse/raw")->Unit(benchmark::kMillisecond);
BENCHMARK(lines<FileFormat::NSE>)->Name("large/nse/lines")->Unit(benchmark::kMillisecond);
BENCHMARK(network<FileFormat::NSE>)->Name("large/nse/network")->Unit(benchmark::kMillisecond);
BENCHMARK(raw<FileFormat::RCG>)->Name("large/rcg/raw")->Unit(benchmark::kMillisecond);
BENCHMARK(lines<FileFormat::RCG>)->Name("large/rcg/lines")->Unit(benchmark::kMillisecond);
BENCHMARK(network<FileFormat::RCG>)->Name("large/rcg/network")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vorl::bench
