/// @file
/// A hierarchy built by levels that touch only what changed and by literal ones, as texts.
#pragma once

#include "describe.hpp"
#include "networks.hpp"
#include "trace.hpp"

#include <vorl/hierarchy/hierarchy_impl.hpp>
#include <vorl/types/cluster_ids.hpp>

#include <exception>
#include <string>

namespace vorl::test {

/// All that a build tells and leaves, or what it ends with.
template <bool NONSYMMETRIC, class LinksT>
std::string buildText(const TestNetwork& network, const ClusterOptions& options, bool literal) {
    Trace trace;
    std::string text;
    const ClusterIdsScope<LinksT> ids;
    try {
        HierarchyImpl<NONSYMMETRIC, LinksT> hier(makeNodes<LinksT>(network), options);
        // Some of them turn to the other way amid the build.
        const Size from[] = {1, 1, 1, 3, 1, 2};
        hier.m_trackFrom = literal ? LEVEL_MAX : from[network.nodesNum % 6];
        hier.m_sharedMax = 1;
        hier.build(options.validation, options.rootMax, options.gainMarg, options.modtrace);
        text = describe(hier);
        for (const auto* cl : hier.root()) {
            text += std::to_string(cl->id) + ":";
            for (const auto& ln : cl->links)
                text += " " + std::to_string(ln.dest->id) + " " +
                        std::to_string(std::bit_cast<std::uint64_t>(ln.weight));
            text += "\n";
        }
    } catch (const std::exception& err) {
        text = err.what();
    }
    return trace.take() + text;
}

/// The first lines in which two builds differ, nothing if they agree.
template <bool NONSYMMETRIC, class LinksT>
std::string difference(const TestNetwork& network, const ClusterOptions& options) {
    std::istringstream literal(buildText<NONSYMMETRIC, LinksT>(network, options, true));
    std::istringstream tracked(buildText<NONSYMMETRIC, LinksT>(network, options, false));
    if (literal.str() == tracked.str()) return {};
    std::string expected;
    std::string found;
    do {
        if (!std::getline(literal, expected)) expected = "(end)";
        if (!std::getline(tracked, found)) found = "(end)";
    } while (expected == found);
    return "literally: " + expected + "\ntracked:   " + found;
}

inline std::string difference(const TestNetwork& network, const ClusterOptions& options) {
    if (network.weighted)
        return network.directed ? difference<true, WeightedLinks>(network, options)
                                : difference<false, WeightedLinks>(network, options);
    return network.directed ? difference<true, UnweightedLinks>(network, options)
                            : difference<false, UnweightedLinks>(network, options);
}

}  // namespace vorl::test
