/// @file
/// Operations that callers and bindings share.
#pragma once

#include <vorl/fileio/parser_cnl.hpp>
#include <vorl/graph.hpp>
#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/processing/intrinsics.hpp>
#include <vorl/types/flags.hpp>

#include <memory>
#include <string>
#include <vector>

namespace vorl {

/// Measures the clusters of a file on a network.
///
/// Shares of nodes count at both ends of a link. A node of no cluster adds nothing itself, but its
/// links to clusters lead out of these: the weight of a cluster is that in the network, whatever
/// the other clusters cover.
///
/// Each cluster adds to the conductance, also one that no link leaves, or that has no weight, with
/// 0. It takes weight on both sides of a cut: a single cluster that holds all of the network's
/// weight, or none, has no conductance.
///
/// @param[out] intr takes all measures, `mod` at the given gamma; `cdn` is NaN if there is none
/// @param graph the network; spent by the call
/// @param filename a file in the format CNL
/// @param gamma resolution of the modularity, from 0 on
/// @param validation whether and how the links are validated beforehand
/// @return the number of clusters
/// @throws std::invalid_argument for a file without clusters, a network without weight or a
///     gamma that is negative, infinite or NaN
/// @throws as `loadClusters`
template <class GraphT>
VORL_API Size evaluateClusters(Intrinsics& intr, GraphT& graph, const std::string& filename,
                               AccWeight gamma = 1, Validation validation = Validation::STANDARD);

/// What keeps a network from being clustered, such as weights that add up to nothing; null if
/// nothing does.
template <bool WEIGHTED>
VORL_API const char* clusteringFault(Graph<WEIGHTED>& graph);

/// Clusters a copy of the network, which stays as it is; the result is the one of `buildHierarchy`.
/// Back links of arcs are made whatever the validation.
/// @throws as `cluster`
template <bool WEIGHTED>
VORL_API std::shared_ptr<typename Graph<WEIGHTED>::HierarchyT> clusterCopy(
    Graph<WEIGHTED>& graph, const ClusterOptions& options);

/// Modularity of the root at a resolution that may differ from the one of the build, for comparison
/// with other clusterings; without levels that of the nodes, each on its own.
template <class LinksT>
VORL_API AccWeight rootModularity(const Hierarchy<LinksT>& hier, AccWeight gamma = 1);

/// What is measured of the clusters that stand at a level: those that it formed and those that were
/// carried past it.
struct LevelMeasures {
    Size clusters = 0;
    AccWeight modularity = 0;
    AccWeight conductance = 0;  ///< mean over the clusters; NaN if there is one alone
};

/// Measures the clusters at each level, from the weights that the build left in them. Where items
/// are shared, their self weights count by the shares of both ends, as in the build.
///
/// It takes one pass over the clusters, whatever the number of levels.
/// @param gamma resolution of the modularity
template <class LinksT>
VORL_API std::vector<LevelMeasures> levelMeasures(const Hierarchy<LinksT>& hier,
                                                  AccWeight gamma = 1);

/// Levels of a range, thinned out.
///
/// The first level is taken, and then each one that has at most the given ratio of the clusters of
/// the last one taken. The last level joins where it lies nearer to the next step than to the one
/// before.
///
/// @param hier the hierarchy
/// @param first index of a level
/// @param last index of a level, not below first
/// @param step ratio in [0, 1]; 1 takes all levels
/// @return indices of levels, ascending
/// @throws std::out_of_range if there are no such levels
/// @throws std::invalid_argument if the ratio is none
template <class LinksT>
VORL_API std::vector<LevelNum> levelsByStep(const Hierarchy<LinksT>& hier, LevelNum first,
                                            LevelNum last, float step);

/// The levels that have the wanted number of clusters, with one on each side of them; items that
/// were carried to a level count as its clusters.
/// @return indices of levels, ascending; empty only if there are no levels
template <class LinksT>
VORL_API std::vector<LevelNum> levelsAround(const Hierarchy<LinksT>& hier, Id wanted);

/// Writes one file of clusters for each of the levels, in the format CNL.
///
/// The file of level 3 in "dir/name.cnl" is "dir/name/name_3.cnl", its number padded to the width
/// of the highest one. Beside the folder stands the description of the hierarchy, "dir/name.rhb".
/// Folders that are missing are created, and files that exist are overwritten.
///
/// @param hier the hierarchy
/// @param levels indices of levels, ascending; at least one
/// @param format file format and filtering; the structure of the output isn't looked at
/// @param clsfile name as that of `OutputOptions`
/// @throws std::out_of_range if there is no level, or one that the hierarchy doesn't have
/// @throws std::filesystem::filesystem_error with the file that can't be written
/// @throws std::ios_base::failure if writing fails
template <class LinksT>
VORL_API void writeLevels(const Hierarchy<LinksT>& hier, const std::vector<LevelNum>& levels,
                          ClsOutFmtBase format, const std::string& clsfile);

/// Writes the description of a hierarchy, which may have no levels, in the format RHB.
/// @throws std::filesystem::filesystem_error with the file that can't be written
/// @throws std::ios_base::failure if writing fails
template <class LinksT>
VORL_API void writeDescription(const Hierarchy<LinksT>& hier, const std::string& file);

}  // namespace vorl
