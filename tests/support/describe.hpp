/// @file
/// A text of all that a hierarchy holds, for comparisons digit by digit.
#pragma once

#include <vorl/hierarchy/hierarchy.hpp>

#include <bit>
#include <cstdint>
#include <sstream>
#include <string>

namespace vorl::test {

/// Levels, clusters, memberships, root and the bits of the score. Cluster ids count from the first
/// cluster, since the counter of ids is never reset.
template <class LinksT>
std::string describe(const Hierarchy<LinksT>& hier) {
    std::ostringstream out;
    const Id base = hier.levels().empty() || hier.levels().front().clusters.empty()
                        ? 0
                        : hier.levels().front().clusters.front().id;
    const auto item = [&](const NodeI<LinksT>& el, bool cluster) {
        out << (cluster ? el.id - base : el.id) << ">";
        for (const auto& owner : el.owners)
            out << " " << owner.dest->id - base << ":" << owner.numac << "/" << el.totac;
        out << "\n";
    };
    for (const auto& node : hier.nodes()) item(node, false);
    for (const auto& level : hier.levels()) {
        out << "level " << level.fullsize << "\n";
        for (const auto& cl : level.clusters) {
            item(cl, true);
            out << std::bit_cast<std::uint64_t>(cl.weight()) << " "
                << std::bit_cast<std::uint64_t>(cl.ctxWeight(false)) << " "
                << std::bit_cast<std::uint64_t>(cl.nnodes()) << "\n";
        }
    }
    out << "root";
    for (const auto* cl : hier.root()) out << " " << cl->id - base;
    const HierScore& score = hier.score();
    out << "\nscore " << std::bit_cast<std::uint32_t>(score.modularity) << " "
        << std::bit_cast<std::uint32_t>(score.gamma) << " "
        << std::bit_cast<std::uint32_t>(score.egamma) << " "
        << std::bit_cast<std::uint32_t>(score.conductance) << " " << score.nodesLinks << " "
        << score.clusters << "\n";
    return out.str();
}

}  // namespace vorl::test
