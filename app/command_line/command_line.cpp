#include "command_line.hpp"

#include "command_options.hpp"

#include <vorl/types/text.hpp>

namespace vorl::app {

namespace {

constexpr const char* DESCRIPTION =
    "Finds the communities of networks, and their hierarchy of overlapping clusters.";
constexpr const char* FOOTER =
    "Exit codes: 0 done, 1 the input or the file system is at fault, 2 wrong usage.";

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
    add("view", "Write a page or a map that shows clusters", addViewOptions, view);
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

}  // namespace vorl::app
