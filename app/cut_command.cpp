#include "cut_command.hpp"

#include "clusters_input.hpp"
#include "errors.hpp"
#include "output_target.hpp"
#include "output_text.hpp"
#include "text_output.hpp"

namespace vorl::app {

void run(const CutCommand& command) {
    if (!command.level && !command.clusters)
        throw UsageError("cut needs a level, --level L, or a number of clusters, --clusters N");
    requireOther(command.output, command.file);
    requireClustersName(command.output);
    OutputTree files(command.output, false, command.parents);
    files.protect(command.file);
    const HierarchyFile hierarchy = readHierarchy(command.file);
    const LevelNum level =
        command.level ? *command.level : hierarchy.nearestLevel(*command.clusters);
    if (level >= hierarchy.levels())
        throw InputError(command.file + ": the hierarchy has " +
                         counted(hierarchy.levels(), "level") + ", there is no level " +
                         std::to_string(level));
    const ClustersFile clusters = hierarchy.cut(level);
    writeText(clusters.strictText(hierarchy.nodes(), true), files, command.output);
    if (!command.quiet)
        tell(command.file + ": level " + std::to_string(level) + ", " +
             counted(clusters.clusters.size(), "cluster") + " of " +
             counted(clusters.nodes.size(), "node"));
}

}  // namespace vorl::app
