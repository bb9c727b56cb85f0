// Which clusters of a hierarchy are written.
#pragma once

#include "../hierarchy/unwrap.hpp"

#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/types/options.hpp>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <unordered_map>

namespace vorl::detail {

/// Whether a cluster has just the nodes of its only descendant.
template <class LinksT>
bool repeatsDescendant(const Cluster<LinksT>& cl) {
    return cl.des.size() < 2 && !cl.owners.empty() &&
           (cl.des.empty() || cl.des.front()->owners.size() < 2);
}

/// The level from which on the cluster is a part of another one.
template <class LinksT>
LevelNum topOf(const Cluster<LinksT>& cl, LevelNum elev) {
    return cl.owners.empty() ? elev : std::min(cl.owners.front().dest->levnum, elev);
}

/// Settles the least size of significant clusters where the number of nodes decides it.
inline void resolveMinSize(SignifclsExtoptions& opts, Size nodes) {
    if (opts.szmin == 0 && opts.clszminf)
        opts.szmin = opts.clszminf(static_cast<std::uint32_t>(nodes));
}

/// What a significant cluster's descendants must reach.
struct Significance {
    float dens;          ///< density
    float wgh;           ///< bound of the weight
    std::uint32_t reqs;  ///< number of descendants that have read the record
};

/// Whether a cluster passes the bounds of one of its owners.
inline bool passes(float density, float weight, const Significance& owner,
                   const SignifclsOptions& opts) {
    if (less(density, owner.dens)) return false;
    if (!opts.wrange) return !less(owner.wgh, weight);
    if (opts.wrstep == 0) return true;
    return !less(weight, owner.wgh) && !less((1 - opts.wrstep) * owner.wgh / opts.wrstep, weight);
}

/// Visits the significant clusters, from the top level on: (cluster, its members as unfolded).
/// @param opts valid ones
template <class LinksT, class VisitT>
void eachSignificant(const Hierarchy<LinksT>& hier, ClsOutFmt structure,
                     const SignifclsOptions& opts, Unwrapper<LinksT>& unwrapper, VisitT visit) {
    using ClusterT = Cluster<LinksT>;
    const bool all =
        structure == ClsOutFmt::SIGNIF_OWNADIR || structure == ClsOutFmt::SIGNIF_OWNAHIER;
    const bool inherit =
        structure == ClsOutFmt::SIGNIF_OWNSHIER || structure == ClsOutFmt::SIGNIF_OWNAHIER;
    const auto& levels = hier.levels();
    std::unordered_map<const ClusterT*, Significance> records;
    records.reserve(levels.size() >= 2 ? levels[1].clusters.size() : hier.root().size());

    // The bounds that a cluster takes over where it isn't significant itself.
    const auto fold = [](float bound, float other, bool larger) {
        if (bound == 0) return other;
        return larger ? std::max(bound, other) : std::min(bound, other);
    };
    for (auto level = levels.rbegin(); level != levels.rend(); ++level)
        for (const ClusterT& cl : level->clusters) {
            if (cl.des.size() < 2 && !cl.owners.empty()) continue;
            const float weight = static_cast<float>(cl.weight());
            const float density = static_cast<float>(cl.weight() / cl.nnodes());
            bool significant = cl.owners.empty();
            Significance bounds{0, 0, 0};
            if (!cl.owners.empty()) {
                Size passed = 0;
                for (const auto& owner : cl.owners) {
                    const auto record = records.find(owner.dest);
                    if (record == records.end())
                        throw std::out_of_range(
                            "output(), an owner of a significant cluster has no record\n");
                    Significance& held = record->second;
                    if (passed == 0 || all) passed += passes(density, weight, held, opts);
                    if (inherit) {
                        bounds.dens = fold(bounds.dens, held.dens, !all);
                        bounds.wgh = fold(bounds.wgh, held.wgh, all);
                    }
                    if (++held.reqs == owner.dest->des.size()) records.erase(record);
                }
                significant = passed == (all ? cl.owners.size() : 1);
            }
            if (significant || !inherit)
                bounds = {density * opts.densdrop, weight * opts.wrstep, 0};
            records.emplace(&cl, bounds);
            if (!significant) continue;
            const auto& members = unwrapper.unwrap(cl);
            if (cl.owners.empty() || opts.szmin <= members.size()) visit(cl, members);
        }
}

}  // namespace vorl::detail
