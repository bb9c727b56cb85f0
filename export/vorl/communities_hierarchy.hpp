/// @file
/// The hierarchy of communities: what lies inside of each, and what they form together.
#pragma once

#include <vorl/communities.hpp>
#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/types/options.hpp>

#include <memory>

namespace vorl {

/// Builds the hierarchy around the communities of a network.
///
/// Each community is clustered by the engine of `cluster` on its own links, and so is the network
/// of the communities. The levels are those inside the communities, which all begin at level 0;
/// then the level of the communities, each of which is one cluster, in the order of their numbers;
/// then the levels above. A community with fewer levels inside than others has its items carried up
/// to the level of the communities, as the engine carries what finds no partner: their owners are
/// levels above. Where no community has a level inside, that of the communities is level 0.
///
/// A node of several communities takes part in each of them: with its share in the community, at
/// both ends of a link. So its owners are clusters of level 0 in all of its communities, and its
/// shares in clusters of any level add up. They are ratios of counts of up to 55440, by which a
/// share in a community is right to 1/1000 or better up to 50 owners of a node; equal ones are
/// exactly equal.
///
/// Clusters are numbered from 0, level by level. The root is what lies above everything else,
/// isolated nodes among it, and the score is that of the root. Nodes stand in the order of their
/// ids, with all of their links. The clusters have no links. Each of the builds
/// is traced.
///
///     const vorl::Communities found = vorl::communities(network);
///     const auto hierarchy = vorl::communitiesHierarchy(network, found);
///
/// @param network the network, without directions
/// @param found its communities
/// @param options of all builds; `validation` isn't looked at, and `rootMax` counts for the root
///     of the hierarchy alone
/// @param[out] level takes the index of the level of the communities
/// @throws std::invalid_argument if the communities aren't those of a network of these nodes
/// @throws as `cluster`
VORL_API std::shared_ptr<Hierarchy<WeightedLinks>> communitiesHierarchy(
    const FlatNetwork& network, const Communities& found,
    const ClusterOptions& options = ClusterOptions(), LevelNum* level = nullptr);

}  // namespace vorl
