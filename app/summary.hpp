// The summary of a run, for a person or as JSON.
#pragma once

#include <vorl/hierarchy/score.hpp>
#include <vorl/types/numbers.hpp>

#include <string>
#include <utility>
#include <vector>

namespace vorl::app {

struct Summary {
    std::string file;
    Size nodes = 0;
    Size links = 0;
    bool directed = false;
    bool weighted = false;
    AccWeight weight = 0;
    std::vector<std::pair<Size, Size>> levels;  ///< clusters and fullsize
    std::vector<AccWeight> rootSizes;           ///< nodes of the root's items
    HierScore score;
    AccWeight modularityAtOne = 0;  ///< of the root at the resolution 1
    std::vector<std::string> files;
    double readSeconds = 0;
    double buildSeconds = 0;
    double writeSeconds = 0;
    Size peakMemory = 0;  ///< bytes
};

std::string asJson(const Summary& summary);
std::string asText(const Summary& summary);

}  // namespace vorl::app
