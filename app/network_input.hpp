// What the commands ask of their input files.
#pragma once

#include <vorl/reading/network.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vorl::app {

/// Prints what the user should know of the file to the standard error stream.
void showWarnings(const NetworkReport& network, const ReadOptions& options);

/// The bytes of the network's file, with the limit of memory in force.
std::unique_ptr<Source> openInput(const ReadOptions& options);

/// The links of a network, between nodes by id.
struct LinkTable {
    NetworkFacts facts;
    std::vector<RawLink> links;
    Size linked = 0;                 ///< nodes of the links
    Size nodes = 0;                  ///< nodes in all, as far as the file names them
    std::shared_ptr<Labels> labels;  ///< names of nodes; null if there are none

    /// @param taken tells which links are wanted; empty for all
    /// @throws as `scanNetwork`
    explicit LinkTable(const ReadOptions& options,
                       const std::function<bool(const RawLink&)>& taken = {});
};

/// The format of a network to be written, if it isn't told, by its name.
/// @throws UsageError if neither tells
NetworkFormat outputFormat(const std::string& file, NetworkFormat told);

/// What parts the columns of a table of that name: commas in .csv, else tabs.
char separatorOf(const std::string& file);

/// @throws UsageError if both files are the standard input, which is read once
void requireOneStandardInput(const std::string& first, const std::string& second);

}  // namespace vorl::app
