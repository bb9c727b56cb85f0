// The files of clusters that the program writes.
#pragma once

#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/types/membership_table.hpp>
#include <vorl/types/options.hpp>

#include <optional>
#include <string>

namespace vorl::app {

enum class Levels { ALL, ROOT, PER_LEVEL, AROUND, SIGNIFICANT, HIERARCHY };

/// What is to be written.
struct OutputRequest {
    std::string file;      ///< nothing is written where it is empty
    bool parents = false;  ///< folders that the file lacks are created
    Levels levels = Levels::ROOT;
    ClsOutFmt format = ClsOutFmt::EXTENDED;
    bool maxShare = false;

    /// Bounds of the significant clusters; those that aren't given keep the library's defaults.
    std::optional<float> densityDrop;
    std::optional<float> weightStep;
    std::optional<bool> weightRange;
    std::optional<Id> minSize;
    SzFnName minSizeBy = SzFnName::NONE;

    /// Range of the levels, and the ratio of their numbers of clusters.
    std::optional<LevelNum> levelMin;
    std::optional<LevelNum> levelMax;
    std::optional<float> levelStep;
    /// Wanted number of clusters.
    std::optional<Id> clusters;
};

/// Whether the clusters go into a file for each level, in a folder.
inline bool goesToFolder(const OutputRequest& request) {
    return request.levels == Levels::PER_LEVEL || request.levels == Levels::AROUND;
}

/// Checks, before the work is done, that nothing stands in the way of the files to write.
/// @param input  a file that they must not replace
/// @throws InputError, UsageError
void checkTargets(const OutputRequest& request, const std::string& input);

/// Writes the clusters, and beside them the description of the hierarchy.
/// @param path name of the file, in the place of the request's
/// @throws InputError if writing fails, or if the hierarchy has none of the levels
template <class LinksT>
void writeHierarchy(const Hierarchy<LinksT>& hier, const OutputRequest& request,
                    const std::string& path);

/// The table of the clusters that the request selects, those at the root in place of a hierarchy.
/// @throws InputError if the hierarchy has none of the levels
template <class LinksT>
std::string clustersTable(const Hierarchy<LinksT>& hier, const OutputRequest& request,
                          TableForm form);

}  // namespace vorl::app
