// Two cluster files, parted by a form feed, through the reader and all measures. Whatever is
// accepted must agree with itself, and its strict form must be right for both readers.
#include "../support/accepted_network.hpp"
#include "app/compare_command.hpp"
#include "app/errors.hpp"

#include <vorl/fileio/parser_cnl.hpp>
#include <vorl/reading/memory_file.hpp>
#include <vorl/types/trace.hpp>

#include <cmath>
#include <cstddef>
#include <string_view>

namespace {

using namespace vorl;
using namespace vorl::app;

using test::require;

bool isUnit(double value) { return value >= -1e-9 && value <= 1 + 1e-9; }
bool near(double a, double b) { return std::abs(a - b) <= 1e-9; }

/// Loads the strict form onto a path of its nodes. A fault stops the process.
void load(const ClustersFile& file, const std::string& text) {
    if (file.nodes.empty()) return;
    Graph<true> graph;
    graph.addNodes(file.nodes);
    for (std::size_t i = 1; i < file.nodes.size(); ++i)
        graph.addLink<false>(file.nodes[i - 1], file.nodes[i]);
    const MemoryFile memory(text);
    Clusters<WeightedLinks> clusters;
    try {
        loadClusters<CnlParser>(clusters, graph, memory.name(), Validation::NONE);
    } catch (const std::string& message) {
        require(false, message.c_str());
    }
    require(clusters.size() == file.clusters.size(), "the library reads other clusters");
}

ClustersFile read(std::string_view text) {
    ClustersFile file = parseClusters(text, "fuzz.cnl");
    const std::string strict = file.strictText();
    load(file, strict);
    const ClustersFile again = parseClusters(strict, "strict.cnl");
    require(again.deviations.empty(), "the strict form deviates");
    require(again.members == file.members && again.clusters.size() == file.clusters.size(),
            "the strict form has other clusters");
    for (std::size_t i = 0; i < file.clusters.size(); ++i)
        require(!file.numbered || again.clusters[i].id == file.clusters[i].id,
                "the strict form has other numbers");
    require(again.strictText() == strict, "the strict form isn't its own strict form");
    require(again.completeShares() == file.completeShares(), "the strict form has other shares");
    return file;
}

void compare(const ClustersFile& first, const ClustersFile& second) {
    const std::vector<Id> nodes = chosenNodes(first, second, NodeSet::UNION);
    const Cover x = coverOf(first, nodes);
    const Cover y = coverOf(second, nodes, nodes.size() + 1);
    const Cover z = coverOf(second, nodes);
    for (Size exact : {Size{0}, Size{1} << 40}) {
        const Agreement there = agreement(x, z, {exact, 64});
        const Agreement back = agreement(z, x, {exact, 64});
        require(isUnit(there.nmiMax) && isUnit(there.nmiLfk) && isUnit(there.f1),
                "a measure is out of range");
        require(near(there.nmiMax, back.nmiMax) && near(there.nmiLfk, back.nmiLfk) &&
                    near(there.f1, back.f1),
                "a measure isn't symmetric");
        require(there.omegaSamples != 0 || (there.omega <= 1 && near(there.omega, back.omega)),
                "omega is out of range or isn't symmetric");
        require(!std::isnan(there.omega), "omega is no number");
    }
    const Agreement self = agreement(y, y);
    require(near(self.nmiMax, 1) && near(self.nmiLfk, 1) && near(self.f1, 1) && near(self.omega, 1),
            "a clustering differs from itself");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ftrace = nullptr;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(text.find('\f'), size);
    try {
        const ClustersFile first = read(text.substr(0, end));
        const ClustersFile second = read(text.substr(std::min(end + 1, size)));
        if (!first.clusters.empty() && !second.clusters.empty()) compare(first, second);
    } catch (const InputError&) {
    }
    return 0;
}
