// What the commands ask of their input files.
#pragma once

#include <vorl/reading/network.hpp>
#include <vorl/reading/network_text.hpp>

#include <vorl/types/membership_table.hpp>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorl::app {

/// Prints what the user should know of the file to the standard error stream.
void showWarnings(const NetworkReport& network, const ReadOptions& options);

/// The bytes of the network's file, with the limit of memory in force.
std::unique_ptr<Source> openInput(const ReadOptions& options);

/// Reads a network to write it again.
/// @param wanted tells which nodes are, with the links between them; empty for all
/// @throws as `scanNetwork`
NetworkTable readTable(const ReadOptions& options, const std::function<bool(Id)>& wanted = {});

/// Leaves nodes without a link out.
/// @return how many there were
Size dropLinkless(NetworkTable& table);

/// @param file that the network is from
/// @throws InputError if the format can't hold the network
void requireHolds(NetworkFormat format, const NetworkTable& network, const std::string& file);

/// The format of a network to be written, if it isn't told, by its name.
/// @throws UsageError if neither tells
NetworkFormat outputFormat(const std::string& file, NetworkFormat told);

/// What parts the columns of a table of that name: commas in .csv, else tabs.
char separatorOf(const std::string& file);

/// The form of a table of that name: JSON in .json, commas in .csv, else tabs.
TableForm tableFormOf(const std::string& file);

/// What is told of a network for which the engine ended with a fault, or with an overflow.
InputError engineFault(const std::string& file, std::string what);
InputError beyondEngine(const std::string& file, const std::overflow_error& err);

/// @throws UsageError if both files are the standard input, which is read once
void requireOneStandardInput(const std::string& first, const std::string& second);

}  // namespace vorl::app
