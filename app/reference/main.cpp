// Writes the manual page and the completions of shells from the program's own command line:
// vorl_reference man|bash|zsh|fish
#include "../command_line/command_line.hpp"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace vorl::app {

namespace {

constexpr const char* GENERAL = "Options";  // the group of options that have none

using Replacements = std::vector<std::pair<char, const char*>>;

std::string escaped(const std::string& text, const Replacements& replacements) {
    std::string result;
    for (const char c : text) {
        const char* by = nullptr;
        for (const auto& replacement : replacements)
            if (replacement.first == c) by = replacement.second;
        if (by)
            result += by;
        else
            result += c;
    }
    return result;
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
    return parts;
}

/// What is known of one option or argument.
struct Entry {
    std::vector<std::string> names;   ///< with their dashes; of an argument its name alone
    std::string type;                 ///< empty for a flag
    std::vector<std::string> values;  ///< the words that it takes
    bool file = false;                ///< takes the name of a file
    bool argument = false;
    bool required = false;
    std::string description;
    std::string group;
};

Entry entry(const CLI::Option& option) {
    Entry result;
    result.argument = !option.nonpositional();
    if (result.argument) {
        result.names.push_back(option.get_name(true));
    } else {
        for (const auto& name : option.get_snames()) result.names.push_back("-" + name);
        for (const auto& name : option.get_lnames()) result.names.push_back("--" + name);
        if (option.get_items_expected_max() > 0) result.type = option.get_type_name();
    }
    result.file = result.argument || result.type == "FILE";
    const std::string words = result.type.substr(0, result.type.find('['));
    for (const std::string& word : split(words, '|'))
        if (std::islower(static_cast<unsigned char>(word.front()))) result.values.push_back(word);
    result.description = option.get_description();
    result.group = option.get_group();
    result.required = option.get_required();
    return result;
}

std::vector<Entry> entries(const CLI::App& app) {
    std::vector<Entry> result;
    for (const CLI::Option* option : app.get_options()) result.push_back(entry(*option));
    return result;
}

std::string joined(const std::vector<std::string>& words, const char* separator = " ") {
    std::string result;
    for (const auto& word : words) result += (result.empty() ? "" : separator) + word;
    return result;
}

/// Text for groff; no line of it is taken as a request.
std::string troff(const std::string& text) {
    std::string result = escaped(text, {{'\\', "\\e"}, {'-', "\\-"}, {'\'', "\\(aq"}});
    if (result.starts_with('.')) result.insert(0, "\\&");
    return result;
}

void printManEntry(const Entry& item) {
    std::vector<std::string> names;
    for (const auto& name : item.names)
        names.push_back((item.argument ? "\\fI" : "\\fB") + troff(name) + "\\fR");
    std::cout << ".TP\n" << joined(names, ", ");
    if (!item.type.empty()) std::cout << " \\fI" << troff(item.type) << "\\fR";
    std::cout << "\n" << troff(item.description) << ".\n";
}

void printMan(const CommandLine& line) {
    std::cout
        << ".TH VORL 1 \"\" \"vorl " VORL_VERSION
           "\" \"User Commands\"\n"
           ".SH NAME\nvorl \\- communities of networks, and hierarchies of overlapping clusters\n"
           ".SH SYNOPSIS\n";
    for (const auto& command : line.commands) {
        std::cout << "\\fBvorl " << command.app->get_name() << "\\fR [\\fIOPTIONS\\fR]";
        for (const Entry& item : entries(*command.app))
            if (item.argument)
                std::cout << (item.required ? " \\fI" : " [\\fI") << item.names.front()
                          << (item.required ? "\\fR" : "\\fR]");
        std::cout << "\n.br\n";
    }
    std::cout << ".B vorl\n\\fB\\-\\-help\\fR | \\fB\\-\\-version\\fR\n"
                 ".SH DESCRIPTION\n"
              << troff(line.app.get_description())
              << "\nA node can belong to several clusters, with shares.\n"
                 "The same input and options give the same result on every run and machine.\n"
                 ".PP\nThe program has these commands:\n";
    for (const auto& command : line.commands)
        std::cout << ".TP\n.B " << command.app->get_name() << "\n"
                  << troff(command.app->get_description()) << ".\n";
    for (const auto& command : line.commands) {
        std::string name = command.app->get_name();
        for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        std::cout << ".SH VORL " << name << "\n" << troff(command.app->get_description()) << ".\n";
        std::string group = GENERAL;
        std::vector<Entry> items = entries(*command.app);
        // Those of no group would stand under the heading of another one.
        std::stable_partition(items.begin(), items.end(), [](const Entry& item) {
            return item.argument || item.group == GENERAL;
        });
        for (const Entry& item : items) {
            if (!item.argument && item.group != group) {
                group = item.group;
                std::cout << ".SS " << troff(group) << "\n";
            }
            printManEntry(item);
        }
    }
    std::cout << ".SH EXIT STATUS\n"
                 ".TP\n.B 0\nDone.\n"
                 ".TP\n.B 1\nThe input or the file system is at fault.\n"
                 ".TP\n.B 2\nWrong usage.\n"
                 ".PP\nAn unfinished run leaves no file behind.\n"
                 ".SH EXAMPLES\n"
                 "Find the communities of a network, and write them as a table:\n"
                 ".PP\n.RS\nvorl communities network.csv \\-\\-table communities.tsv\n.RE\n"
                 ".PP\nShow them and the hierarchy around them in a browser:\n"
                 ".PP\n.RS\nvorl view network.csv \\-o view.html\n.RE\n"
                 ".PP\nCluster a network and print a summary:\n"
                 ".PP\n.RS\nvorl cluster network.nse\n.RE\n"
                 ".PP\nWrite the clusters at the root, and the description of the hierarchy:\n"
                 ".PP\n.RS\nvorl cluster network.nse \\-o clusters.cnl \\-\\-levels root\n.RE\n"
                 ".PP\nMeasure clusters of any origin, and compare two clusterings:\n"
                 ".PP\n.RS\nvorl evaluate network.nse clusters.cnl\n.br\n"
                 "vorl compare clusters.cnl truth.cnl\n.RE\n";
}

/// The words of a case of Bash: names of options that are completed alike.
void printBashCase(const Entry& item) {
    std::cout << "        " << joined(item.names, " | ") << ")\n";
    if (item.values.empty())
        std::cout << "            " << (item.file ? "compopt -o default" : ":") << "\n";
    else
        std::cout << "            COMPREPLY=($(compgen -W \"" << joined(item.values)
                  << "\" -- \"$cur\"))\n";
    std::cout << "            return\n            ;;\n";
}

void printBash(const CommandLine& line) {
    std::vector<std::string> commands{"--help", "--version"};
    for (const auto& command : line.commands) commands.push_back(command.app->get_name());
    std::cout << R"(# Completion of vorl for Bash.
_vorl() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} command= options= i
    COMPREPLY=()
    # "--option=value" comes as three words.
    if [ "$cur" = = ]; then
        cur=
    elif [ "$prev" = = ]; then
        prev=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
        -*) ;;
        *)
            command=${COMP_WORDS[i]}
            break
            ;;
        esac
    done
    case $command in
)";
    for (const auto& command : line.commands) {
        std::vector<std::string> names;
        std::cout << "    " << command.app->get_name() << ")\n        case $prev in\n";
        for (const Entry& item : entries(*command.app)) {
            if (item.argument) continue;
            names.insert(names.end(), item.names.begin(), item.names.end());
            if (!item.type.empty()) printBashCase(item);
        }
        std::cout << "        esac\n        options=\"" << joined(names) << "\"\n        ;;\n";
    }
    std::cout << "    \"\")\n        COMPREPLY=($(compgen -W \"" << joined(commands)
              << "\" -- \"$cur\"))\n        return\n        ;;\n    esac\n"
              <<
        R"(    case $cur in
    -*) COMPREPLY=($(compgen -W "$options" -- "$cur")) ;;
    *) compopt -o default ;;
    esac
}
complete -F _vorl vorl
)";
}

std::string zshText(const std::string& text) {
    return escaped(text, {{'\'', "'\\''"}, {'[', "\\["}, {']', "\\]"}, {':', "\\:"}});
}

void printZshEntry(const Entry& item, int& position) {
    std::cout << "                ";
    if (item.argument) {
        std::cout << "'" << ++position << (item.required ? ":" : "::") << item.names.front()
                  << ":_files' \\\n";
        return;
    }
    if (item.names.size() > 1)
        std::cout << "'(" << joined(item.names) << ")'{" << joined(item.names, ",") << "}'";
    else
        std::cout << "'" << item.names.front();
    std::cout << "[" << zshText(item.description) << "]";
    if (!item.type.empty()) {
        std::cout << ":" << zshText(item.type) << ":";
        if (item.file) std::cout << "_files";
        if (!item.values.empty()) std::cout << "(" << joined(item.values) << ")";
    }
    std::cout << "' \\\n";
}

void printZsh(const CommandLine& line) {
    std::cout << "#compdef vorl\n"
                 "_vorl() {\n"
                 "    local context state state_descr line\n"
                 "    typeset -A opt_args\n"
                 "    _arguments -C \\\n"
                 "        '(- *)--help[Print the help]' '(- *)--version[Print the version]' \\\n"
                 "        '1:command:->command' '*::argument:->argument'\n"
                 "    case $state in\n"
                 "    command)\n"
                 "        local -a commands=(\n";
    for (const auto& command : line.commands)
        std::cout << "            '" << command.app->get_name() << ":"
                  << zshText(command.app->get_description()) << "'\n";
    std::cout << "        )\n"
                 "        _describe command commands\n"
                 "        ;;\n"
                 "    argument)\n"
                 "        case $line[1] in\n";
    for (const auto& command : line.commands) {
        int position = 0;
        std::cout << "        " << command.app->get_name() << ")\n            _arguments \\\n";
        for (const Entry& item : entries(*command.app)) printZshEntry(item, position);
        std::cout << "                && return\n            ;;\n";
    }
    std::cout << "        esac\n        ;;\n    esac\n}\n_vorl \"$@\"\n";
}

void printFish(const CommandLine& line) {
    const Replacements quote{{'\'', "\\'"}, {'\\', "\\\\"}};
    std::cout << "# Completion of vorl for fish.\n"
                 "complete -c vorl -n __fish_use_subcommand -f\n"
                 "complete -c vorl -n __fish_use_subcommand -l help -d 'Print the help'\n"
                 "complete -c vorl -n __fish_use_subcommand -l version -d 'Print the version'\n";
    for (const auto& command : line.commands)
        std::cout << "complete -c vorl -n __fish_use_subcommand -a " << command.app->get_name()
                  << " -d '" << escaped(command.app->get_description(), quote) << "'\n";
    for (const auto& command : line.commands)
        for (const Entry& item : entries(*command.app)) {
            if (item.argument) continue;
            std::cout << "complete -c vorl -n '__fish_seen_subcommand_from "
                      << command.app->get_name() << "'";
            for (const auto& name : item.names)
                std::cout << (name.starts_with("--") ? " -l " + name.substr(2)
                                                     : " -s " + name.substr(1));
            if (item.file)
                std::cout << " -r -F";
            else if (!item.type.empty())
                std::cout << " -x";
            if (!item.values.empty()) std::cout << " -a '" << joined(item.values) << "'";
            std::cout << " -d '" << escaped(item.description, quote) << "'\n";
        }
}

}  // namespace

}  // namespace vorl::app

int main(int argc, char** argv) {
    using namespace vorl::app;
    const std::vector<std::pair<std::string, void (*)(const CommandLine&)>> forms{
        {"man", printMan}, {"bash", printBash}, {"zsh", printZsh}, {"fish", printFish}};
    const CommandLine line;
    for (const auto& form : forms)
        if (argc == 2 && form.first == argv[1]) {
            form.second(line);
            std::cout.flush();
            return std::cout ? 0 : 1;
        }
    std::cerr << "usage: vorl_reference man|bash|zsh|fish\n";
    return 2;
}
