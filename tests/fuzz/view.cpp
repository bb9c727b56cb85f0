// Pictures of any hierarchy: the input is one in the format RHB, or clusters in CNL, of a network
// that links each node to the next two. Everything has to lie in what it is in.
#include "../support/accepted_network.hpp"

#include "../../lib/src/view/scene.hpp"

#include <vorl/reading/nested_hierarchy.hpp>

#include <cmath>
#include <cstddef>
#include <string_view>

namespace {

using namespace vorl;

using test::require;

void draw(const HierarchyFile& file) {
    if (file.nodes() == 0 || file.nodes() + file.clusters() > 300) return;
    std::vector<Id> src, dst, nodes;
    for (HierarchyFile::Item node = 0; node < file.nodes(); ++node) {
        nodes.push_back(file.id(node));
        for (HierarchyFile::Item next = node + 1; next < std::min(node + 3, file.nodes()); ++next) {
            src.push_back(file.id(node));
            dst.push_back(file.id(next));
        }
    }
    const FlatNetwork network = FlatNetwork::ofPairs(src, dst, {}, nodes);
    for (const bool all : {false, true}) {
        ViewOptions options;
        options.allLevels = all;
        const view::Scene scene(network, file, options);
        require(std::abs(scene.nest.clusters[0].mass - static_cast<double>(network.size())) < 1e-3,
                "shares are lost");
        for (view::Number i = 1; i < scene.nest.clusters.size(); ++i) {
            const view::Circle& own = scene.map.clusters[i];
            const view::Circle& above = scene.map.clusters[scene.nest.clusters[i].parent];
            require(std::hypot(own.x - above.x, own.y - above.y) + own.r <= above.r * (1 + 1e-6),
                    "a circle leaves the one that it is in");
        }
        viewSvg(network, file, options);
        viewPage(network, file, options);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        draw(parseHierarchy(text, "fuzz.rhb"));
    } catch (const InputError&) {
    }
    try {
        draw(nestedHierarchy(parseClusters(text, "fuzz.cnl")));
    } catch (const InputError&) {
    }
    return 0;
}
