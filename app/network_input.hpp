// What the commands ask of their input files.
#pragma once

#include <vorl/reading/network.hpp>

#include <string>

namespace vorl::app {

/// Prints what the user should know of the file to the standard error stream.
void showWarnings(const Network& network, const ReadOptions& options);

/// The limit of memory in force.
std::size_t memoryLimit(const ReadOptions& options);

/// The format of a network to be written, if it isn't told, by its name.
/// @throws UsageError if neither tells
FileFormat outputFormat(const std::string& file, FileFormat told);

/// @throws UsageError if both files are the standard input, which is read once
void requireOneStandardInput(const std::string& first, const std::string& second);

}  // namespace vorl::app
