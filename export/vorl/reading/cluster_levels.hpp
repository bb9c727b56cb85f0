/// @file
/// Reading of clusters in every format that holds some.
#pragma once

#include <vorl/reading/clusters_file.hpp>
#include <vorl/reading/hierarchy_file.hpp>
#include <vorl/types/export.hpp>

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vorl {

/// Formats of clusters: a cluster a line, a membership a line, and a whole hierarchy.
enum class ClustersFormat { UNKNOWN, CNL, TABLE, RHB };

/// The clusters of a file, level by level.
class VORL_API ClusterLevels {
public:
    explicit ClusterLevels(ClustersFile file) : m_file(std::move(file)) {}
    explicit ClusterLevels(HierarchyFile file) : m_file(std::move(file)) {}

    const std::string& name() const;
    /// The names that ids of nodes stand for; null if there are none.
    std::shared_ptr<Labels> labels() const;
    /// The clusters as the file lists them, null if it is one of a hierarchy.
    const ClustersFile* list() const { return std::get_if<ClustersFile>(&m_file); }
    /// The hierarchy of a file of one, else null.
    const HierarchyFile* hierarchy() const { return std::get_if<HierarchyFile>(&m_file); }
    /// Whether the file tells its levels.
    bool isHierarchy() const { return hierarchy() != nullptr; }
    /// Whether there are clusters of several levels, told by the file or by those inside others.
    bool severalLevels() const;
    /// Whether each line is a pair of numbers, as if it were one of a table.
    bool likeTable() const;

    /// The clusters that stand for the whole: those at the root of a hierarchy, else all of them.
    /// @throws InputError if there are none
    ClustersFile flat() const;
    /// Number of levels; 1 if there is nothing but the flat clusters.
    LevelNum levels() const;
    /// The clusters of a level, 0 being the lowest.
    ClustersFile level(LevelNum level) const;

    /// The nodes of a cluster, ascending.
    /// @param cluster its id; where clusters have none, its place in the file from 1 on
    /// @throws InputError if there is no such cluster
    std::vector<Id> membersOf(Id cluster) const;

private:
    /// The levels of a file that doesn't tell them.
    const std::vector<std::vector<Id>>& nested() const;

    std::variant<ClustersFile, HierarchyFile> m_file;
    mutable std::vector<std::vector<Id>> m_nested;  ///< empty until they are asked for
};

/// Whether the first line that isn't a comment has the names of a table's columns, or begins an
/// object of JSON with such keys.
VORL_API bool beginsWithNames(Lines& lines);

/// Reads clusters from a file, also one that is compressed by gzip or zstd.
/// @param file    its name, "-" for the standard input
/// @param format  told by the contents if not given: those of a hierarchy, or of a table with names
///     of columns; else by the name, .tsv, .csv, .clu and .json being tables; CNL where nothing
///     tells
/// @throws InputError with the file and line of the first fault
/// @param known   names of a network or of other clusters, which those of the file join
VORL_API ClusterLevels readClusterLevels(const std::string& file,
                                         ClustersFormat format = ClustersFormat::UNKNOWN,
                                         std::shared_ptr<Labels> known = nullptr);

/// Whether clusters in a file of that name are a table, if nobody tells the format.
VORL_API bool isTableName(const std::string& file);

}  // namespace vorl
