#include "scene.hpp"

#include "best_level.hpp"

#include <algorithm>
#include <numeric>

namespace vorl::view {

namespace {

LevelNum levelFor(const FlatNetwork& network, const HierarchyFile& hierarchy, unsigned threads) {
    detail::Workers workers(threads);
    return bestLevel(network, hierarchy, Nest(network, hierarchy), workers);
}

std::vector<LevelNum> allLevels(const HierarchyFile& hierarchy) {
    std::vector<LevelNum> levels(hierarchy.levels());
    std::iota(levels.begin(), levels.end(), LevelNum{0});
    return levels;
}

}  // namespace

std::vector<LevelNum> levelsToShow(const HierarchyFile& hierarchy, LevelNum around) {
    if (hierarchy.levels() == 0) return {};
    const std::vector<Item> standing = hierarchy.standingClusters();
    // Numbers of clusters are compared by threes: twice of one at most three times of the other.
    std::vector<LevelNum> levels{around};
    constexpr Size few = 4;
    for (LevelNum level = around; level-- > 0;)
        if (2 * Size{standing[level]} >= 3 * Size{standing[levels.back()]} &&
            few * standing[level] <= hierarchy.nodes())
            levels.push_back(level);
    std::reverse(levels.begin(), levels.end());
    const auto top = static_cast<LevelNum>(hierarchy.levels() - 1);
    for (LevelNum level = around + 1; level <= top; ++level) {
        const bool fewer = 3 * Size{standing[level]} <= 2 * Size{standing[levels.back()]};
        if (standing[level] > 1 &&
            (fewer || (level == top && standing[level] != standing[levels.back()])))
            levels.push_back(level);
    }
    return levels;
}

Scene::Scene(const FlatNetwork& network, const HierarchyFile& hierarchy, const ViewOptions& options)
    : level(options.level ? *options.level : levelFor(network, hierarchy, options.threads)),
      levels(options.allLevels ? allLevels(hierarchy) : levelsToShow(hierarchy, level)),
      file(hierarchy.withLevels(levels)),
      first(static_cast<LevelNum>(std::find(levels.begin(), levels.end(), level) - levels.begin())),
      nest(network, file),
      map(nest),
      base(standing(file, nest, first)),
      colour(colours(network, nest, base)) {}

}  // namespace vorl::view
