#include "../memory_limit.hpp"
#include "command_options.hpp"

#include <vorl/reading/wording.hpp>

namespace vorl::app {

const Choices<NetworkFormat> FORMATS{networkFormats().begin(), networkFormats().end()};

namespace {

/// The limit by which what an estimate misses ends as a lack of memory.
std::size_t toMemoryLimit(const std::string& option, const std::string& text) {
    const std::size_t most = toSize(option, text);
    if (const std::size_t own = ownMemory(); most < own)
        throw CLI::ValidationError(option, "\"" + text + "\" is less than the " + bytes(own) +
                                               " that the program takes by itself");
    limitMemory(most);
    return most;
}

}  // namespace

void addReadOptions(CLI::App& app, ReadOptions& read) {
    app.add_option("NETWORK", read.file,
                   "The network, such as one link a line: src dst [weight], or a table; it may be "
                   "compressed by gzip or zstd, - is the standard input")
        ->check(checkName)
        ->required();
    const char* group = "Input";
    addChoice(
        app, "--format", FORMATS, [&read](NetworkFormat format) { read.format = format; },
        "nse (edges), nsa (arcs), rcg (sections), list (links in columns, between nodes of any "
        "names), or one of other systems; told from the name, or else the first lines, if not "
        "given")
        ->group(group);
    app.add_option("--columns", read.columns,
                   "The columns of source, destination and weight in a list, by their names or "
                   "their numbers from 1 on")
        ->type_name("A,B[,W]")
        ->group(group);
    app.add_option("--weight", read.weightName,
                   "What the weight of a link is called in the file; weight if not given")
        ->type_name("NAME")
        ->group(group);
    addSwitch(app, group, read.directed, "--directed",
              "Links are arcs, where the format doesn't tell", "--undirected",
              "Links are edges, where the format doesn't tell (default)");
    app.add_flag("--unweighted", read.unweighted, "Each link weighs 1")->group(group);
    app.add_option_function<std::string>(
           "--memory-limit",
           [&read](const std::string& text) {
               read.memoryLimit = toMemoryLimit("--memory-limit", text);
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

CLI::Option* addThreadsOption(CLI::App& app, unsigned& threads) {
    return addNumber<unsigned>(app, "--threads", threads,
                               "Threads to work with, all that there are if not given; the result "
                               "is the same for any number",
                               1);
}

void addAssemblyOptions(CLI::App& app, ReadOptions& read, const char* ofShuffle) {
    const char* group = "Input";
    app.add_flag("--sum-duplicates", read.sumDuplicates,
                 "Add up the weights of repeated links instead of keeping the first")
        ->group(group);
    CLI::Option* const shuffle =
        app.add_flag("--shuffle", read.shuffle,
                     std::string("Create the nodes in random order; ") + ofShuffle)
            ->group(group);
    addNumber<std::uint64_t>(app, "--seed", read.seed,
                             "Draw the order of --shuffle with N, so that a run can be repeated")
        ->needs(shuffle)
        ->group(group);
}

void addInfoOptions(CLI::App& app, InfoCommand& command) {
    addReadOptions(app, command.read);
    app.add_flag("--estimate", command.estimate,
                 "Estimate the memory and the time of clustering, for which a part is clustered");
    app.add_flag("--json", command.json, "The result as one JSON document");
}

void addConvertOptions(CLI::App& app, ConvertCommand& command) {
    addReadOptions(app, command.read);
    app.add_option("OUT", command.output, "The file to write, - is the standard output")
        ->check(checkName)
        ->required();
    addChoice(
        app, "--to", FORMATS, [&command](NetworkFormat format) { command.format = format; },
        "Format of the file to write; told from its name if not given");
    app.add_flag("--parents", command.parents, "Create the folders that OUT lacks");
    app.add_flag("-q,--quiet", command.quiet, "No report");
}

}  // namespace vorl::app
