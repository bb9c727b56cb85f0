// The options of each command, and what several commands share.
#pragma once

#include "values.hpp"

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

namespace vorl::app {

/// The formats of networks, by name.
extern const Choices<NetworkFormat> FORMATS;

/// The network and how it is read.
void addReadOptions(CLI::App& app, ReadOptions& read);

/// What is done with repeated links and the order of nodes.
/// @param ofShuffle what a random order changes
void addAssemblyOptions(CLI::App& app, ReadOptions& read, const char* ofShuffle);

/// Of commands whose answer is the same for any order of the nodes.
inline constexpr const char* SAME_IN_ANY_ORDER = "changes nothing here";

CLI::Option* addThreadsOption(CLI::App& app, unsigned& threads);

void addCommunitiesOptions(CLI::App& app, CommunitiesCommand& command);
void addClusterOptions(CLI::App& app, ClusterCommand& command);
void addEvaluateOptions(CLI::App& app, EvaluateCommand& command);
void addInfoOptions(CLI::App& app, InfoCommand& command);
void addConvertOptions(CLI::App& app, ConvertCommand& command);
void addCompareOptions(CLI::App& app, CompareCommand& command);
void addShowOptions(CLI::App& app, ShowCommand& command);
void addCutOptions(CLI::App& app, CutCommand& command);
void addExtractOptions(CLI::App& app, ExtractCommand& command);
void addViewOptions(CLI::App& app, ViewCommand& command);

/// What parsing can't check: options that need each other. Fills in what they imply.
/// @throws UsageError
void checkOptions(const CLI::App& app, ClusterCommand& command);

}  // namespace vorl::app
