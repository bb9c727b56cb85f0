// The summary of a run, for a person or as JSON.
#pragma once

#include <vorl/hierarchy/score.hpp>
#include <vorl/reading/network.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/numbers.hpp>

#include <string>
#include <utility>
#include <vector>

namespace vorl::app {

/// What was read.
struct NetworkSummary {
    std::string file;
    Size nodes = 0;
    Size edges = 0;  ///< in the file
    Size arcs = 0;
    Size repeated = 0;  ///< as `Network::repeated`
    Size zeroWeights = 0;
    bool directed = false;
    bool weighted = false;
    AccWeight weight = 0;
    double seconds = 0;
};

/// All but weight and time.
NetworkSummary summaryOf(const std::string& file, const NetworkReport& network);
std::string networkJson(const NetworkSummary& network);
/// The first line of a summary, and an empty one.
std::string networkText(const NetworkSummary& network);
/// The names of the first files, a line each.
std::string writtenText(const std::vector<std::string>& files);

/// What was made of it at one resolution.
struct Summary {
    std::vector<std::pair<Size, Size>> levels;  ///< clusters and fullsize
    std::vector<LevelMeasures> measures;        ///< of the levels, empty if they aren't asked for
    std::vector<AccWeight> rootSizes;           ///< nodes of the root's items
    float gamma = 1;                            ///< the resolution in force, negative for auto
    HierScore score;
    AccWeight modularityAtOne = 0;  ///< of the root at the resolution 1
    std::vector<std::string> files;
    double buildSeconds = 0;
    double writeSeconds = 0;
};

/// "auto" for -1, else the number.
std::string gammaName(float gamma);

/// One run is shown in full, several in a table.
/// @param peakMemory in bytes
std::string asJson(const NetworkSummary& network, const std::vector<Summary>& runs,
                   Size peakMemory);
std::string asText(const NetworkSummary& network, const std::vector<Summary>& runs,
                   Size peakMemory);

}  // namespace vorl::app
