#include "cluster_command.hpp"

#include "errors.hpp"
#include "folder_names.hpp"
#include "output_target.hpp"
#include "output_text.hpp"
#include "progress_line.hpp"
#include "run_figures.hpp"
#include "summary.hpp"
#include "text_output.hpp"

#include <vorl/processing/validation.hpp>
#include <vorl/reading/pack.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/cluster_ids.hpp>
#include <vorl/types/trace.hpp>

#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>

namespace vorl::app {

namespace {

template <class LinksT>
void describe(const Hierarchy<LinksT>& hier, bool measures, Summary& summary) {
    summary.score = hier.score();
    summary.modularityAtOne = rootModularity(hier);
    for (const auto& level : hier.levels())
        summary.levels.emplace_back(level.clusters.size(), level.fullsize);
    if (measures) summary.measures = levelMeasures(hier);
    for (const auto* cl : hier.root()) summary.rootSizes.push_back(cl->nnodes());
}

/// The name of a file of one of several resolutions.
/// @throws UsageError unless there is an extension, which it can be set before
std::string nameAt(const std::string& name, float gamma) {
    const std::filesystem::path file = name;
    if (file.extension().empty() || name == STANDARD_OUTPUT)
        throw UsageError(name +
                         " can't hold the files of several resolutions, give the name of a file "
                         "with an extension, such as clusters.cnl");
    return (file.parent_path() / (file.stem().string() + "_gamma_" + gammaName(gamma))).string() +
           file.extension().string();
}

/// What is asked to be written of one of the resolutions; of several each has its own files.
OutputRequest outputAt(const ClusterCommand& command, float gamma) {
    OutputRequest request = command.output;
    if (request.file.empty() || command.gammas.size() == 1) return request;
    request.file = nameAt(request.file, gamma);
    return request;
}

/// The file of the table of one of the resolutions.
OutputTarget tableAt(const ClusterCommand& command, float gamma) {
    const std::string& file = command.table;
    const std::string plain = plainName(file);
    return {file.empty() || command.gammas.size() == 1
                ? file
                : nameAt(plain, gamma) + file.substr(plain.size()),
            command.read.file, command.output.parents};
}

/// Opens the files of one of the resolutions.
void open(std::optional<OutputTree>& files, const ClusterCommand& command, float gamma) {
    const OutputRequest request = outputAt(command, gamma);
    if (request.file.empty()) return;
    if (asksForPacking(request.file))
        throw UsageError(request.file +
                         ": clusters and hierarchies are written as plain text, give the name " +
                         plainName(request.file));
    files.reset();
    files.emplace(request.file, goesToFolder(request), request.parents);
    if (files->isStandardOutput() && command.json)
        throw UsageError("the clusters and the summary can't both go to the standard output");
    if (!files->isDevice())
        checkTargets(request, command.read.file);
    else if (goesToFolder(request))
        throw UsageError(request.file +
                         " can't hold the files of several levels, give the name of a file");
    files->protect(command.read.file);
}

/// Tells of files that were in the folder of the levels before, lest they be taken for levels.
void tellOtherFiles(const std::string& file, const std::vector<std::string>& written) {
    const std::filesystem::path path = file;
    const std::filesystem::path folder = path.parent_path() / path.stem();
    if (access(folder.c_str(), R_OK) != 0) return;
    Size others = 0;
    for (const std::string& name : namesIn(folder.string()))
        others +=
            std::find(written.begin(), written.end(), (folder / name).string()) == written.end();
    if (others != 0)
        tell(folder.string() + ": " + counted(others, "file") +
             " that this run didn't write stood there already");
}

/// Builds a hierarchy.
/// @throws InputError with the name of the network where the engine can't
template <class BuildT>
auto buildNamed(const ClusterCommand& command, bool weighted, BuildT build) {
    const Reduction reduction = command.build.reduction;
    try {
        return build();
    } catch (const std::overflow_error& err) {
        throw beyondEngine(command.read.file, err);
    } catch (const std::domain_error& err) {
        const bool byWeight = (reduction & Reduction::CRITERIA_WEIGHT) != Reduction::NONE;
        throw engineFault(command.read.file,
                          byWeight && !weighted
                              ? "its links have no weights that --reduction by-weight could go by"
                              : err.what());
    }
}

/// Tells of a hierarchy that is far larger than the network, as that of a long path.
void tellOfTies(const std::string& file, Size nodes, Size clusters) {
    constexpr Size many = 10000;
    constexpr Size ratio = 3;  // real networks stay below 2
    if (clusters < many || clusters / ratio < nodes) return;
    tell(file + ": " + counted(clusters, "cluster") + " of " + counted(nodes, "node") +
         ": the network is so regular that nearly all gains tie, and clusters overlap more and "
         "more from level to level; \"vorl communities\" finds its communities, and --reduction "
         "severe may give fewer clusters");
}

/// Clusters at one of the resolutions and writes.
/// @param last  the graph isn't needed any more
template <class GraphT>
Summary runOnce(const ClusterCommand& command, float gamma, GraphT& graph,
                const std::shared_ptr<Labels>& labels, bool last, std::optional<OutputTree>& files,
                NetworkSummary& read, Stopwatch& watch) {
    ClusterOptions options = command.build;
    options.gamma = gamma;
    // Ids count on from one hierarchy to the next, and each run is to be as if it were alone.
    const ClusterIdsScope<typename GraphT::LinksT> ids;
    Summary summary;
    // The engine needs the back links of arcs, which it leaves to the validation.
    if (last && graph.directed() && options.validation == Validation::NONE) {
        AccWeight weight = 0;
        Size links = 0;
        validate<true>(graph.nodes(), weight, links);
    }
    const auto hier = buildNamed(command, read.weighted, [&] {
        return last ? graph.buildHierarchy(options) : clusterCopy(graph, options);
    });
    if (!command.quiet) tellOfTies(command.read.file, read.nodes, hier->score().clusters);
    hier->setLabels(labels);
    summary.buildSeconds = watch.lap();
    read.weight = hier->weight();
    describe(*hier, command.levelMeasures, summary);
    // The score of a build without clusters keeps its start values.
    summary.gamma = hier->levels().empty() ? gamma : hier->score().gamma;
    const OutputRequest request = outputAt(command, gamma);
    if (files) {
        writeHierarchy(*hier, request, files->path());
        summary.files = files->commit();
    }
    const OutputTarget table = tableAt(command, gamma);
    table.write(summary.files, [&](OutputTree& tree) {
        writeText(clustersTable(*hier, request, tableFormOf(table.file())), tree, table.file());
    });
    summary.writeSeconds = watch.lap();
    if (files && goesToFolder(request) && !command.quiet)
        tellOtherFiles(request.file, summary.files);
    return summary;
}

}  // namespace

void run(const ClusterCommand& command) {
    ftrace = command.trace ? stderr : nullptr;
    if (command.trace) std::setvbuf(stderr, nullptr, _IOFBF, 1 << 16);
    std::optional<ProgressLine> line;
    if (!command.quiet && !command.trace) line.emplace();

    if (command.output.levels != Levels::HIERARCHY) requireClustersName(command.output.file);
    // All files are checked before the work is done; those of the first resolution stay open.
    std::optional<OutputTree> files;
    for (std::size_t i = command.gammas.size(); i-- > 0;) open(files, command, command.gammas[i]);
    bool tableToOutput = false;
    for (const float gamma : command.gammas) {
        const OutputTarget table = tableAt(command, gamma);
        tableToOutput = table.toOutput();
        if (!table.file().empty() && table.file() == outputAt(command, gamma).file)
            throw UsageError("the clusters and the table can't both be " + table.file());
    }
    if (tableToOutput && command.json)
        throw UsageError("the table and the summary can't both go to the standard output");
    Stopwatch watch;
    Network network = readNetwork(command.read);
    NetworkSummary read = summaryOf(command.read.file, network);
    read.seconds = watch.lap();
    if (!command.quiet) showWarnings(network, command.read);

    std::vector<Summary> summaries;
    for (const float gamma : command.gammas) {
        if (!summaries.empty()) open(files, command, gamma);
        const bool last = gamma == command.gammas.back();
        std::visit(
            [&](auto& graph) {
                summaries.push_back(
                    runOnce(command, gamma, *graph, network.labels, last, files, read, watch));
            },
            network.graph);
    }

    std::string text;
    if (command.json)
        text = asJson(read, summaries, peakMemory());
    else if (!command.quiet && !(files && files->isStandardOutput()) && !tableToOutput)
        text = asText(read, summaries, peakMemory());
    std::vector<std::string> written;
    for (const Summary& summary : summaries)
        written.insert(written.end(), summary.files.begin(), summary.files.end());
    printAfter(written, text);
}

}  // namespace vorl::app
