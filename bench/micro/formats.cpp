// Reading of one network in each of its formats.
#include "support.hpp"

#include <vorl/reading/network.hpp>
#include <vorl/reading/network_text.hpp>

#include <benchmark/benchmark.h>

#include <fstream>

namespace vorl::bench {
namespace {

constexpr Id NODES = 110'000;

/// A million edges between nodes from 1 on, or between names of some fifteen characters.
NetworkTable tableOf(bool named) {
    const Edges edges = planted(NODES);
    NodeNames names;
    const auto node = [&](Id id) {
        // Strewn, as names are that don't come in order.
        const std::string digits = std::to_string((id + 1) * 2'654'435'761U);
        return named ? names.id(names.numberOf("person " + digits)) : id + 1;
    };
    NetworkTable table;
    table.nodes.reserve(NODES);
    for (Id id = 0; id < NODES; ++id) table.nodes.push_back(node(id));
    for (const auto& [src, dst] : edges.links)
        table.links.push_back({table.nodes[src], table.nodes[dst], 1, false});
    table.linked = NODES;
    table.facts.edges = edges.links.size();
    if (named) table.labels = names.labels();
    return table;
}

void readFormat(benchmark::State& state, NetworkFormat format, bool named) {
    const Folder folder;
    ReadOptions options;
    options.file = folder / "network";
    options.format = format;
    const auto edges = [&] {
        const NetworkTable table = tableOf(named);
        std::ofstream(options.file) << networkText(format, table, ',');
        return static_cast<std::int64_t>(table.links.size());
    }();
    for (auto _ : state) {
        const auto read = static_cast<std::int64_t>(readNetwork(options).edges);
        if (read != edges) state.SkipWithError("edges are missing");
    }
    const auto bytes = static_cast<std::int64_t>(std::filesystem::file_size(options.file));
    state.SetBytesProcessed(state.iterations() * bytes);
    state.SetItemsProcessed(state.iterations() * edges);
}

[[maybe_unused]] const bool REGISTERED = [] {
    for (const auto& [name, format] : networkFormats()) {
        const bool numbered = format <= NetworkFormat::RCG ||
                              format == NetworkFormat::MATRIX_MARKET ||
                              format == NetworkFormat::METIS;
        for (const bool named : {false, true}) {
            if ((named && numbered) || format == NetworkFormat::NSA) continue;
            const std::string title =
                std::string("large/formats/") + name + (named ? "/names" : "/numbers");
            benchmark::RegisterBenchmark(title.c_str(), readFormat, format, named)
                ->Unit(benchmark::kMillisecond);
        }
    }
    return true;
}();

}  // namespace
}  // namespace vorl::bench
