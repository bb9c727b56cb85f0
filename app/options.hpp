// The options of the program's commands: one catalogue for the parser and the help.
#pragma once

#include "cluster_command.hpp"
#include "compare_command.hpp"
#include "convert_command.hpp"
#include "evaluate_command.hpp"
#include "info_command.hpp"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace vorl::app {

/// Each of them adds the arguments and options of a command; parsing fills the command.
void addClusterOptions(CLI::App& app, ClusterCommand& command);
void addEvaluateOptions(CLI::App& app, EvaluateCommand& command);
void addInfoOptions(CLI::App& app, InfoCommand& command);
void addConvertOptions(CLI::App& app, ConvertCommand& command);
void addCompareOptions(CLI::App& app, CompareCommand& command);

/// What parsing can't check: options that need each other.
/// @throws UsageError
void checkOptions(const CLI::App& app, const ClusterCommand& command);

/// " (did you mean X?)" for the nearest word, if there is one near enough.
std::string suggestion(const std::string& word, const std::vector<std::string>& words);

}  // namespace vorl::app
