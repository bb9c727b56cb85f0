// How nodes are created and links find their places, for all that assembles a network.
#pragma once

#include "late_links.hpp"

#include <vorl/graph.hpp>
#include <vorl/processing/struct_errors.hpp>
#include <vorl/types/item.hpp>
#include <vorl/types/plain_text.hpp>
#include <vorl/types/search.hpp>

#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>

namespace vorl::detail {

/// A random bit.
inline bool drawBit() {
    static std::random_device device;
    return device() & 1;
}

/// A seed that isn't the same twice.
inline std::uint64_t drawSeed() {
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
}

/// Calls `create` for each place from low to high - 1, with `shuffle` from both ends at random.
template <class PlaceT, class CreateT>
void eachNode(PlaceT low, PlaceT high, bool shuffle, CreateT create) {
    if (!shuffle) {
        for (; low < high; ++low) create(low);
        return;
    }
    while (low != high) create(drawBit() ? low++ : --high);
}

/// @throws std::out_of_range for a link of an unknown node
[[noreturn]] inline void refuseLink(Id id, const char* what) {
    throw std::out_of_range("acsAddNodeLinks(), the link with non-existent node is used: #" +
                            std::to_string(id) + "\n" + what);
}

/// @throws std::invalid_argument for a weight that no link can have
inline void requireWeight(const char* caller, Id src, Id dst, LinkWeight weight) {
    if (weight >= 0) return;
    throw std::invalid_argument(
        format("%s, the weight of the link #%u.%u must be a non-negative number, not %G\n", caller,
               src, dst, static_cast<double>(weight)));
}

/// The same for all links of a node.
template <bool WEIGHTED>
void requireWeights(const char* caller, Id src, const InpLinks<WEIGHTED>& links) {
    if constexpr (WEIGHTED)
        for (const auto& ln : links) requireWeight(caller, src, ln.id, ln.weight);
}

/// Adds to the self weight; a self link that is there already is a repeat unless they are summed.
template <class NodeT>
void addSelfLink(NodeT* node, LinkWeight weight, bool sumdups, StructLinkErrors* errors) {
    if (node->weight() != 0 && !sumdups) {
        if (errors) errors->add({node->id, node->id});
        return;
    }
    node->addWeight(2.0 * weight);
}

/// Puts a link into the list of its source, or lets it wait for that if `late` isn't null.
template <class LinksT>
void placeLink(Node<LinksT>* src, Node<LinksT>* dst, LinkWeight weight, bool sumdups,
               StructLinkErrors* errors, LateLinks<LinksT>* late) {
    auto& links = src->links;
    if (links.empty() || cmpBase(links.back().dest, dst)) {
        links.emplace_back(dst, weight);
        return;
    }
    const auto report = [&] {
        if (errors) errors->add({src->id, dst->id});
    };
    // A repeat of the last link is a fault even where repeated links are summed.
    if (links.back().dest == dst) {
        report();
        return;
    }
    [[maybe_unused]] LinkWeight* repeated = nullptr;
    const auto last = links.end() - 1;
    const auto place = findDest(links.begin(), last, dst);
    if (place == last || place->dest != dst) {
        if (!late || links.size() < LateLinks<LinksT>::LIST_MIN) {
            links.emplace(place, dst, weight);
            return;
        }
        repeated = late->add(src, dst, weight);
        if (!repeated) return;
    }
    if constexpr (Node<LinksT>::LinkT::IS_WEIGHTED) {
        if (sumdups) {
            (repeated ? *repeated : place->weight) += weight;
            return;
        }
    }
    report();
}

/// Stores one link, or two for an edge.
/// @return whether an arc between different nodes was stored
template <bool DIRECTED, class LinksT>
bool storeLink(Node<LinksT>* src, Node<LinksT>* dst, LinkWeight weight, bool sumdups,
               StructLinkErrors* errors, LateLinks<LinksT>* late) {
    if (src == dst) {
        addSelfLink(src, weight, sumdups, errors);
        return false;
    }
    if constexpr (!DIRECTED) placeLink(dst, src, weight, sumdups, errors, late);
    placeLink(src, dst, weight, sumdups, errors, late);
    return DIRECTED;
}

}  // namespace vorl::detail
