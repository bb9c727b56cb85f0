#include "command_options.hpp"

namespace vorl::app {

namespace {

constexpr const char* CLUSTERS_FORM =
    "a cluster a line, [id>] node[:share] ..., a table of nodes and clusters (.tsv, .csv, .clu, "
    ".json), or a hierarchy (.rhb)";

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

}  // namespace

void addEvaluateOptions(CLI::App& app, EvaluateCommand& command) {
    addReadOptions(app, command.read);
    app.add_option("CLUSTERS", command.clusters, std::string("The clusters: ") + CLUSTERS_FORM)
        ->check(checkName)
        ->required();
    addAssemblyOptions(app, command.read, "measures differ then in their last digits at most");
    addFloat(app, "--gamma", command.gamma, 0, UNBOUNDED, "G",
             "Resolution of the modularity; 1 if not given");
    addClustersOptions(app, command.format, command.levels, command.strict);
    app.add_flag("--json", command.json, "The result as one JSON document");
    app.add_flag("-q,--quiet", command.quiet, "No remarks on the files");
}

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
                  "Number of nodes of the network, where some are in neither file", 1);
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
        app.add_option("--node", command.node,
                       "The clusters of the node with this id or name, up to the root, with its "
                       "shares")
            ->type_name("ID");
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
                  "The level whose number of clusters is nearest to N", 1)
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
        app, "--to", FORMATS, [&command](NetworkFormat format) { command.format = format; },
        "Format of the file to write; told from its name, else that of the network");
    app.add_flag("--parents", command.parents, "Create the folders that FILE lacks");
    app.add_flag("-q,--quiet", command.quiet, "No remarks on the files");
}

void addViewOptions(CLI::App& app, ViewCommand& command) {
    addReadOptions(app, command.read);
    app.add_option("CLUSTERS", command.clusters,
                   std::string("The clusters: ") + CLUSTERS_FORM +
                       "; if not given, the communities with the hierarchy around them")
        ->check(checkName);
    addTableOption(app, command.clustersFormat);
    addAssemblyOptions(app, command.read, SAME_IN_ANY_ORDER);
    app.add_option("-o,--output", command.output,
                   "File to write, .html or .svg; - is the standard output")
        ->check(checkName)
        ->type_name("FILE")
        ->required();
    addChoice<Picture>(
        app, "--to", {{"html", Picture::HTML}, {"svg", Picture::SVG}},
        [&command](Picture picture) { command.picture = picture; },
        "Kind of picture: a page that any browser shows, with all data in it, or a map of the "
        "clusters; told from the name if not given");
    addNumber<LevelNum>(app, "--level", command.level,
                        "Level that is shown first, and whose clusters have colours of their own; "
                        "that of the communities, or of the highest modularity, if not given");
    app.add_flag("--all-levels", command.allLevels,
                 "Show every level; else those between which the number of clusters falls by a "
                 "third or more, and whose clusters have 4 nodes or more on average");
    addThreadsOption(app, command.threads);
    app.add_option("--title", command.title, "Title of the page; the name of NETWORK if not given")
        ->type_name("TEXT");
    app.add_flag("--parents", command.parents, "Create the folders that FILE lacks");
    app.add_flag("-q,--quiet", command.quiet, "No remarks on the files, no report");
}

}  // namespace vorl::app
