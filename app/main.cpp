// The program vorl: its command line.
#include "cluster_command.hpp"
#include "compare_command.hpp"
#include "errors.hpp"

#include <vorl/types/text.hpp>
#include <vorl/types/trace.hpp>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <map>
#include <new>

namespace vorl::app {

namespace {

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

/// " (did you mean X?)" for the nearest word, if there is one near enough.
std::string suggestion(const std::string& word, const std::vector<std::string>& words) {
    const auto nearest = std::min_element(
        words.begin(), words.end(),
        [&](const auto& a, const auto& b) { return distance(word, a) < distance(word, b); });
    if (nearest == words.end() || distance(word, *nearest) > 1 + nearest->size() / 3) return "";
    return " (did you mean " + *nearest + "?)";
}

template <class ValueT>
using Choices = std::map<std::string, ValueT>;

/// The value of a name.
/// @throws CLI::ValidationError that tells the names, and the nearest one
template <class ValueT>
ValueT choose(const Choices<ValueT>& choices, const std::string& option, const std::string& name) {
    const auto it = choices.find(name);
    if (it != choices.end()) return it->second;
    std::vector<std::string> names;
    std::string all;
    for (const auto& choice : choices) {
        names.push_back(choice.first);
        all += (all.empty() ? "" : ", ") + choice.first;
    }
    throw CLI::ValidationError(option,
                               "\"" + name + "\" is none of " + all + suggestion(name, names));
}

float toFloat(const std::string& option, const std::string& text, float low, float high) {
    float value = 0;
    if (!CLI::detail::lexical_cast(text, value) || !(value >= low && value <= high))
        throw CLI::ValidationError(
            option,
            "\"" + text + "\" isn't a number " +
                (low < -1e30f ? "of at most " : "from " + CLI::detail::to_string(low) + " to ") +
                CLI::detail::to_string(high));
    return value;
}

Reduction toReduction(const std::string& text) {
    const Choices<Reduction> cores{{"none", Reduction::NONE},
                                   {"accurate", Reduction::ACCURATE},
                                   {"mean", Reduction::MEAN},
                                   {"severe", Reduction::SEVERE}};
    const Choices<Reduction> flags{{"skip-nodes", Reduction::SKIP_NODES},
                                   {"skip-clusters", Reduction::SKIP_CLUSTERS},
                                   {"by-weight", Reduction::CRITERIA_WEIGHT}};
    const std::vector<std::string> words = CLI::detail::split(text, ',');
    Reduction reduction = choose(cores, "--reduction", words.front());
    for (std::size_t i = 1; i < words.size(); ++i)
        reduction |= choose(flags, "--reduction", words[i]);
    return reduction;
}

/// The options of `vorl cluster`: one catalogue for the parser and the help.
void addClusterOptions(CLI::App& app, ClusterCommand& command, std::string& levels) {
    ReadOptions& read = command.read;
    ClusterOptions& build = command.build;
    app.add_option("NETWORK", read.file, "The network, one link a line: src dst [weight]")
        ->required();

    const char* group = "Input";
    app.add_option_function<std::string>(
           "--format",
           [&read](const std::string& name) {
               read.format = choose<FileFormat>(
                   {{"nse", FileFormat::NSE}, {"nsa", FileFormat::NSA}}, "--format", name);
           },
           "nse (edges) or nsa (arcs); told from the name if not given")
        ->group(group);
    app.add_flag("--unweighted", read.unweighted, "Each link weighs 1")->group(group);
    app.add_flag("--sum-duplicates", read.sumDuplicates,
                 "Add up the weights of repeated links instead of keeping the first")
        ->group(group);
    app.add_flag("--shuffle", read.shuffle,
                 "Create the nodes in random order; runs differ then where there are ties")
        ->group(group);

    group = "Clustering";
    app.add_option_function<std::string>(
           "--gamma",
           [&build](const std::string& text) {
               build.gamma = text == "auto" ? -1.f : toFloat("--gamma", text, 0, 1);
           },
           "Resolution: auto finds it by itself (default); 0 to 1")
        ->group(group);
    app.add_option("--root-max", build.rootMax,
                   "Merge on until the root has no more than N items; 0 means no limit")
        ->type_name("N")
        ->group(group);
    app.add_option_function<std::string>(
           "--reduction",
           [&build](const std::string& text) { build.reduction = toReduction(text); },
           "Drop the lightest links of items with many: none (default), accurate, mean or severe, "
           "then any of ,skip-nodes ,skip-clusters ,by-weight")
        ->group(group);
    app.add_option_function<std::string>(
           "--speedup",
           [&build](const std::string& name) {
               build.speedup = choose<Speedup>({{"none", Speedup::NONE},
                                                {"coarse", Speedup::COARSE},
                                                {"orderdep", Speedup::ORDERDEP}},
                                               "--speedup", name);
           },
           "none (default), coarse or orderdep: candidates depend on the order of the items")
        ->group(group);
    app.add_option_function<std::string>(
           "--validation",
           [&build](const std::string& name) {
               build.validation = choose<Validation>({{"none", Validation::NONE},
                                                      {"standard", Validation::STANDARD},
                                                      {"severe", Validation::SEVERE}},
                                                     "--validation", name);
           },
           "Check of the links: none, standard (default) or severe")
        ->group(group);
    app.add_option_function<std::string>(
           "--gain-margin",
           [&build](const std::string& text) {
               build.gainMarg = toFloat("--gain-margin", text, -3e38f, 1);
           },
           "Stop at a level that raises the modularity by no more than this; with "
           "--trace-modularity only")
        ->group(group);
    app.add_option_function<std::string>(
           "--filter-margin",
           [&build](const std::string& text) {
               build.filterMarg = toFloat("--filter-margin", text, 0, 1);
           },
           "Filter margin of the candidates, 0 to 1; changes no result")
        ->group(group);
    app.add_flag("--trace-modularity", build.modtrace, "Compute the modularity of each level")
        ->group(group);

    group = "Output";
    app.add_option("-o,--output", command.output, "File to write")->group(group);
    app.add_option("--levels", levels,
                   "What to write: hierarchy (all levels, nodes and shares, as RHB)")
        ->group(group);
    app.add_flag("--json", command.json, "The summary as one JSON document")->group(group);
    app.add_flag("-t,--trace", command.trace, "The trace of the library on standard error")
        ->group(group);
    app.add_flag("-q,--quiet", command.quiet, "No summary, no warnings")->group(group);
}

void checkLevels(const ClusterCommand& command, const std::string& levels) {
    const Choices<bool> known{{"all", false},    {"root", false},        {"per-level", false},
                              {"around", false}, {"significant", false}, {"hierarchy", true}};
    const bool ready = choose(known, "--levels", levels.empty() ? "all" : levels);
    if (command.output.empty()) return;
    if (!ready)
        throw UsageError("--levels " + (levels.empty() ? "all (the default)" : levels) +
                         " comes with a later version; this one writes --levels hierarchy");
}

std::vector<std::string> optionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    return names;
}

/// The options of `vorl compare`.
void addCompareOptions(CLI::App& app, CompareCommand& command) {
    app.add_option("FIRST", command.first, "Clusters, one a line: [id>] node[:share] ...")
        ->required();
    app.add_option("SECOND", command.second, "Clusters to compare with; their order is the same")
        ->required();
    app.add_option_function<std::string>(
           "--nodes",
           [&command](const std::string& name) {
               command.nodes = choose<NodeSet>({{"union", NodeSet::UNION},
                                                {"common", NodeSet::COMMON},
                                                {"first", NodeSet::FIRST},
                                                {"second", NodeSet::SECOND}},
                                               "--nodes", name);
           },
           "Compare on the nodes of both files together (union, the default), on those that both "
           "have (common), or on those of the first or the second; a node that a file lacks is in "
           "no cluster there")
        ->type_name("SET");
    app.add_option("--count", command.count,
                   "Number of nodes of the network, where some are in neither file")
        ->type_name("N");
    app.add_option("--exact-pairs", command.omega.exactPairs,
                   "The omega index is exact up to N pairs of nodes inside the clusters of a file "
                   "(100000000); above, it is estimated from 5000000 pairs of each, drawn with a "
                   "fixed seed")
        ->type_name("N");
    app.add_flag("--strict", command.strict,
                 "Refuse files with wrong counts in the header, incomplete shares and the like");
    app.add_flag("--json", command.json, "The result as one JSON document");
    app.add_flag("-q,--quiet", command.quiet, "No remarks on the files");
}

int runProgram(int argc, char** argv) {
    CLI::App app("Clusters a network into a hierarchy of overlapping clusters.", "vorl");
    app.footer(FOOTER);
    app.set_version_flag("--version",
                         std::string("vorl ") + VORL_VERSION + " (r-" + libBuild().rev() + ")");
    app.require_subcommand(1);

    ClusterCommand command;
    std::string levels;
    CLI::App* cluster = app.add_subcommand("cluster", "Cluster a network");
    cluster->footer(FOOTER);
    addClusterOptions(*cluster, command, levels);
    CompareCommand compareCommand;
    CLI::App* compare = app.add_subcommand("compare", "Tell how alike two clusterings are");
    compare->footer(FOOTER);
    addCompareOptions(*compare, compareCommand);
    const std::vector<std::string> commands{"cluster", "compare"};
    try {
        app.parse(argc, argv);
        if (*compare) {
            run(compareCommand);
            return DONE;
        }
        checkLevels(command, levels);
        run(command);
        return DONE;
    } catch (const CLI::Success& success) {
        return app.exit(success);
    } catch (const CLI::ExtrasError& err) {
        std::string message = err.what();
        for (const std::string& word : app.remaining(true)) {
            const std::string option = word.substr(0, word.find('='));
            if (option.starts_with("-"))
                message += suggestion(option, optionNames(*compare ? *compare : *cluster));
            else
                message += suggestion(option, commands);
        }
        std::cerr << "vorl: " << message << "\nRun \"vorl --help\" for help.\n";
    } catch (const CLI::RequiredError& err) {
        std::string message = err.what();
        // An unknown command is told as a missing one.
        for (int i = 1; i < argc && app.get_subcommands().empty(); ++i)
            message += ": \"" + std::string(argv[i]) + "\"" + suggestion(argv[i], commands);
        std::cerr << "vorl: " << message << "\nRun \"vorl --help\" for help.\n";
    } catch (const CLI::ParseError& err) {
        std::cerr << "vorl: " << err.what() << "\nRun \"vorl --help\" for help.\n";
    } catch (const UsageError& err) {
        std::cerr << "vorl: " << err.what() << "\n";
    }
    return WRONG_USAGE;
}

}  // namespace

}  // namespace vorl::app

int main(int argc, char** argv) {
    using namespace vorl::app;
    std::signal(SIGPIPE, SIG_IGN);
    vorl::ftrace = nullptr;
    std::string message;
    try {
        return runProgram(argc, argv);
    } catch (const std::bad_alloc&) {
        message = "out of memory";
    } catch (const std::exception& err) {
        message = err.what();
    }
    while (message.ends_with('\n')) message.pop_back();
    std::fprintf(stderr, "vorl: %s\n", message.c_str());
    return INPUT_FAULT;
}
