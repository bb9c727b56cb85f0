// The commands of the program and their options: one catalogue for the parser, the help, the manual
// page and the completions of shells.
#pragma once

#include "../cluster_command.hpp"
#include "../communities_command.hpp"
#include "../compare_command.hpp"
#include "../convert_command.hpp"
#include "../cut_command.hpp"
#include "../evaluate_command.hpp"
#include "../extract_command.hpp"
#include "../info_command.hpp"
#include "../show_command.hpp"
#include "../view_command.hpp"

#include <CLI/CLI.hpp>

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace vorl::app {

/// The command line of the program. Parsing `app` fills the commands.
class CommandLine {
public:
    CommandLine();
    ~CommandLine();

    /// Fills the commands. Only the unit of this class has to compile the parser.
    /// @throws CLI::Error
    void parse(int argc, char** argv);

    /// Prints what ends the parsing early, such as the help, and gives the exit code.
    int exit(const CLI::Error& end, std::ostream& out) const;

    /// A command with its options, and what runs it.
    struct Command {
        CLI::App* app;
        std::function<void()> run;
    };

    CLI::App app;
    std::vector<Command> commands;

    CommunitiesCommand communities;
    ClusterCommand cluster;
    EvaluateCommand evaluate;
    InfoCommand info;
    ConvertCommand convert;
    CompareCommand compare;
    ShowCommand show;
    CutCommand cut;
    ExtractCommand extract;
    ViewCommand view;

private:
    template <class CommandT>
    void add(const char* name, const char* description, void (*addOptions)(CLI::App&, CommandT&),
             CommandT& command);
};

}  // namespace vorl::app
