#include "command_options.hpp"

namespace vorl::app {

void addCommunitiesOptions(CLI::App& app, CommunitiesCommand& command) {
    addReadOptions(app, command.read);
    addAssemblyOptions(app, command.read, SAME_IN_ANY_ORDER);
    const char* group = "Communities";
    app.add_flag_callback(
           "--no-shares", [&command] { command.options.shares = false; },
           "Each node is in one community only")
        ->group(group);
    addNumber<unsigned>(app, "--starts", command.options.starts,
                        "Search from so many starts and take the best; the smaller the network, "
                        "the more if not given, 6 at most",
                        1, MOST_STARTS)
        ->group(group);
    addThreadsOption(app, command.options.threads)->group(group);
    group = "Output";
    app.add_option("-o,--output", command.output,
                   "File of the communities, one a line (cnl); - is the standard output, in place "
                   "of the summary")
        ->check(checkName)
        ->type_name("FILE")
        ->group(group);
    app.add_option("--table", command.table,
                   "File with a line node, community, share for each membership, parted by tabs, "
                   "or by commas for .csv, or an object for .json; .gz or .zst at the end packs "
                   "it; - is the standard output")
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

}  // namespace vorl::app
