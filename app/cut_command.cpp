#include "cut_command.hpp"

#include "clusters_input.hpp"
#include "errors.hpp"
#include "output_text.hpp"
#include "text_output.hpp"

#include <cstdio>

namespace vorl::app {

void run(const CutCommand& command) {
    if (!command.level && !command.clusters)
        throw UsageError("cut needs a level, --level L, or a number of clusters, --clusters N");
    requireOther(command.output, command.file);
    OutputTree files(command.output);
    const HierarchyFile hierarchy = readHierarchy(command.file);
    const LevelNum level =
        command.level ? *command.level : hierarchy.nearestLevel(*command.clusters);
    if (level >= hierarchy.levels())
        throw InputError(command.file + ": the hierarchy has " +
                         counted(hierarchy.levels(), "level") + ", there is no level " +
                         std::to_string(level));
    const ClustersFile clusters = hierarchy.cut(level);
    writeText(clusters.strictText(hierarchy.nodes()), files, command.output);
    if (!command.quiet)
        std::fprintf(stderr, "vorl: %s: level %u, %s of %s\n", command.file.c_str(), level,
                     counted(clusters.clusters.size(), "cluster").c_str(),
                     counted(clusters.nodes.size(), "node").c_str());
}

}  // namespace vorl::app
