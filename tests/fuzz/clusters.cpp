// Two cluster files, parted by a form feed, through the reader and all measures. Whatever is
// accepted must be readable again in the strict form and agree with itself.
#include "app/compare_command.hpp"
#include "app/errors.hpp"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

using namespace vorl;
using namespace vorl::app;

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

bool isUnit(double value) { return value >= -1e-9 && value <= 1 + 1e-9; }
bool near(double a, double b) { return std::abs(a - b) <= 1e-9; }

ClustersFile read(std::string_view text) {
    ClustersFile file = parseClusters(text, "fuzz.cnl");
    const ClustersFile again = parseClusters(file.strictText(), "strict.cnl");
    require(again.deviations.empty(), "the strict form deviates");
    require(again.members == file.members && again.clusters.size() == file.clusters.size(),
            "the strict form has other clusters");
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
