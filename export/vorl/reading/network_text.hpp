/// @file
/// The text of a network.
#pragma once

#include <vorl/reading/network_scan.hpp>
#include <vorl/types/export.hpp>
#include <vorl/types/labels.hpp>

#include <memory>
#include <string>
#include <vector>

namespace vorl {

/// A network that is to be written.
struct NetworkTable {
    NetworkFacts facts;
    std::vector<RawLink> links;      ///< between nodes by id
    std::vector<Id> nodes;           ///< all of them by id, in the order to be kept
    Size linked = 0;                 ///< how many of them have a link
    std::shared_ptr<Labels> labels;  ///< names that ids of nodes stand for; null if there are none

    /// Whether links are written with weights in the formats whose header doesn't tell.
    bool hasWeights() const { return facts.weighted && facts.statesWeights; }
};

/// Why a format can't hold a network, such as "the network has arcs, which the format nse can't
/// hold"; empty if it can.
VORL_API std::string obstacle(NetworkFormat format, const NetworkTable& network);

/// Whether a format has a place for single nodes without a link, whatever their ids.
VORL_API bool holdsSingleNodes(NetworkFormat format);

/// The network in a format that can hold it.
///
/// Links stand in their order, and nodes so that they come in theirs where the text is read, as far
/// as the format allows for it. Edges among arcs are two arcs where it doesn't tell one from the
/// other.
/// @param separator between the columns of a list
VORL_API std::string networkText(NetworkFormat format, const NetworkTable& network,
                                 char separator = '\t');

}  // namespace vorl
