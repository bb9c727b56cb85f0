#include "view_command.hpp"

#include "clusters_input.hpp"
#include "errors.hpp"
#include "output_text.hpp"
#include "progress_line.hpp"
#include "run_figures.hpp"
#include "text_output.hpp"

#include <vorl/communities_hierarchy.hpp>
#include <vorl/reading/described_hierarchy.hpp>
#include <vorl/reading/nested_hierarchy.hpp>
#include <vorl/reading/pack.hpp>

#include <filesystem>

namespace vorl::app {

namespace {

Picture pictureOf(const ViewCommand& command) {
    if (command.picture != Picture::UNKNOWN) return command.picture;
    const std::string name = plainName(command.output);
    if (name.ends_with(".svg")) return Picture::SVG;
    if (name.ends_with(".html") || name.ends_with(".htm") || name == STANDARD_OUTPUT)
        return Picture::HTML;
    throw UsageError(command.output +
                     ": the kind of picture can't be told from the name; it is html or svg, give "
                     "it with --to");
}

std::string titleOf(const ViewCommand& command) {
    if (command.title) return *command.title;
    if (command.read.file == STANDARD_OUTPUT) return "network";
    return std::filesystem::path(command.read.file).filename().string();
}

/// The hierarchy around the communities of the network.
HierarchyFile found(const UndirectedNetwork& network, const std::string& name, unsigned threads,
                    LevelNum& level) try {
    const Communities communities = vorl::communities(network.links, {.threads = threads});
    const auto hierarchy =
        communitiesHierarchy(network.links, communities, ClusterOptions(), &level);
    return describedHierarchy(*hierarchy, name);
} catch (const std::overflow_error& err) {
    throw beyondEngine(name, err);
}

HierarchyFile given(const ViewCommand& command, const UndirectedNetwork& network) {
    const ClusterLevels clusters = readClusters(command.clusters, {.format = command.clustersFormat,
                                                                   .levels = true,
                                                                   .quiet = command.quiet,
                                                                   .known = network.labels});
    clusters.flat().requireNodes(network.links.ids, command.read.file, network.labels);
    return clusters.hierarchy() ? *clusters.hierarchy() : nestedHierarchy(*clusters.list());
}

}  // namespace

void run(const ViewCommand& command) {
    std::optional<ProgressLine> line;
    if (!command.quiet) line.emplace();
    const Picture picture = pictureOf(command);
    requireOneStandardInput(command.read.file, command.clusters);
    requireOther(command.output, command.read.file);
    if (!command.clusters.empty()) requireOther(command.output, command.clusters);
    OutputTree files(command.output, false, command.parents);
    files.protect(command.read.file);
    if (!command.clusters.empty()) files.protect(command.clusters);

    const UndirectedNetwork network = readUndirected(command.read);
    if (!command.quiet) showWarnings(network, command.read);
    ViewOptions options;
    options.title = titleOf(command);
    options.directed = network.directed;
    options.weighted = network.weighted;
    options.labels = network.labels;
    options.allLevels = command.allLevels;
    options.threads = command.threads;
    LevelNum level = 0;
    const bool sought = command.clusters.empty();
    const HierarchyFile hierarchy = sought
                                        ? found(network, command.read.file, command.threads, level)
                                        : given(command, network);
    if (command.level && *command.level >= hierarchy.levels())
        throw InputError((sought ? command.read.file : command.clusters) + ": there is no level " +
                         std::to_string(*command.level) + ", but " +
                         counted(hierarchy.levels(), "level"));
    if (sought && hierarchy.levels() != 0) options.level = level;
    if (command.level) options.level = command.level;

    std::string text = picture == Picture::SVG ? viewSvg(network.links, hierarchy, options)
                                               : viewPage(network.links, hierarchy, options);
    const std::string size = bytes(text.size());
    writeText(std::move(text), files, command.output);
    if (!command.quiet && command.output != STANDARD_OUTPUT)
        tell(command.output + ": " + counted(network.links.size(), "node") + ", " +
             counted(hierarchy.clusters(), "cluster") + " on " +
             counted(hierarchy.levels(), "level") + ", " + size);
}

}  // namespace vorl::app
