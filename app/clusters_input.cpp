#include "clusters_input.hpp"

#include "output_text.hpp"

#include <vorl/reading/lines.hpp>

namespace vorl::app {

ClusterLevels readClusters(const std::string& file, const ClustersOptions& options) {
    ClusterLevels clusters = readClusterLevels(file, options.format, options.known);
    const auto remark = [&](const std::string& text) {
        if (!options.quiet && !text.empty()) tell(file + ": " + text);
    };
    if (const ClustersFile* const list = clusters.list()) {
        if (options.strict) list->requireStrict();
        list->requireClusters();
        remark(list->deviationsText(options.shares));
    }
    if (clusters.likeTable())
        remark(
            "each line holds two ids, as one of a table of nodes and clusters does; --table "
            "reads it as that");
    if (!options.levels && clusters.severalLevels())
        remark(clusters.isHierarchy()
                   ? "a hierarchy of " + counted(clusters.levels(), "level") +
                         ", of which the clusters at the root count; --levels takes each level"
                   : "there are clusters of several levels inside each other, which count as if "
                     "they were of one; --levels takes each level");
    return clusters;
}

HierarchyFile readHierarchy(const std::string& file) {
    const auto source = openSource(file);
    Lines lines(*source, file);
    return parseHierarchy(lines);
}

}  // namespace vorl::app
