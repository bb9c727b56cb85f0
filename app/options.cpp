#include "options.hpp"

#include "errors.hpp"
#include "output_tree.hpp"
#include "summary.hpp"

#include <vorl/types/text.hpp>

#include <sys/resource.h>
#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>

namespace vorl::app {

namespace {

constexpr const char* DESCRIPTION = "Clusters a network into a hierarchy of overlapping clusters.";
constexpr const char* FOOTER =
    "Exit codes: 0 done, 1 the input or the file system is at fault, 2 wrong usage.";

/// Number of edits that turn one word into the other.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i - 1] != b[j - 1]);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

}  // namespace

std::string suggestion(const std::string& word, const std::vector<std::string>& words) {
    const auto nearest = std::min_element(
        words.begin(), words.end(),
        [&](const auto& a, const auto& b) { return distance(word, a) < distance(word, b); });
    if (nearest == words.end() || distance(word, *nearest) > 1 + nearest->size() / 3) return "";
    return " (did you mean " + *nearest + "?)";
}

namespace {

template <class ValueT>
using Choices = std::vector<std::pair<std::string, ValueT>>;

/// The names, in their order.
template <class ValueT>
std::string joined(const Choices<ValueT>& choices, const char* separator) {
    std::string names;
    for (const auto& choice : choices) names += (names.empty() ? "" : separator) + choice.first;
    return names;
}

/// The value of a name.
/// @throws CLI::ValidationError that tells the names, and the nearest one
template <class ValueT>
ValueT choose(const Choices<ValueT>& choices, const std::string& option, const std::string& name) {
    std::vector<std::string> names;
    for (const auto& choice : choices) {
        if (choice.first == name) return choice.second;
        names.push_back(choice.first);
    }
    throw CLI::ValidationError(
        option, "\"" + name + "\" is none of " + joined(choices, ", ") + suggestion(name, names));
}

/// An option that takes one of some names. They are its type, from which the help, the manual page
/// and the completions have them.
template <class ValueT, class StoreT>
CLI::Option* addChoice(CLI::App& app, const std::string& option, const Choices<ValueT>& choices,
                       StoreT store, const std::string& description) {
    return app
        .add_option_function<std::string>(
            option, [=](const std::string& name) { store(choose(choices, option, name)); },
            description)
        ->type_name(joined(choices, "|"));
}

float toFloat(const std::string& option, const std::string& text, float low, float high) {
    float value = 0;
    if (!CLI::detail::lexical_cast(text, value) || !(value >= low && value <= high))
        throw CLI::ValidationError(
            option, "\"" + text + "\" isn't a number " +
                        (low < -1e30f   ? "of at most " + CLI::detail::to_string(high)
                         : high > 1e30f ? "from " + CLI::detail::to_string(low) + " on"
                                        : "from " + CLI::detail::to_string(low) + " to " +
                                              CLI::detail::to_string(high)));
    return value;
}

constexpr float UNBOUNDED = std::numeric_limits<float>::max();

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

/// A whole number, which is nothing but decimal digits.
template <class NumberT>
NumberT toNumber(const std::string& option, const std::string& text) {
    NumberT value = 0;
    const auto [last, err] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (err != std::errc() || last != text.data() + text.size())
        throw CLI::ValidationError(option, "\"" + text + "\" isn't a whole number from 0 to " +
                                               std::to_string(std::numeric_limits<NumberT>::max()));
    return value;
}

/// A number of bytes, as a whole number and one of K, M, G and T.
std::size_t toSize(const std::string& option, const std::string& text) {
    constexpr std::string_view units = "KMGT";
    Size number = 0;
    const char* const last = text.data() + text.size();
    const auto [end, err] = std::from_chars(text.data(), last, number);
    const std::size_t unit = end == last ? std::string_view::npos : units.find(*end);
    const std::size_t shift = unit == std::string_view::npos ? 0 : 10 * (unit + 1);
    if (err != std::errc() || number == 0 || last - end != (shift != 0) ||
        number > std::numeric_limits<Size>::max() >> shift)
        throw CLI::ValidationError(option, "\"" + text + "\" is no size, such as 800M or 4G");
    return number << shift;
}

/// What an estimate misses ends as a lack of memory.
void limitMemory(std::size_t most) {
    rlimit limit{};
    if (getrlimit(RLIMIT_DATA, &limit) != 0 || limit.rlim_cur <= most) return;
    limit.rlim_cur = most;
    setrlimit(RLIMIT_DATA, &limit);
}

template <class NumberT, class FieldT>
CLI::Option* addNumber(CLI::App& app, const std::string& option, FieldT& field,
                       const std::string& description) {
    const auto read = [option, &field](const std::string& text) {
        field = toNumber<NumberT>(option, text);
    };
    return app.add_option_function<std::string>(option, read, description)->type_name("N");
}

template <class FieldT>
CLI::Option* addFloat(CLI::App& app, const std::string& option, FieldT& field, float low,
                      float high, const std::string& type, const std::string& description) {
    const auto read = [option, low, high, &field](const std::string& text) {
        field = toFloat(option, text, low, high);
    };
    return app.add_option_function<std::string>(option, read, description)->type_name(type);
}

/// Names of files; nothing is called "".
std::string checkName(const std::string& name) {
    return name.empty() ? "the name of the file is empty" : "";
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

const Choices<FileFormat> FORMATS{
    {"nse", FileFormat::NSE}, {"nsa", FileFormat::NSA}, {"rcg", FileFormat::RCG}};

/// The network and how it is read.
void addReadOptions(CLI::App& app, ReadOptions& read) {
    app.add_option(
           "NETWORK", read.file,
           "The network, one link a line: src dst [weight], or in sections (rcg); it may be "
           "compressed by gzip or zstd, - is the standard input")
        ->check(checkName)
        ->required();
    const char* group = "Input";
    addChoice(
        app, "--format", FORMATS, [&read](FileFormat format) { read.format = format; },
        "nse (edges), nsa (arcs) or rcg (sections); told from the name if not given")
        ->group(group);
    app.add_flag("--unweighted", read.unweighted, "Each link weighs 1")->group(group);
    app.add_option_function<std::string>(
           "--memory-limit",
           [&read](const std::string& text) {
               read.memoryLimit = toSize("--memory-limit", text);
               limitMemory(read.memoryLimit);
           },
           "The most memory that the run may take, such as 800M or 4G; the machine's but for an "
           "eighth if not given")
        ->type_name("SIZE")
        ->group(group);
    addChoice<ZeroWeights>(
        app, "--zero-weights", {{"one", ZeroWeights::ONE}, {"drop", ZeroWeights::DROP}},
        [&read](ZeroWeights zeros) { read.zeros = zeros; },
        "What a link of weight 0 is: one, a link of weight 1, as the formats have it (default), or "
        "drop, none")
        ->group(group);
}

/// What is done with repeated links and the order of nodes.
void addAssemblyOptions(CLI::App& app, ReadOptions& read) {
    const char* group = "Input";
    app.add_flag("--sum-duplicates", read.sumDuplicates,
                 "Add up the weights of repeated links instead of keeping the first")
        ->group(group);
    CLI::Option* const shuffle =
        app.add_flag("--shuffle", read.shuffle,
                     "Create the nodes in random order; runs differ then where there are ties")
            ->group(group);
    addNumber<std::uint64_t>(app, "--seed", read.seed,
                             "Draw the order of --shuffle with N, so that a run can be repeated")
        ->needs(shuffle)
        ->group(group);
}

/// What is written, and where.
void addOutputOptions(CLI::App& app, OutputRequest& request) {
    const char* group = "Output";
    app.add_option(
           "-o,--output", request.file,
           "File to write; the description of the hierarchy goes beside it, as .rhb; - is the "
           "standard output, in place of the summary")
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
    addNumber<Id>(app, "--clusters", request.clusters, "Wanted number of clusters, of around")
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
    app.add_flag_function(
           "--weight-range,!--no-weight-range",
           [&request](std::int64_t count) { request.weightRange = count > 0; },
           "The weight has to lie between the weight step and 1 minus it (default)")
        ->group(group);
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

void addClusterOptions(CLI::App& app, ClusterCommand& command) {
    addReadOptions(app, command.read);
    addAssemblyOptions(app, command.read);
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

    addOutputOptions(app, command.output);
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

constexpr const char* CLUSTERS_FORM =
    "a cluster a line, [id>] node[:share] ..., a table of nodes and clusters (.tsv, .csv, .clu), "
    "or "
    "a hierarchy (.rhb)";

/// How the files of clusters are read.
void addTableOption(CLI::App& app, ClustersFormat& format) {
    app.add_flag_function(
        "--table", [&format](std::int64_t) { format = ClustersFormat::TABLE; },
        "Clusters are tables, a node and its cluster a line, whatever the name of the file");
}

void addClustersOptions(CLI::App& app, ClustersFormat& format, bool& levels, bool& strict) {
    addTableOption(app, format);
    app.add_flag("--levels", levels, "A row for each level of a hierarchy, the best ones marked");
    app.add_flag("--strict", strict,
                 "Refuse files with wrong counts in the header, incomplete shares and the like");
}

void addEvaluateOptions(CLI::App& app, EvaluateCommand& command) {
    addReadOptions(app, command.read);
    app.add_option("CLUSTERS", command.clusters, std::string("The clusters: ") + CLUSTERS_FORM)
        ->check(checkName)
        ->required();
    addAssemblyOptions(app, command.read);
    addFloat(app, "--gamma", command.gamma, 0, UNBOUNDED, "G",
             "Resolution of the modularity; 1 if not given");
    addClustersOptions(app, command.format, command.levels, command.strict);
    app.add_flag("--json", command.json, "The result as one JSON document");
    app.add_flag("-q,--quiet", command.quiet, "No remarks on the files");
}

void addInfoOptions(CLI::App& app, InfoCommand& command) {
    addReadOptions(app, command.read);
    app.add_flag("--json", command.json, "The result as one JSON document");
}

void addConvertOptions(CLI::App& app, ConvertCommand& command) {
    addReadOptions(app, command.read);
    app.add_option("OUT", command.output, "The file to write, - is the standard output")
        ->check(checkName)
        ->required();
    addChoice(
        app, "--to", FORMATS, [&command](FileFormat format) { command.format = format; },
        "Format of the file to write; told from its name if not given");
    app.add_flag("--parents", command.parents, "Create the folders that OUT lacks");
    app.add_flag("-q,--quiet", command.quiet, "No report");
}

/// The options of `vorl compare`.
void addCompareOptions(CLI::App& app, CompareCommand& command) {
    app.add_option("FIRST", command.first, std::string("Clusters: ") + CLUSTERS_FORM)
        ->check(checkName)
        ->required();
    app.add_option("SECOND", command.second, "Clusters to compare with; their order is the same")
        ->check(checkName)
        ->required();
    addChoice<NodeSet>(
        app, "--nodes",
        {{"union", NodeSet::UNION},
         {"common", NodeSet::COMMON},
         {"first", NodeSet::FIRST},
         {"second", NodeSet::SECOND}},
        [&command](NodeSet value) { command.nodes = value; },
        "Compare on the nodes of both files together (union, the default), on those that both "
        "have (common), or on those of the first or the second; a node that a file lacks is in "
        "no cluster there");
    addNumber<Id>(app, "--count", command.count,
                  "Number of nodes of the network, where some are in neither file");
    addNumber<Size>(app, "--exact-pairs", command.omega.exactPairs,
                    "The omega index is exact up to N pairs of nodes inside the clusters of a file "
                    "(100000000); above, it is estimated from 5000000 pairs of each, drawn with a "
                    "fixed seed");
    addClustersOptions(app, command.format, command.levels, command.strict);
    app.add_flag("--json", command.json, "The result as one JSON document");
    app.add_flag("-q,--quiet", command.quiet, "No remarks on the files");
}

void addHierarchyFile(CLI::App& app, std::string& file) {
    app.add_option("FILE", file, "A hierarchy (.rhb), - is the standard input")
        ->check(checkName)
        ->required();
}

void addShowOptions(CLI::App& app, ShowCommand& command) {
    addHierarchyFile(app, command.file);
    CLI::Option* const node =
        addNumber<Id>(app, "--node", command.node,
                      "The clusters of the node with this id, up to the root, with its shares");
    addNumber<Id>(app, "--cluster", command.cluster,
                  "The members, the owners and the parts of the cluster with this id")
        ->excludes(node);
    app.add_flag("--json", command.json, "The result as one JSON document");
}

void addCutOptions(CLI::App& app, CutCommand& command) {
    addHierarchyFile(app, command.file);
    CLI::Option* const level =
        addNumber<LevelNum>(app, "--level", command.level, "The level, 0 is the lowest");
    addNumber<Id>(app, "--clusters", command.clusters,
                  "The level whose number of clusters is nearest to N")
        ->excludes(level);
    app.add_option("-o,--output", command.output,
                   "File of the clusters; the standard output if not given")
        ->check(checkName)
        ->type_name("FILE");
    app.add_flag("--parents", command.parents, "Create the folders that FILE lacks");
    app.add_flag("-q,--quiet", command.quiet, "No report");
}

void addExtractOptions(CLI::App& app, ExtractCommand& command) {
    addReadOptions(app, command.read);
    app.add_option("CLUSTERS", command.clusters, std::string("The clusters: ") + CLUSTERS_FORM)
        ->check(checkName)
        ->required();
    addTableOption(app, command.clustersFormat);
    CLI::Option* const cluster = addNumber<Id>(
        app, "--cluster", command.cluster,
        "The network of the nodes of the cluster with this id, or of this place from 1 on");
    CLI::Option* const quotient =
        app.add_flag("--quotient", command.quotient,
                     "The network of the clusters: links between them, and inside as self links")
            ->excludes(cluster);
    addNumber<LevelNum>(app, "--level", command.level,
                        "Level of the clusters of the quotient; the root of a hierarchy if not "
                        "given")
        ->needs(quotient);
    app.add_option("-o,--output", command.output, "File to write; the standard output if not given")
        ->check(checkName)
        ->type_name("FILE");
    addChoice(
        app, "--to", FORMATS, [&command](FileFormat format) { command.format = format; },
        "Format of the file to write; told from its name, else that of the network");
    app.add_flag("--parents", command.parents, "Create the folders that FILE lacks");
    app.add_flag("-q,--quiet", command.quiet, "No remarks on the files");
}

/// The options of `vorl communities`.
void addCommunitiesOptions(CLI::App& app, CommunitiesCommand& command) {
    addReadOptions(app, command.read);
    addAssemblyOptions(app, command.read);
    const char* group = "Communities";
    app.add_flag("--no-shares{false}", command.options.shares, "Each node is in one community only")
        ->group(group);
    addNumber<unsigned>(app, "--starts", command.options.starts,
                        "Search from so many starts and take the best; the smaller the network, "
                        "the more if not given, 6 at most")
        ->group(group);
    addNumber<unsigned>(app, "--threads", command.options.threads,
                        "Threads to work with, all that there are if not given; the result is the "
                        "same for any number")
        ->group(group);
    group = "Output";
    app.add_option("-o,--output", command.output,
                   "File of the communities, one a line (cnl); - is the standard output, in place "
                   "of the summary")
        ->check(checkName)
        ->type_name("FILE")
        ->group(group);
    app.add_option("--table", command.table,
                   "File with a line node, community, share for each membership, parted by tabs, "
                   "or by commas for .csv; - is the standard output")
        ->check(checkName)
        ->type_name("FILE")
        ->group(group);
    app.add_option("--hierarchy", command.hierarchy,
                   "File of the hierarchy inside and above the communities (rhb), as vorl cluster "
                   "builds it in each of them and of all of them")
        ->check(checkName)
        ->type_name("FILE")
        ->group(group);
    app.add_flag("--parents", command.parents, "Create the folders that the files lack")
        ->group(group);
    group = "Report";
    app.add_flag("--json", command.json, "The summary as one JSON document")->group(group);
    app.add_flag("-q,--quiet", command.quiet, "No summary, no warnings")->group(group);
}

}  // namespace

CommandLine::CommandLine() : app(DESCRIPTION, "vorl") {
    app.footer(FOOTER);
    app.set_version_flag("--version",
                         std::string("vorl ") + VORL_VERSION + " (r-" + libBuild().rev() + ")");
    app.require_subcommand(1);
    add("communities", "Find the communities of a network", addCommunitiesOptions, communities);
    add("cluster", "Cluster a network into a hierarchy", addClusterOptions, cluster);
    add("evaluate", "Measure clusters of a network", addEvaluateOptions, evaluate);
    add("info", "Tell what the file of a network holds", addInfoOptions, info);
    add("convert", "Write a network in another format", addConvertOptions, convert);
    add("compare", "Tell how alike two clusterings are", addCompareOptions, compare);
    add("show", "Tell what a hierarchy holds, of a node or of a cluster", addShowOptions, show);
    add("cut", "Write the clusters of one level of a hierarchy", addCutOptions, cut);
    add("extract", "Write the network inside a cluster, or that of the clusters", addExtractOptions,
        extract);
}

CommandLine::~CommandLine() = default;

void CommandLine::parse(int argc, char** argv) { app.parse(argc, argv); }

int CommandLine::exit(const CLI::Error& end, std::ostream& out) const {
    return app.exit(end, out, out);
}

template <class CommandT>
void CommandLine::add(const char* name, const char* description,
                      void (*addOptions)(CLI::App&, CommandT&), CommandT& command) {
    CLI::App* const sub = app.add_subcommand(name, description);
    sub->footer(FOOTER);
    addOptions(*sub, command);
    commands.push_back({sub, [&command] { run(command); }});
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
    needs({"--density-drop", "--weight-step", "--weight-range", "--min-size", "--min-size-by"},
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
    if (request.file.empty() && given("--levels") && !goesToFolder(request))
        request.file = STANDARD_OUTPUT;
    for (const char* option : {"--levels", "--shares", "--max-share"})
        if (request.file.empty() && given(option))
            throw UsageError(std::string(option) + " needs a file to write, --output FILE");
    if (request.file.ends_with(".rhb") && request.levels != Levels::HIERARCHY)
        throw UsageError("the clusters and the description of the hierarchy can't both be " +
                         request.file + "; take another extension, or --levels hierarchy");
}

}  // namespace vorl::app
