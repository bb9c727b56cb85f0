// The reader of the format RHB, and tables of memberships behind a form feed. Whatever is accepted
// must agree with itself.
#include "../support/accepted_network.hpp"

#include <vorl/reading/cluster_levels.hpp>

#include <cmath>
#include <cstddef>
#include <string_view>

namespace {

using namespace vorl;

using test::require;

void walk(const HierarchyFile& file) {
    const HierarchyFile::Item items = file.nodes() + file.clusters();
    if (items > 256) return;
    const std::vector<HierarchyFile::Item> standing = file.standingClusters();
    for (LevelNum level = 0; level < file.levels(); ++level) {
        const ClustersFile cut = file.cut(level);
        require(cut.clusters.size() <= standing[level], "a cut has too many clusters");
        require(parseClusters(cut.strictText(), "cut").deviations.empty(), "a cut isn't strict");
    }
    for (HierarchyFile::Item item = 0; item < items; ++item) {
        double roots = 0;
        for (const auto& [cluster, share] : file.ancestors(item)) {
            require(share > 0 && share <= 1, "a share is out of range");
            if (file.owners(cluster).empty()) roots += share;
        }
        require(file.owners(item).empty() || std::abs(roots - 1) < 1e-6,
                "the shares at the root don't add up");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(text.find('\f'), size);
    try {
        walk(parseHierarchy(text.substr(0, end), "fuzz.rhb"));
    } catch (const InputError&) {
    }
    try {
        const ClustersFile table = parseTable(text.substr(std::min(end + 1, size)), "fuzz.tsv");
        const ClustersFile again = parseClusters(table.strictText(), "strict.cnl");
        require(again.members == table.members && again.deviations.empty(),
                "the strict form of a table is another one");
        for (const auto& level : table.nestedLevels())
            require(!level.empty(), "a level has no clusters");
    } catch (const InputError&) {
    }
    return 0;
}
