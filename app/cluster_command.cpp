#include "cluster_command.hpp"

#include "errors.hpp"
#include "folder_names.hpp"
#include "output_text.hpp"
#include "output_tree.hpp"
#include "progress_line.hpp"
#include "summary.hpp"

#include <vorl/processing/validation.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/trace.hpp>

#include <sys/resource.h>
#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>

namespace vorl::app {

namespace {

class Stopwatch {
public:
    double lap() {
        const auto now = std::chrono::steady_clock::now();
        const std::chrono::duration<double> elapsed = now - m_start;
        m_start = now;
        return elapsed.count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

/// In bytes. What `getrusage` tells may be the peak of the process that started this one.
Size peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        Size kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes) return 1024 * kilobytes;
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return Size{1024} * static_cast<Size>(usage.ru_maxrss);
}

template <class LinksT>
void describe(const Hierarchy<LinksT>& hier, Summary& summary) {
    summary.weight = hier.weight();
    summary.score = hier.score();
    summary.modularityAtOne = rootModularity(hier);
    for (const auto& level : hier.levels())
        summary.levels.emplace_back(level.clusters.size(), level.fullsize);
    for (const auto* cl : hier.root()) summary.rootSizes.push_back(cl->nnodes());
}

void checkOutput(const ClusterCommand& command, const OutputTree& files) {
    if (files.isStandardOutput() && command.json)
        throw UsageError("the clusters and the summary can't both go to the standard output");
    if (!files.isDevice())
        checkTargets(command.output, command.read.file);
    else if (goesToFolder(command.output))
        throw UsageError(command.output.file +
                         " can't hold the files of several levels, give the name of a file");
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

}  // namespace

void run(const ClusterCommand& command) {
    ftrace = command.trace ? stderr : nullptr;
    if (command.trace) std::setvbuf(stderr, nullptr, _IOFBF, 1 << 16);
    std::optional<ProgressLine> line;
    if (!command.quiet && !command.trace) line.emplace();

    std::optional<OutputTree> files;
    if (!command.output.file.empty()) {
        files.emplace(command.output.file, goesToFolder(command.output), command.output.parents);
        checkOutput(command, *files);
        files->protect(command.read.file);
    }
    Stopwatch watch;
    Summary summary;
    summary.file = command.read.file;
    Network network = readNetwork(command.read);
    summary.nodes = network.nodes;
    summary.links = network.links;
    summary.directed = network.directed;
    summary.weighted = network.weighted;
    summary.readSeconds = watch.lap();
    if (!command.quiet) showWarnings(network, command.read);

    std::visit(
        [&](auto& graph) {
            // The engine needs the back links of arcs, which it leaves to the validation.
            if (network.directed && command.build.validation == Validation::NONE) {
                AccWeight weight = 0;
                Size links = 0;
                validate<true>(graph->nodes(), weight, links);
            }
            const auto hier = graph->buildHierarchy(command.build);
            summary.buildSeconds = watch.lap();
            describe(*hier, summary);
            if (files) {
                writeHierarchy(*hier, command.output, files->path());
                summary.files = files->commit();
                summary.writeSeconds = watch.lap();
                if (goesToFolder(command.output) && !command.quiet)
                    tellOtherFiles(command.output.file, summary.files);
            }
        },
        network.graph);
    summary.peakMemory = peakMemory();

    std::string text;
    if (command.json)
        text = asJson(summary);
    else if (!command.quiet && !(files && files->isStandardOutput()))
        text = asText(summary);
    printAfter(summary.files, text);
}

}  // namespace vorl::app
