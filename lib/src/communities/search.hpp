// The search for the partition that describes a network best.
#pragma once

#include "refinement.hpp"
#include "similarity.hpp"

#include <vorl/communities.hpp>

#include <array>
#include <functional>
#include <string>

namespace vorl::detail {

/// Where a search begins.
struct Start {
    Similarity similarity;
    Density density;

    std::string name() const;
};

/// The starts in the order in which they are tried.
extern const std::array<Start, MOST_STARTS> STARTS;

/// Seconds of the steps, in the order in which they came first.
class Clock {
public:
    Clock();
    /// Books the time since the last call on a step.
    void book(const char* step);
    const std::vector<std::pair<std::string, double>>& seconds() const { return m_seconds; }

private:
    double m_last;
    std::vector<std::pair<std::string, double>> m_seconds;
};

/// What a search found.
struct Found {
    Start start;
    Partitioned partition;
    Description description;
    Likelihood likelihood;
    unsigned rounds = 0;
};

/// Searches from one start.
///
/// Nodes merge by similarity as far as that goes. Then in rounds each group is split by the merges
/// of its own similar links where that is likelier; groups of every size within the merges move as
/// one, from large to small, and last single nodes; and groups merge. The rounds end when the
/// description gets no shorter.
/// @param network without isolated nodes
/// @param scale links for a unit of weight
Found search(const ItemNetwork<LinkWeight>& network, const OfLinks<Id>& shared, const Start& start,
             AccWeight weight, double scale, Clock& clock, Workers& workers);

}  // namespace vorl::detail
