#include "command_options.hpp"

#include "../errors.hpp"
#include "../output_tree.hpp"
#include "../summary.hpp"

#include <algorithm>

namespace vorl::app {

namespace {

/// Resolutions, of which -1 stands for auto.
std::vector<float> toGammas(const std::string& text) {
    std::vector<float> gammas;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const std::string word = text.substr(begin, end - begin);
        const float gamma = word == "auto" ? -1.f : toFloat("--gamma", word, 0, UNBOUNDED);
        for (const float former : gammas)
            if (gammaName(former) == gammaName(gamma))
                throw CLI::ValidationError("--gamma", gammaName(gamma) + " stands there twice");
        gammas.push_back(gamma);
        begin = end + 1;
    }
    return gammas;
}

const Choices<Reduction> REDUCTIONS{{"none", Reduction::NONE},
                                    {"accurate", Reduction::ACCURATE},
                                    {"mean", Reduction::MEAN},
                                    {"severe", Reduction::SEVERE}};

Reduction toReduction(const std::string& text) {
    const Choices<Reduction> flags{{"skip-nodes", Reduction::SKIP_NODES},
                                   {"skip-clusters", Reduction::SKIP_CLUSTERS},
                                   {"by-weight", Reduction::CRITERIA_WEIGHT}};
    const std::vector<std::string> words = CLI::detail::split(text, ',');
    Reduction reduction = choose(REDUCTIONS, "--reduction", words.front());
    for (std::size_t i = 1; i < words.size(); ++i)
        reduction |= choose(flags, "--reduction", words[i]);
    return reduction;
}

/// What is written, and where.
void addOutputOptions(CLI::App& app, OutputRequest& request, std::string& table) {
    const char* group = "Output";
    app.add_option(
           "-o,--output", request.file,
           "File to write; the description of the hierarchy goes beside it, as .rhb; - is the "
           "standard output, in place of the summary")
        ->check(checkName)
        ->type_name("FILE")
        ->group(group);
    app.add_option("--table", table,
                   "File with a line node, level, cluster, share for each membership in the "
                   "clusters of --levels, parted by tabs, or by commas for .csv, or an object for "
                   ".json; .gz or .zst at the end packs it; - is the standard output")
        ->check(checkName)
        ->type_name("FILE")
        ->group(group);
    app.add_flag("--parents", request.parents, "Create the folders that FILE lacks")->group(group);
    addChoice<Levels>(
        app, "--levels",
        {{"all", Levels::ALL},
         {"root", Levels::ROOT},
         {"per-level", Levels::PER_LEVEL},
         {"around", Levels::AROUND},
         {"significant", Levels::SIGNIFICANT},
         {"hierarchy", Levels::HIERARCHY}},
        [&request](Levels value) { request.levels = value; },
        "What to write, to the standard output if no file is given: root (default), the clusters "
        "on "
        "top; all clusters, each once; per-level (a file for each "
        "level); around (the levels that bracket --clusters N); significant; hierarchy (its "
        "description alone, the default for a FILE.rhb)")
        ->group(group);
    addChoice<ClsOutFmt>(
        app, "--shares",
        {{"none", ClsOutFmt::SIMPLE}, {"uneven", ClsOutFmt::SHARED}, {"full", ClsOutFmt::EXTENDED}},
        [&request](ClsOutFmt value) { request.format = value; },
        "none, uneven (where they aren't even) or full (default: uneven shares and cluster ids)")
        ->group(group);
    app.add_flag("--max-share", request.maxShare,
                 "A node goes only to the clusters of its largest share")
        ->group(group);

    app.parse_complete_callback([&app, &request] {
        if (app.count("--levels") == 0 && request.file.ends_with(".rhb"))
            request.levels = Levels::HIERARCHY;
    });

    group = "Levels to write";
    addNumber<Id>(app, "--clusters", request.clusters, "Wanted number of clusters, of around", 1)
        ->group(group);
    addNumber<LevelNum>(app, "--level-min", request.levelMin,
                        "First level of per-level; 0 is the lowest")
        ->group(group);
    addNumber<LevelNum>(app, "--level-max", request.levelMax, "Last level of per-level")
        ->group(group);
    addFloat(
        app, "--level-step", request.levelStep, 0, 1, "RATIO",
        "Of per-level, each level with at most this ratio of the clusters of the one before; 1 "
        "(default) takes every level")
        ->group(group);

    group = "Significant clusters";
    addFloat(app, "--density-drop", request.densityDrop, 0, 1, "RATIO",
             "The least density, as a ratio of that of the owner (0.865)")
        ->group(group);
    addFloat(app, "--weight-step", request.weightStep, 0, UNBOUNDED, "RATIO",
             "The weight, as a ratio of that of the owner: the least one with a range, else the "
             "largest (0.135)")
        ->group(group);
    addSwitch(app, group, request.weightRange, "--weight-range",
              "The weight has to lie between the weight step and 1 minus it (default)",
              "--no-weight-range", "The weight may be anything up to the weight step");
    addNumber<Id>(app, "--min-size", request.minSize, "The least number of nodes")->group(group);
    addChoice<SzFnName>(
        app, "--min-size-by",
        {{"root2", SzFnName::CLSSZ_ROOT2},
         {"root4", SzFnName::CLSSZ_ROOT4},
         {"log2", SzFnName::CLSSZ_LOG2},
         {"loge", SzFnName::CLSSZ_LOGE}},
        [&request](SzFnName value) { request.minSizeBy = value; },
        "The least number of nodes from that of the network: root2, root4, log2 or loge")
        ->group(group);
}

}  // namespace

void addClusterOptions(CLI::App& app, ClusterCommand& command) {
    addReadOptions(app, command.read);
    addAssemblyOptions(app, command.read, "runs differ then where there are ties");
    ClusterOptions& build = command.build;
    const char* group = "Clustering";
    app.add_option_function<std::string>(
           "--gamma", [&command](const std::string& text) { command.gammas = toGammas(text); },
           "Resolution: auto finds it by itself (default); or a number from 0 on, where more means "
           "smaller clusters; several are tried on one reading, with G in the names of their files")
        ->type_name("auto|G[,G...]")
        ->group(group);
    addNumber<decltype(build.rootMax)>(
        app, "--root-max", build.rootMax,
        "Merge on until the root has no more than N items; 0 means no limit")
        ->group(group);
    app.add_option_function<std::string>(
           "--reduction",
           [&build](const std::string& text) { build.reduction = toReduction(text); },
           "Drop the lightest links of items with many: none (default), accurate, mean or severe, "
           "then any of ,skip-nodes ,skip-clusters ,by-weight")
        ->type_name(joined(REDUCTIONS, "|") + "[,FLAG...]")
        ->group(group);
    addChoice<Speedup>(
        app, "--speedup",
        {{"none", Speedup::NONE}, {"coarse", Speedup::COARSE}, {"orderdep", Speedup::ORDERDEP}},
        [&build](Speedup value) { build.speedup = value; },
        "none (default), coarse or orderdep: candidates depend on the order of the items")
        ->group(group);
    addChoice<Validation>(
        app, "--validation",
        {{"none", Validation::NONE},
         {"standard", Validation::STANDARD},
         {"severe", Validation::SEVERE}},
        [&build](Validation value) { build.validation = value; },
        "Check of the links: none, standard (default) or severe")
        ->group(group);
    addFloat(app, "--gain-margin", build.gainMarg, -UNBOUNDED, 1, "X",
             "Stop at a level that raises the modularity by no more than this; with "
             "--trace-modularity only")
        ->group(group);
    addFloat(app, "--filter-margin", build.filterMarg, 0, 1, "X",
             "Filter margin of the candidates, 0 to 1; changes no result")
        ->group(group);
    app.add_flag("--trace-modularity", build.modtrace, "Compute the modularity of each level")
        ->group(group);

    addOutputOptions(app, command.output, command.table);
    group = "Report";
    app.add_flag("--json", command.json, "The summary as one JSON document")->group(group);
    app.add_flag_function(
           "--no-level-measures", [&command](std::int64_t) { command.levelMeasures = false; },
           "No modularity and conductance of each level")
        ->group(group);
    app.add_flag("-t,--trace", command.trace, "The trace of the library on standard error")
        ->group(group);
    app.add_flag("-q,--quiet", command.quiet, "No summary, no warnings")->group(group);
}

void checkOptions(const CLI::App& app, ClusterCommand& command) {
    OutputRequest& request = command.output;
    const auto given = [&](const char* option) { return app.count(option) != 0; };
    const auto needs = [&](std::initializer_list<const char*> options, Levels levels,
                           const char* name) {
        for (const char* option : options)
            if (given(option) && request.levels != levels)
                throw UsageError(std::string(option) + " goes with --levels " + name + " only");
    };
    needs({"--density-drop", "--weight-step", "--weight-range", "--no-weight-range", "--min-size",
           "--min-size-by"},
          Levels::SIGNIFICANT, "significant");
    needs({"--level-min", "--level-max", "--level-step"}, Levels::PER_LEVEL, "per-level");
    needs({"--clusters"}, Levels::AROUND, "around");
    if (request.levels == Levels::AROUND && !given("--clusters"))
        throw UsageError("--levels around needs the wanted number of clusters, --clusters N");
    if (given("--min-size") && given("--min-size-by"))
        throw UsageError("--min-size and --min-size-by exclude each other");
    if (request.levelMin && request.levelMax && *request.levelMin > *request.levelMax)
        throw UsageError("--level-min must not be above --level-max");
    if (request.weightStep && request.weightRange.value_or(true) && *request.weightStep > 0.5f)
        throw UsageError("--weight-step is at most 0.5, or needs --no-weight-range");
    if (request.weightStep && !request.weightRange.value_or(true) && *request.weightStep == 0)
        throw UsageError("--weight-step is above 0 with --no-weight-range");
    if (given("--gain-margin") && !command.build.modtrace)
        throw UsageError("--gain-margin needs --trace-modularity");
    // Who asks for clusters, and for no file, wants to see them.
    if (request.file.empty() && command.table.empty() && given("--levels") &&
        !goesToFolder(request))
        request.file = STANDARD_OUTPUT;
    for (const char* option : {"--levels", "--shares", "--max-share"})
        if (request.file.empty() && given(option) &&
            (command.table.empty() || option == std::string_view("--shares")))
            throw UsageError(std::string(option) + " needs a file to write, --output FILE");
    if (request.file.ends_with(".rhb") && request.levels != Levels::HIERARCHY)
        throw UsageError("the clusters and the description of the hierarchy can't both be " +
                         request.file + "; take another extension, or --levels hierarchy");
}

}  // namespace vorl::app
